// The rate rows and the US rows' extended-hours fields, from bodies written by hand.

#include <gtest/gtest.h>

#include "sources/ExtraFeeds.h"
#include "sources/LiveMarketData.h"
#include "support/Fakes.h"

namespace tidemark {
namespace {

using List = std::vector<std::string>;

// 2026-11-25T09:40:00Z, 04:40 in New York's pre-market, in seconds since 2001-01-01.
const Date now{817'257'600 + 9 * 3600 + 40 * 60};

// Tencent's rate rows as qt.gtimg.cn/q=whUSDCNY,whHKDCNY serves them: "~"-separated, the code,
// the pair's name, its symbol, then the yuan rate in the fourth field.
TEST(ExtraFeeds, RatesFromTheFourthField) {
  const std::pair<std::string, RateMap> cases[] = {
      {"v_whUSDCNY=\"310~美元人民币~USDCNY~7.1034~7.1010~7.1102~7.0988~20261125145900\";\n"
       "v_whHKDCNY=\"310~港币人民币~HKDCNY~0.9123~0.9120~0.9130~0.9110~20261125145900\";\n",
       {{"USD", 7.1034}, {"HKD", 0.9123}}},
      {"v_whUSDCNY=\"310~美元人民币~USDCNY~0.0000~7.1010\";\nv_whHKDCNY=\"310~港币~HKDCNY\";", {}},
      {"v_whUSDCNY=\"310~美元人民币~USDCNY~-7.1~7.1010\";", {}},
      {"xv_whUSDCNY=\"310~美元人民币~USDCNY~7.1034\";\nv_whHKDCNY=\"1~2~3~0.9123\";",
       {{"HKD", 0.9123}}},
      {"v_whUSDCNY=\"310~美元人民币~USDCNY~7.10", {}},
  };
  for (const auto& [body, rates] : cases) EXPECT_EQ(parseTencentRates(body), rates) << body;
}

// Sina's US rows as hq.sinajs.cn/list=gb_aapl serves them: fields 0 to 20 the regular session,
// then the extended hours: 21 the price, 22 its change in percent, 23 the change, 24 its time on
// New York's clock, 25 the regular session's time, 26 the previous close, 27 the volume.
std::string usRow(const std::string& code, const std::string& extended) {
  return "var hq_str_gb_" + code +
         "=\"苹果,229.9500,-0.71,2026-11-25 05:00:00,-1.6500,231.0000,232.4800,228.7100,"
         "260.1000,164.0800,51377620,49210044,3415000000000,7.92,29.04,0.00,0.99,1.04,0.45,"
         "14840000000,61.00," +
         extended + "\";\n";
}

TEST(ExtraFeeds, ExtendedHoursFromTheUsRows) {
  // New York's clock on 2026-11-25, standard time.
  const auto ny = [](int hour, int minute) {
    return Date{817'257'600 + (hour + 5) * 3600.0 + minute * 60};
  };
  const std::string body =
      usRow("aapl", "231.0300,0.47,1.0800,Nov 25 04:27AM EST,Nov 24 04:00PM EST,229.9500,182300") +
      usRow("nvda", "0.0000,0.00,0.0000,Nov 24 04:00PM EST,Nov 24 04:00PM EST,186.2500,0") +
      usRow("msft", "516.20,-0.35,-1.80,Nov 25 4:27AM EST,Nov 24 04:00PM EST,515.10,800") +
      usRow("tsla", "405.00,1.20,4.80,Nov 25 12:05AM EST,Nov 24 04:00PM EST,400.20,900") +
      usRow("amd", "150.10,-0.20,-0.30,Nov  5 07:15AM EST") + usRow("brk.b", "480.10,-0.10") +
      usRow("spy", "670.50,0.06,0.38,Nov 24 07:59PM EST");
  const auto quotes =
      parseSinaExtended(body, {"SPY", "AAPL", "NVDA", "MSFT", "TSLA", "BRK.B", "QQQ", "AMD"}, now);
  EXPECT_EQ(quotes, (std::vector<ExtendedQuote>{
                        {"SPY", 670.50, 0.06, ny(-5, 59)},  // 19:59 the day before
                        {"AAPL", 231.03, 0.47, ny(4, 27)},
                        {"TSLA", 405.00, 1.20, ny(0, 5)},
                        {"AMD", 150.10, -0.20, ny(7 - 20 * 24, 15)}}));  // 5 November
  // The year that puts the time latest but no more than a day ahead: New Year's Eve read on
  // New Year's morning is last year's.
  const Date newYear{820'454'400 + 6 * 3600};  // 2027-01-01T06:00:00Z
  EXPECT_EQ(
      parseSinaExtended(usRow("aapl", "1,2,3,Dec 31 07:59PM EST"), {"AAPL"}, newYear).at(0).at,
      Date{newYear.sinceReference - 5 * 3600 - 60});
}

// One request each, on the text feeds' hosts with their headers, and every way it fails.
TEST(ExtraFeeds, OneRequestEachAndEveryWayToFail) {
  ManualClock clock{now};
  ManualScheduler scheduler{clock};
  test::FakeHttpClient http{scheduler};
  test::FakeProcessRunner processes{scheduler};
  StockSDKBridge bridge{processes, clock, BridgeSetup{}};
  LiveMarketData data{http, bridge, clock};
  auto endpoints = DataSourceEndpoints::bundled();
  const auto rates = [&] {
    std::optional<std::pair<RateMap, std::optional<std::string>>> answer;
    data.fetchRates(endpoints, [&](RateMap r, auto error) { answer.emplace(r, error); });
    scheduler.runDue();
    return answer.value();
  };
  const std::string ratesUrl = "https://qt.gtimg.cn/q=whUSDCNY,whHKDCNY";
  http.responses[ratesUrl] = {200, "v_whUSDCNY=\"1~2~3~7.1034\";"};
  EXPECT_EQ(rates(), std::pair(RateMap{{"USD", 7.1034}}, std::optional<std::string>()));
  const std::pair<HttpResponse, const char*> failures[] = {
      {{{}, {}, "请求超时"}, "请求超时"},
      {{502, "v_whUSDCNY=\"1~2~3~7.1034\";"}, "汇率请求失败"},
      {{200, "v_whUSDCNY=\"\";"}, "汇率数据无法读取"},
  };
  for (const auto& [response, error] : failures) {
    http.responses[ratesUrl] = response;
    EXPECT_EQ(rates(), std::pair(RateMap{}, std::optional<std::string>(error)));
  }

  std::optional<List> traded;
  http.responses["https://hq.sinajs.cn/list=gb_aapl,gb_brk.b"] = {
      200, usRow("aapl", "231.0300,0.47,1.0800,Nov 25 04:27AM EST")};
  data.fetchExtendedHours(endpoints, {"AAPL", "BRK.B"}, [&](auto quotes, auto error) {
    traded.emplace(List{error.value_or("")});
    for (const ExtendedQuote& q : quotes) traded->push_back(q.symbol);
  });
  scheduler.runDue();
  EXPECT_EQ(traded, (List{"", "AAPL"}));
  ASSERT_EQ(http.requests.size(), 5u);
  EXPECT_EQ(http.requests[0].headers[0].second, "https://finance.qq.com/");
  EXPECT_EQ(http.requests[4].headers[0].second, "https://finance.sina.com.cn/");
  endpoints.tencentQuote = "https://qt.gtimg.cn/q =";
  EXPECT_EQ(rates().second, "汇率地址无效");
}

}  // namespace
}  // namespace tidemark
