// The Tencent and Sina feeds, the probe, the manifest and the bridge's runs.

#include <gtest/gtest.h>

#include "core/Market.h"
#include "sources/KlineFeed.h"
#include "sources/LiveMarketData.h"
#include "sources/QuoteFeeds.h"
#include "sources/TextDecoding.h"
#include "support/Fakes.h"
#include "support/LoopbackServer.h"

namespace tidemark {
namespace {

using List = std::vector<std::string>;
using Headers = std::vector<std::pair<std::string, std::string>>;
using Result = std::pair<List, std::optional<std::string>>;

const Date at{815'000'000};

QuoteSnapshot q(const char* id, const char* market, const char* name, double price,
                double prevClose, double high, double low, int64_t volume, const char* source) {
  return {id, market, name, price, prevClose, high, low, volume, at, source};
}

TEST(MarketCode, BothFeeds) {
  using Code = std::optional<std::string>;
  const auto codes = [](const char* symbol) {
    return std::pair(marketCode(symbol, SourceMode::tencent), marketCode(symbol, SourceMode::sina));
  };
  // Symbol, Tencent's code, Sina's code; five characters with a letter take the Hong Kong
  // prefix, tickers included. FetchQuotes pins 600519, 00700, NVDA and AAPL.
  const std::tuple<const char*, Code, Code> cases[] = {
      {"510300", "sh510300", "sh510300"},
      {"300750", "sz300750", "sz300750"},
      {"830799", "bj830799", "bj830799"},
      {"430047", "bj430047", "bj430047"},
      {"nvda", "usNVDA", "gb_nvda"},
      {"brk.b", "hkbrk.b", "rt_hkbrk.b"},
      // Indices are their own codes, Sina has A-share ones only; the stock of the same digits
      // and the forms that are no index keep the rules above.
      {"sh000001", "sh000001", "sh000001"},
      {"000001", "sz000001", "sz000001"},
      {"sz399001", "sz399001", "sz399001"},
      {"bj899050", "bj899050", "bj899050"},
      {"hkHSI", "hkHSI", Code()},
      {"usIXIC", "usIXIC", Code()},
      {"usixic", "usUSIXIC", "gb_usixic"},
      {"hkH", "usHKH", "gb_hkh"},
      {"shABCD", "usSHABCD", "gb_shabcd"}};
  for (const auto& [symbol, tencent, sina] : cases)
    EXPECT_EQ(codes(symbol), std::pair(tencent, sina)) << symbol;
  for (const char* symbol : {"700000", ""})
    EXPECT_EQ(codes(symbol), std::pair(Code(), Code())) << symbol;
  EXPECT_EQ(marketCode("600519", SourceMode::stockSDK), std::nullopt);  // no feed of its own
}

TEST(Decoding, TriesGB18030ThenUTF8ThenRepairs) {
  const std::pair<std::string, std::string> cases[] = {
      {"\xb9\xf3\xd6\xdd\xc3\xa9\xcc\xa8", "贵州茅台"},          // GBK
      {"\x81\x30\x81\x30", "\xc2\x80"},                          // a four-byte GB 18030 character
      {"\xe2\x82\xac", "€"},                                     // UTF-8 that is no GB 18030
      {"\xb9\xf3\xd6", "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"},  // truncated GBK: three marks
      {"\xf0\x9f\x98", "\xef\xbf\xbd"},  // a cut-off emoji: one maximal subpart, one mark
      // A surrogate, never text in UTF-8 (and no GB 18030 either): a mark for each byte.
      {"\xed\xa0\x80", "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"},
  };
  for (const auto& [bytes, text] : cases) EXPECT_EQ(decodeLiveText(bytes), text) << bytes;
}

std::string body(const char* name) {
  return decodeLiveText(test::testData(name));
}

using Parser = decltype(&parseTencent);
using Records = std::vector<QuoteSnapshot>;

// The records a parser reads, without the fuller figures (FullerFiguresWhereTheRowHoldsThem).
Records records(Parser parse, const std::string& text, const List& symbols) {
  Records out = parse(text, symbols, at);
  for (QuoteSnapshot& record : out) {
    for (const auto& [key, member] : quoteFigures) record.*member = std::nullopt;
    record.quoteTime = std::nullopt;
  }
  return out;
}

TEST(FeedParsers, TencentRecordedBodies) {
  // 00700 asks for sz00700, which the body does not hold; a symbol asked twice is read twice.
  EXPECT_EQ(
      records(parseTencent, body("tencent-basic.gbk"), {"600519", "00700", "NVDA", "600519"}),
      (Records{
          q("600519", "A股", "贵州茅台", 1468.80, 1452.00, 1475.00, 1448.10, 32165, "tencent"),
          q("NVDA", "美股", "英伟达", 186.25, 182.40, 187.90, 181.75, 168420310, "tencent"),
          q("600519", "A股", "贵州茅台", 1468.80, 1452.00, 1475.00, 1448.10, 32165, "tencent")}));
  // 601988 is suspended (0.00); 688981's payload never closes.
  EXPECT_EQ(
      records(parseTencent, body("tencent-edge.gbk"),
              {"600000", "601988", "300750", "000001", "688981"}),
      (Records{// seven fields: high and low are the price
               q("600000", "A股", "浦发银行", 10.50, 10.40, 10.50, 10.50, 88000, "tencent"),
               // high below the price is widened to it
               q("300750", "A股", "宁德时代", 272.30, 268.50, 272.30, 267.20, 226514, "tencent"),
               // "~~" empty fields keep their place; an empty volume reads 0
               q("000001", "A股", "平安银行", 11.61, 11.52, 11.66, 11.49, 0, "tencent")}));
  // Neither GB 18030 nor UTF-8: the bad bytes are replaced and the row still parses.
  EXPECT_EQ(
      records(parseTencent, body("tencent-undecodable.bin"), {"600519"}),
      (Records{q("600519", "A股", "\xef\xbf\xbd\xef\xbf\xbd茅台", 10, 9, 10, 10, 100, "tencent")}));
}

TEST(FeedParsers, TencentIndicesUnderTheCodeTheyWereAskedBy) {
  EXPECT_EQ(
      records(parseTencent, body("tencent-indices.gbk"), {"sh000001", "000001", "hkHSI", "usIXIC"}),
      (Records{
          q("sh000001", "A股指数", "上证指数", 3882.78, 3870.60, 3890.12, 3862.45, 485327116,
            "tencent"),
          q("000001", "A股", "平安银行", 11.61, 11.52, 11.66, 11.49, 1038277, "tencent"),
          q("hkHSI", "港股指数", "恒生指数", 25930.03, 25828.95, 26012.47, 25790.12, 0, "tencent"),
          q("usIXIC", "美股指数", "纳斯达克", 22870.35, 22941.67, 23010.50, 22812.40, 0,
            "tencent")}));
}

// The first of two rows wins; a bad price, a negative close, an empty or unclosed payload skip
// their rows; a volume far beyond 64 bits is clamped, not undefined.
TEST(FeedParsers, TencentMalformedRows) {
  const std::string text =
      "v_sh600519=\"1~A~600519~2.00~1.00~1~5\";v_sh600519=\"1~B~600519~3.00~1.00~1~5\";"
      "v_sz000002=\"1~C~000002~x~1.00~1~5\";v_sz000003=\"1~D~000003~1.00~-1~1~5\";"
      "v_sz000004=\"\";v_sz000005=\"1~E~000005~1.5~1~1~1000000000000000000000000000000\";"
      "v_sz000006=\"";
  EXPECT_EQ(
      records(parseTencent, text, {"600519", "000002", "000003", "000004", "000005", "000006"}),
      (Records{q("600519", "A股", "A", 2, 1, 2, 2, 5, "tencent"),
               q("000005", "A股", "E", 1.5, 1, 1.5, 1.5, INT64_MAX, "tencent")}));
}

TEST(FeedParsers, SinaRecordedBodies) {
  EXPECT_EQ(records(parseSina, body("sina-indices.gbk"), {"000001", "sh000001"}),
            (Records{q("000001", "A股", "平安银行", 11.61, 11.52, 11.66, 11.49, 103827700, "sina"),
                     q("sh000001", "A股指数", "上证指数", 3882.78, 3870.60, 3890.12, 3862.45,
                       485327116, "sina")}));
  // ABCDE reads the five-character layout: prevClose 4, price 5, high 2, low 3. AAPL's row has
  // its date in field 3, the price's; WXYZ1, WXYZ2 have 4, 5 fields; 000858's is empty.
  EXPECT_EQ(
      records(parseSina, body("sina-basic.gbk"),
              {"600519", "AAPL", "ABCDE", "WXYZ1", "WXYZ2", "000858"}),
      (Records{q("600519", "A股", "贵州茅台", 1468.80, 1452.00, 1475.00, 1448.10, 3216500, "sina"),
               q("ABCDE", "美股", "TEST HOLDINGS", 12.00, 12.50, 12.30, 12.00, 2, "sina")}));
}

// The figures beyond the price, by each exchange's layout, from the recorded full rows and from
// rows too short to hold them; times in the exchange's zone (Shanghai +8, New York -4 in October).
TEST(FeedParsers, FullerFiguresWhereTheRowHoldsThem) {
  const auto figures = [](const QuoteSnapshot& q) {
    std::string out = q.id + ":";
    for (const auto& [key, member] : quoteFigures)
      if (const auto& value = q.*member) out += std::string(" ") + key + "=" + Json(*value).dump();
    if (q.quoteTime) out += " at=" + formatISO8601(*q.quoteTime);
    return out;
  };
  const std::tuple<Parser, std::string, List, List> cases[] = {
      {parseTencent,
       body("tencent-basic.gbk"),
       {"600519", "NVDA"},
       {"600519: open=1455.0 amount=4724390000.0 turnoverPct=0.26 pe=21.42 limitUp=1597.2 "
        "limitDown=1306.8 high52w=1770.0 low52w=1230.88 at=2026-10-16T07:00:03Z",
        "NVDA: open=182.4 amount=31368282738.0 turnoverPct=0.69 pe=52.84 high52w=244.27 "
        "low52w=109.05 at=2026-10-16T20:00:01Z"}},
      // Indices: no turnover, P/E or limits; Hong Kong's row gives its open and time only, and
      // no amount traded here.
      {parseTencent,
       body("tencent-indices.gbk"),
       {"sh000001", "hkHSI", "usIXIC"},
       {"sh000001: open=3875.1 amount=188441841940000.0 high52w=4668.14 low52w=3283.08 "
        "at=2026-10-16T07:00:03Z",
        "hkHSI: open=25828.95 at=2026-10-16T08:08:15Z",
        "usIXIC: open=22941.67 high52w=29913.65 low52w=13687.44 at=2026-10-16T20:00:01Z"}},
      // Seven fields: the open alone; a suspended open of 0.00 and "~~" empties are unknown.
      {parseTencent,
       body("tencent-edge.gbk"),
       {"600000", "000001"},
       {"600000: open=10.45", "000001:"}},
      {parseTencent,
       "v_sh600519=\"1~A~600519~2.00~1.00~1~5~~~~~~~~~~~~~~~~~~~~~~~~~2026-02-30 10:00:00~~~2~1~"
       "~~~-3.5\";",
       {"600519"},
       {"600519: open=1.0 pe=-3.5"}},  // a loss's P/E; no 30th of February
      {parseSina,
       body("sina-basic.gbk"),
       {"600519"},
       {"600519: open=1455.0 at=2026-10-16T07:00:03Z"}},
  };
  for (const auto& [parse, text, symbols, expected] : cases) {
    List shown;
    for (const QuoteSnapshot& q : parse(text, symbols, at)) shown.push_back(figures(q));
    EXPECT_EQ(shown, expected);
  }
}

TEST(TencentParser, OnlyPlainDecimalTextIsANumber) {
  // The high (fallback: the price, 10) and the volume (fallback: 0) of a row with `text` in both.
  const auto read = [](const std::string& text) {
    const std::string row =
        "v_sh600519=\"1~N~600519~10.00~9.00~1~" + text + std::string(27, '~') + text + "~9.50\";";
    const QuoteSnapshot q = parseTencent(row, {"600519"}, at).at(0);
    return std::pair(q.high, q.volume);
  };
  const std::tuple<const char*, double, int64_t> numbers[] = {
      {"12.5", 12.5, 12}, {"+12", 12, 12}, {"-5", 10, -5}, {"12.", 12, 12}};
  for (const auto& [text, high, volume] : numbers)
    EXPECT_EQ(read(text), std::pair(high, volume)) << text;
  // Past fifteen digits the full parse takes over.
  EXPECT_EQ(read("12345678901234567.5"), std::pair(12345678901234568.0, 12345678901234568l));
  for (const char* text : {"+-5", " 15", "15 ", "1e2", "1.2.3", "inf", "0x1A", "+", ".", ""})
    EXPECT_EQ(read(text), std::pair(10.0, int64_t{0})) << text;
}

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
  EXPECT_EQ(std::tuple(run.program, run.workingDirectory, run.deadline, run.maxOutput,
                       run.environment.at("NODE_PATH"), run.environment.at("PATH")),
            std::tuple("/usr/bin/node", "/opt/tidemark/bridge", 22.0, size_t{33554432},
                       "/opt/tidemark/bridge/node_modules", "/bin:/usr/bin"));

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

// Candles: the two forms of the Tencent answer as recorded, damaged rows among them, and the
// moving averages worked out by hand (closes 10, 11, ... 31).
TEST(KlineFeed, RecordedBodiesDamagedRowsAndAverages) {
  const auto day = parseTencentKline(test::testData("tencent-kline-sh600519-day.json"), "sh600519",
                                     KlinePeriod::day);
  ASSERT_TRUE(day);
  List dates;
  for (const KlineBar& b : *day) dates.push_back(b.date);
  List expected;
  for (int d = 1; d <= 22; ++d)
    expected.push_back("2026-10-" + std::string(d < 10 ? "0" : "") + std::to_string(d));
  EXPECT_EQ(dates, expected) << "a row with a seventh element is read, the six damaged ones not";
  EXPECT_EQ(day->front(), (KlineBar{"2026-10-01", 9.5, 11, 9, 10, 1000}));
  const auto month = parseTencentKline(test::testData("tencent-kline-sh000001-month.json"),
                                       "sh000001", KlinePeriod::month);
  ASSERT_TRUE(month);
  EXPECT_EQ(*month, (std::vector<KlineBar>{
                        {"2026-09-30", 3820.11, 3899.10, 3790.00, 3882.78, 48500000000},
                        {"2026-10-31", 3882.78, 3950.00, 3850.25, 3901.50, 45210000000}}));
  // Another code, another period, or no series at all.
  const std::string body = test::testData("tencent-kline-sh600519-day.json");
  EXPECT_EQ(parseTencentKline(body, "sz000001", KlinePeriod::day), std::nullopt);
  EXPECT_EQ(parseTencentKline(body, "sh600519", KlinePeriod::week), std::nullopt);
  for (const char* bad :
       {"", "{}", R"({"code":0,"data":""})", R"({"data":{"sh600519":{"qfqday":"x"}}})", "[]"})
    EXPECT_EQ(parseTencentKline(bad, "sh600519", KlinePeriod::day), std::nullopt) << bad;
  EXPECT_EQ(
      parseTencentKline(R"({"data":{"sh600519":{"qfqday":[]}}})", "sh600519", KlinePeriod::day),
      std::vector<KlineBar>{});

  const auto at = [](const std::vector<std::optional<double>>& v, size_t i) {
    return v.at(i) ? std::to_string(*v.at(i)) : "none";
  };
  const auto ma5 = movingAverage(*day, 5), ma10 = movingAverage(*day, 10),
             ma20 = movingAverage(*day, 20);
  EXPECT_EQ(List({at(ma5, 3), at(ma5, 4), at(ma5, 21), at(ma10, 8), at(ma10, 9), at(ma10, 21),
                  at(ma20, 18), at(ma20, 19), at(ma20, 21)}),
            List({"none", "12.000000", "29.000000", "none", "14.500000", "26.500000", "none",
                  "19.500000", "21.500000"}));
}

// Tencent's candles in the text-feed modes; the bridge's when Tencent fails and in the stockSDK
// mode; the first failure's reason when both fail; nothing at all for an off-exchange fund.
TEST(FetchKline, TencentThenTheBridgeAndEveryWayToFail) {
  using enum SourceMode;
  Harness h;
  const std::string base = "https://web.ifzq.gtimg.cn/appstock/app/fqkline/get?param=";
  h.http.responses[base + "sh600519,day,,,160,qfq"] = {
      200, test::testData("tencent-kline-sh600519-day.json")};
  h.http.responses[base + "sh600519,week,,,160,qfq"] = {500, "busy", {}};
  const std::string twoWeeks =
      R"({"bars":[{"date":"2026-10-05","open":1,"high":2,"low":0.5,"close":1.5,"volume":10},)"
      R"({"date":"2026-10-12","open":1,"high":0.5,"low":0.9,"close":1.5,"volume":10}]})";
  h.processes.results = {{{}, 0, true, false, twoWeeks}};  // later runs fail to start
  const auto fetch = [&](SourceMode mode, const char* symbol, KlinePeriod period) {
    std::optional<KlineAnswer> answer;
    h.data.fetchKline(mode, h.endpoints, symbol, period, [&](KlineAnswer a) { answer = a; });
    for (int turn = 0; turn < 4 && !answer; ++turn) h.scheduler.runDue();
    std::string text = answer->error.value_or("");
    for (const KlineBar& b : answer->bars) text += (text.empty() ? "" : " ") + b.date;
    return text;
  };
  EXPECT_EQ(fetch(tencent, "600519", KlinePeriod::day).substr(0, 21), "2026-10-01 2026-10-02");
  EXPECT_EQ(h.processes.requests.size(), 0u);
  EXPECT_EQ(fetch(automatic, "600519", KlinePeriod::week), "2026-10-05");
  EXPECT_EQ(fetch(sina, "600519", KlinePeriod::week), "K线请求失败");
  EXPECT_EQ(fetch(tencent, "012345", KlinePeriod::day), "场外基金没有K线");
  EXPECT_EQ(fetch(stockSDK, "020001", KlinePeriod::day), "场外基金没有K线");
  EXPECT_EQ(fetch(stockSDK, "600519", KlinePeriod::month), "stock-sdk 启动失败：no such program");
  ASSERT_EQ(h.http.requests.size(), 3u) << "the stockSDK mode and the funds ask no feed";
  EXPECT_EQ(std::pair(h.http.requests[0].timeout, h.http.requests[0].maxBytes),
            std::pair(8.0, size_t{1} << 20));
  EXPECT_EQ(h.http.requests[0].headers[0].second, "https://finance.qq.com/");
  ASSERT_EQ(h.processes.requests.size(), 3u);
  for (size_t i = 0; i < 3; ++i) EXPECT_EQ(h.processes.requests[i].arguments.at(1), "--kline");
  EXPECT_EQ(h.processes.requests[0].arguments.at(2), R"({"id":"600519","period":"week"})");
  EXPECT_EQ(h.processes.requests[2].arguments.at(2), R"({"id":"600519","period":"month"})");
}

}  // namespace
}  // namespace tidemark
