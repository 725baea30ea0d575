#include <gtest/gtest.h>

#include <fstream>

#include "model/StaticSnapshot.h"
#include "support/ModelHarness.h"

namespace tidemark {
namespace {

using test::ModelHarness;
using test::quote;
using List = std::vector<std::string>;

// Every feed fails, with its text or (sina) without one and for an emptied watchlist.
TEST(Refresh, LiveModesAskEveryFeedInTheirOrder) {
  using enum SourceMode;
  const std::tuple<SourceMode, std::vector<SourceMode>, const char*> cases[] = {
      {automatic, {stockSDK, tencent, sina}, "K；T；S · 保留上一份快照"},
      {tencent, {tencent, stockSDK, sina}, "T；K；S · 保留上一份快照"},
      {sina, {sina, stockSDK, tencent}, "部分标的暂无有效报价 · 保留上一份快照"},
  };
  for (const auto& [mode, order, text] : cases) {
    ModelHarness h;
    if (mode != sina)
      h.source.answers = {{tencent, {{}, "T"}}, {sina, {{}, "S"}}, {stockSDK, {{}, "K"}}};
    auto m = h.make();
    if (mode == sina) m->setWatchlist({});
    const Date before = m->updatedAt();
    h.clock.advance(3);
    m->setSourceMode(mode);
    std::vector<SourceMode> called;
    for (const auto& call : h.source.calls) called.push_back(call.source);
    ASSERT_EQ(called, order) << rawValue(mode);
    EXPECT_EQ(h.source.calls[0].symbols, AppModel::defaultWatchlist());
    EXPECT_EQ(m->phase(), QuotePhase::degraded);
    EXPECT_EQ(m->lastError(), text);
    EXPECT_EQ(m->updatedAt(), before);  // nothing new arrived
  }
}

TEST(Refresh, LaterFeedsOnlyFillWhatEarlierOnesLeftOpen) {
  ModelHarness h;
  const Date t = h.clock.now();
  h.source.answers = {
      {SourceMode::stockSDK, {{quote("600519", 1, 10, "stock-sdk", t + 5)}, std::nullopt}},
      {SourceMode::tencent,
       {{quote("600519", 2, 10, "tencent", t + 9), quote("00700", 3, 10, "tencent", t + 7)},
        "部分失败"}},
      {SourceMode::sina, {{quote("NVDA", 4), quote("03033", 5), quote("000858", 6)}, std::nullopt}},
  };
  h.source.holdAnswers = true;
  auto m = h.make();
  m->setSourceMode(SourceMode::automatic);
  h.clock.advance(0.2);
  h.source.releaseNext();
  h.clock.advance(0.1456);
  h.source.releaseNext();
  h.source.releaseNext();
  EXPECT_EQ(h.source.calls[1].symbols, (List{"00700", "NVDA", "03033", "000858"}));
  EXPECT_EQ(h.source.calls[2].symbols, (List{"NVDA", "03033", "000858"}));
  EXPECT_EQ(m->phase(), QuotePhase::live);
  EXPECT_EQ(m->lastError(), std::nullopt);
  EXPECT_EQ(m->latencyMS(), 345);
  EXPECT_EQ(m->updatedAt(), t + 7);  // the latest collected (Tencent's later 600519 was not)
  EXPECT_EQ(m->sourceLabel(), "stock-sdk 行情");
}

TEST(Refresh, LoadsFollowTheWatchlistAndTheMode) {
  ModelHarness h;
  h.source.answers[SourceMode::tencent] = {{quote("600519", 99), quote("AAPL", 7)}, std::nullopt};
  h.source.holdAnswers = true;  // a slow feed
  auto m = h.make();
  m->setSourceMode(SourceMode::tencent);
  m->setWatchlist({"000858", "03033", "NVDA", "00700", "600519"});
  m->loadSource(false);  // the same set in another order: joins the load under way
  ASSERT_EQ(h.source.calls.size(), 1u);
  m->add("AAPL");
  m->loadSource(false);  // a changed watchlist: a new load at once
  ASSERT_EQ(h.source.calls.size(), 2u);
  EXPECT_EQ(h.source.calls[1].symbols.back(), "AAPL");
  while (h.source.held.size() > 1) h.source.releaseNext(1);  // the new load's feeds answer
  EXPECT_EQ(m->quote("AAPL")->price, 7);
  h.source.answers[SourceMode::tencent] = {{quote("AAPL", 1)}, std::nullopt};
  h.source.releaseNext();  // the older load answers late: dropped
  EXPECT_EQ(m->quote("AAPL")->price, 7);
  EXPECT_EQ(h.source.calls.size(), 4u);  // the dropped load asked nothing further
  m->loadSource(false);
  m->setSourceMode(SourceMode::mock);  // another mode supersedes the load under way
  h.source.releaseNext();
  EXPECT_EQ(m->activeQuote()->source, "mock");
  EXPECT_TRUE(h.source.held.empty());
}

TEST(Refresh, HeldQuotesAreKeptOnceEachInOrderWhenALoadMissesThem) {
  ModelHarness h;
  auto m = h.make();
  List watched{"600519"};
  for (int i = 0; i < 40; ++i) {
    // Long names make the copies allocate.
    QuoteSnapshot q = quote("S" + std::to_string(i), 10 + i);
    q.name = "a name long enough to need its own allocation " + q.id;
    m->add(q);
    watched.push_back(q.id);
  }
  m->setWatchlist(watched);
  // The load gives the last two; the 39 it missed are appended behind them, growing the list.
  h.source.answers[SourceMode::tencent] = {{quote("S38", 1), quote("S39", 2)}, std::nullopt};
  m->setSourceMode(SourceMode::tencent);
  List ids;
  for (const QuoteSnapshot& q : m->quotes()) ids.push_back(q.id);
  List expected{"S38", "S39"};
  expected.insert(expected.end(), watched.begin(), watched.end() - 2);
  EXPECT_EQ(ids, expected);
}

TEST(Heartbeat, AutomaticRefreshPausesWhereItShould) {
  const std::tuple<const char*, std::function<void(AppModel&)>, bool> cases[] = {
      {"interval 0", [](AppModel& m) { m.setRefreshInterval(0); }, false},
      {"offline", [](AppModel& m) { m.simulatePhase(QuotePhase::offline); }, false},
      {"loading", [](AppModel& m) { m.setPhase(QuotePhase::loading); }, false},
      {"stale with a text", [](AppModel& m) { m.simulatePhase(QuotePhase::stale); }, false},
      {"stale without text", [](AppModel& m) { m.setPhase(QuotePhase::stale); }, true},
  };
  for (const auto& [what, arrange, refreshes] : cases) {
    ModelHarness h;
    auto m = h.make(true);
    m->setAutoRotate(false);
    arrange(*m);
    const Date before = m->updatedAt();
    h.scheduler.advance(3.5);  // the 2.6 s interval, seen at the 3.0 s beat, plus the debounce
    EXPECT_EQ(m->updatedAt() != before, refreshes) << what;
  }
}

TEST(Heartbeat, RotatesEverySevenSecondsAndLiveDataTurnsStaleAfterFifteen) {
  ModelHarness h;
  auto m = h.make(true);
  m->setRefreshInterval(0);
  h.scheduler.advance(6.5);
  EXPECT_EQ(m->activeID(), "600519");
  h.scheduler.advance(0.5);
  EXPECT_EQ(m->activeID(), "00700");
  h.scheduler.advance(3);
  m->select("NVDA");  // a manual choice restarts the period
  h.scheduler.advance(5);
  EXPECT_EQ(m->phase(), QuotePhase::live);
  h.scheduler.advance(0.5);
  EXPECT_EQ(m->phase(), QuotePhase::stale);
  h.scheduler.advance(1);
  EXPECT_EQ(m->activeID(), "NVDA");
  h.scheduler.advance(0.5);
  EXPECT_EQ(m->activeID(), "03033");
}

TEST(StaticSnapshot, TheShippedFileIsShownWithItsOwnTimeAndMarketLabels) {
  ModelHarness h;
  auto m = h.make();
  m->setSourceMode(SourceMode::staticJSON);
  EXPECT_EQ(m->quote("03033")->market, "港股基金");
  EXPECT_EQ(m->updatedAt(), *parseISO8601("2026-10-16T15:00:00+08:00"));
  const std::pair<const char*, const char*> codes[] = {
      {"CN", "A股"},          {"HK", "港股"},          {"US", "美股"},
      {"CN_FUND", "A股基金"}, {"HK_FUND", "港股基金"}, {"US_FUND", "美股基金"}};
  for (const auto& [code, label] : codes) EXPECT_EQ(staticMarketLabel(code), label) << code;
  for (const char* other : {"cn", "JP", ""}) EXPECT_EQ(staticMarketLabel(other), other) << other;
}

TEST(StaticSnapshot, AFileThatCannotBeUsedGivesWayToTheEmbeddedSnapshot) {
  const std::string fresh = formatISO8601(test::testStart() + -10);
  const std::string moutai = R"({"symbol":"600519","market":"CN","name":"贵州茅台","prevClose":1,)"
                             R"("high":1,"low":1,"volume":1,"price":)";
  const auto file = [](const std::string& at, const std::string& quotes) {
    return R"({"updatedAt":")" + at + R"(","quotes":[)" + quotes + "]}";
  };
  const std::pair<std::optional<std::string>, const char*> cases[] = {
      {std::nullopt, "应用中未找到 tidemark-quotes.json"},
      {"[]", "静态快照格式无效"},
      {file("yesterday", moutai + "5}"), "静态快照缺少有效的更新时间或行情"},
      {file(fresh, ""), "静态快照缺少有效的更新时间或行情"},
      {file(fresh, moutai + "5}," + moutai + "6}"), "静态快照包含重复代码或无效价格"},
      {file(fresh, moutai + "0}"), "静态快照包含重复代码或无效价格"},
      {file(fresh, moutai + "5}"), nullptr},  // ten seconds old: live
  };
  for (const auto& [content, message] : cases) {
    ModelHarness h;
    h.bundle.resourceDirectory = h.folder.path();
    if (content) std::ofstream(h.folder.path() / "tidemark-quotes.json") << *content;
    auto m = h.make();
    m->setSourceMode(SourceMode::staticJSON);
    EXPECT_EQ(m->lastError().value_or(""),
              message ? message + std::string(" · 已使用内置离线快照") : "");
    EXPECT_EQ(m->updatedAt(), message ? embeddedSnapshotDate() : *parseISO8601(fresh));
    EXPECT_EQ(m->phase(), message ? QuotePhase::stale : QuotePhase::live);
    EXPECT_EQ(m->quote("00700")->source, message ? "embedded_fallback" : "mock");  // kept
    if (message) continue;
    EXPECT_EQ(*m->quote("600519"), (QuoteSnapshot{"600519", "A股", "贵州茅台", 5, 1, 1, 1, 1,
                                                  m->updatedAt(), "static_json"}));
  }
}

// Stock-sdk over Tencent and Sina: see Refresh.LaterFeeds...; the mode labels: the enum tests.
TEST(SourceLabel, TheFirstRuleThatAppliesWins) {
  using enum SourceMode;
  const std::tuple<List, SourceMode, const char*> cases[] = {
      {{"sina", "stock-sdk", "embedded_fallback"}, tencent, "内置离线快照"},
      {{"stock-api-x", "sina", "tencent"}, sina, "腾讯行情"},
      {{"stock-api-x", "sina"}, tencent, "新浪行情"},
      {{"static_json", "stock-api.em"}, mock, "stock-api 行情"},
      {{"xstock-api", "Stock-API"}, automatic, "自动容错"},
  };
  for (const auto& [sources, mode, text] : cases) {
    std::vector<QuoteSnapshot> quotes;
    for (const std::string& source : sources) quotes.push_back(quote("600519", 1, 1, source));
    EXPECT_EQ(sourceLabel(quotes, mode), text) << text;
  }
}

TEST(MockSource, DebouncedLoadsMovePricesAndARestartResetsThem) {
  ModelHarness h;
  auto m = h.make();
  const double opening = m->quote("600519")->price;
  EXPECT_EQ(m->quotes().size(), 19u);  // the whole demonstration set, for the watchlist manager
  m->refresh();  // a refresh waits 0.18 s, and each request starts the wait again
  h.scheduler.advance(0.1);
  m->refresh();
  h.scheduler.advance(0.17);
  EXPECT_EQ(m->quote("600519")->price, opening);
  h.scheduler.advance(0.01);
  const double moved = m->quote("600519")->price;
  EXPECT_NE(moved, opening);
  EXPECT_LT(std::abs(moved / opening - 1), 0.006);
  m->loadSource(false);
  EXPECT_NE(m->quote("600519")->price, moved);
  m->loadSource(true);
  EXPECT_EQ(m->quote("600519")->price, opening);
}

// The self-test checks the snapshot time stays; each phase cancels the refresh left pending.
TEST(SimulatePhase, SetsTheTextsAndAsksForARefreshWhenLive) {
  const std::tuple<QuotePhase, std::optional<std::string>, bool> cases[] = {
      {QuotePhase::stale, "演示过期状态 · 请手动刷新", false},
      {QuotePhase::offline, "演示离线状态 · 自动刷新已暂停", false},
      {QuotePhase::degraded, "演示降级状态 · 数据可能延迟", false},
      {QuotePhase::live, std::nullopt, true},
      {QuotePhase::loading, std::nullopt, false},
  };
  ModelHarness h;
  auto m = h.make();
  for (const auto& [phase, text, refreshes] : cases) {
    h.clock.advance(1);
    m->simulatePhase(phase);
    EXPECT_EQ(m->phase(), phase);
    EXPECT_EQ(m->lastError(), text);
    EXPECT_EQ(m->hasPendingRefresh(), refreshes);
    EXPECT_EQ(m->lastRefreshStartedAt(), h.clock.now());
  }
}

const char* manifestURL = "https://raw.githubusercontent.com/tidemark-app/config/main/c.json";

std::string manifest(int64_t revision, const std::string& tencentQuote = "https://m.gtimg.cn/q=") {
  DataSourceManifest m{1, revision, DataSourceEndpoints::bundled()};
  m.endpoints.tencentQuote = tencentQuote;
  return toJson(m).dump();
}

TEST(Bootstrap, StatusTextsForEveryEnd) {
  // Probes' answers, manifest served, whether the app names its URL; status and revision.
  const std::tuple<std::vector<bool>, std::optional<std::string>, bool, const char*, int64_t>
      cases[] = {
          {{true}, std::nullopt, true, "行情地址可用 · r1", 1},
          {{false}, manifest(5), false, "远程更新不可用 · 使用缓存地址", 1},
          {{false}, std::nullopt, true, "远程更新不可用 · 使用缓存地址", 1},
          {{false}, manifest(0), true, "远程更新不可用 · 使用缓存地址", 1},  // older
          {{false, true}, manifest(5), true, "远程地址已更新并验证 · r5", 5},
          {{false, false}, manifest(5), true, "已更新地址 · 部分源仍不可用", 5},
          {{false, true}, manifest(1), true, "远程地址已更新并验证 · r1", 1},  // equal: adopted
      };
  for (const auto& [probes, body, withURL, status, revision] : cases) {
    SCOPED_TRACE(testing::Message() << status << " " << body.value_or("no manifest"));
    ModelHarness h;
    if (withURL) h.bundle.info["StockDataSourceConfigURL"] = manifestURL;
    h.source.probeAnswers = probes;
    h.source.manifestBody = body;
    auto m = h.make(true);
    m->setSourceMode(SourceMode::tencent);
    h.scheduler.runDue();
    EXPECT_EQ(m->sources().status, status);
    EXPECT_EQ(m->sources().revision, revision);
    EXPECT_FALSE(h.source.calls.empty()) << "quotes are loaded whatever the probes said";
    const bool adopted = probes.size() == 2;
    EXPECT_EQ(h.store.data(storeKeys::sourceManifest).has_value(), adopted);
    if (!adopted) continue;
    EXPECT_EQ(h.source.probedWith.at(1), "https://m.gtimg.cn/q=");
    auto next = h.make();  // the next start uses it
    EXPECT_EQ(next->sources().status, "使用缓存地址 r" + std::to_string(revision));
    EXPECT_EQ(next->sources().endpoints.tencentQuote, "https://m.gtimg.cn/q=");
  }
}

TEST(Bootstrap, AStoredManifestThatHasBecomeInvalidIsPassedOverSilently) {
  ModelHarness h;
  h.store.setData(storeKeys::sourceManifest, manifest(7, "http://m.gtimg.cn/q="));
  auto m = h.make();
  EXPECT_EQ(m->sources().status, "使用内置地址");
  EXPECT_EQ(m->sources().endpoints, DataSourceEndpoints::bundled());
}

TEST(Bootstrap, WhileItRunsNothingElseLoads) {
  ModelHarness h;
  auto m = h.make(true);               // without a manifest URL the refusal arrives on a later turn
  m->setSourceMode(SourceMode::sina);  // probe says no: the manifest answer is posted
  EXPECT_TRUE(m->sources().bootstrapInFlight);
  EXPECT_EQ(m->phase(), QuotePhase::loading);
  m->setSourceMode(SourceMode::tencent);  // no second bootstrap
  m->refresh();
  EXPECT_FALSE(m->hasPendingRefresh());
  EXPECT_EQ(h.source.probedWith.size(), 1u);
  h.scheduler.runDue();
  EXPECT_FALSE(m->isLoading());
  EXPECT_EQ(h.source.calls.at(0).source, SourceMode::tencent);
}

TEST(Intraday, GuardsThrottleAndSeries) {
  ModelHarness h;
  h.source.answers[SourceMode::tencent] = {{test::quote("600519", 10), test::quote("00700", 9)}};
  auto m = h.make();
  m->fetchIntraday(*m->quote("600519"));  // a demonstration quote: mock mode never asks
  EXPECT_TRUE(h.source.intradayRequests.empty());
  m->setSourceMode(SourceMode::tencent);  // the active 600519 now has a live quote: asked once
  ASSERT_EQ(h.source.intradayRequests.size(), 1u);
  h.clock.advance(59);
  m->fetchIntraday(*m->quote("600519"));
  EXPECT_EQ(h.source.intradayRequests.size(), 1u);
  h.clock.advance(1);
  m->fetchIntraday(*m->quote("600519"));
  EXPECT_EQ(h.source.intradayRequests.size(), 2u);
  m->fetchIntraday({"510300", "A股基金", "沪深300ETF", 4, 4, 4, 4, 1, {}, "tencent"});
  h.source.intradayAvailable = false;
  m->fetchIntraday(*m->quote("00700"));
  EXPECT_EQ(h.source.intradayRequests.size(), 2u);
  h.source.intradayAvailable = true;
  m->fetchIntraday(*m->quote("00700"));  // not throttled by the refused attempt
  EXPECT_EQ(h.source.intradayRequests.size(), 3u);
  const QuoteSnapshot active = *m->quote("600519");
  h.source.intradayRequests.at(0).second({std::vector<double>{10.5}});
  EXPECT_FALSE(m->intraday().hasReal(active));
  EXPECT_EQ(m->intraday().prices(active), active.trend());
  h.source.intradayRequests.at(1).second({std::vector<double>{10.5, 10.6}});
  EXPECT_TRUE(m->intraday().hasReal(active));
  EXPECT_EQ(m->intraday().prices(active), (std::vector<double>{10.5, 10.6}));
  // A failure keeps the minute's wait; a request that never ran (superseded) does not.
  h.source.intradayRequests.at(2).second({});
  m->fetchIntraday(*m->quote("00700"));
  EXPECT_EQ(h.source.intradayRequests.size(), 3u);
  h.clock.advance(60);
  m->fetchIntraday(*m->quote("00700"));
  h.source.intradayRequests.at(3).second({std::nullopt, true});
  m->fetchIntraday(*m->quote("00700"));
  EXPECT_EQ(h.source.intradayRequests.size(), 5u);
  EXPECT_EQ(m->intraday().all().size(), 1u);
}

}  // namespace
}  // namespace tidemark
