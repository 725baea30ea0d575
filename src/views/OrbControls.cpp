#include "views/OrbControls.h"

#include <algorithm>
#include <cmath>

#include <QPainter>
#include <QPainterPath>

#include "core/NumberText.h"
#include "views/OrbLayout.h"
#include "views/Symbols.h"
#include "views/TextStyle.h"

namespace tidemark {

void paintSatellite(QPainter& painter, QPointF dot, const QuoteSnapshot& quote,
                    const SatelliteLook& look, const OrbPalette& palette) {
  painter.save();
  const QColor colour = qt(quoteColor(quote.changePct()));
  const double scale = look.hovered ? 1.4 : look.selected ? 1.2 : 1.0;
  const double radius = satelliteDotDiameter(quote.changePct()) / 2 * scale;

  QRadialGradient glow(dot, radius * 2.2);
  QColor glowColour = colour;
  glowColour.setAlphaF(0.7f);
  glow.setColorAt(0.4, glowColour);
  glow.setColorAt(1, Qt::transparent);
  painter.setPen(Qt::NoPen);
  painter.setBrush(glow);
  painter.drawEllipse(dot, radius * 2.2, radius * 2.2);
  painter.setBrush(colour);
  painter.drawEllipse(dot, radius, radius);
  if (look.selected) {
    QColor ring = colour;
    ring.setAlphaF(0.65f);
    painter.setPen(QPen(ring, 3));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(dot, radius + 2 + 1.5, radius + 2 + 1.5);
  }
  if (look.captionOpacity > 0.001) {
    painter.setOpacity(painter.opacity() * look.captionOpacity);
    const QString code = QString::fromStdString(quote.id);
    const QString change =
        QString::fromStdString(look.masked ? "••••" : percentText(quote.changePct()));
    const QFont codeFont = uiFont(9, QFont::Bold), changeFont = uiFont(9, QFont::DemiBold);
    const double codeWidth = QFontMetricsF(codeFont).horizontalAdvance(code);
    const double changeWidth = QFontMetricsF(changeFont).horizontalAdvance(change);
    const double textWidth = codeWidth + 4 + changeWidth;
    const QRectF capsule(dot.x() - textWidth / 2 - 8, dot.y() + 10, textWidth + 16, 18);
    painter.setPen(QPen(qt(palette.line()), 1));
    painter.setBrush(qt(palette.surface()));
    painter.drawRoundedRect(capsule, 9, 9);
    painter.setFont(codeFont);
    painter.setPen(qt(palette.ink()));
    painter.drawText(QRectF(capsule.x() + 8, capsule.y(), codeWidth + 1, capsule.height()),
                     Qt::AlignVCenter | Qt::AlignLeft, code);
    painter.setFont(changeFont);
    painter.setPen(look.masked ? qt(palette.secondary()) : colour);
    painter.drawText(
        QRectF(capsule.x() + 8 + codeWidth + 4, capsule.y(), changeWidth + 1, capsule.height()),
        Qt::AlignVCenter | Qt::AlignLeft, change);
  }
  painter.restore();
}

RingButton::RingButton(QWidget* parent, std::string label, std::string symbol)
    : QAbstractButton(parent), label_(std::move(label)), symbol_(std::move(symbol)) {
  setToolTip(QString::fromStdString(label_));
  setAccessibleName(QString::fromStdString(label_));
  setCursor(Qt::PointingHandCursor);
  setFocusPolicy(Qt::NoFocus);
}

void RingButton::setLook(const OrbPalette& palette, double appearance) {
  palette_ = palette;
  appearance_ = std::clamp(appearance, 0.0, 1.0);
  setVisible(appearance_ > 0.001);
  update();
}

void RingButton::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setOpacity(appearance_);
  const double scale = 0.2 + 0.8 * appearance_;
  painter.translate(width() / 2.0, height() / 2.0);
  painter.scale(scale, scale);
  painter.translate(-width() / 2.0, -height() / 2.0);

  const QPointF centre(width() / 2.0, 20);
  painter.setPen(QPen(qt(palette_.line()), 1));
  painter.setBrush(qt(isDown() ? palette_.elevated() : palette_.surface()));
  painter.drawEllipse(centre, 19, 19);
  drawSymbol(painter, symbol_, QRectF(centre.x() - 9, centre.y() - 9, 18, 18), qt(palette_.ink()));
  // The label sits on a pill of its own so it reads over any desktop.
  const QFont font = uiFont(9, QFont::DemiBold);
  const QString label = QString::fromStdString(label_);
  const double w = QFontMetricsF(font).horizontalAdvance(label) + 10;
  const QRectF pill(width() / 2.0 - w / 2, 43, w, 16);
  painter.setPen(Qt::NoPen);
  painter.setBrush(qt(palette_.surface()));
  painter.drawRoundedRect(pill, 8, 8);
  painter.setFont(font);
  painter.setPen(qt(palette_.ink()));
  painter.drawText(pill, Qt::AlignCenter, label);
}

}  // namespace tidemark
