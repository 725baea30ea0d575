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
    Preferences p;
    p.sourceMode = SourceMode::tencent;
    h.store.setData(AppModel::preferencesKey, toJson(p).dump());
    auto m = h.make(true);
    h.scheduler.runDue();
    EXPECT_EQ(m->sourceConfigStatus(), status);
    EXPECT_EQ(m->sourceConfigRevision(), revision);
    EXPECT_FALSE(m->sourceBootstrapInFlight());
    EXPECT_NE(m->phase(), QuotePhase::loading);
    EXPECT_FALSE(h.source.calls.empty()) << "quotes are loaded whatever the probes said";
    const bool adopted = probes.size() == 2;
    EXPECT_EQ(h.store.data(AppModel::sourceManifestKey).has_value(), adopted);
    if (adopted) {
      EXPECT_EQ(h.source.probedWith[1], "https://m.gtimg.cn/q=");
    }
  }
}

TEST(Bootstrap, AnAdoptedManifestIsUsedOnTheNextStart) {
  ModelHarness h;
  h.store.setData(AppModel::sourceManifestKey, manifest(7));
  auto m = h.make();
  EXPECT_EQ(m->sourceConfigStatus(), "使用缓存地址 r7");
  EXPECT_EQ(m->dataSourceEndpoints().tencentQuote, "https://m.gtimg.cn/q=");
  // A stored manifest that has become invalid is passed over silently.
  h.store.setData(AppModel::sourceManifestKey, manifest(7, "http://m.gtimg.cn/q="));
  auto plain = h.make();
  EXPECT_EQ(plain->sourceConfigStatus(), "使用内置地址");
  EXPECT_EQ(plain->dataSourceEndpoints(), DataSourceEndpoints::bundled());
}

TEST(Bootstrap, WhileItRunsNothingElseLoads) {
  ModelHarness h;
  auto m = h.make(true);               // without a manifest URL the refusal arrives on a later turn
  m->setSourceMode(SourceMode::sina);  // probe says no: the manifest answer is posted
  EXPECT_TRUE(m->sourceBootstrapInFlight());
  EXPECT_EQ(m->phase(), QuotePhase::loading);
  EXPECT_TRUE(m->isLoading());
  m->setSourceMode(SourceMode::tencent);  // no second bootstrap
  m->refresh();
  EXPECT_FALSE(m->hasPendingRefresh());
  EXPECT_EQ(h.source.probedWith.size(), 1u);
  h.scheduler.runDue();
  EXPECT_FALSE(m->isLoading());
  EXPECT_EQ(h.source.calls.front().source, SourceMode::tencent);
}

TEST(Intraday, GuardsThrottleAndSeries) {
  ModelHarness h;
  h.source.answers[SourceMode::tencent] = {{test::quote("600519", 10), test::quote("00700", 9)},
                                           {}};
  auto m = h.make();
  const QuoteSnapshot moutai = *m->quote("600519");  // a demonstration quote
  m->fetchIntraday(moutai);
  EXPECT_TRUE(h.source.intradayRequests.empty()) << "mock mode never asks";

  m->setSourceMode(SourceMode::tencent);  // the active 600519 now has a live quote: asked once
  ASSERT_EQ(h.source.intradayRequests.size(), 1u);
  h.clock.advance(59);
  m->fetchIntraday(*m->quote("600519"));
  EXPECT_EQ(h.source.intradayRequests.size(), 1u);
  h.clock.advance(1);
  m->fetchIntraday(*m->quote("600519"));
  EXPECT_EQ(h.source.intradayRequests.size(), 2u);

  QuoteSnapshot fund = test::quote("510300", 4);
  fund.market = "A股基金";
  m->fetchIntraday(fund);
  h.source.intradayAvailable = false;
  m->fetchIntraday(*m->quote("00700"));
  EXPECT_EQ(h.source.intradayRequests.size(), 2u);
  h.source.intradayAvailable = true;
  m->fetchIntraday(*m->quote("00700"));  // not throttled by the refused attempt
  EXPECT_EQ(h.source.intradayRequests.size(), 3u);

  const QuoteSnapshot active = *m->quote("600519");
  h.source.intradayRequests[0].second(std::vector<double>{10.5});
  EXPECT_FALSE(m->hasRealIntraday(active));
  EXPECT_EQ(m->priceSeries(active), active.trend());
  h.source.intradayRequests[1].second(std::vector<double>{10.5, 10.6});
  h.source.intradayRequests[2].second(std::nullopt);
  EXPECT_TRUE(m->hasRealIntraday(active));
  EXPECT_EQ(m->priceSeries(active), (std::vector<double>{10.5, 10.6}));
  EXPECT_EQ(m->intradaySeries().size(), 1u);
}

}  // namespace
}  // namespace tidemark
