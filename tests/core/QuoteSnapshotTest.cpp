#include <gtest/gtest.h>

#include <limits>

#include "core/QuoteSnapshot.h"

namespace tidemark {
namespace {

QuoteSnapshot sample() {
  return {"600519", "A股", "贵州茅台",          1468.8,   1452, 1475,
          1448.1,   32165, Date{813'000'000.5}, "tencent"};
}

TEST(QuoteSnapshot, ChangePercentIsZeroUnlessPreviousCloseIsPositive) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::tuple<double, double, double> cases[] = {
      {11, 10, 10}, {9, 10, -10}, {5, 0, 0}, {5, -2, 0}, {5, nan, 0},
  };
  for (auto [price, prevClose, expected] : cases) {
    QuoteSnapshot q = sample();
    q.price = price;
    q.prevClose = prevClose;
    EXPECT_DOUBLE_EQ(q.changePct(), expected) << price << " " << prevClose;
  }
}

TEST(QuoteSnapshot, CurrencyByExactMarketLabel) {
  const std::pair<const char*, const char*> cases[] = {
      {"港股", "HKD"}, {"港股基金", "HKD"}, {"美股", "USD"}, {"美股基金", "USD"},
      {"A股", "CNY"},  {"A股基金", "CNY"},  {"", "CNY"},     {"港股 ", "CNY"},
  };
  for (auto [market, currency] : cases) {
    QuoteSnapshot q = sample();
    q.market = market;
    EXPECT_EQ(q.currency(), currency) << market;
  }
}

TEST(QuoteSnapshot, TrendRunsFromPreviousCloseToPrice) {
  // Its length, ends and repeatability are checked by the self-test.
  const QuoteSnapshot q = sample();
  const auto trend = q.trend();
  ASSERT_EQ(trend.size(), 60u);
  // Worked out by hand from the formula: seed 309 (the bytes of "600519"), amplitude
  // max(16.8 × 0.16, 1452 × 0.0015) = 2.688.
  const std::pair<int, double> points[] = {{1, 1452.3217910742378},
                                           {2, 1452.7236419871167},
                                           {30, 1460.7445063504247},
                                           {58, 1468.458441745519}};
  for (const auto& [i, value] : points) EXPECT_NEAR(trend[i], value, 1e-9) << i;
  EXPECT_NE(trend, syntheticTrend("600520", q.price, q.prevClose));

  QuoteSnapshot flat = sample();
  flat.price = flat.prevClose = 0;
  for (double v : flat.trend()) EXPECT_EQ(v, 0);
  // Price 10 = previous close: amplitude 0.015, ends pinned to 10.
  const auto ten = syntheticTrend("NVDA", 10, 10);
  EXPECT_EQ(ten.front(), 10);
  EXPECT_NEAR(ten.back(), 10, 1e-12);
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
