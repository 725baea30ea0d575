// One whole live load: the model in automatic mode against loopback feeds and the real bridge.

#include <gtest/gtest.h>

#include <QTest>

#include "model/AppModel.h"
#include "platform/QtHttpClient.h"
#include "platform/QtProcessRunner.h"
#include "platform/QtScheduler.h"
#include "sources/LiveMarketData.h"
#include "support/LoopbackServer.h"

namespace tidemark {
namespace {

TEST(LiveLoad, TheBridgeFailsTencentAnswersPartAndSinaTheRest) {
  const std::string tencent = test::testData("tencent-basic.gbk");
  const std::string sina = test::testData("sina-basic.gbk");
  test::LoopbackServer server([&](const std::string& target) -> test::LoopbackServer::Reply {
    if (target.starts_with("/q=")) return {200, tencent};
    if (target.starts_with("/list=")) return {200, sina};
    return {500, "down"};  // the package's requests
  });
  DataSourceEndpoints endpoints = DataSourceEndpoints::bundled();
  endpoints.tencentQuote = server.base() + "/q=";
  endpoints.sinaQuote = server.base() + "/list=";
  endpoints.stockSDKTencentBase = server.base() + "/sdk";

  SystemClock clock;
  QtScheduler scheduler;
  QtHttpClient http;
  QtProcessRunner processes;
  BridgeSetup setup;
  setup.script =
      std::filesystem::path(TIDEMARK_TEST_RESOURCE_DIR) / "bridge" / "stock-sdk-bridge.mjs";
  setup.environment = currentEnvironment();
  StockSDKBridge bridge(processes, clock, setup);
  LiveMarketData data(http, bridge, clock);
  NullNotifier notifier;
  MemoryKeyValueStore store;
  store.setStringArray(AppModel::watchlistKey, {"600519", "NVDA", "000858", "601318"});
  Preferences preferences;
  preferences.sourceMode = SourceMode::automatic;
  store.setData(AppModel::preferencesKey, toJson(preferences).dump());

  Bundle bundle;
  bundle.resourceDirectory = TIDEMARK_TEST_RESOURCE_DIR;
  AppModel model({store, clock, scheduler, data, notifier, std::nullopt, endpoints}, std::nullopt,
                 false, bundle);
  ASSERT_TRUE(QTest::qWaitFor([&] { return !model.isLoading(); }, 60000));

  EXPECT_EQ(model.phase(), QuotePhase::live);
  EXPECT_EQ(model.lastError(), std::nullopt);
  std::vector<std::string> sources;
  for (const QuoteSnapshot& q : model.watchedQuotes()) sources.push_back(q.id + ":" + q.source);
  EXPECT_EQ(sources, (std::vector<std::string>{"600519:tencent", "NVDA:tencent", "000858:tencent",
                                               "601318:sina"}));
  EXPECT_EQ(model.quote("601318")->price, 57.42);
  EXPECT_EQ(server.targets.back(), "/list=sh601318");
  EXPECT_TRUE(server.targets.front().starts_with("/sdk/?q=")) << server.targets.front();
}

}  // namespace
}  // namespace tidemark
