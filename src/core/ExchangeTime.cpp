#include "core/ExchangeTime.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <optional>

#include <date/tz.h>

namespace tidemark {
namespace {

const date::time_zone* zoneOf(Exchange exchange) {
  // Looked up once; a database without the zone (or without any) leaves it unknown.
  static const std::array<const date::time_zone*, exchangeCount> zones = [] {
    constexpr std::array<const char*, exchangeCount> names{"Asia/Shanghai", "Asia/Hong_Kong",
                                                           "America/New_York"};
    std::array<const date::time_zone*, exchangeCount> found{};
    for (size_t i = 0; i < exchangeCount; ++i) {
      try {
        found[i] = date::locate_zone(names[i]);
      } catch (const std::exception&) {
        found[i] = nullptr;
      }
    }
    return found;
  }();
  return zones[static_cast<size_t>(exchange)];
}

// The zone's offset from UTC at an instant. The heartbeat reads every exchange's clock twice a
// second, and an offset holds for months: the last one looked up is kept, on each thread, with
// the span it holds for.
std::chrono::seconds offsetAt(Exchange exchange, const date::time_zone& zone,
                              date::sys_seconds instant) {
  struct Kept {
    date::sys_seconds begin, end;
    std::chrono::seconds offset{};
  };
  thread_local std::array<std::optional<Kept>, exchangeCount> kept;
  std::optional<Kept>& last = kept[static_cast<size_t>(exchange)];
  if (!last || instant < last->begin || instant >= last->end) {
    const date::sys_info info = zone.get_info(instant);
    last = Kept{info.begin, info.end, info.offset};
  }
  return last->offset;
}

}  // namespace

void loadExchangeZones() {
  (void)zoneOf(Exchange{});
}

std::optional<Date> exchangeInstant(Exchange exchange, int year, int month, int day, int hour,
                                    int minute, int second) {
  const date::time_zone* zone = zoneOf(exchange);
  const date::year_month_day ymd{date::year{year}, date::month{static_cast<unsigned>(month)},
                                 date::day{static_cast<unsigned>(day)}};
  if (!zone || !ymd.ok() || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 ||
      second > 60)
    return std::nullopt;
  const date::local_seconds local{date::local_days{ymd}.time_since_epoch() +
                                  std::chrono::hours{hour} + std::chrono::minutes{minute} +
                                  std::chrono::seconds{second}};
  const auto instant = zone->to_sys(local, date::choose::earliest);
  return Date::fromUnix(static_cast<double>(instant.time_since_epoch().count()));
}

std::optional<Date> parseExchangeTime(std::string_view text, Exchange exchange) {
  int parts[6] = {};
  constexpr int widths[6] = {4, 2, 2, 2, 2, 2};
  size_t part = 0, digits = 0;
  for (const char c : text) {
    if (c >= '0' && c <= '9') {
      if (part == 6) return std::nullopt;
      parts[part] = parts[part] * 10 + (c - '0');
      if (++digits == size_t(widths[part])) ++part, digits = 0;
    } else if ((c != '-' && c != '/' && c != ' ' && c != ':') || digits != 0) {
      return std::nullopt;  // a separator inside a part, or a stray character
    }
  }
  if (part != 6) return std::nullopt;
  return exchangeInstant(exchange, parts[0], parts[1], parts[2], parts[3], parts[4], parts[5]);
}

std::optional<ExchangeTime> exchangeTime(Exchange exchange, Date at) {
  const date::time_zone* zone = zoneOf(exchange);
  if (!zone || !std::isfinite(at.sinceReference)) return std::nullopt;
  const date::sys_seconds instant{
      std::chrono::seconds{static_cast<long long>(std::floor(at.unixSeconds()))}};
  const std::chrono::seconds offset = offsetAt(exchange, *zone, instant);
  const auto local = date::local_seconds{instant.time_since_epoch() + offset};
  const auto day = date::floor<date::days>(local);
  const date::year_month_day ymd{day};
  const date::hh_mm_ss clock{local - day};
  return ExchangeTime{int(ymd.year()),
                      int(unsigned(ymd.month())),
                      int(unsigned(ymd.day())),
                      int(clock.hours().count()),
                      int(clock.minutes().count()),
                      int(clock.seconds().count()),
                      int(offset.count())};
}

std::string monthDayTimeText(const ExchangeTime& t) {
  char text[32];
  std::snprintf(text, sizeof text, "%02d-%02d %02d:%02d:%02d", t.month, t.day, t.hour, t.minute,
                t.second);
  return text;
}

std::string iso8601WithOffset(const ExchangeTime& t) {
  const int offset = std::abs(t.offsetSeconds) / 60;
  char text[40];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d%c%02d:%02d", t.year, t.month,
                t.day, t.hour, t.minute, t.second, t.offsetSeconds < 0 ? '-' : '+', offset / 60,
                offset % 60);
  return text;
}

}  // namespace tidemark
