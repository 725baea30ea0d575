// Value types, number texts, dates, the endpoint set and the change signal.

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <vector>

#include "core/ChangeSignal.h"
#include "core/DataSourceEndpoints.h"
#include "core/Date.h"
#include "core/Enums.h"
#include "core/ExchangeTime.h"
#include "core/Market.h"
#include "core/NumberText.h"
#include "core/QuoteSnapshot.h"
#include "core/QuoteStyle.h"
#include "core/Url.h"

namespace tidemark {
namespace {

using List = std::vector<std::string>;

TEST(ChangeSignal, SubscriptionsEndWithTheirTokenAndMayOutliveTheSignal) {
  ChangeSignal::Subscription survivor;
  int calls = 0;
  {
    ChangeSignal signal;
    auto first = signal.subscribe([&] { ++calls; });
    {
      auto second = signal.subscribe([&] { calls += 10; });
      signal.notify();
    }
    signal.notify();
    survivor = signal.subscribe([&] { ++calls; });
  }
  survivor.reset();  // the signal is gone: nothing happens
  EXPECT_EQ(calls, 12);
}

TEST(Date, ReadsAndWritesInternetDateTimes) {
  const std::pair<const char*, double> valid[] = {
      {"2026-10-16T09:30:00+08:00", 1792114200},   {"2026-10-16T01:30:00Z", 1792114200},
      {"2026-10-16T01:30:00.250Z", 1792114200.25}, {"2026-10-15T20:30:00-0500", 1792114200},
      {"2024-02-29T00:00:00Z", 1709164800},        {"2026-10-16T09:30:00+23:59", 1792056660},
  };
  for (const auto& [text, unixSeconds] : valid)
    EXPECT_EQ(parseISO8601(text).value_or(Date::fromUnix(-1)).unixSeconds(), unixSeconds) << text;
  // 2026 is no leap year; the offset is required and its hours end at 23.
  for (const char* text : {"2026-02-29T00:00:00Z", "2026-10-16T09:30:00", "2026-10-16 09:30:00Z",
                           "2026-10-16T24:00:00Z", "2026-10-16T09:30:00+08:",
                           "2026-10-16T09:30:00+24:00", "2026-10-16T09:30:00Zjunk", ""})
    EXPECT_EQ(parseISO8601(text), std::nullopt) << text;
  // Written back in UTC with whole seconds.
  EXPECT_EQ(formatISO8601(Date{0}), "2001-01-01T00:00:00Z");
  EXPECT_EQ(formatISO8601(Date::fromUnix(1792114200.9)), "2026-10-16T01:30:00Z");
  EXPECT_EQ(formatISO8601(Date::fromUnix(-1)), "1969-12-31T23:59:59Z");
}

// Read in this order, each clock moves into and back out of the span it read last: an offset
// kept a second too long or across a step back shows here.
TEST(ExchangeTime, EachClockAcrossItsOffsetChangesBothWays) {
  const std::vector<std::tuple<Exchange, const char*, const char*>> readings{
      {Exchange::newYork, "2026-03-08T06:59:59Z", "2026-03-08T01:59:59-05:00"},
      {Exchange::newYork, "2026-03-08T07:00:00Z", "2026-03-08T03:00:00-04:00"},
      {Exchange::newYork, "2026-03-08T06:59:59Z", "2026-03-08T01:59:59-05:00"},
      {Exchange::newYork, "2026-11-01T05:59:59Z", "2026-11-01T01:59:59-04:00"},
      {Exchange::newYork, "2026-11-01T06:00:00Z", "2026-11-01T01:00:00-05:00"},
      {Exchange::newYork, "2026-11-01T05:59:59Z", "2026-11-01T01:59:59-04:00"},
      {Exchange::shanghai, "2026-11-24T16:00:00Z", "2026-11-25T00:00:00+08:00"},
      {Exchange::hongKong, "2026-07-01T03:59:59Z", "2026-07-01T11:59:59+08:00"},
  };
  for (const auto& [exchange, instant, clock] : readings) {
    const auto time = exchangeTime(exchange, *parseISO8601(instant));
    ASSERT_TRUE(time) << instant;
    EXPECT_EQ(iso8601WithOffset(*time), clock) << instant;
  }
}

TEST(Endpoints, OneBadFieldInvalidatesTheSet) {
  const std::pair<std::vector<const char*>, bool> hosts[] = {
      // The bundled set holds the other allowed domains.
      {{"https://gtimg.cn/q=", "https://deep.sub.qt.gtimg.cn/q=", "HTTPS://QT.GTIMG.CN/q=",
        "https://finance.sina.com.cn/x"},
       true},
      {{"http://qt.gtimg.cn/q=", "https://user@qt.gtimg.cn/q=", "https://evilgtimg.cn/q=",
        "https://qt.gtimg.cn.evil.com/q=", "https:///q=", "https://qt.gtimg.cn/q =",
        // A host spelled with escapes or other signs names no server the feeds can reach.
        "https://q%74.gtimg.cn/q="},
       false},
  };
  for (const auto& [texts, valid] : hosts)
    for (const char* text : texts)
      for (auto field : {&DataSourceEndpoints::tencentQuote, &DataSourceEndpoints::tencentKline}) {
        DataSourceEndpoints endpoints = DataSourceEndpoints::bundled();
        endpoints.*field = text;
        EXPECT_EQ(endpoints.isValid(), valid) << text;
      }
}

TEST(Manifest, ValidityDecodingAndTheTrustedHost) {
  const std::tuple<int64_t, int64_t, bool> cases[] = {
      {1, 1, true}, {2, 1, false}, {0, 3, false}, {1, 0, false}};
  for (auto [schema, revision, valid] : cases)
    EXPECT_EQ((DataSourceManifest{schema, revision, DataSourceEndpoints::bundled()}.isValid()),
              valid)
        << schema << " " << revision;
  // A manifest as the remote host serves it; the bridge script gets the same endpoint object. One
  // written before the K-line key keeps the bundled K-line address.
  const std::string served =
      R"({"schemaVersion":1,"revision":4,"endpoints":{"tencentQuote":"a","stockSDKTencentBase":"b",)"
      R"("sinaQuote":"c","tencentSearch":"d","sinaSearch":"e","eastmoneyFundEstimate":"f",)"
      R"("eastmoneyFundHistory":"g","yahooChart":"h","yahooSearch":"i","tencentKline":"j"}})";
  const DataSourceManifest manifest{1, 4, {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"}};
  EXPECT_EQ(decodeManifest(served), manifest);
  EXPECT_EQ(toJson(manifest).dump(), served);
  auto older =
      decodeManifest(std::string(served).replace(served.find(R"(,"tencentKline":"j")"), 19, ""));
  ASSERT_TRUE(older);
  EXPECT_EQ(older->endpoints.tencentKline,
            "https://web.ifzq.gtimg.cn/appstock/app/fqkline/get?param=");
  for (const char* bad : {"{}", "[]", R"({"schemaVersion":1,"revision":2})",
                          R"({"schemaVersion":"1","revision":2,"endpoints":{}})", "nope"})
    EXPECT_EQ(decodeManifest(bad), std::nullopt) << bad;
  // It is fetched only over https from the one trusted host.
  EXPECT_TRUE(isTrustedManifestURL("https://raw.githubusercontent.com/tidemark-app/c/x.json"));
  for (const char* url :
       {"HTTPS://raw.githubusercontent.com/x.json", "http://raw.githubusercontent.com/x.json",
        "https://raw.githubusercontent.com.evil.org/x.json",
        "https://gist.githubusercontent.com/x.json", "https://me@raw.githubusercontent.com/x.json",
        ""})
    EXPECT_FALSE(isTrustedManifestURL(url)) << url;
}

TEST(Url, Parts) {
  auto url = parseUrl("http://127.0.0.1:8080/q=sh600519,usBRK.B?x=1");
  ASSERT_TRUE(url);
  EXPECT_EQ(std::tuple(url->scheme, url->host, url->port, url->path, url->query),
            std::tuple("http", "127.0.0.1", 8080, "/q=sh600519,usBRK.B", "x=1"));
  for (const char* bad : {"http://h:99999/", "http://h/%zz", "1http://h/", "http://h/\xe4\xb8\xad",
                          "http://[::1/", "nocolon"})
    EXPECT_EQ(parseUrl(bad), std::nullopt) << bad;
  EXPECT_EQ(parseUrl("http://[::1]:80/")->host, "[::1]");
}

// Only the raw value is read back: not the case's name, nor another spelling such as `foreign`.
template <class E>
List rows(const char* foreign) {
  EXPECT_EQ(fromRawValue<E>(foreign), std::nullopt);
  List out;
  for (E value : allCases<E>()) {
    out.push_back(std::string(rawValue(value)) + "=" + std::string(label(value)));
    EXPECT_EQ(fromRawValue<E>(rawValue(value)), value);
  }
  return out;
}

TEST(Enums, CasesInDeclarationOrderWithRawValuesAndLabels) {
  EXPECT_EQ(rows<SourceMode>("staticJSON"),
            (List{"mock=模拟源", "static=静态 JSON", "automatic=自动容错", "tencent=腾讯行情",
                  "sina=新浪行情", "stockSDK=stock-sdk"}));
  EXPECT_EQ(rows<QuotePhase>("Live"),
            (List{"loading=加载中", "live=实时", "stale=已过期", "degraded=降级", "offline=离线"}));
  EXPECT_EQ(rows<AppTheme>(""), (List{"dark=深空", "light=晨雾", "aurora=极光", "amber=琥珀",
                                      "rose=樱粉", "ocean=深海"}));
  EXPECT_EQ(rows<RiseColors>("red"), (List{"redRises=红涨绿跌", "greenRises=绿涨红跌"}));
  EXPECT_EQ(rows<PricePrecision>("auto"), (List{"two=两位小数", "automatic=自动"}));
}

void expectTexts(const char* locale) {
  // Three digits before the point take no separator, with or without a sign.
  const std::pair<double, const char*> prices[] = {
      {1234.5, "1,234.50"},   {-123.4, "-123.40"}, {999.999, "1,000.00"},
      {-1234.5, "-1,234.50"}, {100, "100.00"},     {1234567.891, "1,234,567.89"},
  };
  for (auto [value, text] : prices) EXPECT_EQ(priceText(value), text) << value << locale;
  const std::pair<double, const char*> percentages[] = {
      {1.234, "+1.23%"}, {0, "0.00%"}, {0.001, "+0.00%"}, {-0.001, "-0.00%"}};
  for (auto [value, text] : percentages) EXPECT_EQ(percentText(value), text) << value << locale;
  const std::pair<int64_t, const char*> volumes[] = {
      {9999, "9999"}, {10000, "1.0万"}, {99999999, "10000.0万"}, {100000000, "1.00亿"}, {-5, "-5"},
  };
  for (auto [value, text] : volumes) EXPECT_EQ(volumeText(value), text) << value << locale;
}

TEST(NumberText, PricesPercentagesAndVolumesWhateverTheProcessLocale) {
  expectTexts("");
  if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) GTEST_SKIP() << "no German locale installed";
  expectTexts(" in de_DE");
  std::setlocale(LC_ALL, "C");
}

const Color red = Color::hex(0xFF453A), green = Color::hex(0x32D74B), grey = Color::hex(0x8E8E93);

TEST(QuoteColors, DeadBandAndWhichWayRises) {
  const std::pair<double, Color> cases[] = {
      {0.0001, grey}, {-0.0001, grey}, {0.00011, red}, {-0.00011, green}};
  for (auto [change, color] : cases) EXPECT_EQ(quoteColor(change), color) << change;
  const QuoteStyle greenRises{RiseColors::greenRises};
  EXPECT_EQ(std::tuple(greenRises.color(1.5), greenRises.color(-1.5)), std::tuple(green, red));
  EXPECT_EQ(std::tuple(QuoteStyle{}.color(1.5), QuoteStyle{}.color(-1.5)), std::tuple(red, green));
}

TEST(QuoteStyle, DecimalsByPrecisionAndSecurity) {
  using enum PricePrecision;
  struct Case {
    const char* symbol;
    const char* market;
    double price;
    const char* two;
    const char* automatic;
  };
  const Case cases[] = {
      {"600519", "A股", 1500.5, "1,500.50", "1,500.50"},
      {"510300", "A股基金", 4.1234, "4.12", "4.123"},    // Shanghai ETF
      {"159915", "A股基金", 2.5, "2.50", "2.500"},       // Shenzhen ETF
      {"161725", "A股", 1.0006, "1.00", "1.001"},        // LOF, labelled as shares by a feed
      {"000001", "A股", 11.456, "11.46", "11.46"},       // 平安银行, not a fund
      {"012345", "A股基金", 1.23456, "1.23", "1.2346"},  // sold off the exchange
      {"00700", "港股", 0.856, "0.86", "0.856"},         // a Hong Kong penny stock
      {"00700", "港股", 1.0, "1.00", "1.00"},            // from 1 on, two
      {"NVDA", "美股", 0.5, "0.50", "0.50"},
      {"sh000001", "A股指数", 3001.234, "3,001.23", "3,001.23"},  // points
      {"00981", "", 0.5, "0.50", "0.500"},                        // no label: read off the code
  };
  for (const Case& c : cases) {
    const QuoteSnapshot quote{c.symbol, c.market, "n", c.price, 1, 0, 0, 0, {}, "mock"};
    EXPECT_EQ(QuoteStyle{.precision = two}.price(quote), c.two) << c.symbol;
    EXPECT_EQ(QuoteStyle{.precision = automatic}.price(quote), c.automatic) << c.symbol;
  }
  // What the user typed keeps its digits in either precision, and gains the security's.
  const std::tuple<const char*, double, const char*, const char*> typed[] = {
      {"600519", 5.1234, "5.1234", "5.1234"},
      {"600519", 1500.5, "1,500.50", "1,500.50"},
      {"012345", 1.2, "1.20", "1.2000"},
      {"00700", 0.5, "0.50", "0.500"},
      {"600519", 0.123456789, "0.12345679", "0.12345679"}};
  for (const auto& [symbol, value, inTwo, inAuto] : typed) {
    EXPECT_EQ(QuoteStyle{.precision = two}.typed(symbol, value), inTwo) << value;
    EXPECT_EQ(QuoteStyle{.precision = automatic}.typed(symbol, value), inAuto) << value;
  }
  EXPECT_EQ(priceText(1234567.5, 0), "1,234,568");
}

QuoteSnapshot sample() {
  return {"600519", "A股", "贵州茅台",          1468.8,   1452, 1475,
          1448.1,   32165, Date{813'000'000.5}, "tencent"};
}

TEST(QuoteSnapshot, ChangePercentAndCurrency) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  // Price, previous close, the change in percent: zero unless the previous close is positive.
  const std::tuple<double, double, double> changes[] = {
      {11, 10, 10}, {9, 10, -10}, {5, 0, 0}, {5, nan, 0}, {5, -2, 0}};
  for (auto [price, prevClose, percent] : changes) {
    QuoteSnapshot q = sample();
    q.price = price;
    q.prevClose = prevClose;
    EXPECT_EQ(q.changePct(), percent) << price << " " << prevClose;
  }
  // The currency, by the exact market label; indices are points.
  const std::pair<const char*, List> currencies[] = {{"HKD", {"港股", "港股基金"}},
                                                     {"USD", {"美股", "美股基金"}},
                                                     {"CNY", {"A股", "A股基金", "", "港股 "}},
                                                     {"", {"A股指数", "港股指数", "美股指数"}}};
  for (const auto& [currency, markets] : currencies)
    for (const std::string& market : markets) {
      QuoteSnapshot q = sample();
      q.market = market;
      EXPECT_EQ(q.currency(), currency) << market;
    }
}

TEST(Market, ASymbolAsTheFeedsAndTheWatchlistLabelIt) {
  // The feed's label and the label of a watchlist row without a quote, and the symbols that get
  // them. The two differ on fund codes and on unusual lengths.
  const std::tuple<const char*, const char*, List> cases[] = {
      {"A股", "A股", {"600519"}},
      {"A股", "A股基金", {"510300", "159915", "012345", "161725"}},
      {"A股", "美股", {"1600", ""}},
      {"港股", "港股", {"00700"}},
      {"美股", "美股", {"0700A", "sh00001", "hkhsi"}},
      {"A股指数", "A股指数", {"sh000001", "bj899050"}},
      {"港股指数", "港股指数", {"hkHSTECH"}},
      {"美股指数", "美股指数", {"usIXIC"}}};
  for (const auto& [feed, row, symbols] : cases)
    for (const std::string& symbol : symbols) {
      EXPECT_EQ(marketLabel(feedMarket(symbol)), feed) << symbol;
      EXPECT_EQ(marketLabel(watchlistMarket(symbol)), row) << symbol;
    }
}

TEST(QuoteSnapshot, DecodingFailsOnAMissingKeyOrAWrongType) {
  const std::vector<std::pair<std::string, Json>> breaks{
      {"id", nullptr},       {"volume", 1.5}, {"volume", "1"},   {"price", "1468.8"},
      {"updatedAt", "2026"}, {"source", 3},   {"market", false},
  };
  for (const auto& [key, value] : breaks) {
    Json object = toJson(sample());
    object[key] = value;
    EXPECT_EQ(quoteFromJson(object), std::nullopt) << key << "=" << value;
    object.erase(key);
    EXPECT_EQ(quoteFromJson(object), std::nullopt) << "without " << key;
  }
  Json wholeVolume = toJson(sample());
  wholeVolume["volume"] = 32165.0;
  EXPECT_EQ(quoteFromJson(wholeVolume), sample());
}

}  // namespace
}  // namespace tidemark
