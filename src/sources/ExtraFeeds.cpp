#include "sources/ExtraFeeds.h"

#include <array>
#include <charconv>
#include <cmath>

#include "core/ExchangeTime.h"
#include "core/Text.h"

namespace tidemark {
namespace {

// The payload of `key="…"` in the text, or none.
std::optional<std::string_view> payload(std::string_view text, const std::string& key) {
  size_t at = 0;
  while ((at = text.find(key, at)) != std::string_view::npos) {
    // The key must stand whole: "v_whUSDCNY" is not the end of "xv_whUSDCNY".
    const bool starts = at == 0 || text[at - 1] == ' ' || text[at - 1] == '\n' ||
                        text[at - 1] == ';' || text[at - 1] == '\r';
    const size_t open = at + key.size();
    at = open;
    if (!starts || text.substr(open, 2) != "=\"") continue;
    const size_t close = text.find('"', open + 2);
    if (close == std::string_view::npos) return std::nullopt;
    return text.substr(open + 2, close - open - 2);
  }
  return std::nullopt;
}

std::vector<std::string_view> split(std::string_view payload, char separator) {
  std::vector<std::string_view> fields;
  for (size_t start = 0;;) {
    const size_t end = payload.find(separator, start);
    fields.push_back(payload.substr(start, end - start));
    if (end == std::string_view::npos) return fields;
    start = end + 1;
  }
}

std::optional<double> number(std::string_view field) {
  double value = 0;
  const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
  if (error != std::errc() || end != field.data() + field.size() || !std::isfinite(value))
    return std::nullopt;
  return value;
}

// "Oct 16 07:59PM EDT" on New York's clock, in the year that puts it latest but at most a day
// after `now`.
std::optional<Date> usClockTime(std::string_view text, Date now) {
  static constexpr std::array<std::string_view, 12> months{
      "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  // A day may be padded with a second blank ("Nov  5").
  auto parts = split(text, ' ');
  std::erase_if(parts, [](std::string_view part) { return part.empty(); });
  if (parts.size() < 3 || parts[2].size() != 7) return std::nullopt;
  int month = 0;
  while (month < 12 && months[static_cast<size_t>(month)] != parts[0]) ++month;
  int day = 0, hour = 0, minute = 0;
  const std::string_view clock = parts[2];
  const auto whole = [](std::string_view s, int& out) {
    const auto [end, error] = std::from_chars(s.data(), s.data() + s.size(), out);
    return error == std::errc() && end == s.data() + s.size();
  };
  const std::string_view half = clock.substr(5);
  if (month == 12 || !whole(parts[1], day) || clock[2] != ':' || !whole(clock.substr(0, 2), hour) ||
      !whole(clock.substr(3, 2), minute) || hour < 1 || hour > 12 || (half != "AM" && half != "PM"))
    return std::nullopt;
  hour = hour % 12 + (half == "PM" ? 12 : 0);
  const auto today = exchangeTime(Exchange::newYork, now);
  if (!today) return std::nullopt;
  for (int year = today->year + 1; year >= today->year - 1; --year) {
    const auto at = exchangeInstant(Exchange::newYork, year, month + 1, day, hour, minute, 0);
    if (at && *at <= now + 86400) return at;
  }
  return std::nullopt;
}

}  // namespace

RateMap parseTencentRates(std::string_view text) {
  RateMap rates;
  for (const char* currency : {"USD", "HKD"}) {
    const auto row = payload(text, std::string("v_wh") + currency + "CNY");
    if (!row) continue;
    const auto fields = split(*row, '~');
    if (fields.size() < 4) continue;
    if (const auto rate = number(fields[3]); rate && *rate > 0) rates[currency] = *rate;
  }
  return rates;
}

std::vector<ExtendedQuote> parseSinaExtended(std::string_view text,
                                             const std::vector<std::string>& symbols, Date now) {
  std::vector<ExtendedQuote> quotes;
  for (const std::string& symbol : symbols) {
    const auto row = payload(text, "hq_str_gb_" + toLowerAscii(symbol));
    if (!row) continue;
    const auto fields = split(*row, ',');
    if (fields.size() < 25) continue;
    const auto price = number(fields[21]);
    const auto changePct = number(fields[22]);
    const auto at = usClockTime(fields[24], now);
    if (!price || !(*price > 0) || !changePct || !at) continue;
    quotes.push_back({symbol, *price, *changePct, *at});
  }
  return quotes;
}

}  // namespace tidemark
