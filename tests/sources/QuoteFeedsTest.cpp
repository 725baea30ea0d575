#include <gtest/gtest.h>

#include "sources/QuoteFeeds.h"
#include "sources/TextDecoding.h"
#include "support/LoopbackServer.h"

namespace tidemark {
namespace {

using List = std::vector<std::string>;
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
      {"510300", "sh510300", "sh510300"}, {"300750", "sz300750", "sz300750"},
      {"830799", "bj830799", "bj830799"}, {"430047", "bj430047", "bj430047"},
      {"nvda", "usNVDA", "gb_nvda"},      {"brk.b", "hkbrk.b", "rt_hkbrk.b"},
      {"GOOGL", "hkGOOGL", "rt_hkGOOGL"}};
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
  };
  for (const auto& [bytes, text] : cases) EXPECT_EQ(decodeLiveText(bytes), text) << bytes;
}

TEST(FeedParsers, RecordedAndHandWrittenBodies) {
  const auto file = [](const char* name) { return decodeLiveText(test::testData(name)); };
  using Case = std::tuple<decltype(&parseTencent), std::string, List, std::vector<QuoteSnapshot>>;
  const Case cases[] = {
      // 00700 asks for sz00700, which the body does not hold.
      {parseTencent,
       file("tencent-basic.gbk"),
       {"600519", "00700", "NVDA", "000858", "600519", "601318"},
       {q("600519", "A股", "贵州茅台", 1468.80, 1452.00, 1475.00, 1448.10, 32165, "tencent"),
        q("NVDA", "美股", "英伟达", 186.25, 182.40, 187.90, 181.75, 168420310, "tencent"),
        q("000858", "A股", "五粮液", 127.05, 128.40, 129.12, 126.55, 184332, "tencent"),
        q("600519", "A股", "贵州茅台", 1468.80, 1452.00, 1475.00, 1448.10, 32165, "tencent")}},
      // 601988 is suspended (0.00); 688981's payload never closes.
      {parseTencent,
       file("tencent-edge.gbk"),
       {"600000", "601988", "300750", "000001", "688981"},
       {// seven fields: high and low are the price
        q("600000", "A股", "浦发银行", 10.50, 10.40, 10.50, 10.50, 88000, "tencent"),
        // high below the price is widened to it
        q("300750", "A股", "宁德时代", 272.30, 268.50, 272.30, 267.20, 226514, "tencent"),
        // "~~" empty fields keep their place; an empty volume reads 0
        q("000001", "A股", "平安银行", 11.61, 11.52, 11.66, 11.49, 0, "tencent")}},
      // Neither GB 18030 nor UTF-8: the bad bytes are replaced and the row still parses.
      {parseTencent,
       file("tencent-undecodable.bin"),
       {"600519"},
       {q("600519", "A股", "\xef\xbf\xbd\xef\xbf\xbd茅台", 10, 9, 10, 10, 100, "tencent")}},
      // The first of two rows wins; a bad price, a negative close, an empty or unclosed
      // payload skip their rows; a volume far beyond 64 bits is clamped, not undefined.
      {parseTencent,
       "v_sh600519=\"1~A~600519~2.00~1.00~1~5\";v_sh600519=\"1~B~600519~3.00~1.00~1~5\";"
       "v_sz000002=\"1~C~000002~x~1.00~1~5\";v_sz000003=\"1~D~000003~1.00~-1~1~5\";"
       "v_sz000004=\"\";v_sz000005=\"1~E~000005~1.5~1~1~1000000000000000000000000000000\";"
       "v_sz000006=\"",
       {"600519", "000002", "000003", "000004", "000005", "000006"},
       {q("600519", "A股", "A", 2, 1, 2, 2, 5, "tencent"),
        q("000005", "A股", "E", 1.5, 1, 1.5, 1.5, INT64_MAX, "tencent")}},
      // ABCDE reads the five-character layout: prevClose 4, price 5, high 2, low 3. AAPL's row
      // has its date in field 3, the price's; WXYZ1, WXYZ2 have 4, 5 fields; 000858's is empty.
      {parseSina,
       file("sina-basic.gbk"),
       {"600519", "AAPL", "ABCDE", "WXYZ1", "WXYZ2", "000858"},
       {q("600519", "A股", "贵州茅台", 1468.80, 1452.00, 1475.00, 1448.10, 3216500, "sina"),
        q("ABCDE", "美股", "TEST HOLDINGS", 12.00, 12.50, 12.30, 12.00, 2, "sina")}},
  };
  for (const auto& [parse, text, symbols, records] : cases)
    EXPECT_EQ(parse(text, symbols, at), records) << testing::PrintToString(symbols);
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

}  // namespace
}  // namespace tidemark
