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
  using enum SourceMode;
  const std::tuple<const char*, SourceMode, std::optional<std::string>> cases[] = {
      {"600519", tencent, "sh600519"},
      {"510300", tencent, "sh510300"},
      {"000001", tencent, "sz000001"},
      {"300750", tencent, "sz300750"},
      {"830799", tencent, "bj830799"},
      {"430047", tencent, "bj430047"},
      {"00700", tencent, "sz00700"},
      {"AAPL", tencent, "usAAPL"},
      {"nvda", tencent, "usNVDA"},
      {"0070A", tencent, "hk0070A"},
      // five characters with a letter take the Hong Kong prefix, tickers included
      {"brk.b", tencent, "hkbrk.b"},
      {"GOOGL", sina, "rt_hkGOOGL"},
      {"700000", tencent, std::nullopt},
      {"", tencent, std::nullopt},
      {"AAPL", sina, "gb_aapl"},
      {"0070A", sina, "rt_hk0070A"},
      {"600519", sina, "sh600519"},
      {"00700", sina, "sz00700"},
      {"600519", mock, std::nullopt},
      {"600519", staticJSON, std::nullopt},
      {"600519", automatic, std::nullopt},
      {"600519", stockSDK, std::nullopt},
  };
  for (const auto& [symbol, source, code] : cases)
    EXPECT_EQ(marketCode(symbol, source), code) << symbol << " " << rawValue(source);
}

TEST(Decoding, TriesGB18030ThenUTF8ThenRepairs) {
  const std::pair<std::string, std::string> cases[] = {
      {"plain ascii", "plain ascii"},
      {"\xb9\xf3\xd6\xdd\xc3\xa9\xcc\xa8", "贵州茅台"},  // GBK
      {"\x81\x30\x81\x30", "\xc2\x80"},                  // a four-byte GB 18030 character
      {"\xe2\x82\xac", "€"},                             // UTF-8 that is no GB 18030
      {"a\xff"
       "b",
       "a\xef\xbf\xbd"
       "b"},                                                     // neither: replaced
      {"\xb9\xf3\xd6", "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"},  // truncated GBK: three marks
      {"\xf0\x9f\x98", "\xef\xbf\xbd"},  // a cut-off emoji: one maximal subpart, one mark
  };
  for (const auto& [bytes, text] : cases) EXPECT_EQ(decodeLiveText(bytes), text) << bytes;
}

TEST(TencentParser, RecordedBody) {
  const std::string text = decodeLiveText(test::testData("tencent-basic.gbk"));
  EXPECT_EQ(
      parseTencent(text, {"600519", "00700", "NVDA", "000858", "600519", "601318"}, at),
      (std::vector<QuoteSnapshot>{
          q("600519", "A股", "贵州茅台", 1468.80, 1452.00, 1475.00, 1448.10, 32165, "tencent"),
          q("NVDA", "美股", "英伟达", 186.25, 182.40, 187.90, 181.75, 168420310, "tencent"),
          q("000858", "A股", "五粮液", 127.05, 128.40, 129.12, 126.55, 184332, "tencent"),
          q("600519", "A股", "贵州茅台", 1468.80, 1452.00, 1475.00, 1448.10, 32165, "tencent"),
      }));  // 00700 asks for sz00700, which the body does not hold
}

TEST(TencentParser, EdgeRows) {
  const std::string text = decodeLiveText(test::testData("tencent-edge.gbk"));
  EXPECT_EQ(parseTencent(text, {"600000", "601988", "300750", "000001", "688981"}, at),
            (std::vector<QuoteSnapshot>{
                // seven fields: high and low are the price
                q("600000", "A股", "浦发银行", 10.50, 10.40, 10.50, 10.50, 88000, "tencent"),
                // high below the price is widened to it
                q("300750", "A股", "宁德时代", 272.30, 268.50, 272.30, 267.20, 226514, "tencent"),
                // "~~" empty fields keep their place; an empty volume reads 0
                q("000001", "A股", "平安银行", 11.61, 11.52, 11.66, 11.49, 0, "tencent"),
            }));  // 601988 is suspended (0.00); 688981's payload never closes
}

TEST(TencentParser, ABodyNeitherGB18030NorUTF8StillParses) {
  const std::string text = decodeLiveText(test::testData("tencent-undecodable.bin"));
  EXPECT_EQ(parseTencent(text, {"600519"}, at),
            (std::vector<QuoteSnapshot>{q("600519", "A股", "\xef\xbf\xbd\xef\xbf\xbd茅台", 10, 9,
                                          10, 10, 100, "tencent")}));
}

TEST(TencentParser, FirstOccurrenceAndBadRows) {
  const std::string text =
      "v_sh600519=\"1~A~600519~2.00~1.00~1~5\";v_sh600519=\"1~B~600519~3.00~1.00~1~5\";"
      "v_sz000002=\"1~C~000002~x~1.00~1~5\";v_sz000003=\"1~D~000003~1.00~-1~1~5\";"
      "v_sz000004=\"\";v_sz000005=\"1~E~000005~1.5~1~1~1000000000000000000000000000000\";v_"
      "sz000006=\"";
  const auto records =
      parseTencent(text, {"600519", "000002", "000003", "000004", "000005", "000006"}, at);
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].name, "A");
  EXPECT_EQ(records[1].volume, INT64_MAX);  // far beyond 64 bits: clamped, not undefined
}

TEST(TencentParser, OnlyPlainDecimalTextIsANumber) {
  // Each text stands in the high (fallback: the price, 10) and the volume (fallback: 0) field.
  const std::tuple<const char*, double, int64_t> cases[] = {
      {"12.5", 12.5, 12},
      {"+12", 12, 12},
      {"-5", 10, -5},
      {"12.", 12, 12},
      {"12345678901234567.5", 12345678901234568.0, 12345678901234568},
      {"+-5", 10, 0},
      {"-+5", 10, 0},
      {"++5", 10, 0},
      {" 15", 10, 0},
      {"15 ", 10, 0},
      {"1e2", 10, 0},
      {"1.2.3", 10, 0},
      {"inf", 10, 0},
      {"0x1A", 10, 0},
      {"+", 10, 0},
      {".", 10, 0},
      {"", 10, 0},
  };
  for (const auto& [text, high, volume] : cases) {
    std::string fields = "1~N~600519~10.00~9.00~1~" + std::string(text);
    for (int i = 7; i < 33; ++i) fields += "~";
    fields += std::string("~") + text + "~9.50";
    const auto records = parseTencent("v_sh600519=\"" + fields + "\";", {"600519"}, at);
    ASSERT_EQ(records.size(), 1u) << text;
    EXPECT_EQ(records[0].high, high) << text;
    EXPECT_EQ(records[0].volume, volume) << text;
  }
  // A price that is no plain number skips the row.
  EXPECT_TRUE(parseTencent("v_sh600519=\"1~N~600519~+-10~9~1~5\";", {"600519"}, at).empty());
}

TEST(SinaParser, RecordedBody) {
  const std::string text = decodeLiveText(test::testData("sina-basic.gbk"));
  EXPECT_EQ(parseSina(text, {"600519", "AAPL", "ABCDE", "WXYZ1", "WXYZ2", "000858"}, at),
            (std::vector<QuoteSnapshot>{
                q("600519", "A股", "贵州茅台", 1468.80, 1452.00, 1475.00, 1448.10, 3216500, "sina"),
                // the fixed five-character layout: prevClose 4, price 5, high 2, low 3
                q("ABCDE", "美股", "TEST HOLDINGS", 12.00, 12.50, 12.30, 12.00, 2, "sina"),
            }));
  // A US row holds its date in field 3, where the layout reads the price; WXYZ1 and WXYZ2 have
  // 4 and 5 fields; 000858's payload is empty.
}

}  // namespace
}  // namespace tidemark
