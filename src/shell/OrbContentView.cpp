#include "shell/OrbContentView.h"

#include <QMouseEvent>

#include "shell/DockGeometry.h"

namespace tidemark {
namespace {

Point toPoint(QPointF p) {
  return {p.x(), p.y()};
}

void call(const std::function<void()>& callback) {
  if (callback) callback();
}

}  // namespace

OrbContentView::OrbContentView(AppModel& model, OrbWindowModel& windowModel, const Clock& clock,
                               std::function<void(RingCommand)> onAction, QWidget* parent)
    : QWidget(parent),
      model_(model),
      windowModel_(windowModel),
      orb_(new OrbView(model, windowModel, clock, std::move(onAction), this)) {
  resize(static_cast<int>(canvasSide), static_cast<int>(canvasSide));
  setFocusPolicy(Qt::StrongFocus);
  // Moves without a button reach the view too, so a press whose release was lost can end.
  setMouseTracking(true);
  // The core comes first: a satellite's or ring button's rectangle reaching over it yields.
  orb_->setCoreTest([this](QPointF p) { return isCore(p); });
}

OrbHitState OrbContentView::hitState() const {
  return {model_.orbSize(), windowModel_.dockEdge(), windowModel_.expanded(),
          windowModel_.radialOpen(), orb_->satellitePage().count};
}

bool OrbContentView::isCore(QPointF p) const {
  return tidemark::isCore(toPoint(p), model_.orbSize(), windowModel_.dockEdge());
}

bool OrbContentView::isInteractive(QPointF p) const {
  return tidemark::isInteractive(toPoint(p), hitState());
}

QWidget* OrbContentView::hitTest(QPointF p) {
  if (!isInteractive(p)) return nullptr;
  if (isCore(p)) return this;
  // A ring button, or the orb view itself for the satellites it draws.
  return childAt(p.toPoint());
}

void OrbContentView::resizeEvent(QResizeEvent*) {
  orb_->setGeometry(rect());
}

void OrbContentView::press(QMouseEvent* event, int clickCount) {
  if (!isInteractive(event->position())) {
    call(onOutsidePress);
    return;
  }
  if (event->button() == Qt::RightButton) {
    call(onRightClick);
    return;
  }
  if (event->button() != Qt::LeftButton) return;
  if (QWidget* top = window(); top != this) top->activateWindow();
  startOrigin_ = canvasOrigin ? canvasOrigin() : QPointF();
  setFocus(Qt::MouseFocusReason);
  startMouse_ = event->globalPosition();
  moved_ = false;
  clickCount_ = clickCount;
  if (onHeld) onHeld(true);
}

void OrbContentView::mousePressEvent(QMouseEvent* event) {
  press(event, 1);
}

void OrbContentView::mouseDoubleClickEvent(QMouseEvent* event) {
  // Qt reports the second press of a double click here, within the platform's interval.
  press(event, 2);
}

void OrbContentView::mouseMoveEvent(QMouseEvent* event) {
  if (!startMouse_) return;
  // A move without the button held means its release went elsewhere (a compositor can lose it
  // while the window moves under the pointer): the drag ends here, and no click comes of it.
  if (!(event->buttons() & Qt::LeftButton)) {
    release(event->globalPosition(), false);
    return;
  }
  const QPointF delta = event->globalPosition() - *startMouse_;
  if (!moved_) {
    if (!startsDrag({delta.x(), delta.y()})) return;
    moved_ = true;
    call(onDragStart);
  }
  if (onDragMove) onDragMove(startOrigin_ + delta);
}

void OrbContentView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !startMouse_) return;
  release(event->globalPosition(), true);
}

void OrbContentView::release(QPointF global, bool clicks) {
  if (moved_) {
    // The last moves may not have been reported before the release; it says where the pointer is.
    if (onDragMove) onDragMove(startOrigin_ + (global - *startMouse_));
    call(onDragEnd);
  } else if (clicks) {
    call(clickCount_ < 2 ? onClick : onDoubleClick);
  }
  startMouse_.reset();
  moved_ = false;
  if (onHeld) onHeld(false);
}

}  // namespace tidemark
