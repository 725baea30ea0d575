#include <gtest/gtest.h>

#include <clocale>

#include "core/NumberText.h"

namespace tidemark {
namespace {

TEST(NumberText, Prices) {
  const std::pair<double, const char*> cases[] = {
      {1234.5, "1,234.50"}, {0.5, "0.50"},         {-3, "-3.00"},
      {1.0234, "1.02"},     {999.999, "1,000.00"}, {-1234.5, "-1,234.50"},
      {100, "100.00"},      {0, "0.00"},           {1234567.891, "1,234,567.89"},
  };
  for (auto [value, text] : cases) EXPECT_EQ(priceText(value), text) << value;
}

TEST(NumberText, Percentages) {
  const std::pair<double, const char*> cases[] = {
      {1.234, "+1.23%"}, {-0.5, "-0.50%"}, {0, "0.00%"}, {0.001, "+0.00%"}, {-0.001, "-0.00%"},
  };
  for (auto [value, text] : cases) EXPECT_EQ(percentText(value), text) << value;
}

TEST(NumberText, Volumes) {
  const std::pair<int64_t, const char*> cases[] = {{0, "0"},
                                                   {9999, "9999"},
                                                   {10000, "1.0万"},
                                                   {12345, "1.2万"},
                                                   {99999999, "10000.0万"},
                                                   {100000000, "1.00亿"},
                                                   {250000000, "2.50亿"},
                                                   {-5, "-5"}};
  for (auto [value, text] : cases) EXPECT_EQ(volumeText(value), text) << value;
}

TEST(NumberText, QuoteColorsWithDeadBand) {
  const Color red = Color::hex(0xFF453A), green = Color::hex(0x32D74B), grey = Color::hex(0x8E8E93);
  const std::pair<double, Color> cases[] = {
      {0.0001, grey}, {-0.0001, grey}, {0.00011, red}, {-0.00011, green}, {0, grey}, {5, red},
  };
  for (auto [change, color] : cases) EXPECT_EQ(quoteColor(change), color) << change;
  EXPECT_DOUBLE_EQ(red.red, 1.0);
  EXPECT_DOUBLE_EQ(red.green, 0x45 / 255.0);
}

TEST(NumberText, IgnoreTheProcessLocale) {
  if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) GTEST_SKIP() << "no German locale installed";
  EXPECT_EQ(priceText(1234567.891), "1,234,567.89");
  EXPECT_EQ(percentText(1.5), "+1.50%");
  EXPECT_EQ(volumeText(12345), "1.2万");
  std::setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace tidemark
