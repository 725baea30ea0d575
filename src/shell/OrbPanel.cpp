#include "shell/OrbPanel.h"

#include <QKeyEvent>

namespace tidemark {

OrbPanel::OrbPanel(AppModel& model, OrbWindowModel& windowModel, const Clock& clock,
                   std::function<void(int)> onAction)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::X11BypassWindowManagerHint | Qt::NoDropShadowWindowHint),
      content_(new OrbContentView(model, windowModel, clock, std::move(onAction), this)) {
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_ShowWithoutActivating);
  setWindowTitle(QStringLiteral("岚舟"));
  setFixedSize(static_cast<int>(canvasSide), static_cast<int>(canvasSide));
  content_->setGeometry(rect());
  setFocusProxy(content_);
}

void OrbPanel::keyPressEvent(QKeyEvent* event) {
  if (onKey && onKey(event->key())) return;
  QWidget::keyPressEvent(event);
}

}  // namespace tidemark

namespace tidemark {

void OrbPanel::enterEvent(QEnterEvent* event) {
  if (onPointerEntered) onPointerEntered();
  QWidget::enterEvent(event);
}

void OrbPanel::leaveEvent(QEvent* event) {
  if (onPointerLeft) onPointerLeft();
  QWidget::leaveEvent(event);
}

}  // namespace tidemark
