#include <gtest/gtest.h>

#include <clocale>

#include "core/NumberText.h"

namespace tidemark {
namespace {

void expectTexts(const char* locale) {
  const std::pair<double, const char*> prices[] = {
      {1234.5, "1,234.50"}, {0.5, "0.50"},         {-123.4, "-123.40"},
      {1.0234, "1.02"},     {999.999, "1,000.00"}, {-1234.5, "-1,234.50"},
      {100, "100.00"},      {0, "0.00"},           {1234567.891, "1,234,567.89"},
  };
  for (auto [value, text] : prices) EXPECT_EQ(priceText(value), text) << value << locale;
  const std::pair<double, const char*> percentages[] = {
      {1.234, "+1.23%"}, {-0.5, "-0.50%"}, {0, "0.00%"}, {0.001, "+0.00%"}, {-0.001, "-0.00%"},
  };
  for (auto [value, text] : percentages) EXPECT_EQ(percentText(value), text) << value << locale;
  const std::pair<int64_t, const char*> volumes[] = {
      {9999, "9999"}, {10000, "1.0万"}, {99999999, "10000.0万"}, {100000000, "1.00亿"}, {-5, "-5"},
  };
  for (auto [value, text] : volumes) EXPECT_EQ(volumeText(value), text) << value << locale;
}

TEST(NumberText, PricesPercentagesAndVolumesWhateverTheProcessLocale) {
  expectTexts("");
  if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) GTEST_SKIP() << "no German locale installed";
  expectTexts(" in de_DE");
  std::setlocale(LC_ALL, "C");
}

TEST(NumberText, QuoteColorsWithDeadBand) {
  const Color red = Color::hex(0xFF453A), green = Color::hex(0x32D74B), grey = Color::hex(0x8E8E93);
  const std::pair<double, Color> cases[] = {
      {0.0001, grey}, {-0.0001, grey}, {0.00011, red}, {-0.00011, green}};
  for (auto [change, color] : cases) EXPECT_EQ(quoteColor(change), color) << change;
  EXPECT_DOUBLE_EQ(red.red, 1.0);
  EXPECT_DOUBLE_EQ(red.green, 0x45 / 255.0);
}

}  // namespace
}  // namespace tidemark
