#pragma once

#include <functional>

#include <QRect>
#include <QWidget>

#include "shell/OrbContentView.h"

namespace tidemark {

// The orb's window: frameless, translucent, always on top and never listed in a task bar. The
// shell places a 460-point canvas on the screen, and the window shows the part of it that draws
// something (its frame): the content view stays the whole canvas and is shifted inside the
// window, so moving the frame never moves anything drawn.
// Whether the window manager manages it depends on the desktop (see OrbWindowKind).
class OrbPanel final : public QWidget {
 public:
  OrbPanel(AppModel& model, OrbWindowModel& windowModel, const Clock& clock,
           std::function<void(RingCommand)> onAction, bool managed = false);

  OrbContentView& content() { return *content_; }
  bool isManaged() const { return managed_; }
  // Where the canvas's top left stands on the screen, and the part of the canvas the window
  // covers (canvas coordinates).
  QPoint canvasOrigin() const { return origin_; }
  QRect frame() const { return frame_; }
  void place(QPoint origin, QRect frame);

  // The orb's keys; answers whether the key was handled.
  std::function<bool(int key)> onKey;
  // The pointer came into or left the part of the panel that takes input.
  std::function<void()> onPointerEntered, onPointerLeft;
  // The window lost the keyboard focus.
  std::function<void()> onDeactivated;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  OrbContentView* content_;
  bool managed_;
  QPoint origin_;
  QRect frame_{0, 0, int(canvasSide), int(canvasSide)};
};

}  // namespace tidemark
