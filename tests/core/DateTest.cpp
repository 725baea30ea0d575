#include <gtest/gtest.h>

#include "core/Date.h"

namespace tidemark {
namespace {

TEST(Date, ParsesInternetDateTimes) {
  struct Case {
    const char* text;
    std::optional<double> unixSeconds;
  };
  const Case cases[] = {
      {"2026-10-16T09:30:00+08:00", 1792114200},
      {"2026-10-16T01:30:00Z", 1792114200},
      {"2026-10-16T01:30:00.250Z", 1792114200.25},
      {"2026-10-15T20:30:00-0500", 1792114200},
      {"2001-01-01T00:00:00Z", 978307200},
      {"2024-02-29T00:00:00Z", 1709164800},
      {"2026-02-29T00:00:00Z", std::nullopt},  // not a leap year
      {"2026-10-16T09:30:00", std::nullopt},   // no offset
      {"2026-10-16 09:30:00Z", std::nullopt},
      {"2026-10-16T24:00:00Z", std::nullopt},
      {"2026-10-16T09:30:00+08:", std::nullopt},
      {"2026-10-16T09:30:00+24:00", std::nullopt},
      {"2026-10-16T09:30:00+23:59", 1792056660},
      {"2026-10-16T09:30:00Zjunk", std::nullopt},
      {"", std::nullopt},
  };
  for (const Case& c : cases) {
    auto parsed = parseISO8601(c.text);
    ASSERT_EQ(parsed.has_value(), c.unixSeconds.has_value()) << c.text;
    if (parsed) {
      EXPECT_DOUBLE_EQ(parsed->unixSeconds(), *c.unixSeconds) << c.text;
    }
  }
}

TEST(Date, FormatsUtcWithWholeSeconds) {
  EXPECT_EQ(formatISO8601(Date{0}), "2001-01-01T00:00:00Z");
  EXPECT_EQ(formatISO8601(Date::fromUnix(1792114200.9)), "2026-10-16T01:30:00Z");
  EXPECT_EQ(formatISO8601(Date::fromUnix(-1)), "1969-12-31T23:59:59Z");
  EXPECT_EQ(parseISO8601(formatISO8601(Date{813'000'000}))->sinceReference, 813'000'000);
}

}  // namespace
}  // namespace tidemark
