#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace tidemark {

// An instant, kept as seconds since 2001-01-01T00:00:00Z: the form every stored record uses, so
// values round-trip through the store without conversion.
struct Date {
  static constexpr double unixOffset = 978307200.0;

  double sinceReference = 0;

  static Date fromUnix(double seconds) { return Date{seconds - unixOffset}; }
  double unixSeconds() const { return sinceReference + unixOffset; }

  Date operator+(double seconds) const { return Date{sinceReference + seconds}; }
  double operator-(Date other) const { return sinceReference - other.sinceReference; }
  friend bool operator==(Date, Date) = default;
  friend auto operator<=>(Date a, Date b) { return a.sinceReference <=> b.sinceReference; }
};

// Internet date-time: "2026-10-16T09:30:00+08:00", "2026-10-16T01:30:00.250Z". Date and time are
// required, the offset too; anything else gives no value.
std::optional<Date> parseISO8601(std::string_view text);

// UTC with whole seconds, e.g. "2026-10-16T01:30:00Z".
std::string formatISO8601(Date date);

}  // namespace tidemark
