#include <gtest/gtest.h>

#include <functional>

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
                                  SourceMode mode = SourceMode::tencent, bool timers = true) {
  h.clock.set(at(start));
  std::vector<QuoteSnapshot> quotes;
  for (const std::string& symbol : watchlist.empty() ? AppModel::defaultWatchlist() : watchlist)
    quotes.push_back(quote(symbol, 100));
  for (SourceMode feed : {SourceMode::tencent, SourceMode::sina, SourceMode::stockSDK})
    h.source.answers[feed] = {quotes, std::nullopt};
  h.source.stampWith = &h.clock;
  auto m = h.make(timers);
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

// Something done to the model (or its clock) at a moment after the start.
using Step = std::pair<double, std::function<void(ModelHarness&, AppModel&)>>;

// What the heartbeat's rules did, at every half second where something changed: the last
// refresh's start, the phase, the active security and the quiet cadence. `plain`: a beat called
// every half second by hand instead of the model's own sleeping one.
List beatTrace(bool plain, const char* start, SourceMode mode, const std::vector<Step>& steps,
               double seconds) {
  ModelHarness h;
  auto m = startAt(h, start, {}, mode, !plain);
  const Date origin = h.clock.now();
  List trace;
  std::string last;
  size_t next = 0;
  double passed = 0;  // by the timers' pace, which a jump of the clock leaves alone
  const auto until = [&](double moment) {
    h.scheduler.advance(moment - passed);
    passed = moment;
  };
  for (int beat = 1; beat * 0.5 <= seconds; ++beat) {
    for (; next < steps.size() && steps[next].first < beat * 0.5; ++next) {
      until(steps[next].first);
      steps[next].second(h, *m);
    }
    until(beat * 0.5);
    if (plain) m->heartbeat();
    const std::string now = std::to_string(m->lastRefreshStartedAt() - origin) + " " +
                            std::string(rawValue(m->phase())) + " " + m->activeID() +
                            (m->quietRefresh() ? " quiet" : "");
    if (now != last) trace.push_back(std::to_string(beat * 0.5) + ": " + now);
    last = now;
  }
  return trace;
}

// The heartbeat sleeps through the beats at which none of its rules can act, and wakes at the
// same beats as one that never sleeps, also when what the rules go by changes between beats.
TEST(Heartbeat, SleepsThroughIdleBeatsAndActsOnTheSameBeatsAsAPlainOne) {
  const auto act = [](auto change) { return [change](ModelHarness&, AppModel& m) { change(m); }; };
  const auto jump = [](double by) {
    return [by](ModelHarness& h, AppModel&) { h.scheduler.jumpClock(by); };
  };
  const struct {
    const char* what;
    const char* start;
    SourceMode mode;
    std::vector<Step> steps;
    double seconds;
  } cases[] = {
      {"the demonstration, its settings changed between beats",
       "2026-11-25T02:00:00Z",
       SourceMode::mock,
       {{0.1, act([](AppModel& m) { m.setAutoRotate(true); })},
        {10.2, act([](AppModel& m) { m.setRefreshInterval(0); })},
        {27.3, act([](AppModel& m) { m.setRefreshInterval(4); })},
        {31.1, act([](AppModel& m) { m.setAutoRotate(false); })},
        {40.7, act([](AppModel& m) { m.setAutoRotate(true); })},
        {45.2, act([](AppModel& m) { m.simulatePhase(QuotePhase::offline); })},
        {52.9, act([](AppModel& m) { m.simulatePhase(QuotePhase::live); })},
        {60.4, act([](AppModel& m) { m.select("NVDA"); })},
        // Just after a beat: a jump between beats starts the beats afresh half a second on.
        {70, jump(-3600)},
        {80, jump(7200)}},
       100},
      {"a Saturday night on a live source, the demonstration for a while",
       "2026-11-28T04:00:00Z",
       SourceMode::tencent,
       {{100.3, act([](AppModel& m) { m.setSourceMode(SourceMode::mock); })},
        {130.1, act([](AppModel& m) { m.setSourceMode(SourceMode::tencent); })}},
       500},
      {"Shanghai waking at 09:15, New York added and taken out",
       "2026-11-30T01:14:00Z",
       SourceMode::tencent,
       {{20.4, act([](AppModel& m) { m.setWatchlist({"NVDA"}); })},
        {40.6, act([](AppModel& m) { m.setWatchlist(AppModel::defaultWatchlist()); })}},
       120},
  };
  for (const auto& c : cases) {
    const List plain = beatTrace(true, c.start, c.mode, c.steps, c.seconds);
    EXPECT_GT(plain.size(), 8u) << c.what;
    EXPECT_EQ(beatTrace(false, c.start, c.mode, c.steps, c.seconds), plain) << c.what;
  }
}

// The event loop's wake-ups over ten minutes, where a plain beat would have 1,200.
TEST(Heartbeat, WakesOnlyWhereARuleActs) {
  const struct {
    const char* what;
    const char* start;
    SourceMode mode;
    double interval;
    size_t runs;
  } cases[] = {
      // Each refresh's beat and its load 0.18 s later.
      {"the demonstration every 3 s", "2026-11-25T02:00:00Z", SourceMode::mock, 3, 400},
      // Each whole minute for the sessions, and two quiet refreshes' beats and loads.
      {"a live source on Saturday", "2026-11-28T04:00:00Z", SourceMode::tencent, 3, 14},
  };
  for (const auto& c : cases) {
    ModelHarness h;
    auto m = startAt(h, c.start, {}, c.mode);
    m->setRefreshInterval(c.interval);
    h.scheduler.advance(60.1);
    const size_t runs = h.scheduler.runCount();
    h.scheduler.advance(600);
    EXPECT_EQ(h.scheduler.runCount() - runs, c.runs) << c.what;
  }
}

}  // namespace
}  // namespace tidemark
