#pragma once

#include <functional>

#include <QWidget>

#include "shell/OrbContentView.h"

namespace tidemark {

// The orb's window: a frameless, translucent, always-on-top square that is never listed in a
// task bar. It bypasses the window manager: managers that keep windows inside the screen would
// otherwise push a docked half-disc back in, and an unmanaged window is on every desktop anyway.
// It takes the keyboard focus itself when clicked.
class OrbPanel final : public QWidget {
 public:
  OrbPanel(AppModel& model, OrbWindowModel& windowModel, const Clock& clock,
           std::function<void(int)> onAction);

  OrbContentView& content() { return *content_; }
  // The orb's keys; answers whether the key was handled.
  std::function<bool(int key)> onKey;
  // The pointer came into or left the part of the panel that takes input.
  std::function<void()> onPointerEntered, onPointerLeft;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  OrbContentView* content_;
};

}  // namespace tidemark
