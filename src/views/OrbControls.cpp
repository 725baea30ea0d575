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

namespace {

struct SatelliteParts {
  double radius;   // the dot's
  double reach;    // with the active one's ring round it
  QRectF capsule;  // the caption's
  QString code, change;
  double codeWidth = 0, changeWidth = 0;
};

SatelliteParts satelliteParts(QPointF dot, const QuoteSnapshot& quote, const SatelliteLook& look) {
  const double scale = look.hovered ? 1.4 : look.selected ? 1.2 : 1.0;
  SatelliteParts parts;
  parts.radius = satelliteDotDiameter(quote.changePct()) / 2 * scale;
  parts.reach = look.selected ? parts.radius + 2 + 1.5 + 1.5 : parts.radius;
  // The caption is measured only when it shows: a collapsed ring repaints without it.
  if (look.captionOpacity <= 0.001) return parts;
  parts.code = QString::fromStdString(quote.id);
  parts.change = QString::fromStdString(look.masked ? "••••" : percentText(quote.changePct()));
  parts.codeWidth = QFontMetricsF(uiFont(9, QFont::Bold)).horizontalAdvance(parts.code);
  parts.changeWidth = QFontMetricsF(uiFont(9, QFont::DemiBold)).horizontalAdvance(parts.change);
  const double textWidth = parts.codeWidth + 4 + parts.changeWidth;
  parts.capsule = QRectF(dot.x() - textWidth / 2 - 8, dot.y() + 10, textWidth + 16, 18);
  return parts;
}

}  // namespace

QRegion discRegion(QPointF c, double radius) {
  return QRegion(QRectF(c.x() - radius, c.y() - radius, 2 * radius, 2 * radius).toAlignedRect(),
                 QRegion::Ellipse);
}

QRegion roundedRegion(const QRectF& r, double radius) {
  QPainterPath path;
  path.addRoundedRect(r, radius, radius);
  return QRegion(path.toFillPolygon().toPolygon());
}

namespace {

// The dot with its glow and, when selected, its ring.
void paintDot(QPainter& painter, QPointF dot, const QColor& colour, double radius, bool selected,
              bool glow) {
  painter.setPen(Qt::NoPen);
  if (glow) {
    QRadialGradient halo(dot, radius * 2.2);
    QColor glowColour = colour;
    glowColour.setAlphaF(0.7f);
    halo.setColorAt(0.4, glowColour);
    halo.setColorAt(1, Qt::transparent);
    painter.setBrush(halo);
    painter.drawEllipse(dot, radius * 2.2, radius * 2.2);
  }
  painter.setBrush(colour);
  painter.drawEllipse(dot, radius, radius);
  if (selected) {
    QColor ring = colour;
    ring.setAlphaF(0.65f);
    painter.setPen(QPen(ring, 3));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(dot, radius + 2 + 1.5, radius + 2 + 1.5);
  }
}

// To the eighth of a pixel: the dot's size follows the change, and a sprite serves every change
// that rounds to it.
double spriteRadius(const QuoteSnapshot& quote, const SatelliteLook& look) {
  return std::round(satelliteParts({}, quote, look).radius * 8) / 8;
}

}  // namespace

QImage satelliteSprite(const QuoteSnapshot& quote, const SatelliteLook& look, double ratio) {
  const double radius = spriteRadius(quote, look);
  const double reach = std::max(look.glow ? radius * 2.2 : 0.0, radius + 5) + 1;
  const int half = static_cast<int>(std::ceil(reach * ratio));
  QImage sprite(2 * half, 2 * half, QImage::Format_ARGB32_Premultiplied);
  sprite.setDevicePixelRatio(ratio);
  sprite.fill(Qt::transparent);
  QPainter painter(&sprite);
  painter.setRenderHint(QPainter::Antialiasing);
  paintDot(painter, QPointF(half / ratio, half / ratio),
           qt(QuoteStyle{look.colors}.color(quote.changePct())), radius, look.selected, look.glow);
  return sprite;
}

std::string satelliteSpriteKey(const QuoteSnapshot& quote, const SatelliteLook& look,
                               double ratio) {
  const double radius = spriteRadius(quote, look);
  return qt(QuoteStyle{look.colors}.color(quote.changePct())).name(QColor::HexArgb).toStdString() +
         "|" + std::to_string(radius) + "|" + std::to_string(look.selected) +
         std::to_string(look.glow) + "|" + std::to_string(ratio);
}

void paintSatellite(QPainter& painter, QPointF dot, const QuoteSnapshot& quote,
                    const SatelliteLook& look, const OrbPalette& palette) {
  painter.save();
  const QColor colour = qt(QuoteStyle{look.colors}.color(quote.changePct()));
  const SatelliteParts parts = satelliteParts(dot, quote, look);
  paintDot(painter, dot, colour, parts.radius, look.selected, look.glow);
  if (look.captionOpacity > 0.001) {
    painter.setOpacity(painter.opacity() * look.captionOpacity);
    const QRectF capsule = parts.capsule;
    painter.setPen(QPen(qt(palette.line()), 1));
    painter.setBrush(qt(palette.surface()));
    painter.drawRoundedRect(capsule, 9, 9);
    painter.setFont(uiFont(9, QFont::Bold));
    painter.setPen(qt(palette.ink()));
    painter.drawText(QRectF(capsule.x() + 8, capsule.y(), parts.codeWidth + 1, capsule.height()),
                     Qt::AlignVCenter | Qt::AlignLeft, parts.code);
    painter.setFont(uiFont(9, QFont::DemiBold));
    painter.setPen(look.masked ? qt(palette.secondary()) : colour);
    painter.drawText(QRectF(capsule.x() + 8 + parts.codeWidth + 4, capsule.y(),
                            parts.changeWidth + 1, capsule.height()),
                     Qt::AlignVCenter | Qt::AlignLeft, parts.change);
  }
  painter.restore();
}

QRegion satelliteRegion(QPointF dot, const QuoteSnapshot& quote, const SatelliteLook& look) {
  const SatelliteParts parts = satelliteParts(dot, quote, look);
  QRegion region = discRegion(dot, parts.reach + 1);
  if (look.captionOpacity > 0.001) region += roundedRegion(parts.capsule.adjusted(-1, -1, 1, 1), 9);
  return region;
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

QRegion RingButton::paintedRegion() const {
  if (appearance_ <= 0.001) return {};
  const double scale = 0.2 + 0.8 * appearance_;
  const QPointF middle(width() / 2.0, height() / 2.0);
  const auto scaled = [&](QPointF p) { return middle + (p - middle) * scale; };
  const QFont font = uiFont(9, QFont::DemiBold);
  const double w = QFontMetricsF(font).horizontalAdvance(QString::fromStdString(label_)) + 10;
  const QRectF pill(scaled({width() / 2.0 - w / 2, 43}), scaled({width() / 2.0 + w / 2, 59}));
  return discRegion(scaled({width() / 2.0, 20}), 19.5 * scale + 1) +
         roundedRegion(pill.adjusted(-1, -1, 1, 1), 8 * scale);
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
