#include <gtest/gtest.h>

#include "support/ModelHarness.h"

namespace tidemark {
namespace {

using test::ModelHarness;

const char* manifestURL = "https://raw.githubusercontent.com/tidemark-app/config/main/c.json";

std::string manifest(int64_t revision, const std::string& tencentQuote = "https://m.gtimg.cn/q=") {
  DataSourceManifest m{1, revision, DataSourceEndpoints::bundled()};
  m.endpoints.tencentQuote = tencentQuote;
  return toJson(m).dump();
}

TEST(Bootstrap, StatusTextsForEveryEnd) {
  // The probes' answers, the manifest served, whether the app names the manifest's URL, then the
  // status and revision. A second probe follows only an adopted manifest, which is stored.
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
    EXPECT_EQ(m->sourceConfigStatus(), status);
    EXPECT_EQ(m->sourceConfigRevision(), revision);
    EXPECT_FALSE(h.source.calls.empty()) << "quotes are loaded whatever the probes said";
    const bool adopted = probes.size() == 2;
    EXPECT_EQ(h.store.data(AppModel::sourceManifestKey).has_value(), adopted);
    if (!adopted) continue;
    EXPECT_EQ(h.source.probedWith.at(1), "https://m.gtimg.cn/q=");
    auto next = h.make();  // the next start uses it
    EXPECT_EQ(next->sourceConfigStatus(), "使用缓存地址 r" + std::to_string(revision));
    EXPECT_EQ(next->dataSourceEndpoints().tencentQuote, "https://m.gtimg.cn/q=");
  }
}

TEST(Bootstrap, AStoredManifestThatHasBecomeInvalidIsPassedOverSilently) {
  ModelHarness h;
  h.store.setData(AppModel::sourceManifestKey, manifest(7, "http://m.gtimg.cn/q="));
  auto m = h.make();
  EXPECT_EQ(m->sourceConfigStatus(), "使用内置地址");
  EXPECT_EQ(m->dataSourceEndpoints(), DataSourceEndpoints::bundled());
}

TEST(Bootstrap, WhileItRunsNothingElseLoads) {
  ModelHarness h;
  auto m = h.make(true);               // without a manifest URL the refusal arrives on a later turn
  m->setSourceMode(SourceMode::sina);  // probe says no: the manifest answer is posted
  EXPECT_TRUE(m->sourceBootstrapInFlight());
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
  h.source.intradayRequests.at(0).second(std::vector<double>{10.5});
  EXPECT_FALSE(m->hasRealIntraday(active));
  EXPECT_EQ(m->priceSeries(active), active.trend());
  h.source.intradayRequests.at(1).second(std::vector<double>{10.5, 10.6});
  h.source.intradayRequests.at(2).second(std::nullopt);
  EXPECT_TRUE(m->hasRealIntraday(active));
  EXPECT_EQ(m->priceSeries(active), (std::vector<double>{10.5, 10.6}));
  EXPECT_EQ(m->intradaySeries().size(), 1u);
}

}  // namespace
}  // namespace tidemark
