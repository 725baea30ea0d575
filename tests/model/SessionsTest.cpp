#include <gtest/gtest.h>

#include "support/ModelHarness.h"

namespace tidemark {
namespace {

using test::ModelHarness;
using test::quote;
using List = std::vector<std::string>;

Date at(const char* iso) {
  return *parseISO8601(iso);
}

// A model beating from `start` on in `mode`, every feed answering every symbol stamped now.
std::unique_ptr<AppModel> startAt(ModelHarness& h, const char* start, const List& watchlist,
                                  SourceMode mode = SourceMode::tencent) {
  h.clock.set(at(start));
  std::vector<QuoteSnapshot> quotes;
  for (const std::string& symbol : watchlist.empty() ? AppModel::defaultWatchlist() : watchlist)
    quotes.push_back(quote(symbol, 100));
  for (SourceMode feed : {SourceMode::tencent, SourceMode::sina, SourceMode::stockSDK})
    h.source.answers[feed] = {quotes, std::nullopt};
  h.source.stampWith = &h.clock;
  auto m = h.make(true);
  m->setAutoRotate(false);
  if (!watchlist.empty()) m->setWatchlist(watchlist);
  m->setSourceMode(mode);
  return m;
}

// An instant in UTC (the exchange's local time beside it, worked out by hand), a market label, the
// state's text and whether the market is awake.
using StateCase = std::tuple<const char*, const char*, const char*, bool>;

void expectStates(std::initializer_list<StateCase> cases) {
  for (const auto& [instant, market, text, awake] : cases) {
    const auto exchange = exchangeOfLabel(market);
    ASSERT_TRUE(exchange) << market;
    const auto state = marketState(*exchange, at(instant));
    ASSERT_TRUE(state) << instant;
    EXPECT_EQ(stateText(*state), text) << instant << " " << market;
    EXPECT_EQ(isAwake(*exchange, at(instant)), awake) << instant << " " << market;
  }
}

// Wednesday 2026-11-25, UTC+8 all year.
TEST(Sessions, ShanghaiAndHongKongWithTheirLunchBreaks) {
  expectStates({
      {"2026-11-25T01:14:59Z", "A股", "盘前", false},       // 09:14:59
      {"2026-11-25T01:15:00Z", "A股", "盘前", true},        // 09:15
      {"2026-11-25T01:30:00Z", "A股基金", "交易中", true},  // 09:30
      {"2026-11-25T03:29:59Z", "A股", "交易中", true},      // 11:29:59
      {"2026-11-25T03:30:00Z", "A股", "午间休市", true},    // 11:30
      {"2026-11-25T04:59:59Z", "A股指数", "午间休市", true},
      {"2026-11-25T05:00:00Z", "A股", "交易中", true},       // 13:00
      {"2026-11-25T07:00:00Z", "A股", "已收盘", true},       // 15:00
      {"2026-11-25T07:09:59Z", "A股", "已收盘", true},       // 15:09:59
      {"2026-11-25T07:10:00Z", "A股", "已收盘", false},      // 15:10
      {"2026-11-25T03:59:59Z", "港股", "交易中", true},      // 11:59:59
      {"2026-11-25T04:00:00Z", "港股", "午间休市", true},    // 12:00
      {"2026-11-25T05:00:00Z", "港股基金", "交易中", true},  // 13:00
      {"2026-11-25T08:00:00Z", "港股指数", "已收盘", true},  // 16:00
      {"2026-11-25T08:10:00Z", "港股", "已收盘", false},     // 16:10
  });
}

TEST(Sessions, NewYorkInStandardAndDaylightSavingTime) {
  expectStates({
      // Standard time, UTC−5.
      {"2026-11-25T08:59:59Z", "美股", "已收盘", false},     // 03:59:59
      {"2026-11-25T09:00:00Z", "美股", "盘前", true},        // 04:00
      {"2026-11-25T14:30:00Z", "美股基金", "交易中", true},  // 09:30
      {"2026-11-25T21:00:00Z", "美股指数", "盘后", true},    // 16:00
      {"2026-11-26T00:59:59Z", "美股", "盘后", true},        // 19:59:59
      {"2026-11-26T01:00:00Z", "美股", "已收盘", false},     // 20:00
      // Daylight saving starts on Sunday 2026-03-08: 09:30 is 14:30Z before, 13:30Z after.
      {"2026-03-06T13:30:00Z", "美股", "盘前", true},     // Fri 08:30 EST
      {"2026-03-06T14:30:00Z", "美股", "交易中", true},   // Fri 09:30 EST
      {"2026-03-08T07:00:00Z", "美股", "休市", false},    // Sun 03:00 EDT
      {"2026-03-09T08:00:00Z", "美股", "盘前", true},     // Mon 04:00 EDT
      {"2026-03-09T13:30:00Z", "美股", "交易中", true},   // Mon 09:30 EDT
      {"2026-03-09T07:59:59Z", "美股", "已收盘", false},  // Mon 03:59:59 EDT
      // ... and ends on Sunday 2026-11-01.
      {"2026-10-30T13:30:00Z", "美股", "交易中", true},   // Fri 09:30 EDT
      {"2026-10-30T23:59:59Z", "美股", "盘后", true},     // Fri 19:59:59 EDT
      {"2026-10-31T00:00:00Z", "美股", "已收盘", false},  // Fri 20:00 EDT
      {"2026-11-02T13:30:00Z", "美股", "盘前", true},     // Mon 08:30 EST
  });
}

TEST(Sessions, WeekendsOnEachExchangesClockAndUnknownLabels) {
  expectStates({
      {"2026-11-27T16:00:00Z", "A股", "休市", false},   // Sat 00:00
      {"2026-11-29T15:59:59Z", "港股", "休市", false},  // Sun 23:59:59
      {"2026-11-29T16:00:00Z", "A股", "盘前", false},   // Mon 00:00
      {"2026-11-30T01:15:00Z", "A股", "盘前", true},    // Mon 09:15
      {"2026-11-28T00:59:59Z", "美股", "盘后", true},   // Fri 19:59:59 EST, Sat 08:59:59 in Beijing
      {"2026-11-28T05:00:00Z", "美股", "休市", false},  // Sat 00:00 EST
      {"2026-11-30T09:00:00Z", "美股", "盘前", true},   // Mon 04:00 EST
  });
  for (const char* none : {"", "B股", "港股通", "美股基金x", "场外基金"})
    EXPECT_EQ(exchangeOfLabel(none), std::nullopt) << none;
}

struct QuietCase {
  const char* what;
  const char* start;
  List watchlist;
  SourceMode mode;
  bool quiet;
  int refreshesIn600s;  // besides the one the mode change starts
};

// A beat every 0.5 s: a 2.6 s interval refreshes at every sixth beat, 3 s apart.
TEST(QuietRefresh, FollowsTheWatchedMarketsInTheLiveModes) {
  using enum SourceMode;
  const QuietCase cases[] = {
      {"trading in Shanghai", "2026-11-25T02:00:00Z", {}, tencent, false, 200},
      {"Saturday noon in Beijing", "2026-11-28T04:00:00Z", {}, automatic, true, 2},
      {"New York's Friday post-market", "2026-11-28T00:30:00Z", {}, sina, false, 200},
      {"New York unwatched", "2026-11-25T14:00:00Z", {"600519", "00700"}, stockSDK, true, 2},
      {"a mixed watchlist", "2026-11-25T14:00:00Z", {"600519", "NVDA"}, tencent, false, 200},
      {"an index on its exchange's hours", "2026-11-25T14:00:00Z", {"usIXIC"}, tencent, false, 200},
      {"static", "2026-11-28T04:00:00Z", {}, staticJSON, false, 200},
  };
  for (const QuietCase& c : cases) {
    ModelHarness h;
    auto m = startAt(h, c.start, c.watchlist, c.mode);
    h.scheduler.advance(0.5);
    EXPECT_EQ(m->quietRefresh(), c.quiet) << c.what;
    const size_t calls = h.source.calls.size();
    int refreshes = 0;
    for (int beat = 0; beat < 1200; ++beat) {
      const Date started = m->lastRefreshStartedAt();
      h.scheduler.advance(0.5);
      if (m->lastRefreshStartedAt() != started) ++refreshes;
    }
    EXPECT_EQ(refreshes, c.refreshesIn600s) << c.what;
    EXPECT_EQ(h.source.calls.size() - calls, isLive(c.mode) ? size_t(refreshes) : 0) << c.what;
    // The shipped snapshot keeps its own time, and reads stale.
    EXPECT_EQ(m->phase(), c.mode == staticJSON ? QuotePhase::stale : QuotePhase::live) << c.what;
  }
}

// Saturday in Beijing: a refresh every 300 s, current all the while, a manual one at once.
TEST(QuietRefresh, NeverStaleWhileAsleepAndAManualRefreshRunsAtOnce) {
  ModelHarness h;
  auto m = startAt(h, "2026-11-28T04:00:00Z", {});
  h.scheduler.advance(1);
  std::vector<double> refreshedAt;
  size_t calls = h.source.calls.size();
  for (int beat = 0; beat < 7200; ++beat) {  // an hour
    h.scheduler.advance(0.5);
    ASSERT_EQ(m->phase(), QuotePhase::live) << (beat + 1) * 0.5 << " s";
    if (h.source.calls.size() != calls) refreshedAt.push_back((beat + 1) * 0.5);
    calls = h.source.calls.size();
  }
  ASSERT_EQ(refreshedAt.size(), 12u);
  EXPECT_EQ(refreshedAt[0], 299.5);  // 300 s after the first start at 0.5 s, plus the debounce
  EXPECT_EQ(refreshedAt[1], 599.5);
  EXPECT_EQ(m->marketStateOf("A股"), MarketState::weekend);
  EXPECT_EQ(m->marketStateOf("其他"), std::nullopt);

  h.scheduler.advance(100);
  calls = h.source.calls.size();
  m->refresh();
  h.scheduler.advance(0.18);
  EXPECT_EQ(h.source.calls.size(), calls + 1);

  // Live data left alone past 315 s while asleep turns stale after all.
  m->setRefreshInterval(0);
  h.scheduler.advance(315);
  EXPECT_EQ(m->phase(), QuotePhase::live);
  h.scheduler.advance(0.5);
  EXPECT_EQ(m->phase(), QuotePhase::stale);
}

// Monday in Beijing: quiet until 09:15, then every 3 s, never stale though minutes old at 09:15.
TEST(QuietRefresh, AMarketWakesFifteenMinutesBeforeItsOpening) {
  ModelHarness h;
  auto m = startAt(h, "2026-11-30T01:12:00Z", {"600519"});
  std::vector<double> startedAt;
  for (int beat = 1; beat <= 400; ++beat) {  // to 09:15:20
    const Date started = m->lastRefreshStartedAt();
    h.scheduler.advance(0.5);
    ASSERT_EQ(m->phase(), QuotePhase::live) << beat * 0.5 << " s";
    if (m->lastRefreshStartedAt() != started) startedAt.push_back(beat * 0.5);
  }
  EXPECT_EQ(startedAt, (std::vector<double>{180, 183, 186, 189, 192, 195, 198}));
  EXPECT_FALSE(m->quietRefresh());
}

// The wall clock jumps while the timers keep their pace.
TEST(QuietRefresh, ClockJumpsWakeTheRefreshOnTheNextBeatWithoutAStorm) {
  const struct {
    const char* what;
    const char* start;
    double jump;
    bool quietAfter;
    int refreshesIn30s;  // after the jump
  } cases[] = {
      {"Friday 14:00 to Monday 10:00", "2026-11-27T06:00:00Z", 68 * 3600, false, 10},
      {"back from 14:00 to 13:00", "2026-11-25T06:00:00Z", -3600, false, 10},
      {"Saturday noon to Monday 09:20", "2026-11-28T04:00:00Z", 45 * 3600 + 20 * 60, false, 10},
      {"back from 10:00 to 03:00", "2026-11-25T02:00:00Z", -7 * 3600, true, 1},
  };
  for (const auto& c : cases) {
    ModelHarness h;
    auto m = startAt(h, c.start, {"600519", "00700"});
    h.scheduler.advance(2);
    h.scheduler.jumpClock(c.jump);
    const size_t calls = h.source.calls.size();
    h.scheduler.advance(0.5);
    EXPECT_EQ(h.source.calls.size(), calls) << c.what << ": the debounce";
    h.scheduler.advance(0.2);
    EXPECT_EQ(h.source.calls.size(), calls + 1) << c.what << ": at the next beat";
    h.scheduler.advance(29.3);
    EXPECT_EQ(int(h.source.calls.size() - calls), c.refreshesIn30s) << c.what;
    EXPECT_EQ(m->quietRefresh(), c.quietAfter) << c.what;
    EXPECT_EQ(m->phase(), QuotePhase::live) << c.what;
  }
}

}  // namespace
}  // namespace tidemark
