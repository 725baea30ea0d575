#include "views/OrbPalette.h"

#include <array>

namespace tidemark {
namespace {

// One colour per theme, in the themes' declaration order.
using PerTheme = std::array<uint32_t, 6>;

Color pick(AppTheme theme, const PerTheme& values) {
  return colorFromHex(values[static_cast<size_t>(theme)]);
}

}  // namespace

Color OrbPalette::ink() const {
  return colorFromHex(isDark(theme) ? 0xF2F4FC : 0x1A1D2E);
}
Color OrbPalette::secondary() const {
  return colorFromHex(isDark(theme) ? 0xB9C0DC : 0x4A4F6B);
}
Color OrbPalette::muted() const {
  return colorFromHex(isDark(theme) ? 0x929BBC : 0x666E8C);
}
Color OrbPalette::surface() const {
  return withOpacity(colorFromHex(isDark(theme) ? 0x141628 : 0xFFFFFF), 0.88);
}
Color OrbPalette::elevated() const {
  return colorFromHex(isDark(theme) ? 0x1D2036 : 0xFFFFFF);
}
Color OrbPalette::line() const {
  // 0.13 on dark, 0.14 on light: the light hairline needs the extra weight.
  return isDark(theme) ? Color::hex(0xFFFFFF, 0.13) : Color::hex(0x14183C, 0.14);
}
Color OrbPalette::orbLit() const {
  return pick(theme, {0xF7F8FF, 0xFFFFFF, 0xEAFFF8, 0xFFF8E7, 0xFFF1F8, 0xF0F8FF});
}
Color OrbPalette::orbMid() const {
  return pick(theme, {0xC8CFEE, 0xF0F2FB, 0xB9F3DF, 0xF7D99C, 0xF6C5DF, 0xC0DDF7});
}
Color OrbPalette::orbShade() const {
  return pick(theme, {0x8189BD, 0xC3C9E4, 0x66C9AD, 0xD59A4E, 0xD989B5, 0x77AFE0});
}
Color OrbPalette::orbDeep() const {
  return pick(theme, {0x39406B, 0x98A0C8, 0x2B806F, 0x936027, 0x995677, 0x416F9F});
}
Color OrbPalette::orbText() const {
  return pick(theme, {0x232842, 0x2A2F4D, 0x17483F, 0x513512, 0x52213F, 0x1C3E61});
}
Color OrbPalette::auroraA() const {
  return pick(theme, {0x6EF2D8, 0x0FB898, 0x71F0C5, 0xFFD36B, 0xFFA1D0, 0x6FE2ED});
}
Color OrbPalette::auroraB() const {
  return pick(theme, {0x7AA8FF, 0x2F6BFF, 0x52B8F2, 0xFF995C, 0xD08CFF, 0x65AAFF});
}
Color OrbPalette::auroraC() const {
  return pick(theme, {0xB18CFF, 0x7B4DFF, 0x8C91FF, 0xF17A9B, 0xFF7D9E, 0x9A91FF});
}
Color OrbPalette::background() const {
  return pick(theme, {0x0B0D1C, 0xEEF0F8, 0x081A1A, 0x20170D, 0x1E101C, 0x0A1422});
}

QLinearGradient OrbPalette::aurora(const QRectF& rect) const {
  QLinearGradient gradient(rect.topLeft(), rect.bottomRight());
  gradient.setColorAt(0, qt(auroraA()));
  gradient.setColorAt(0.5, qt(auroraB()));
  gradient.setColorAt(1, qt(auroraC()));
  return gradient;
}

}  // namespace tidemark
