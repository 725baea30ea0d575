#include <gtest/gtest.h>

#include "core/Date.h"

namespace tidemark {
namespace {

TEST(Date, ReadsAndWritesInternetDateTimes) {
  const std::pair<const char*, double> valid[] = {
      {"2026-10-16T09:30:00+08:00", 1792114200},   {"2026-10-16T01:30:00Z", 1792114200},
      {"2026-10-16T01:30:00.250Z", 1792114200.25}, {"2026-10-15T20:30:00-0500", 1792114200},
      {"2001-01-01T00:00:00Z", 978307200},         {"2024-02-29T00:00:00Z", 1709164800},
      {"2026-10-16T09:30:00+23:59", 1792056660},
  };
  for (const auto& [text, unixSeconds] : valid)
    EXPECT_EQ(parseISO8601(text).value_or(Date::fromUnix(-1)).unixSeconds(), unixSeconds) << text;
  // 2026 is no leap year; the offset is required and its hours end at 23.
  for (const char* text : {"2026-02-29T00:00:00Z", "2026-10-16T09:30:00", "2026-10-16 09:30:00Z",
                           "2026-10-16T24:00:00Z", "2026-10-16T09:30:00+08:",
                           "2026-10-16T09:30:00+24:00", "2026-10-16T09:30:00Zjunk", ""})
    EXPECT_EQ(parseISO8601(text), std::nullopt) << text;
  // Written back in UTC with whole seconds.
  EXPECT_EQ(formatISO8601(Date{0}), "2001-01-01T00:00:00Z");
  EXPECT_EQ(formatISO8601(Date::fromUnix(1792114200.9)), "2026-10-16T01:30:00Z");
  EXPECT_EQ(formatISO8601(Date::fromUnix(-1)), "1969-12-31T23:59:59Z");
}

}  // namespace
}  // namespace tidemark
