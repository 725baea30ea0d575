#include "shell/OrbPanel.h"

#include <QKeyEvent>

#include "views/Theme.h"

namespace tidemark {
namespace {

Qt::WindowFlags panelFlags(bool managed) {
  const Qt::WindowFlags flags =
      Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::NoDropShadowWindowHint;
  return managed ? flags : flags | Qt::X11BypassWindowManagerHint;
}

}  // namespace

OrbPanel::OrbPanel(AppModel& model, OrbWindowModel& windowModel, const Clock& clock,
                   std::function<void(RingCommand)> onAction, bool managed)
    : QWidget(nullptr, panelFlags(managed)),
      content_(new OrbContentView(model, windowModel, clock, std::move(onAction), this)),
      managed_(managed) {
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_ShowWithoutActivating);
  setProperty(plainStyle, true);
  setWindowTitle(QStringLiteral("岚舟"));
  resize(frame_.size());
  content_->setGeometry(0, 0, int(canvasSide), int(canvasSide));
  content_->canvasOrigin = [this] { return QPointF(origin_); };
  setFocusProxy(content_);
}

void OrbPanel::place(QPoint origin, QRect frame) {
  if (origin == origin_ && frame == frame_) return;
  const bool framed = frame != frame_;
  origin_ = origin;
  frame_ = frame;
  // One geometry request for the window and the content's shift in the same turn: the next
  // paint shows both, and the X server keeps the old pixels where they stood meanwhile.
  if (framed) content_->move(-frame.topLeft());
  setGeometry(QRect(origin + frame.topLeft(), frame.size()));
}

void OrbPanel::keyPressEvent(QKeyEvent* event) {
  if (onKey && onKey(event->key())) return;
  QWidget::keyPressEvent(event);
}

void OrbPanel::enterEvent(QEnterEvent* event) {
  if (onPointerEntered) onPointerEntered();
  QWidget::enterEvent(event);
}

void OrbPanel::leaveEvent(QEvent* event) {
  if (onPointerLeft) onPointerLeft();
  QWidget::leaveEvent(event);
}

void OrbPanel::changeEvent(QEvent* event) {
  if (event->type() == QEvent::ActivationChange && !isActiveWindow() && onDeactivated)
    onDeactivated();
  QWidget::changeEvent(event);
}

}  // namespace tidemark
