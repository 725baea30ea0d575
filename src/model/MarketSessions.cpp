#include "model/MarketSessions.h"

#include <array>
#include <chrono>
#include <cmath>
#include <exception>

#include <date/date.h>

#include "core/ExchangeTime.h"

namespace tidemark {
namespace {

constexpr int hour = 3600, minute = 60;

// Times of day in seconds since the exchange's local midnight.
struct Hours {
  int sessions[2][2];
  int sessionCount;
  // New York's extended hours round its one session; zero elsewhere.
  int preMarketFrom, postMarketUntil;

  int open() const { return sessions[0][0]; }
  int close() const { return sessions[sessionCount - 1][1]; }
  int awakeFrom() const { return preMarketFrom ? preMarketFrom : open() - 15 * minute; }
  int awakeUntil() const { return postMarketUntil ? postMarketUntil : close() + 10 * minute; }
};

constexpr std::array<Hours, exchangeCount> hoursOf{{
    {{{9 * hour + 30 * minute, 11 * hour + 30 * minute}, {13 * hour, 15 * hour}}, 2, 0, 0},
    {{{9 * hour + 30 * minute, 12 * hour}, {13 * hour, 16 * hour}}, 2, 0, 0},
    {{{9 * hour + 30 * minute, 16 * hour}, {0, 0}}, 1, 4 * hour, 20 * hour},
}};

struct LocalTime {
  bool weekend;
  int second;   // of the local day
  int64_t day;  // days since 1970-01-01 on the exchange's calendar
};

std::optional<LocalTime> localTime(Exchange exchange, Date at) {
  const auto clock = exchangeTime(exchange, at);
  if (!clock) return std::nullopt;
  const date::sys_days day{date::year{clock->year} / clock->month / clock->day};
  const date::weekday weekday{day};
  return LocalTime{weekday == date::Saturday || weekday == date::Sunday,
                   clock->hour * hour + clock->minute * minute + clock->second,
                   static_cast<int64_t>(day.time_since_epoch().count())};
}

}  // namespace

std::string_view stateText(MarketState state) {
  switch (state) {
    case MarketState::trading:
      return "交易中";
    case MarketState::lunchBreak:
      return "午间休市";
    case MarketState::preMarket:
      return "盘前";
    case MarketState::postMarket:
      return "盘后";
    case MarketState::closed:
      return "已收盘";
    case MarketState::weekend:
      return "休市";
  }
  return "";
}

std::optional<MarketState> marketState(Exchange exchange, Date at) {
  const auto local = localTime(exchange, at);
  if (!local) return std::nullopt;
  if (local->weekend) return MarketState::weekend;
  const Hours& h = hoursOf[static_cast<size_t>(exchange)];
  const int t = local->second;
  for (int i = 0; i < h.sessionCount; ++i)
    if (t >= h.sessions[i][0] && t < h.sessions[i][1]) return MarketState::trading;
  if (t < h.open()) {
    return !h.preMarketFrom || t >= h.preMarketFrom ? MarketState::preMarket : MarketState::closed;
  }
  if (t < h.close()) return MarketState::lunchBreak;
  return t < h.postMarketUntil ? MarketState::postMarket : MarketState::closed;
}

std::optional<int64_t> exchangeDay(Exchange exchange, Date at) {
  const auto local = localTime(exchange, at);
  if (!local) return std::nullopt;
  return local->day;
}

bool isAwake(Exchange exchange, Date at) {
  const auto local = localTime(exchange, at);
  if (!local) return true;
  const Hours& h = hoursOf[static_cast<size_t>(exchange)];
  return !local->weekend && local->second >= h.awakeFrom() && local->second < h.awakeUntil();
}

}  // namespace tidemark
