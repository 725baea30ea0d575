#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "core/Date.h"
#include "core/Market.h"

namespace tidemark {

// When the three markets trade, read on each exchange's own clock from the system's time-zone
// database (daylight saving included), Monday to Friday. Exchange holidays are not known here
// and count as trading days.
//
//   Shanghai   (A股, A股基金, A股指数)     09:30–11:30, 13:00–15:00
//   Hong Kong  (港股, 港股基金, 港股指数)  09:30–12:00, 13:00–16:00
//   New York   (美股, 美股基金, 美股指数)  09:30–16:00; pre-market from 04:00, post-market to 20:00
//
// Every interval includes its start and excludes its end: 11:30 in Shanghai is already the
// lunch break, 13:00 trading again.
enum class MarketState {
  trading,     // 交易中
  lunchBreak,  // 午间休市: between the two sessions of a day
  preMarket,   // 盘前: a weekday before the first session (New York: the pre-market)
  postMarket,  // 盘后: New York's post-market
  closed,      // 已收盘: a weekday after the last session (New York: outside the extended hours)
  weekend,     // 休市: Saturday and Sunday
};

std::string_view stateText(MarketState state);

// None when the exchange's time zone is missing from the system's database.
std::optional<MarketState> marketState(Exchange exchange, Date at);

// Awake: from 15 minutes before the first session to 10 minutes after the last one of a
// weekday, so the opening and closing prices are caught (New York: from the pre-market's start
// to the post-market's end). An exchange whose time zone is missing counts as always awake:
// without its clock nothing may be skipped.
bool isAwake(Exchange exchange, Date at);

// The exchange's own calendar date at the instant, as days since 1970-01-01; none when its time
// zone is missing.
std::optional<int64_t> exchangeDay(Exchange exchange, Date at);

}  // namespace tidemark
