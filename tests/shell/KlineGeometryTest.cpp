// The candle chart's geometry and the live quote's period, worked out by hand.

#include <gtest/gtest.h>

#include "views/KlineGeometry.h"

namespace tidemark {
namespace {

// Four periods in a 400 × 200 plot: slots of 100, prices in the upper 142 (150 less a gap of 8),
// volume in the lower 50; lows 10 and highs 20 with 6 % air: the range 9.4 to 20.6.
TEST(KlineGeometry, CandlesVolumesAndTheRange) {
  const std::vector<KlineBar> bars{{"2026-10-29", 12, 14, 10, 13, 100},
                                   {"2026-10-30", 13, 20, 12, 19, 400},
                                   {"2026-11-02", 19, 19.5, 15, 16, 200},
                                   {"2026-11-03", 16, 17, 15.5, 16.5, 0}};
  const KlineFrame f = klineFrame(bars, {0, 0, 400, 200});
  EXPECT_DOUBLE_EQ(f.low, 9.4);
  EXPECT_DOUBLE_EQ(f.high, 20.6);
  EXPECT_EQ(std::vector<double>({f.prices.height, f.volumes.y, f.volumes.height}),
            std::vector<double>({142, 150, 50}));
  EXPECT_EQ(std::vector<double>({candleX(f, 0), candleX(f, 3), candleWidth(f)}),
            std::vector<double>({50, 350, 70}));
  EXPECT_DOUBLE_EQ(priceY(f, 9.4), 142);
  EXPECT_DOUBLE_EQ(priceY(f, 20.6), 0);
  const Rect tallest = volumeBar(f, 1, 400), half = volumeBar(f, 2, 200);
  EXPECT_EQ(std::vector<double>({tallest.x, tallest.y, tallest.width, tallest.height, half.y,
                                 half.height, volumeBar(f, 3, 0).height}),
            std::vector<double>({115, 150, 70, 50, 175, 25, 0}));
  EXPECT_EQ(candleIndex(f, 0), 0u);
  EXPECT_EQ(candleIndex(f, 399.9), 3u);
  EXPECT_EQ(candleIndex(f, 400), std::nullopt);
  EXPECT_EQ(candleIndex(f, -1), std::nullopt);
  // A cost above every high widens the range to it; a flat series gets a percent either way.
  EXPECT_DOUBLE_EQ(klineFrame(bars, {0, 0, 400, 200}, 30.0).high, 30 + 20 * 0.06);
  const KlineFrame flat = klineFrame({{"2026-10-29", 50, 50, 50, 50, 1}}, {0, 0, 100, 100});
  EXPECT_DOUBLE_EQ(flat.low, 49.49);
  EXPECT_DOUBLE_EQ(flat.high, 50.51);
  EXPECT_EQ(klineFrame({}, {0, 0, 100, 100}).count, 0u);
}

TEST(KlineGeometry, DateLabelsOpenAMonthOrAYear) {
  const std::vector<KlineBar> bars{{"2025-12-29", 1, 1, 1, 1, 0},
                                   {"2026-01-05", 1, 1, 1, 1, 0},
                                   {"2026-01-12", 1, 1, 1, 1, 0},
                                   {"2026-02-02", 1, 1, 1, 1, 0}};
  EXPECT_EQ(klineDateLabels(bars, KlinePeriod::day), (std::vector<size_t>{1, 3}));
  EXPECT_EQ(klineDateLabels(bars, KlinePeriod::week), (std::vector<size_t>{1}));
}

// Today's period takes the live price: widened within its period, added after the last one
// otherwise, left alone when the series already ends later or the price is unknown.
TEST(KlineLive, TodaysPeriodTakesTheLiveQuote) {
  const std::vector<KlineBar> bars{{"2026-11-23", 10, 12, 9, 11, 100}};
  const auto merged = [&](KlinePeriod period, LiveFigures live) {
    return withLiveQuote(bars, period, live).back();
  };
  EXPECT_EQ(merged(KlinePeriod::week, {"2026-11-27", 13, 12.5, 10.5, 50}),
            (KlineBar{"2026-11-23", 10, 13, 9, 13, 100}));
  EXPECT_EQ(merged(KlinePeriod::week, {"2026-11-27", 8.5, 11, 8, 50}),
            (KlineBar{"2026-11-23", 10, 12, 8, 8.5, 100}));
  EXPECT_EQ(merged(KlinePeriod::day, {"2026-11-27", 11.5, 11.8, 10.9, 50}),
            (KlineBar{"2026-11-27", 11, 11.8, 10.9, 11.5, 50}));
  EXPECT_EQ(merged(KlinePeriod::month, {"2026-12-01", 11.5, 0, 0, 0}),
            (KlineBar{"2026-12-01", 11, 11.5, 11, 11.5, 0}));
  EXPECT_EQ(withLiveQuote(bars, KlinePeriod::day, {"2026-11-20", 13, 13, 13, 1}), bars);
  EXPECT_EQ(withLiveQuote(bars, KlinePeriod::day, {"2026-11-27", 0, 13, 13, 1}), bars);
  for (const auto& [a, b, period, same] :
       std::vector<std::tuple<const char*, const char*, KlinePeriod, bool>>{
           {"2026-11-23", "2026-11-29", KlinePeriod::week, true},   // Monday and Sunday
           {"2026-11-22", "2026-11-23", KlinePeriod::week, false},  // Sunday and Monday
           {"2026-11-01", "2026-11-30", KlinePeriod::month, true},
           {"2026-11-30", "2026-12-01", KlinePeriod::month, false},
           {"2026-11-30", "2026-11-30", KlinePeriod::day, true},
           {"2026-11-30", "bad", KlinePeriod::day, false}})
    EXPECT_EQ(samePeriod(a, b, period), same) << a << " " << b;
}

}  // namespace
}  // namespace tidemark
