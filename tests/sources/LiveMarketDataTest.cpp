#include <gtest/gtest.h>

#include "sources/LiveMarketData.h"
#include "support/Fakes.h"
#include "support/LoopbackServer.h"

namespace tidemark {
namespace {

using List = std::vector<std::string>;

struct Harness {
  ManualClock clock{Date{815'000'000}};
  ManualScheduler scheduler{clock};
  test::FakeHttpClient http{scheduler};
  test::FakeProcessRunner processes{scheduler};
  StockSDKBridge bridge{
      processes,
      clock,
      {.script = "/opt/tidemark/bridge/stock-sdk-bridge.mjs",
       .environment = {{"PATH", "/bin"}, {"HOME", "/home/u"}},
       .isExecutable = [](const std::string& p) { return p == "/usr/bin/node"; }}};
  LiveMarketData data{http, bridge, clock};
  DataSourceEndpoints endpoints = DataSourceEndpoints::bundled();

  // Runs one fetch to its end: the quotes' ids and the error text.
  std::pair<List, std::optional<std::string>> fetch(SourceMode source, const List& symbols) {
    std::optional<std::pair<List, std::optional<std::string>>> result;
    data.fetchQuotes(source, endpoints, symbols, {},
                     [&](std::vector<QuoteSnapshot> quotes, std::optional<std::string> error) {
                       List ids;
                       for (const auto& q : quotes) ids.push_back(q.id);
                       result.emplace(ids, error);
                     });
    scheduler.runDue();
    return result.value();
  }
};

TEST(FetchQuotes, OneBatchedRequestWithTheFeedsHeaders) {
  Harness h;
  const std::string url = "https://qt.gtimg.cn/q=sh600519,sz00700,usNVDA,usBRK.BX";
  h.http.responses[url] = {200, test::testData("tencent-basic.gbk"), {}};
  auto [ids, error] = h.fetch(SourceMode::tencent,
                              {"600519", "018001", "00700", "510300", "NVDA", "159915", "BRK.BX"});
  EXPECT_EQ(ids, (List{"600519", "NVDA"}));
  EXPECT_EQ(error, std::nullopt);
  ASSERT_EQ(h.http.requests.size(), 1u);
  EXPECT_EQ(h.http.requests[0].url, url);
  EXPECT_EQ(h.http.requests[0].timeout, 8);
  EXPECT_EQ(h.http.requests[0].maxBytes, 8388608u);
  EXPECT_EQ(h.http.requests[0].headers,
            (std::vector<std::pair<std::string, std::string>>{
                {"Referer", "https://finance.qq.com/"}, {"User-Agent", "Mozilla/5.0"}}));
  h.fetch(SourceMode::sina, {"600519", "AAPL"});
  EXPECT_EQ(h.http.requests[1].url, "https://hq.sinajs.cn/list=sh600519,gb_aapl");
  EXPECT_EQ(h.http.requests[1].headers[0].second, "https://finance.sina.com.cn/");
}

TEST(FetchQuotes, EveryWayToFail) {
  struct Case {
    const char* what;
    List symbols;
    std::optional<HttpResponse> response;  // none: no request may be made
    List ids;
    std::optional<std::string> error;
    std::string base = "https://qt.gtimg.cn/q=";
  };
  const std::string body = test::testData("tencent-basic.gbk");
  const Case cases[] = {
      {"only funds", {"018001", "510300", "159915", "161725"}, std::nullopt, {}, {}},
      {"no code at all", {"700000"}, std::nullopt, {}, {}},
      {"invalid URL", {"600519"}, std::nullopt, {}, "行情源地址无效", "https://qt.gtimg.cn/q ="},
      {"transport error", {"600519"}, HttpResponse{{}, {}, "请求超时"}, {}, "请求超时"},
      {"status 500", {"600519"}, HttpResponse{500, body, {}}, {}, "行情源请求失败"},
      {"no HTTP answer", {"600519"}, HttpResponse{}, {}, "行情源请求失败"},
      {"no body", {"600519"}, HttpResponse{200, {}, {}}, {}, "行情源请求失败"},
      {"nothing parses", {"601988"}, HttpResponse{200, body, {}}, {}, "行情源未返回有效报价"},
      {"partly", {"600519", "601988"}, HttpResponse{200, body, {}}, {"600519"}, {}},
  };
  for (const Case& c : cases) {
    Harness h;
    h.endpoints.tencentQuote = c.base;
    if (c.response)
      h.http.responses[h.endpoints.tencentQuote + "sh" + c.symbols[0] +
                       (c.symbols.size() > 1 ? ",sh" + c.symbols[1] : "")] = *c.response;
    auto [ids, error] = h.fetch(SourceMode::tencent, c.symbols);
    EXPECT_EQ(ids, c.ids) << c.what;
    EXPECT_EQ(error, c.error) << c.what;
    EXPECT_EQ(h.http.requests.size(), c.response ? 1u : 0u) << c.what;
  }
}

TEST(Probe, BothFeedsMustAnswerAndTheBridgeMustNotFail) {
  const std::string tencent = test::testData("tencent-basic.gbk");
  const std::string sina = test::testData("sina-basic.gbk");
  const ProcessResult healthy{{}, 0, true, false, ""};
  const ProcessResult failing{{}, 1, true, false, ""};
  const ProcessResult late{{}, -1, false, true, ""};
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
    EXPECT_EQ(h.http.requests[0].timeout, 3);
    ASSERT_EQ(h.processes.requests.size(), 1u);
    EXPECT_EQ(h.processes.requests[0].arguments[1], "--health");
    EXPECT_EQ(h.processes.requests[0].deadline, 4);
  }
}

TEST(Manifest, OnlyA2xxBodyIsHandedOn) {
  Harness h;
  const std::string url = "https://raw.githubusercontent.com/x/y/main/config.json";
  std::vector<std::optional<std::string>> bodies;
  for (auto response : {HttpResponse{200, "{}", {}}, HttpResponse{404, "{}", {}},
                        HttpResponse{{}, {}, "请求超时"}}) {
    h.http.responses[url] = response;
    h.data.fetchManifest(url, [&](std::optional<std::string> body) { bodies.push_back(body); });
    h.scheduler.runDue();
  }
  EXPECT_EQ(bodies, (std::vector<std::optional<std::string>>{"{}", std::nullopt, std::nullopt}));
  EXPECT_EQ(h.http.requests[0].timeout, 5);
  EXPECT_EQ(h.http.requests[0].maxBytes, 262144u);
  EXPECT_EQ(h.http.requests[0].headers[0],
            (std::pair<std::string, std::string>{"Accept", "application/json"}));
}

TEST(Bridge, QuoteRunWithItsArgumentsEnvironmentAndTexts) {
  Harness h;
  const std::string output =
      R"([{"id":"600519","name":"贵州茅台","price":1468.8,"prevClose":1452}])";
  h.processes.results = {{{}, 0, true, false, output}};
  auto [ids, error] = h.fetch(SourceMode::stockSDK, {"600519", "NVDA"});
  EXPECT_EQ(ids, List{"600519"});
  EXPECT_EQ(error, std::nullopt);
  const ProcessRequest& run = h.processes.requests.at(0);
  EXPECT_EQ(run.program, "/usr/bin/node");
  EXPECT_EQ(run.arguments, (List{"/opt/tidemark/bridge/stock-sdk-bridge.mjs", "--quotes",
                                 R"(["600519","NVDA"])"}));
  EXPECT_EQ(run.workingDirectory, "/opt/tidemark/bridge");
  EXPECT_EQ(run.deadline, 22);
  EXPECT_EQ(run.maxOutput, 33554432u);
  EXPECT_EQ(run.environment.at("NODE_PATH"), "/opt/tidemark/bridge/node_modules");
  EXPECT_EQ(run.environment.at("PATH"), "/bin:/usr/bin");
  EXPECT_EQ(run.environment.at("HOME"), "/home/u");
  EXPECT_EQ(json::parse(run.environment.at("STOCK_DATA_SOURCE_CONFIG")),
            toJson(DataSourceEndpoints::bundled()));

  // RealBridge runs children that time out or print nothing.
  Harness f;
  f.processes.results = {{"No such file or directory", -1, false, false, ""}};
  EXPECT_EQ(f.fetch(SourceMode::stockSDK, {"600519"}).second,
            "stock-sdk 启动失败：No such file or directory");
}

// RealBridge covers found, nothing found and a failing script; these are the other endings.
TEST(Bridge, ASearchWithoutAnArrayAnswerFails) {
  const std::pair<ProcessResult, const char*> cases[] = {
      {{{}, 0, true, false, "no quotes"}, "stock-sdk 搜索失败"},
      {{{}, -1, false, true, "[]"}, "stock-sdk 搜索失败"},  // killed at the deadline
      {{"No such file", -1, false, false, ""}, "stock-sdk 启动失败：No such file"},
  };
  for (const auto& [result, text] : cases) {
    Harness h;
    h.processes.results = {result};
    std::optional<std::string> error;
    h.data.searchSecurities(h.endpoints, "紫金", [&](auto, auto e) { error = e; });
    h.scheduler.runDue();
    EXPECT_EQ(error, text);
    EXPECT_EQ(h.processes.requests.at(0).arguments,
              (List{"/opt/tidemark/bridge/stock-sdk-bridge.mjs", "--search", "紫金"}));
  }
}

TEST(Bridge, FindsNodeInOrderThenOnThePath) {
  ManualClock clock;
  ManualScheduler scheduler(clock);
  test::FakeProcessRunner runner(scheduler);
  const std::pair<List, std::optional<std::string>> cases[] = {
      {{"/usr/bin/node", "/usr/local/bin/node"}, "/usr/local/bin/node"},
      {{"/usr/bin/node"}, "/usr/bin/node"},
      {{"/opt/homebrew/bin/node", "/usr/bin/node"}, "/opt/homebrew/bin/node"},
      {{"/home/u/.nvm/bin/node"}, "/home/u/.nvm/bin/node"},
      {{}, std::nullopt},
  };
  for (const auto& [present, found] : cases) {
    StockSDKBridge bridge(runner, clock,
                          {.script = "/b/stock-sdk-bridge.mjs",
                           .environment = {{"PATH", "/home/u/.nvm/bin:/usr/bin"}},
                           .isExecutable = [&](const std::string& p) {
                             return std::find(present.begin(), present.end(), p) != present.end();
                           }});
    EXPECT_EQ(bridge.nodePath(), found);
    EXPECT_EQ(bridge.isAvailable(), found.has_value());
  }
  // Without the script (whichever node there is) or without a node, nothing runs.
  const auto executable = [](bool all) { return [all](const std::string&) { return all; }; };
  const std::pair<BridgeSetup, const char*> broken[] = {
      {{.isExecutable = executable(true)}, "stock-sdk 未随应用安装"},
      {{.script = "/b/stock-sdk-bridge.mjs", .isExecutable = executable(false)},
       "未找到 Node.js，无法启动 stock-sdk"},
  };
  for (const auto& [setup, text] : broken) {
    std::optional<std::string> error;
    StockSDKBridge(runner, clock, setup).fetchQuotes({}, {"600519"}, [&](auto, auto e) {
      error = e;
    });
    EXPECT_EQ(error, text);
  }
  EXPECT_TRUE(runner.requests.empty());
}

TEST(Bridge, AnswersAreReadLeniently) {
  const Date now{815'000'000};
  const auto quotes = decodeSDKQuotes(
      R"([{"id":"600519","name":"贵州茅台","price":1468.8,"prevClose":1452,
           "updatedAt":"2026-10-16T07:00:03Z","market":"A股","high":1475,"low":1448.1,
           "volume":32165,"source":"stock-sdk"},
          {"id":"00700","name":"腾讯控股","price":485.2,"prevClose":478.6},
          {"id":"X1","name":"n","price":0,"prevClose":1},
          {"id":"X2","name":"n","price":1,"prevClose":-1},
          {"id":"X3","price":1,"prevClose":1},
          {"name":"n","price":1,"prevClose":1},
          {"id":"X4","name":"n","price":"1","prevClose":1},
          {"id":"NVDA","name":"英伟达","price":186.25,"prevClose":182.4,"updatedAt":"soon",
           "volume":1.5e3}])",
      now);
  EXPECT_EQ(quotes,
            (std::vector<QuoteSnapshot>{
                {"600519", "A股", "贵州茅台", 1468.8, 1452, 1475, 1448.1, 32165,
                 *parseISO8601("2026-10-16T07:00:03Z"), "stock-sdk"},
                {"00700", "A股", "腾讯控股", 485.2, 478.6, 485.2, 485.2, 0, now, "stock-sdk"},
                {"NVDA", "A股", "英伟达", 186.25, 182.4, 186.25, 186.25, 1500, now, "stock-sdk"},
            }));
  for (const char* output : {"", "{}", "not json", "[1, 2]"})
    EXPECT_TRUE(decodeSDKQuotes(output, now).empty()) << output;

  const std::pair<const char*, std::optional<std::vector<double>>> timelines[] = {
      {R"({"values":[10.5, 0, 10.6, -1]})", std::vector<double>{10.5, 10.6}},
      {R"({"values":[10.5]})", std::vector<double>{10.5}},
      {R"({"values":[10.5, "x"]})", std::nullopt},
      {R"({"values":{}})", std::nullopt},
      {R"([10.5, 10.6])", std::nullopt},
  };
  for (const auto& [output, values] : timelines)
    EXPECT_EQ(decodeTimeline(output), values) << output;
}

}  // namespace
}  // namespace tidemark
