#pragma once

// Stand-ins for the desktop's seams where there is no X11: they do nothing, hold no key and
// report a compositing desktop.

#include "seams/DesktopSeams.h"

namespace tidemark {

class QuietWindowSystem final : public WindowSystem {
 public:
  void setInputRegion(QWidget&, const QRegion&) override {}
  void setVisibleRegion(QWidget&, const std::optional<QRegion>&) override {}
  void prepareOrbWindow(QWidget&) override {}
  bool compositing() const override { return true; }
  void watchCompositing(std::function<void(bool)>) override {}
  bool canExcludeFromCapture() const override { return false; }
  void setExcludedFromCapture(QWidget&, bool) override {}
  void watchPointerPresses(std::function<void(unsigned long)>) override {}
};

class QuietHotKeys final : public GlobalHotKeys {
 public:
  int install(std::function<void(int)>) override { return 0; }
  bool holds(int) const override { return false; }
  bool canHold() const override { return false; }
  bool retry() override { return false; }
};

}  // namespace tidemark
