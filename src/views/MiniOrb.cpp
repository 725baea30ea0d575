#include "views/MiniOrb.h"

#include <algorithm>
#include <cmath>

#include <QPainter>

namespace tidemark {

MiniOrbFace miniOrbFace(const QuoteSnapshot* quote, bool bareDot, RiseColors colors) {
  MiniOrbFace face{.bareDot = bareDot,
                   .arc = QuoteStyle{colors}.color(quote ? quote->changePct() : 0)};
  // In steps of a twenty-fourth of the ring: a step of 2 px at the tray's size is the least the
  // eye tells apart.
  if (quote) {
    const double range = std::max(quote->high - quote->low, 0.01);
    face.sweep = static_cast<int>(
        std::lround(std::clamp((quote->price - quote->low) / range, 0.0, 1.0) * 24) * 15);
  }
  return face;
}

QImage miniOrb(const MiniOrbFace& face, const OrbPalette& palette, double devicePixelRatio,
               double side) {
  const int pixels = static_cast<int>(std::lround(side * devicePixelRatio));
  QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(devicePixelRatio);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  // Laid out on the 23-point design grid, scaled to the requested side.
  painter.scale(side / 23, side / 23);

  if (!face.bareDot) {
    const QRectF disc(2, 2, 19, 19);
    QRadialGradient gradient(
        disc.center() + QPointF(-0.4 * disc.width() / 2, -0.5 * disc.height() / 2),
        disc.width() / 2 * 1.4);
    gradient.setColorAt(0, qt(palette.orbLit()));
    gradient.setColorAt(1, qt(palette.orbShade()));
    painter.setBrush(gradient);
    painter.drawEllipse(disc);
    QPen pen(qt(face.arc), 2, Qt::SolidLine, Qt::RoundCap);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawArc(QRectF(11.5 - 8.5, 11.5 - 8.5, 17, 17), 90 * 16, -face.sweep * 16);
    painter.setPen(Qt::NoPen);
  }
  painter.setBrush(qt(palette.auroraA()));
  painter.drawEllipse(QRectF(8, 8, 7, 7));
  return image;
}

}  // namespace tidemark
