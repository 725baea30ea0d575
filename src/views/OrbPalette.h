#pragma once

#include <cstdint>

#include <QColor>
#include <QLinearGradient>
#include <QRectF>

#include "core/Enums.h"
#include "core/NumberText.h"

namespace tidemark {

// Color(hex:) of the views: 0xRRGGBB at opacity 1.
inline Color colorFromHex(uint32_t rgb) {
  return Color::hex(rgb);
}
inline Color withOpacity(Color color, double opacity) {
  color.opacity = opacity;
  return color;
}
inline QColor qt(const Color& c) {
  return QColor::fromRgbF(float(c.red), float(c.green), float(c.blue), float(c.opacity));
}

// Every colour a view uses, for one theme; built afresh whenever a view paints.
struct OrbPalette {
  AppTheme theme = AppTheme::dark;

  Color ink() const;
  Color secondary() const;
  Color muted() const;
  Color surface() const;
  Color elevated() const;
  Color line() const;
  Color orbLit() const;
  Color orbMid() const;
  Color orbShade() const;
  Color orbDeep() const;
  Color orbText() const;
  Color auroraA() const;
  Color auroraB() const;
  Color auroraC() const;
  Color halo() const { return withOpacity(auroraB(), 0.3); }
  Color background() const;
  // The three aurora colours, evenly spaced from the top-leading to the bottom-trailing corner.
  QLinearGradient aurora(const QRectF& rect) const;
};

}  // namespace tidemark
