#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/Date.h"
#include "core/Market.h"

namespace tidemark {

// A wall-clock reading on an exchange's own clock, with that clock's offset from UTC then.
struct ExchangeTime {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  int offsetSeconds = 0;
  friend bool operator==(const ExchangeTime&, const ExchangeTime&) = default;
};

// The instant the exchange's clock reads this (its zone from the system's tzdata; a reading the
// clock skips or repeats is taken at its earlier offset). None when the zone is unknown or the
// reading is no calendar time.
std::optional<Date> exchangeInstant(Exchange exchange, int year, int month, int day, int hour,
                                    int minute, int second);
// A feed's reading of the exchange's clock as the instant it names: year, month, day, hour,
// minute and second as 14 digits, separated or not by "-", "/", " " and ":" ("20261016150003",
// "2026/10/16 16:08:15", "2026-10-16 16:00:01"); none for any other text.
std::optional<Date> parseExchangeTime(std::string_view text, Exchange exchange);
// What the exchange's clock reads at an instant; none when the zone is unknown.
std::optional<ExchangeTime> exchangeTime(Exchange exchange, Date at);

// Reads the exchanges' zones from the system's tzdata now, which the first reading of a clock
// would otherwise do: a scan of the whole zone folder. Safe from any thread.
void loadExchangeZones();

// "11-25 14:59:58".
std::string monthDayTimeText(const ExchangeTime& time);
// "2026-11-25T14:59:58+08:00", "2026-11-24T16:00:02-05:00".
std::string iso8601WithOffset(const ExchangeTime& time);

}  // namespace tidemark
