#include "views/MiniOrb.h"

#include <algorithm>
#include <cmath>
#include <vector>

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

namespace {

// The shaded disc under every face, drawn once for each size, ratio and theme: its gradient is
// most of the icon's cost, and the face changes with the price.
const QImage& shadedDisc(const OrbPalette& palette, int pixels, double devicePixelRatio,
                         double side) {
  struct Kept {
    AppTheme theme;
    int pixels;
    double ratio;
    QImage image;
  };
  static std::vector<Kept> kept;  // the item's two sizes and the tray icon's, per theme
  for (const Kept& each : kept)
    if (each.theme == palette.theme && each.pixels == pixels && each.ratio == devicePixelRatio)
      return each.image;
  if (kept.size() >= 6) kept.clear();
  QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(devicePixelRatio);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  // Laid out on the 23-point design grid, scaled to the requested side.
  painter.scale(side / 23, side / 23);
  const QRectF disc(2, 2, 19, 19);
  QRadialGradient gradient(
      disc.center() + QPointF(-0.4 * disc.width() / 2, -0.5 * disc.height() / 2),
      disc.width() / 2 * 1.4);
  gradient.setColorAt(0, qt(palette.orbLit()));
  gradient.setColorAt(1, qt(palette.orbShade()));
  painter.setBrush(gradient);
  painter.drawEllipse(disc);
  painter.end();
  return kept.emplace_back(Kept{palette.theme, pixels, devicePixelRatio, image}).image;
}

}  // namespace

QImage miniOrb(const MiniOrbFace& face, const OrbPalette& palette, double devicePixelRatio,
               double side) {
  const int pixels = static_cast<int>(std::lround(side * devicePixelRatio));
  QImage image;
  if (face.bareDot) {
    image = QImage(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
  } else {
    image = shadedDisc(palette, pixels, devicePixelRatio, side);
  }
  QPainter painter(&image);  // a copy of the kept disc from here on
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.scale(side / 23, side / 23);
  if (!face.bareDot) {
    painter.setPen(QPen(qt(face.arc), 2, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(QRectF(11.5 - 8.5, 11.5 - 8.5, 17, 17), 90 * 16, -face.sweep * 16);
    painter.setPen(Qt::NoPen);
  }
  painter.setBrush(qt(palette.auroraA()));
  painter.drawEllipse(QRectF(8, 8, 7, 7));
  return image;
}

}  // namespace tidemark
