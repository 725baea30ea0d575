// The real bridge script with the real stock-sdk package under Node.js.

#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTest>
#include <QTimer>

#include "core/NumberText.h"
#include "platform/QtProcessRunner.h"
#include "platform/QtScheduler.h"
#include "sources/StockSDKBridge.h"
#include "support/EndlessServer.h"
#include "support/Fakes.h"
#include "support/LoopbackServer.h"
#include "support/PeakMemory.h"

namespace tidemark {
namespace {

struct Bridge {
  // Without `node`, neither the usual places nor the PATH (the script's folder) hold Node.js.
  explicit Bridge(std::optional<std::filesystem::path> script =
                      std::filesystem::path(TIDEMARK_TEST_RESOURCE_DIR) / "bridge" /
                      "stock-sdk-bridge.mjs",
                  double deadline = 22, size_t maxResidentBytes = 0, bool node = true)
      : runner(maxResidentBytes), bridge(runner, clock, [&] {
          BridgeSetup setup{
              .script = script, .environment = currentEnvironment(), .quoteDeadline = deadline};
          if (!node) setup.environment = {{"PATH", script->parent_path()}};
          if (!node) setup.nodeCandidates = {};
          return setup;
        }()) {}

  using Answer = std::pair<std::vector<QuoteSnapshot>, std::optional<std::string>>;
  // A real event loop: qWaitFor sleeps between turns, which throttles reading a pipe.
  template <class T = Answer>
  T wait(const auto& start) {
    std::optional<T> result;
    QEventLoop loop;
    start([&](auto... values) {
      result.emplace(values...);
      loop.quit();
    });
    QTimer::singleShot(30000, &loop, &QEventLoop::quit);
    if (!result) loop.exec();
    EXPECT_TRUE(result.has_value());
    return result.value_or(T{});
  }
  Answer quotes(const DataSourceEndpoints& endpoints, const std::vector<std::string>& symbols) {
    return wait([&](auto done) { bridge.fetchQuotes(endpoints, symbols, done); });
  }
  Answer search(const DataSourceEndpoints& endpoints, const std::string& text = "茅台") {
    return wait([&](auto done) { bridge.search(endpoints, text, done); });
  }
  std::optional<std::vector<double>> timeline(const DataSourceEndpoints& endpoints,
                                              const std::string& id = "600519",
                                              const std::string& market = "A股") {
    return wait<MarketDataSource::Intraday>(
               [&](auto done) { bridge.fetchTimeline(endpoints, id, market, done); })
        .values;
  }

  SystemClock clock;
  QtProcessRunner runner;
  StockSDKBridge bridge;
};

bool asked(const std::vector<std::string>& targets, const std::string& target) {
  return std::find(targets.begin(), targets.end(), target) != targets.end();
}

TEST(RealBridge, HealthQuotesTimelineAndSearchFromAMirroredTencentFeed) {
  using Reply = test::LoopbackServer::Reply;
  const std::string body = test::testData("tencent-basic.gbk");
  const std::string minute = test::testData("tencent-minute-sh600519.json");
  const std::string hint = test::testData("smartbox-search.txt");
  Reply search, quote{200, body};
  test::LoopbackServer server([&](const std::string& target) {
    if (target == "/appstock/app/minute/query?code=sh600519") return Reply{200, minute};
    return target.starts_with("/s3/?") ? search : target.starts_with("/?q=") ? quote : Reply{404};
  });
  DataSourceEndpoints endpoints = DataSourceEndpoints::bundled();
  endpoints.stockSDKTencentBase = server.base();
  Bridge b;
  ASSERT_TRUE(b.bridge.isAvailable()) << "Node.js or the installed bridge is missing";
  EXPECT_EQ(b.wait<std::optional<bool>>([&](auto done) { b.bridge.probeHealth({}, done); }), true);

  auto [quotes, error] = b.quotes(endpoints, {"600519", "00700", "NVDA", "000858", "601318"});
  EXPECT_EQ(error, std::nullopt);
  ASSERT_EQ(quotes.size(), 4u);
  quotes[1].updatedAt = {};  // the package reads no time in the Hong Kong row: the time read
  const Date close = *parseISO8601("2026-10-16T07:00:03Z");
  EXPECT_EQ(
      quotes,
      (std::vector<QuoteSnapshot>{
          {"600519", "A股", "贵州茅台", 1468.8, 1452, 1475, 1448.1, 32165, close, "stock-sdk"},
          {"00700", "港股", "腾讯控股", 485.2, 478.6, 487.4, 476.8, 18273455, {}, "stock-sdk"},
          {"NVDA", "美股", "英伟达", 186.25, 182.4, 187.9, 181.75, 168420310,
           *parseISO8601("2026-10-16T20:00:01Z"), "stock-sdk"},
          {"000858", "A股", "五粮液", 127.05, 128.4, 129.12, 126.55, 184332, close, "stock-sdk"}}));
  EXPECT_TRUE(asked(server.targets, "/?q=sh600519%2Csz000858%2Csh601318"));
  EXPECT_EQ(b.timeline(endpoints), (std::vector<double>{1455.0, 1456.5, 1458.2}));

  const std::string failed = "stock-sdk 搜索失败";
  // Exchange-traded funds in Hong Kong and the US: their markets say so.
  const std::string funds = R"(v_hint="hk~00700~a~a~ETF^us~nvda.oq~b~b~ETF^sh~600519~c~c~GP-A")";
  const std::tuple<Reply, Reply, std::vector<std::string>, std::optional<std::string>> cases[] = {
      {{200, hint},
       {200, body},
       {"600519 A股", "00700 港股", "NVDA 美股", "000858 A股"},
       std::nullopt},
      {{200, funds}, {200, body}, {"00700 港股基金", "NVDA 美股基金", "600519 A股"}, std::nullopt},
      {{200, "v_hint=\"N\"\n"}, {200, body}, {}, std::nullopt},
      {{500, ""}, {200, body}, {}, failed},
      {{200, hint, test::LoopbackServer::Delivery::cut}, {200, body}, {}, failed},
      {{200, hint}, {500, ""}, {}, failed},  // hits without quotes are no answer
  };
  for (const auto& [searchReply, quoteReply, ids, error] : cases) {
    search = searchReply;
    quote = quoteReply;
    server.targets.clear();
    auto [found, text] = b.search(endpoints);
    std::vector<std::string> hits;
    for (const QuoteSnapshot& q : found) hits.push_back(q.id + " " + q.market);
    EXPECT_EQ(hits, ids) << search.body;
    EXPECT_EQ(text, error) << search.body;
    // The off-exchange fund and the bond are never asked for; the index is asked apart.
    if (!ids.empty() && search.body == hint) {
      EXPECT_TRUE(asked(server.targets, "/?q=sh600519%2Csz000858"));
      EXPECT_TRUE(asked(server.targets, "/?q=sh000001"));
    }
  }
}

// An answer without end, written as fast as the socket takes it: each download stops at the
// script's cap, and nothing is asked twice.
TEST(RealBridge, EndlessAnswersFailAsUsualWithBoundedMemory) {
  test::EndlessServer server;
  DataSourceEndpoints endpoints = DataSourceEndpoints::bundled();
  endpoints.stockSDKTencentBase = server.base();
  test::PeakMemory memory(::getpid());
  Bridge b;  // a runner without a memory bound: the script holds its downloads down itself
  QElapsedTimer elapsed;
  elapsed.start();
  EXPECT_EQ(b.quotes(endpoints, {"600519", "00700", "NVDA"}),
            (Bridge::Answer{{}, "stock-sdk 未返回有效报价"}));
  EXPECT_EQ(b.timeline(endpoints), std::nullopt);
  EXPECT_EQ(b.search(endpoints), (Bridge::Answer{{}, "stock-sdk 搜索失败"}));
  // Well inside the package's own 8 s time-out: the cap ended each download.
  EXPECT_LT(elapsed.elapsed(), 6000);
  memory.stop();
  auto targets = server.targets();
  std::sort(targets.begin(), targets.end());
  EXPECT_EQ(targets, (std::vector<std::string>{"/?q=hk00700", "/?q=sh600519", "/?q=usNVDA",
                                               "/appstock/app/minute/query?code=sh600519",
                                               "/s3/?v=2&t=all&q=%E8%8C%85%E5%8F%B0"}));
  EXPECT_GT(server.bytesSent(), size_t{5 * 8} << 20);  // every cap was reached
  ASSERT_EQ(memory.descendants.size(), 3u);
  for (const auto& [pid, child] : memory.descendants)
    EXPECT_LE(child.peakKB, 200u << 10) << child.commandLine;
}

// An index and the stock of the same digits are asked apart, each its own series and search hit.
TEST(RealBridge, IndicesBesideTheStockOfTheSameDigits) {
  using Reply = test::LoopbackServer::Reply;
  const std::string body = test::testData("tencent-indices.gbk");
  std::string minute = test::testData("tencent-minute-sh600519.json");
  for (size_t at; (at = minute.find("sh600519")) != std::string::npos;)
    minute.replace(at, 8, "sh000001");
  test::LoopbackServer server([&](const std::string& target) {
    if (target == "/appstock/app/minute/query?code=sh000001") return Reply{200, minute};
    if (target.starts_with("/s3/?")) return Reply{200, test::testData("smartbox-indices.txt")};
    return target.starts_with("/?q=") ? Reply{200, body} : Reply{404};
  });
  DataSourceEndpoints endpoints = DataSourceEndpoints::bundled();
  endpoints.stockSDKTencentBase = server.base();
  Bridge b;
  auto [quotes, error] = b.quotes(endpoints, {"000001", "usIXIC", "sh000001", "hkHSI"});
  EXPECT_EQ(error, std::nullopt);
  std::vector<std::string> rows;
  for (const QuoteSnapshot& q : quotes)
    rows.push_back(q.id + " " + q.market + " " + q.name + " " + priceText(q.price));
  EXPECT_EQ(rows, (std::vector<std::string>{
                      "000001 A股 平安银行 11.61", "usIXIC 美股指数 纳斯达克 22,870.35",
                      "sh000001 A股指数 上证指数 3,882.78", "hkHSI 港股指数 恒生指数 25,930.03"}));
  for (const char* target : {"/?q=sz000001", "/?q=sh000001", "/?q=hkHSI", "/?q=usIXIC"})
    EXPECT_TRUE(asked(server.targets, target)) << target;

  EXPECT_EQ(b.timeline(endpoints, "sh000001", "A股指数"),
            (std::vector<double>{1455.0, 1456.5, 1458.2}));
  server.targets.clear();
  EXPECT_EQ(b.timeline(endpoints, "usIXIC", "美股指数"), std::nullopt);  // no series: the curve
  EXPECT_EQ(server.targets, (std::vector<std::string>{"/appstock/app/minute/query?code=usIXIC"}));

  auto [found, failed] = b.search(endpoints, "指数");
  std::vector<std::string> hits;
  for (const QuoteSnapshot& q : found) hits.push_back(q.id + " " + q.market);
  EXPECT_EQ(hits, (std::vector<std::string>{"sh000001 A股指数", "000001 A股", "hkHSI 港股指数",
                                            "usIXIC 美股指数"}));
  EXPECT_EQ(failed, std::nullopt);
}

// Scripts of the test's own: every way a child fails ends in its text well before the deadline,
// and one that grows past its memory bound is killed near it.
TEST(RealBridge, ChildrenGetAHeapBoundAndEveryFailureEndsInItsText) {
  test::TemporaryFolder folder;
  const auto script = [&](const char* name, const char* code) {
    const auto path = folder.path() / name / "stock-sdk-bridge.mjs";
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << code;
    return path;
  };
  const size_t bound = StockSDKBridge::childMemoryLimit;
  const std::string nothing = "stock-sdk 未返回有效报价";
  // Without code no Node.js is found; what the grower printed before it was killed is not taken.
  const std::tuple<const char*, const char*, double, size_t, std::string> children[] = {
      {"hung", "setInterval(() => {}, 1000);", 0.5, 0, nothing},
      {"silent", "", 22, 0, nothing},
      {"flood", "import {writeSync} from 'node:fs'; for (;;) writeSync(1, 'x'.repeat(1 << 20));",
       22, 0, "stock-sdk 输出的数据过大"},
      {"nonode", nullptr, 22, 0, "未找到 Node.js，无法启动 stock-sdk"},
      {"grows",
       "console.log('[{\"id\":\"600519\",\"name\":\"x\",\"price\":1,\"prevClose\":1}]');"
       "const held = []; setInterval(() => held.push(Buffer.alloc(2 << 20, 1)), 10);",
       22, bound, nothing},
  };
  for (const auto& [name, code, deadline, limit, text] : children) {
    test::PeakMemory memory(::getpid());
    Bridge bridge(script(name, code ? code : ""), deadline, limit, code != nullptr);
    QElapsedTimer elapsed;
    elapsed.start();
    EXPECT_EQ(bridge.quotes({}, {"600519"}).second, text) << name;
    EXPECT_LT(elapsed.elapsed(), 5000) << name << " was not stopped in time";
    memory.stop();
    if (!limit) continue;
    ASSERT_EQ(memory.descendants.size(), 1u);
    const size_t peak = memory.descendants.begin()->second.peakKB << 10;
    // Killed near the bound (the last sample may come a little before the kill), not far past it.
    EXPECT_GT(peak, bound - (16 << 20));
    EXPECT_LT(peak, bound + (48 << 20)) << "passed the bound by too much before the kill";
  }

  // The heap limit reaches V8: the price is its megabytes (old space 64 plus the young ones).
  Bridge bounded(script("heap",
                        "import v8 from 'node:v8'; const mb ="
                        "v8.getHeapStatistics().heap_size_limit / 1048576; console.log("
                        "JSON.stringify([{id: '600519', name: 'x', price: mb, prevClose: 1}]));"),
                 22, bound);
  auto [quotes, error] = bounded.quotes({}, {"600519"});
  ASSERT_EQ(quotes.size(), 1u) << error.value_or("");
  EXPECT_GE(quotes[0].price, 64);
  EXPECT_LE(quotes[0].price, 128);
}

// At most one child per kind of run, whatever the callers ask meanwhile.
TEST(Bridge, OneChildPerKindOfRun) {
  ManualClock clock;
  ManualScheduler scheduler(clock);
  test::FakeProcessRunner runner(scheduler);
  runner.holdRuns = true;
  const auto exited = [](int code, std::string out) {
    return ProcessResult{.exitCode = code, .exitedNormally = true, .standardOutput = out};
  };
  runner.results = {
      exited(0, R"([{"id":"600519","name":"贵州茅台","price":1468.8,"prevClose":1452}])"),
      exited(1, ""), exited(1, ""),
      exited(0, R"([{"id":"NVDA","name":"英伟达","price":186.25,"prevClose":182.4}])")};
  StockSDKBridge bridge(runner, clock,
                        {.script = "/b/stock-sdk-bridge.mjs",
                         .environment = {{"NODE_OPTIONS", "--use-openssl-ca"}},
                         .isExecutable = [](const std::string&) { return true; }});
  std::vector<std::string> log;
  const auto quotes = [&](const std::string& who, const std::string& base, const char* symbol) {
    bridge.fetchQuotes({.stockSDKTencentBase = base}, {symbol}, [&log, who](auto found, auto e) {
      log.push_back(who + ": " + (found.empty() ? e.value_or("") : found[0].id));
    });
  };
  const auto end = [&](size_t run) {
    runner.end(run);
    scheduler.runDue();
  };
  const auto timeline = [&](const std::string& symbol) {
    bridge.fetchTimeline({}, symbol, "A股", [&log, symbol](auto answer) {
      log.push_back(symbol + ": " +
                    (answer.skipped  ? "skipped"
                     : answer.values ? "series"
                                     : "none"));
    });
  };
  quotes("a", "m", "600519");
  quotes("a again", "m", "600519");      // shares the running child
  timeline("600519");                    // another kind: runs at once
  timeline("000858");                    // waits
  timeline("00700");                     // takes its place: that one was never asked
  quotes("a elsewhere", "n", "600519");  // another endpoint set: waits
  quotes("b", "m", "00700");             // takes the waiting one's place
  EXPECT_EQ(runner.requests.size(), 2u);
  EXPECT_EQ(log,
            (std::vector<std::string>{"000858: skipped", "a elsewhere: stock-sdk 未返回有效报价"}));
  end(1);
  end(0);
  EXPECT_EQ(log,
            (std::vector<std::string>{"000858: skipped", "a elsewhere: stock-sdk 未返回有效报价",
                                      "600519: none", "a: 600519", "a again: 600519"}));
  ASSERT_EQ(runner.requests.size(), 4u);  // 00700's timeline, and b's child once a's had ended
  EXPECT_EQ(runner.requests[3].arguments,
            (std::vector<std::string>{"/b/stock-sdk-bridge.mjs", "--quotes", R"(["00700"])"}));
  end(3);
  EXPECT_EQ(log.back(), "b: NVDA");
  for (const ProcessRequest& request : runner.requests)
    EXPECT_EQ(request.environment.at("NODE_OPTIONS"), "--use-openssl-ca --max-old-space-size=64");
}

}  // namespace
}  // namespace tidemark
