#include "core/NumberText.h"

#include <algorithm>
#include <charconv>

namespace tidemark {
namespace {

// Fixed notation with `digits` fraction digits, rounded like printf, in the C locale.
std::string fixed(double value, int digits) {
  char buf[400];
  auto result = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed, digits);
  return std::string(buf, result.ptr);
}

}  // namespace

Color quoteColor(double changePct) {
  if (changePct > 0.0001) return Color::hex(0xFF453A);
  if (changePct < -0.0001) return Color::hex(0x32D74B);
  return Color::hex(0x8E8E93);
}

std::string priceText(double value, int digits) {
  std::string text = fixed(value, digits);
  size_t begin = (!text.empty() && text[0] == '-') ? 1 : 0;
  if (text.empty() || text.back() < '0' || text.back() > '9') return text;  // nan, inf
  const size_t point = std::min(text.find('.'), text.size());
  for (size_t i = point; i > begin + 3; i -= 3) text.insert(i - 3, 1, ',');
  return text;
}

std::string percentText(double value) {
  return (value > 0 ? "+" : "") + fixed(value, 2) + "%";
}

std::string volumeText(int64_t volume) {
  if (volume >= 100000000) return fixed(static_cast<double>(volume) / 1e8, 2) + "亿";
  if (volume < 10000) return std::to_string(volume);
  return fixed(static_cast<double>(volume) / 10000, 1) + "万";
}

}  // namespace tidemark
