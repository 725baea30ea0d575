#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Json.h"

namespace tidemark {

// The periods of a candle chart. Raw values are what the feeds, the cache and the command line
// use; labels are the chart switch's.
enum class KlinePeriod { day, week, month };
inline constexpr std::array allKlinePeriods{KlinePeriod::day, KlinePeriod::week,
                                            KlinePeriod::month};

std::string_view rawValue(KlinePeriod period);  // "day", "week", "month"
std::string_view label(KlinePeriod period);     // "日K", "周K", "月K"
std::optional<KlinePeriod> klinePeriodFromRawValue(std::string_view raw);

// One period of a security: its first day as "YYYY-MM-DD", prices and volume in the feed's units.
struct KlineBar {
  std::string date;
  double open = 0, high = 0, low = 0, close = 0, volume = 0;
  friend bool operator==(const KlineBar&, const KlineBar&) = default;
};

// "YYYY-MM-DD" in digits.
bool isKlineDate(std::string_view text);
// The date of a day counted from 1970-01-01, written so.
std::string klineDate(int64_t daysSinceEpoch);

// A bar with such a date, finite figures, prices above zero, its high at least its low and a
// volume not below zero.
bool isValidBar(const KlineBar& bar);

// The mean close of the `span` periods ending at each bar; none until that many exist.
std::vector<std::optional<double>> movingAverage(const std::vector<KlineBar>& bars, size_t span);

// The spans of the chart's three average lines.
inline constexpr std::array<size_t, 3> movingAverageSpans{5, 10, 20};

// Whether two "YYYY-MM-DD" dates fall in the same period: the same day, the same Monday-to-Sunday
// week, or the same month.
bool samePeriod(std::string_view a, std::string_view b, KlinePeriod period);

// The live quote of `today` ("YYYY-MM-DD", the exchange's date) in the series: the period holding
// today takes the price as its close and widens its high and low to the price and the day's
// high and low; without such a period one is added after the last, opening at the last close.
// Figures not above zero are left out; a series that ends after today is left as it is.
struct LiveFigures {
  std::string today;
  double price = 0, high = 0, low = 0, volume = 0;
};
std::vector<KlineBar> withLiveQuote(std::vector<KlineBar> bars, KlinePeriod period,
                                    const LiveFigures& live);

// A series as stored and printed: [{"date","open","high","low","close","volume"}, ...].
Json toJson(const std::vector<KlineBar>& bars);
// The valid bars of such an array; others are skipped. None unless the value is an array.
std::optional<std::vector<KlineBar>> klineBarsFromJson(const Json& value);

}  // namespace tidemark
