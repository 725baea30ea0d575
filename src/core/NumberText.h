#pragma once

#include <cstdint>
#include <string>

namespace tidemark {

// An sRGB colour with opacity, each component from 0 to 1.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double opacity = 1;

  // From 0xRRGGBB, opacity 1.
  static constexpr Color hex(uint32_t rgb, double opacity = 1) {
    return Color{((rgb >> 16) & 0xFF) / 255.0, ((rgb >> 8) & 0xFF) / 255.0, (rgb & 0xFF) / 255.0,
                 opacity};
  }
  friend bool operator==(const Color&, const Color&) = default;
};

// Red for a rise, green for a fall (the mainland convention, in every market), grey inside a
// dead band of ±0.0001 so that a change printed as 0.00% stays grey.
Color quoteColor(double changePct);

// The texts below never depend on the process locale: a point as decimal separator, a comma
// between thousands.
std::string priceText(double value, int digits = 2);  // 1234.5 → "1,234.50"
std::string percentText(double value);                // 1.234 → "+1.23%", -0.001 → "-0.00%"
std::string volumeText(int64_t volume);               // 12345 → "1.2万", 250000000 → "2.50亿"

}  // namespace tidemark
