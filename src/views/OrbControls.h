#pragma once

#include <functional>
#include <string>

#include <QAbstractButton>
#include <QPainter>
#include <QRegion>

#include "core/QuoteStyle.h"
#include "views/OrbPalette.h"

namespace tidemark {

// One watchlist entry around the orb, painted at `dot` (its orbit point): a dot in the quote's
// colour, a ring when it is the active one, and under it a caption with the code and the change
// at `captionOpacity`. `scale` grows the dot under the pointer (1.4) or when selected (1.2).
struct SatelliteLook {
  bool selected = false, masked = false, hovered = false;
  RiseColors colors = RiseColors::redRises;
  double captionOpacity = 0;
  bool glow = true;  // only where a compositor blends it
};
void paintSatellite(QPainter& painter, QPointF dot, const QuoteSnapshot& quote,
                    const SatelliteLook& look, const OrbPalette& palette);
// A satellite without its caption, drawn once into an image whose centre falls on a whole device
// pixel, and the key of the looks that share it.
QImage satelliteSprite(const QuoteSnapshot& quote, const SatelliteLook& look, double ratio);
std::string satelliteSpriteKey(const QuoteSnapshot& quote, const SatelliteLook& look, double ratio);
// What paintSatellite covers without its glow: the dot with its ring, and the caption.
QRegion satelliteRegion(QPointF dot, const QuoteSnapshot& quote, const SatelliteLook& look);

// Regions for what the orb paints, for a window that shows only that (no compositor).
QRegion discRegion(QPointF centre, double radius);
QRegion roundedRegion(const QRectF& r, double radius);

// One of the five ring-menu items: a round button with a symbol over its label; `appearance`
// (0…1) scales it up from 0.2 and fades it in.
class RingButton final : public QAbstractButton {
 public:
  RingButton(QWidget* parent, std::string label, std::string symbol);
  void setLook(const OrbPalette& palette, double appearance);
  // The face and the label's pill as drawn now, in the button's coordinates.
  QRegion paintedRegion() const;
  std::function<bool(QPoint)> yieldsAt;

 protected:
  void paintEvent(QPaintEvent*) override;
  bool hitButton(const QPoint& p) const override {
    return !(yieldsAt && yieldsAt(p)) && rect().contains(p);
  }

 private:
  std::string label_, symbol_;
  OrbPalette palette_;
  double appearance_ = 0;
};

}  // namespace tidemark
