#include "core/Kline.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace tidemark {

std::string_view rawValue(KlinePeriod period) {
  switch (period) {
    case KlinePeriod::day:
      return "day";
    case KlinePeriod::week:
      return "week";
    case KlinePeriod::month:
      return "month";
  }
  return "day";
}

std::string_view label(KlinePeriod period) {
  switch (period) {
    case KlinePeriod::day:
      return "日K";
    case KlinePeriod::week:
      return "周K";
    case KlinePeriod::month:
      return "月K";
  }
  return "日K";
}

std::optional<KlinePeriod> klinePeriodFromRawValue(std::string_view raw) {
  for (KlinePeriod period : allKlinePeriods)
    if (rawValue(period) == raw) return period;
  return std::nullopt;
}

bool isKlineDate(std::string_view text) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') return false;
  for (size_t i : {0, 1, 2, 3, 5, 6, 8, 9})
    if (text[i] < '0' || text[i] > '9') return false;
  return true;
}

std::string klineDate(int64_t daysSinceEpoch) {
  const std::chrono::year_month_day ymd{std::chrono::sys_days(std::chrono::days(daysSinceEpoch))};
  char text[16];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u", int(ymd.year()), unsigned(ymd.month()),
                unsigned(ymd.day()));
  return text;
}

bool isValidBar(const KlineBar& b) {
  for (double v : {b.open, b.high, b.low, b.close, b.volume})
    if (!std::isfinite(v)) return false;
  return isKlineDate(b.date) && b.open > 0 && b.close > 0 && b.low > 0 && b.high >= b.low &&
         b.volume >= 0;
}

namespace {

std::chrono::sys_days dayOf(std::string_view text) {
  const auto number = [&](size_t at, size_t length) {
    int value = 0;
    for (size_t i = at; i < at + length; ++i) value = value * 10 + (text[i] - '0');
    return value;
  };
  using namespace std::chrono;
  return sys_days(year(number(0, 4)) / month(unsigned(number(5, 2))) / day(unsigned(number(8, 2))));
}

}  // namespace

bool samePeriod(std::string_view a, std::string_view b, KlinePeriod period) {
  if (!isKlineDate(a) || !isKlineDate(b)) return false;
  switch (period) {
    case KlinePeriod::day:
      return a == b;
    case KlinePeriod::month:
      return a.substr(0, 7) == b.substr(0, 7);
    case KlinePeriod::week: {
      using namespace std::chrono;
      const auto monday = [](sys_days d) { return d - (weekday(d) - Monday); };
      return monday(dayOf(a)) == monday(dayOf(b));
    }
  }
  return false;
}

std::vector<KlineBar> withLiveQuote(std::vector<KlineBar> bars, KlinePeriod period,
                                    const LiveFigures& live) {
  if (!(live.price > 0) || !isKlineDate(live.today)) return bars;
  if (!bars.empty() && bars.back().date > live.today) return bars;
  if (bars.empty() || !samePeriod(bars.back().date, live.today, period)) {
    const double open = bars.empty() ? live.price : bars.back().close;
    bars.push_back({live.today, open, std::max(open, live.price), std::min(open, live.price),
                    live.price, std::max(0.0, live.volume)});
  }
  KlineBar& last = bars.back();
  last.close = live.price;
  last.high = std::max({last.high, live.price, live.high});
  last.low = std::min({last.low, live.price, live.low > 0 ? live.low : live.price});
  return bars;
}

std::vector<std::optional<double>> movingAverage(const std::vector<KlineBar>& bars, size_t span) {
  std::vector<std::optional<double>> averages(bars.size());
  if (span == 0) return averages;
  double sum = 0;
  for (size_t i = 0; i < bars.size(); ++i) {
    sum += bars[i].close;
    if (i >= span) sum -= bars[i - span].close;
    if (i + 1 >= span) averages[i] = sum / static_cast<double>(span);
  }
  return averages;
}

Json toJson(const std::vector<KlineBar>& bars) {
  Json array = Json::array();
  for (const KlineBar& b : bars)
    array.push_back(Json{{"date", b.date},
                         {"open", b.open},
                         {"high", b.high},
                         {"low", b.low},
                         {"close", b.close},
                         {"volume", b.volume}});
  return array;
}

std::optional<std::vector<KlineBar>> klineBarsFromJson(const Json& value) {
  if (!value.is_array()) return std::nullopt;
  std::vector<KlineBar> bars;
  for (const Json& item : value) {
    auto date = json::string(item, "date");
    auto open = json::number(item, "open"), high = json::number(item, "high");
    auto low = json::number(item, "low"), close = json::number(item, "close");
    auto volume = json::number(item, "volume");
    if (!date || !open || !high || !low || !close || !volume) continue;
    KlineBar bar{*date, *open, *high, *low, *close, *volume};
    if (isValidBar(bar)) bars.push_back(std::move(bar));
  }
  return bars;
}

}  // namespace tidemark
