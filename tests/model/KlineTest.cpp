// The candles' book: asked once per exchange day, kept in memory and in the cache folder,
// failures retried after a minute; and the demonstration series.

#include <gtest/gtest.h>

#include <fstream>

#include "core/FileIO.h"
#include "model/KlineBook.h"
#include "support/Fakes.h"

namespace tidemark {
namespace {

constexpr int64_t saturday = 20785;  // 2026-11-28

struct Book {
  ManualClock clock{Date{815'000'000}};
  test::FakeMarketDataSource source;
  test::TemporaryFolder folder;
  int changes = 0;
  KlineBook book{source, clock, folder.path() / "kline"};

  // The series' state as one line: its dates, its error, "loading"; of this book or another.
  std::string show(const char* symbol, int64_t day, KlinePeriod period = KlinePeriod::day,
                   KlineBook* other = nullptr) {
    const auto& s =
        (other ? *other : book)
            .series({SourceMode::tencent, DataSourceEndpoints::bundled(), symbol, period, day},
                    [this] { ++changes; });
    std::string text = s.loading ? "loading" : "";
    for (const KlineBar& b : s.bars) text += (text.empty() ? "" : " ") + b.date;
    if (s.error) text += (text.empty() ? "" : " ") + *s.error;
    return text;
  }
  void answer(size_t i, std::vector<KlineBar> bars, std::optional<std::string> error = {}) {
    std::exchange(source.klineRequests.at(i).second, nullptr)({std::move(bars), std::move(error)});
  }
};

TEST(KlineBook, OncePerExchangeDayKeptInTheFolderFailuresRetriedAfterAMinute) {
  Book b;
  EXPECT_EQ(b.show("600519", saturday), "loading");
  EXPECT_EQ(b.show("600519", saturday), "loading") << "one request while one is under way";
  b.answer(0, {{"2026-11-27", 1, 2, 0.5, 1.5, 10}});
  EXPECT_EQ(b.changes, 1);
  EXPECT_EQ(b.show("600519", saturday), "2026-11-27");
  ASSERT_EQ(b.source.klineRequests.size(), 1u);
  std::error_code error;
  EXPECT_EQ(readFile(b.folder.path() / "kline" / "kline-600519-day.json", error),
            R"({"day":20785,"bars":[{"date":"2026-11-27","open":1.0,"high":2.0,"low":0.5,)"
            R"("close":1.5,"volume":10.0}]})");

  // Started again the same day, the file answers; the next day asks, showing yesterday's bars.
  KlineBook again{b.source, b.clock, b.folder.path() / "kline"};
  EXPECT_EQ(b.show("600519", saturday, KlinePeriod::day, &again), "2026-11-27");
  EXPECT_EQ(b.source.klineRequests.size(), 1u);
  EXPECT_EQ(b.show("600519", saturday + 1), "loading 2026-11-27");
  EXPECT_EQ(b.source.klineRequests.back().first, "600519 day");

  // A failure is told and asked again only after a minute; a damaged file is asked past.
  EXPECT_EQ(b.show("00700", saturday, KlinePeriod::week), "loading");
  b.answer(2, {}, "K线请求失败");
  EXPECT_EQ(b.show("00700", saturday, KlinePeriod::week), "K线请求失败");
  b.clock.advance(59);
  EXPECT_EQ(b.show("00700", saturday, KlinePeriod::week), "K线请求失败");
  b.clock.advance(2);
  EXPECT_EQ(b.show("00700", saturday, KlinePeriod::week), "loading");
  std::ofstream(b.folder.path() / "kline" / "kline-NVDA-month.json") << R"({"day":20785,"bars":[)";
  EXPECT_EQ(b.show("NVDA", saturday, KlinePeriod::month), "loading");
  EXPECT_EQ(b.source.klineRequests.size(), 5u);
  EXPECT_EQ(KlineBook::fileName("../x y", KlinePeriod::week), "kline-.._2Fx_20y-week.json");
}

// Ending on the given day at the given price, in trading days, Mondays or firsts of the month,
// the same for the same arguments and different for another symbol.
TEST(KlineBook, TheDemonstrationSeries) {
  const std::pair<KlinePeriod, std::vector<const char*>> cases[] = {
      {KlinePeriod::day, {"2026-11-24", "2026-11-25", "2026-11-26", "2026-11-27"}},
      {KlinePeriod::week, {"2026-11-02", "2026-11-09", "2026-11-16", "2026-11-23"}},
      {KlinePeriod::month, {"2026-08-01", "2026-09-01", "2026-10-01", "2026-11-01"}},
  };
  for (const auto& [period, dates] : cases) {
    const auto bars = demoKline("600519", 1468.8, period, saturday, 4);
    std::vector<std::string> got;
    for (const KlineBar& bar : bars) {
      got.push_back(bar.date);
      EXPECT_TRUE(isValidBar(bar)) << bar.date;
    }
    EXPECT_EQ(got, std::vector<std::string>(dates.begin(), dates.end()));
    EXPECT_EQ(bars.back().close, 1468.8);
    EXPECT_EQ(demoKline("600519", 1468.8, period, saturday, 4), bars);
    EXPECT_NE(demoKline("000001", 1468.8, period, saturday, 4), bars);
  }
  EXPECT_EQ(demoKline("600519", 10, KlinePeriod::day, saturday).size(), 160u);
}

}  // namespace
}  // namespace tidemark
