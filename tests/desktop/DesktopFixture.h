#pragma once

// The delegate over a model of fakes, with the five default symbols, reduce motion and the
// densest tray title, launched on a 1280 × 800 screen.

#include <functional>
#include <memory>

#include "shell/AppDelegate.h"
#include "support/ModelHarness.h"

namespace tidemark::test {

struct RecordingWindowSystem final : WindowSystem {
  void setInputRegion(QWidget&, const QRegion& r) override { region = r; }
  void showOnAllDesktops(QWidget&) override {}
  bool canExcludeFromCapture() const override { return false; }
  void setExcludedFromCapture(QWidget&, bool on) override { excluded = on; }
  QRegion region;
  bool excluded = false;
};

struct NoHotKeys final : GlobalHotKeys {
  int install(std::function<void(int)> p) override {
    pressed = std::move(p);
    return 2;
  }
  std::function<void(int)> pressed;
};

struct Desktop {
  explicit Desktop(std::function<std::unique_ptr<StatusNotifier>()> notifier = {}) {
    h.store.setData(AppModel::preferencesKey,
                    R"({"activeID":"600519","theme":"dark","reduceMotion":true,)"
                    R"("refreshInterval":0.0,"sourceMode":"mock","masked":false,"orbSize":96.0,)"
                    R"("autoRotate":false,"menuDensity":2,"phase":"live","latencyMS":0,)"
                    R"("updatedAt":816832800.0,"onboardingSeen":true,"alertAbove":true,)"
                    R"("alertTriggered":false})");
    model = h.make();
    delegate = std::make_unique<AppDelegate>(AppDelegate::Dependencies{
        *model,
        h.store,
        h.clock,
        h.scheduler,
        windows,
        keys,
        {},
        [] {
          return std::vector<Screen>{{{0, 0, 1280, 800}, {0, 0, 1280, 800}}};
        },
        [this] { return mouse; },
        std::move(notifier)});
    delegate->launch();
  }
  OrbContentView& content() { return delegate->panel().content(); }
  QWindow* window() { return delegate->panel().windowHandle(); }

  test::ModelHarness h;
  std::unique_ptr<AppModel> model;
  RecordingWindowSystem windows;
  NoHotKeys keys;
  Point mouse{640, 400};
  std::unique_ptr<AppDelegate> delegate;
};

}  // namespace tidemark::test
