// The yuan totals of the holdings and the US securities' pre- and post-market trades.

#include <gtest/gtest.h>

#include "core/Market.h"
#include "model/MarketExtras.h"
#include "support/ModelHarness.h"

namespace tidemark {
namespace {

using test::ModelHarness;
using List = std::vector<std::string>;

constexpr double day = 86400;
// New York's clock (UTC-5) on Wednesday 2026-11-25 (day 0) and the days around it.
Date ny(int hour, int minute, int dayOffset = 0) {
  return Date{817'257'600 + dayOffset * day + (hour + 5) * 3600 + minute * 60};
}
const Date preMarket = ny(4, 40), regular = ny(10, 0), postMarket = ny(16, 30);

TEST(YuanTotal, EveryCurrencyAtARateLessThanADayOld) {
  const std::vector<HoldingsTotal> totals{{"CNY", 146'880, 1'680, 1.157, 26'880, 22.4, 0, 1},
                                          {"HKD", 48'520, 662, 1.383, 8'520, 21.3, 1, 1},
                                          {"USD", 18'625, 385, 2.111, 625, 3.47, 0, 1}};
  MarketExtras extras;
  const Date fetched{817'282'740};  // 14:59 in Beijing
  extras.takeRates({{"USD", 7.1034}, {"HKD", 0.9123}}, fetched);
  const auto yuan = extras.yuanTotal(totals, fetched + 600, false);
  ASSERT_TRUE(yuan);
  // 146880 + 48520 × 0.9123 + 18625 × 7.1034 = 146880 + 44264.796 + 132300.825
  EXPECT_NEAR(yuan->marketValue, 323'445.621, 1e-6);
  // 1680 + 662 × 0.9123 + 385 × 7.1034 = 1680 + 603.9426 + 2734.809
  EXPECT_NEAR(yuan->dayProfit, 5'018.7516, 1e-6);
  // 26880 + 8520 × 0.9123 + 625 × 7.1034 = 26880 + 7772.796 + 4439.625
  EXPECT_NEAR(yuan->totalProfit, 39'092.421, 1e-6);
  EXPECT_EQ(ratesText(*yuan, "14:59"), "汇率 USD 7.1034 · HKD 0.9123 · 14:59");

  // A rate a day old, or one never fetched, is not guessed; a currency not held needs none.
  EXPECT_FALSE(extras.yuanTotal(totals, fetched + day, false));
  EXPECT_TRUE(extras.yuanTotal(totals, fetched + (day - 1), false));
  MarketExtras usdOnly;
  usdOnly.takeRates({{"USD", 7.1034}}, fetched);
  EXPECT_FALSE(usdOnly.yuanTotal(totals, fetched, false));
  EXPECT_EQ(ratesText(*usdOnly.yuanTotal({totals[2]}, fetched, false), "14:59"),
            "汇率 USD 7.1034 · 14:59");
  // Holdings without a quote need no rate; the demonstration has its own, marked.
  EXPECT_TRUE(usdOnly.yuanTotal({totals[0], {"HKD", 0, 0, {}, 0, {}, 2, 0}}, fetched, false));
  const auto demo = MarketExtras().yuanTotal(totals, fetched, true);
  ASSERT_TRUE(demo);
  EXPECT_EQ(ratesText(*demo, "—"), "演示汇率 USD 7.1200 · HKD 0.9150");
}

TEST(ExtendedHours, OnlyATradeOfTheSessionNewYorkIsIn) {
  const auto trade = [](Date at) { return ExtendedQuote{"NVDA", 187.12, 0.47, at}; };
  const std::tuple<const char*, Date, Date, bool> cases[] = {
      {"pre-market, this morning", preMarket, ny(4, 27), true},
      {"pre-market, last evening's post-market", preMarket, ny(19, 59, -1), false},
      {"pre-market, yesterday's pre-market", preMarket, ny(4, 27, -1), false},
      {"pre-market, a stamp ahead of the clock", preMarket, ny(4, 41), false},
      {"regular session", regular, ny(9, 0), false},
      {"post-market, this afternoon", postMarket, ny(16, 5), true},
      {"post-market, this morning's pre-market", postMarket, preMarket, false},
  };
  for (const auto& [name, now, at, kept] : cases)
    EXPECT_EQ(isCurrentSessionTrade(trade(at), now), kept) << name;
  EXPECT_EQ(extendedDetailText("盘前", trade(ny(4, 27)), "187.12"),
            "盘前 187.12 +0.47%  04:27 美东");
  EXPECT_EQ(extendedTooltipText("盘后", trade(postMarket), "187.12"), " · 盘后 187.12 (+0.47%)");
  EXPECT_EQ(extendedRowText("盘前", trade(preMarket)), "盘前 +0.47%");
}

// The live modes ask the rates while a holding needs them and the extended trades of the
// watched US securities while New York is in extended hours; P/L keeps the regular price.
TEST(ExtendedHours, TheModelAsksKeepsAndDropsThem) {
  ModelHarness h;
  h.clock.set(preMarket);
  auto m = h.make();
  m->setWatchlist({"600519", "NVDA", "usIXIC", "QQQ", "00700"});
  ASSERT_EQ(m->setHolding("600519", 100, 1400), std::nullopt);
  m->setSourceMode(SourceMode::tencent);
  QuoteSnapshot nvidia = test::quote("NVDA", 186.25, 182.4, "tencent", preMarket);
  nvidia.market = marketLabel(Market::usShare);
  h.source.answers[SourceMode::tencent] = {{test::quote("600519", 1468.8), nvidia}, {}};
  h.source.extendedRequests.clear();
  h.source.extendedAnswer = {
      {{"NVDA", 187.12, 0.47, ny(4, 27)}, {"QQQ", 602.1, 0.11, ny(19, 40, -1)}}, std::nullopt};
  m->loadSource(false);
  EXPECT_EQ(h.source.rateRequests, 0u) << "only yuan holdings";
  EXPECT_EQ(h.source.extendedRequests, (std::vector<List>{{"NVDA", "QQQ"}}));
  ASSERT_NE(m->extras().extended("NVDA"), nullptr);
  EXPECT_EQ(m->extras().extended("NVDA")->price, 187.12);
  EXPECT_EQ(m->extras().extended("QQQ"), nullptr) << "last evening's";
  EXPECT_EQ(m->quote("NVDA")->price, 186.25);

  // A foreign holding brings the rates; a failed answer keeps those held.
  ASSERT_EQ(m->setHolding("NVDA", 10, 150), std::nullopt);
  h.source.ratesAnswer = {{{"USD", 7.1034}}, std::nullopt};
  m->loadSource(false);
  EXPECT_EQ(h.source.rateRequests, 1u);
  ASSERT_TRUE(m->yuanTotal(m->holdingsTotals()));
  EXPECT_EQ(m->yuanTotal(m->holdingsTotals())->rates,
            (std::vector<std::pair<std::string, double>>{{"USD", 7.1034}}));
  h.source.ratesAnswer = {{}, "汇率请求失败"};
  h.clock.advance(59);
  m->loadSource(false);
  EXPECT_EQ(h.source.rateRequests, 1u) << "at most once a minute";
  h.clock.advance(1);
  m->loadSource(false);
  EXPECT_EQ(h.source.rateRequests, 2u);
  EXPECT_TRUE(m->yuanTotal(m->holdingsTotals()));

  // The regular session ends the extended trades and asks for none.
  h.clock.set(regular);
  m->heartbeat();
  EXPECT_EQ(m->extras().extended("NVDA"), nullptr);
  h.source.extendedRequests.clear();
  m->loadSource(false);
  EXPECT_EQ(h.source.extendedRequests.size(), 0u);
  // The demonstration has no extended trades and fixed rates.
  m->setSourceMode(SourceMode::mock);
  EXPECT_TRUE(m->yuanTotal(m->holdingsTotals())->demonstration);
}

}  // namespace
}  // namespace tidemark
