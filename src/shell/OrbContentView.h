#pragma once

#include <functional>
#include <optional>

#include <QPointF>
#include <QWidget>

#include "model/AppModel.h"
#include "shell/HitShape.h"
#include "views/OrbView.h"
#include "views/OrbWindowModel.h"

namespace tidemark {

// The panel's content: hosts the orb view over the whole canvas and decides which points take
// the mouse. The core is dragged and clicked here; satellites and ring buttons are the orb
// view's own controls; everything else belongs to the window below.
class OrbContentView final : public QWidget {
 public:
  OrbContentView(AppModel& model, OrbWindowModel& windowModel, const Clock& clock,
                 std::function<void(RingCommand)> onAction, QWidget* parent = nullptr);

  bool isCore(QPointF p) const;
  bool isInteractive(QPointF p) const;
  // The widget that gets a press at p: none (falls through), this view (the core), or a control.
  QWidget* hitTest(QPointF p);
  OrbHitState hitState() const;
  OrbView& orbView() { return *orb_; }

  std::function<void()> onClick, onDoubleClick, onRightClick, onDragStart, onDragEnd;
  // A press on the empty canvas, which only a desktop that ignores the input shape sends here.
  std::function<void()> onOutsidePress;
  // The core pressed (true) and let go (false).
  std::function<void(bool)> onHeld;
  // The new canvas origin, in screen coordinates.
  std::function<void(QPointF)> onDragMove;
  // Where the canvas's top left stands on the screen now.
  std::function<QPointF()> canvasOrigin;

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void resizeEvent(QResizeEvent*) override;

 private:
  void press(QMouseEvent* event, int clickCount);
  // Ends a press at the pointer's global place; a lost release ends a drag but clicks nothing.
  void release(QPointF global, bool clicks);

  AppModel& model_;
  OrbWindowModel& windowModel_;
  OrbView* orb_;
  std::optional<QPointF> startMouse_;
  QPointF startOrigin_;
  bool moved_ = false;
  int clickCount_ = 0;
};

}  // namespace tidemark
