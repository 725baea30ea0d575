#pragma once

// The delegate over a model of fakes, with the five default symbols and the densest tray title,
// launched on one 1280 × 800 screen (or the screens given). Motion is reduced unless asked for.

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include <QAbstractButton>

#include "shell/AppDelegate.h"
#include "support/ModelHarness.h"

namespace tidemark::test {

// A window's name in failure messages.
inline const char* nameOf(AuxWindow window) {
  switch (window) {
    case AuxWindow::settings:
      return "settings";
    case AuxWindow::guide:
      return "guide";
    case AuxWindow::alert:
      return "alert";
  }
  return "";
}

struct RecordingWindowSystem final : WindowSystem {
  void setInputRegion(QWidget&, const QRegion& r) override { region = r; }
  void setVisibleRegion(QWidget&, const std::optional<QRegion>& r) override { visible = r; }
  void prepareOrbWindow(QWidget&) override {}
  void orbWindowShown(QWidget&) override { ++shownManaged; }
  bool compositing() const override { return composited; }
  void watchCompositing(std::function<void(bool)> c) override { compositingChanged = std::move(c); }
  bool canExcludeFromCapture() const override { return false; }
  void setExcludedFromCapture(QWidget&, bool on) override { excluded = on; }
  void watchPointerPresses(std::function<void(unsigned long)> p) override {
    pressed = std::move(p);
  }
  QRegion region;  // in the window's coordinates
  int shownManaged = 0;
  std::optional<QRegion> visible;
  bool composited = true;
  std::function<void(bool)> compositingChanged;
  bool excluded = false;
  std::function<void(unsigned long time)> pressed;  // a press somewhere on the desktop
};

// The two keys, each ours unless another program holds it; a retry takes the ones set free.
struct CapturedHotKeys final : GlobalHotKeys {
  int install(std::function<void(int)> p) override {
    pressed = std::move(p);
    retry();
    return int(held.size());
  }
  bool holds(int id) const override { return held.contains(id); }
  bool canHold() const override { return true; }
  bool retry() override {
    const size_t before = held.size();
    for (int id : {1, 2})
      if (!takenElsewhere.contains(id)) held.insert(id);
    return held.size() > before;
  }
  std::function<void(int)> pressed;
  std::set<int> held, takenElsewhere;
};

struct FakeMotionSetting final : DesktopMotionSetting {
  explicit FakeMotionSetting(bool calm) : value(calm) {}
  bool calm() const override { return value; }
  void watch(std::function<void(bool)> c) override { changed = std::move(c); }
  bool value;
  std::function<void(bool)> changed;
};

struct DesktopOptions {
  bool reduceMotion = true;
  std::vector<Screen> screens{{{0, 0, 1280, 800}, {0, 0, 1280, 800}}};
  std::optional<std::string> position;  // the stored orb position
  std::function<std::unique_ptr<StatusNotifier>()> notifier;
  std::optional<bool> systemCalm;    // a desktop that reports its reduce-motion switch
  std::set<int> keysTakenElsewhere;  // global keys another program holds at launch
  bool wayland = false;              // a Wayland session: the desktop binds the global keys
  SettingsView::DesktopKeys keys;
  std::function<bool()> desktopKeysBound;
  OrbWindowKind windowKind;
};

struct Desktop {
  explicit Desktop(DesktopOptions options = {}) : screens(options.screens) {
    if (options.position) h.store.setData(OrbMotion::positionKey, *options.position);
    model = h.make();
    model->setReduceMotion(options.reduceMotion);
    model->setRefreshInterval(0);
    model->setAutoRotate(false);
    model->setMenuDensity(MenuDensity::full);
    model->setOnboardingSeen(true);
    std::function<std::unique_ptr<DesktopMotionSetting>()> motionSetting;
    if (options.systemCalm)
      motionSetting = [this, calm = *options.systemCalm] {
        auto setting = std::make_unique<FakeMotionSetting>(calm);
        motion = setting.get();
        return setting;
      };
    delegate = std::make_unique<AppDelegate>(AppDelegate::Dependencies{
        *model, h.store, h.clock, h.scheduler, windows, keys,
        standardWindowContent(
            *model, h.clock, [] { return false; },
            [](bool) { return std::optional<std::string>{}; }, options.keys),
        [this] { return screens; }, [this] { return mouse; }, std::move(options.notifier),
        std::move(motionSetting), options.wayland, options.desktopKeysBound, options.windowKind});
    keys.takenElsewhere = options.keysTakenElsewhere;
    delegate->onQuit = [this] { ++quits; };
    delegate->launch();
  }
  OrbContentView& content() { return delegate->panel().content(); }
  // A point of the canvas in the orb window's own coordinates.
  QPoint at(QPointF canvas) {
    return (canvas - QPointF(delegate->panel().frame().topLeft())).toPoint();
  }
  // Places the canvas's top left at (x, y) on the screen.
  void moveCanvas(int x, int y) { delegate->panel().place({x, y}, delegate->panel().frame()); }
  QWindow* window() { return delegate->panel().windowHandle(); }
  // The first widget of this type in the window opened under `key`. Some views carry no
  // meta-object of their own, so a plain cast finds them.
  template <class T>
  T* inWindow(AuxWindow key) {
    if (QWidget* window = delegate->windows().window(key))
      for (QWidget* child : window->findChildren<QWidget*>())
        if (auto* found = dynamic_cast<T*>(child)) return found;
    return nullptr;
  }
  // The ring button a screen reader names so.
  QAbstractButton* ringButton(const QString& name) {
    for (auto* button : content().orbView().ringButtons())
      if (button->accessibleName() == name) return button;
    return nullptr;
  }

  test::ModelHarness h;
  std::unique_ptr<AppModel> model;
  RecordingWindowSystem windows;
  CapturedHotKeys keys;
  std::vector<Screen> screens;
  Point mouse{640, 400};
  FakeMotionSetting* motion = nullptr;
  int quits = 0;
  std::unique_ptr<AppDelegate> delegate;
};

}  // namespace tidemark::test
