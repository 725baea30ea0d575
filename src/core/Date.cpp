#include "core/Date.h"

#include <chrono>
#include <cmath>
#include <cstdio>

namespace tidemark {
namespace {

// Reads exactly `count` digits at `pos`.
bool digits(std::string_view text, size_t& pos, int count, int& out) {
  if (pos + count > text.size()) return false;
  int value = 0;
  for (int i = 0; i < count; ++i) {
    char c = text[pos + i];
    if (c < '0' || c > '9') return false;
    value = value * 10 + (c - '0');
  }
  pos += count;
  out = value;
  return true;
}

bool expect(std::string_view text, size_t& pos, char c) {
  if (pos >= text.size() || text[pos] != c) return false;
  ++pos;
  return true;
}

// ".123…" after the seconds: the fraction, 0 when there is none; none for a dot without digits.
std::optional<double> fractionAt(std::string_view text, size_t& pos) {
  double fraction = 0;
  if (pos >= text.size() || text[pos] != '.') return fraction;
  ++pos;
  double scale = 0.1;
  const size_t start = pos;
  while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') {
    fraction += (text[pos] - '0') * scale;
    scale /= 10;
    ++pos;
  }
  if (pos == start) return std::nullopt;
  return fraction;
}

// "Z", "+hh", "+hhmm" or "+hh:mm" (or with "-"): the offset east of UTC in seconds.
std::optional<int> offsetAt(std::string_view text, size_t& pos) {
  if (pos < text.size() && text[pos] == 'Z') {
    ++pos;
    return 0;
  }
  if (pos >= text.size() || (text[pos] != '+' && text[pos] != '-')) return std::nullopt;
  const int sign = text[pos] == '-' ? -1 : 1;
  ++pos;
  int oh = 0, om = 0;
  if (!digits(text, pos, 2, oh)) return std::nullopt;
  const bool colon = pos < text.size() && text[pos] == ':';
  if (colon) ++pos;
  if ((colon || pos < text.size()) && !digits(text, pos, 2, om)) return std::nullopt;
  if (oh > 23 || om > 59) return std::nullopt;
  return sign * (oh * 3600 + om * 60);
}

}  // namespace

std::optional<Date> parseISO8601(std::string_view text) {
  using namespace std::chrono;
  size_t pos = 0;
  int y, mo, d, h, mi, s;
  if (!digits(text, pos, 4, y) || !expect(text, pos, '-') || !digits(text, pos, 2, mo) ||
      !expect(text, pos, '-') || !digits(text, pos, 2, d) || !expect(text, pos, 'T') ||
      !digits(text, pos, 2, h) || !expect(text, pos, ':') || !digits(text, pos, 2, mi) ||
      !expect(text, pos, ':') || !digits(text, pos, 2, s))
    return std::nullopt;
  const auto fraction = fractionAt(text, pos);
  if (!fraction) return std::nullopt;
  const auto offsetSeconds = offsetAt(text, pos);
  if (!offsetSeconds || pos != text.size()) return std::nullopt;
  if (h > 23 || mi > 59 || s > 59) return std::nullopt;
  year_month_day ymd{year{y}, month{static_cast<unsigned>(mo)}, day{static_cast<unsigned>(d)}};
  if (!ymd.ok()) return std::nullopt;
  double unixTime = static_cast<double>(sys_days{ymd}.time_since_epoch().count()) * 86400.0 +
                    h * 3600 + mi * 60 + s - *offsetSeconds + *fraction;
  return Date::fromUnix(unixTime);
}

std::string formatISO8601(Date date) {
  using namespace std::chrono;
  double unixTime = std::floor(date.unixSeconds());
  auto secs = sys_seconds{seconds{static_cast<long long>(unixTime)}};
  auto dayPoint = floor<days>(secs);
  year_month_day ymd{dayPoint};
  hh_mm_ss hms{secs - dayPoint};
  char buf[40];
  std::snprintf(buf, sizeof buf, "%04d-%02u-%02uT%02lld:%02lld:%02lldZ",
                static_cast<int>(ymd.year()), static_cast<unsigned>(ymd.month()),
                static_cast<unsigned>(ymd.day()), static_cast<long long>(hms.hours().count()),
                static_cast<long long>(hms.minutes().count()),
                static_cast<long long>(hms.seconds().count()));
  return buf;
}

}  // namespace tidemark
