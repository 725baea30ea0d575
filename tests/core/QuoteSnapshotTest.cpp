#include <gtest/gtest.h>

#include <limits>

#include "core/QuoteSnapshot.h"

namespace tidemark {
namespace {

QuoteSnapshot sample() {
  return {"600519", "A股", "贵州茅台",          1468.8,   1452, 1475,
          1448.1,   32165, Date{813'000'000.5}, "tencent"};
}

TEST(QuoteSnapshot, ChangePercentAndCurrency) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  // Price, previous close and market; the change in percent, zero unless the previous close is
  // positive, and the currency, by the exact market label.
  const std::tuple<double, double, const char*, double, const char*> cases[] = {
      {11, 10, "港股", 10, "HKD"},    {9, 10, "港股基金", -10, "HKD"}, {5, 0, "美股", 0, "USD"},
      {5, nan, "美股基金", 0, "USD"}, {5, -2, "A股", 0, "CNY"},        {5, 5, "A股基金", 0, "CNY"},
      {5, 5, "", 0, "CNY"},           {5, 5, "港股 ", 0, "CNY"},
  };
  for (auto [price, prevClose, market, percent, currency] : cases) {
    QuoteSnapshot q = sample();
    q.price = price;
    q.prevClose = prevClose;
    q.market = market;
    EXPECT_EQ(std::pair(q.changePct(), q.currency()), std::pair(percent, std::string(currency)))
        << price << " " << prevClose << " " << market;
  }
}

TEST(QuoteSnapshot, TrendRunsFromPreviousCloseToPrice) {
  // Its length, ends and repeatability are checked by the self-test.
  const QuoteSnapshot q = sample();
  const auto trend = q.trend();
  ASSERT_EQ(trend.size(), 60u);
  // Worked out by hand from the formula: seed 309 (the bytes of "600519"), amplitude
  // max(16.8 × 0.16, 1452 × 0.0015) = 2.688.
  const std::pair<int, double> points[] = {
      {1, 1452.3217910742378}, {30, 1460.7445063504247}, {58, 1468.458441745519}};
  for (const auto& [i, value] : points) EXPECT_NEAR(trend[i], value, 1e-9) << i;
  EXPECT_NE(trend, syntheticTrend("600520", q.price, q.prevClose));
  EXPECT_EQ(syntheticTrend("600519", 0, 0), std::vector<double>(60, 0.0));  // no amplitude
}

TEST(QuoteSnapshot, DecodingFailsOnAMissingKeyOrAWrongType) {
  const std::vector<std::pair<std::string, Json>> breaks{
      {"id", nullptr},       {"volume", 1.5}, {"volume", "1"},   {"price", "1468.8"},
      {"updatedAt", "2026"}, {"source", 3},   {"market", false},
  };
  for (const auto& [key, value] : breaks) {
    Json object = toJson(sample());
    object[key] = value;
    EXPECT_EQ(quoteFromJson(object), std::nullopt) << key << "=" << value;
    object.erase(key);
    EXPECT_EQ(quoteFromJson(object), std::nullopt) << "without " << key;
  }
  Json wholeVolume = toJson(sample());
  wholeVolume["volume"] = 32165.0;
  EXPECT_EQ(quoteFromJson(wholeVolume), sample());
}

}  // namespace
}  // namespace tidemark
