#include <gtest/gtest.h>

#include "sources/LiveMarketData.h"
#include "support/Fakes.h"
#include "support/LoopbackServer.h"

namespace tidemark {
namespace {

using List = std::vector<std::string>;
using Headers = std::vector<std::pair<std::string, std::string>>;
using Result = std::pair<List, std::optional<std::string>>;

struct Harness {
  ManualClock clock{Date{815'000'000}};
  ManualScheduler scheduler{clock};
  test::FakeHttpClient http{scheduler};
  test::FakeProcessRunner processes{scheduler};
  BridgeSetup setup{.script = "/opt/tidemark/bridge/stock-sdk-bridge.mjs",
                    .environment = {{"PATH", "/bin"}},
                    .isExecutable = [](const std::string& p) { return p == "/usr/bin/node"; }};
  StockSDKBridge bridge{processes, clock, setup};
  LiveMarketData data{http, bridge, clock};
  DataSourceEndpoints endpoints = DataSourceEndpoints::bundled();

  // Runs one fetch to its end: the quotes' ids and the error text.
  Result fetch(SourceMode source, const List& symbols) {
    std::optional<Result> result;
    data.fetchQuotes(source, endpoints, symbols, {}, [&](auto quotes, auto error) {
      result.emplace(List{}, error);
      for (const auto& q : quotes) result->first.push_back(q.id);
    });
    scheduler.runDue();
    return result.value();
  }
};

// One request per fetch for the text feeds; one run of the bridge script for stock-sdk, whose
// answers RealBridge reads through the script itself.
TEST(FetchQuotes, OneRequestOrRunPerFetchAndEveryWayToFail) {
  using enum SourceMode;
  Harness h;
  const std::string tencentBody = test::testData("tencent-basic.gbk");
  h.http.responses["https://qt.gtimg.cn/q=sh600519,sz00700,usNVDA,usBRK.BX"] = {200, tencentBody};
  h.http.responses["https://hq.sinajs.cn/list=sh600519,gb_aapl"] = {
      200, test::testData("sina-basic.gbk")};
  // 00700 and BRK.BX have no row in the body; funds and symbols without a code are not asked for.
  EXPECT_EQ(h.fetch(tencent, {"600519", "00700", "NVDA", "BRK.BX"}),
            Result({"600519", "NVDA"}, {}));
  EXPECT_EQ(h.fetch(sina, {"600519", "AAPL"}), Result({"600519"}, {}));
  EXPECT_EQ(h.fetch(tencent, {"700000", "018001", "020001", "510300", "159915", "161725"}),
            Result());
  ASSERT_EQ(h.http.requests.size(), 2u);
  for (const HttpRequest& r : h.http.requests)
    EXPECT_EQ(std::pair(r.timeout, r.maxBytes), std::pair(8.0, size_t{8388608}));
  EXPECT_EQ(h.http.requests[0].headers,
            (Headers{{"Referer", "https://finance.qq.com/"}, {"User-Agent", "Mozilla/5.0"}}));
  EXPECT_EQ(h.http.requests[1].headers[0].second, "https://finance.sina.com.cn/");

  // The fake runner cannot start the script.
  EXPECT_EQ(h.fetch(stockSDK, {"600519", "NVDA"}),
            Result({}, "stock-sdk 启动失败：no such program"));
  const ProcessRequest& run = h.processes.requests.at(0);
  EXPECT_EQ(run.arguments, (List{"/opt/tidemark/bridge/stock-sdk-bridge.mjs", "--quotes",
                                 R"(["600519","NVDA"])"}));
  EXPECT_EQ(std::tuple(run.program, run.workingDirectory, run.deadline, run.maxOutput),
            std::tuple("/usr/bin/node", "/opt/tidemark/bridge", 22.0, size_t{33554432}));
  EXPECT_EQ(run.environment.at("NODE_PATH"), "/opt/tidemark/bridge/node_modules");
  EXPECT_EQ(run.environment.at("PATH"), "/bin:/usr/bin");

  // Every way a feed's fetch fails, for 600519 alone.
  const std::pair<HttpResponse, const char*> failures[] = {
      {{{}, {}, "请求超时"}, "请求超时"},
      {{300, tencentBody}, "行情源请求失败"},
      {{200, {}}, "行情源请求失败"},
      {{200, "no rows"}, "行情源未返回有效报价"},
  };
  for (const auto& [response, error] : failures) {
    h.http.responses["https://qt.gtimg.cn/q=sh600519"] = response;
    EXPECT_EQ(h.fetch(tencent, {"600519"}), Result({}, error)) << error;
  }
  h.endpoints.tencentQuote = "https://qt.gtimg.cn/q =";
  EXPECT_EQ(h.fetch(tencent, {"600519"}), Result({}, "行情源地址无效"));
}

TEST(Probe, BothFeedsMustAnswerAndTheBridgeMustNotFail) {
  const std::string tencent = test::testData("tencent-basic.gbk");
  const std::string sina = test::testData("sina-basic.gbk");
  const ProcessResult healthy{{}, 0, true}, failing{{}, 1, true}, late{{}, -1, false, true};
  // Tencent up, Sina up, the bridge's health run (none: it cannot start), then the verdict.
  const std::tuple<bool, bool, std::optional<ProcessResult>, bool> cases[] = {
      {true, true, healthy, true},  {true, true, std::nullopt, true}, {true, true, late, true},
      {true, true, failing, false}, {false, true, healthy, false},    {true, false, healthy, false},
  };
  for (const auto& [tencentUp, sinaUp, health, verdict] : cases) {
    Harness h;
    if (tencentUp) h.http.responses["https://qt.gtimg.cn/q=sh600519"] = {200, tencent, {}};
    if (sinaUp) h.http.responses["https://hq.sinajs.cn/list=sh600519"] = {200, sina, {}};
    if (health) h.processes.results = {*health};
    std::optional<bool> usable;
    h.data.probeQuoteEndpoints(h.endpoints, [&](bool ok) { usable = ok; });
    h.scheduler.runDue();
    EXPECT_EQ(usable, verdict) << tencentUp << sinaUp << (health ? health->exitCode : 99);
    EXPECT_EQ(std::pair(h.http.requests[0].timeout, h.http.requests[0].maxBytes),
              std::pair(3.0, size_t{65536}));
    EXPECT_EQ(h.processes.requests.at(0).deadline, 4);
  }
}

TEST(Manifest, OnlyA2xxBodyIsHandedOn) {
  Harness h;
  const std::string url = "https://raw.githubusercontent.com/x/y/main/config.json";
  std::vector<std::optional<std::string>> bodies;
  for (int status : {200, 404}) {
    h.http.responses[url] = {status, "{}"};
    h.data.fetchManifest(url, [&](auto body) { bodies.push_back(body); });
    h.scheduler.runDue();
  }
  EXPECT_EQ(bodies, (std::vector<std::optional<std::string>>{"{}", std::nullopt}));
  const HttpRequest& r = h.http.requests[0];
  EXPECT_EQ(std::tuple(r.headers, r.timeout, r.maxBytes),
            std::tuple(Headers{{"Accept", "application/json"}}, 5.0, size_t{262144}));
}

// RealBridge covers found, nothing found and a failing script; these are the other endings.
TEST(Bridge, ASearchWithoutAnArrayAnswerFails) {
  const std::pair<std::vector<ProcessResult>, const char*> cases[] = {
      {{{{}, 0, true, false, "no quotes"}}, "stock-sdk 搜索失败"},
      {{{{}, -1, false, true, "[]"}}, "stock-sdk 搜索失败"},  // killed at the deadline
      {{}, "stock-sdk 启动失败：no such program"},
  };
  for (const auto& [results, text] : cases) {
    Harness h;
    h.processes.results = results;
    std::optional<std::string> error;
    h.data.searchSecurities(h.endpoints, "紫金", [&](auto, auto e) { error = e; });
    h.scheduler.runDue();
    EXPECT_EQ(error, text);
  }
}

TEST(Bridge, FindsNodeInOrderThenOnThePath) {
  Harness h;
  List present;  // the executable files
  const BridgeSetup setup{
      .script = "/b/stock-sdk-bridge.mjs",
      .environment = {{"PATH", "/home/u/.nvm/bin:/usr/bin"}},
      .isExecutable = [&](auto& p) { return std::ranges::count(present, p) > 0; }};
  const auto node = [&](List files) {
    present = files;
    return StockSDKBridge(h.processes, h.clock, setup).nodePath();
  };
  EXPECT_EQ(node({"/usr/bin/node", "/usr/local/bin/node"}), "/usr/local/bin/node");
  EXPECT_EQ(node({"/opt/homebrew/bin/node", "/usr/bin/node"}), "/opt/homebrew/bin/node");
  EXPECT_EQ(node({"/home/u/.nvm/bin/node"}), "/home/u/.nvm/bin/node");
  EXPECT_EQ(node({}), std::nullopt);
  // Without the script, whichever node there is, nothing runs.
  std::optional<std::string> error;
  StockSDKBridge(h.processes, h.clock, {.isExecutable = [](auto&) { return true; }})
      .fetchQuotes({}, {"600519"}, [&](auto, auto e) { error = e; });
  EXPECT_EQ(error, "stock-sdk 未随应用安装");
}

TEST(Bridge, AnswersAreReadLeniently) {
  // RealBridge reads rows with every field; these leave fields out or get them wrong.
  const Date now{815'000'000};
  const auto quotes = decodeSDKQuotes(
      R"([{"id":"00700","name":"腾讯控股","price":485.2,"prevClose":478.6},
      {"id":"1","name":"n","price":0,"prevClose":1}, {"id":"2","name":"n","price":1,"prevClose":-1},
      {"id":"3","price":1,"prevClose":1}, {"name":"n","price":1,"prevClose":1},
      {"id":"4","name":"n","price":"1","prevClose":1},
      {"id":"NVDA","name":"英伟达","price":186.25,"prevClose":182.4,"updatedAt":"soon",
       "volume":1.5e3}])",
      now);
  EXPECT_EQ(quotes,
            (std::vector<QuoteSnapshot>{
                {"00700", "A股", "腾讯控股", 485.2, 478.6, 485.2, 485.2, 0, now, "stock-sdk"},
                {"NVDA", "A股", "英伟达", 186.25, 182.4, 186.25, 186.25, 1500, now, "stock-sdk"}}));
  for (const char* output : {"", "{}", "[1, 2]"})
    EXPECT_TRUE(decodeSDKQuotes(output, now).empty()) << output;
  const std::pair<const char*, std::optional<std::vector<double>>> timelines[] = {
      {R"({"values":[10.5, 0, 10.6, -1]})", std::vector<double>{10.5, 10.6}},
      {R"({"values":[10.5, "x"]})", std::nullopt},
      {R"({"values":{}})", std::nullopt},
      {R"([10.5, 10.6])", std::nullopt},
  };
  for (const auto& [output, values] : timelines)
    EXPECT_EQ(decodeTimeline(output), values) << output;
}

}  // namespace
}  // namespace tidemark
