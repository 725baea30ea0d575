// Holdings: the figures and totals against values worked out by hand, the stored record pinned
// against a literal, and what the model refuses, keeps and sets aside.

#include <gtest/gtest.h>

#include <fstream>

#include "core/FileIO.h"
#include "support/ModelHarness.h"

namespace tidemark {
namespace {

using test::ModelHarness;

QuoteSnapshot quoted(const char* id, const char* market, double price, double prevClose) {
  return {id, market, "", price, prevClose};
}

// 600519 at 1,468.80 after 1,452.00; a fund in fractional units; a cost of 0; HKD and USD.
const QuoteSnapshot moutai = quoted("600519", "A股", 1468.80, 1452.00),
                    fund = quoted("510300", "A股基金", 1.35, 1.30),
                    tencent = quoted("00700", "港股", 412.4, 408.2),
                    nvidia = quoted("NVDA", "美股", 186.25, 182.40),
                    gift = quoted("AAPL", "美股", 50, 40);
const Holding moutaiHeld{"600519", 100, 1500.5}, fundHeld{"510300", 1234.56, 1.2},
    tencentHeld{"00700", 200, 380}, nvidiaHeld{"NVDA", 10, 190}, giftHeld{"AAPL", 10, 0},
    unquoted{"601318", 300, 50};

TEST(Holdings, FiguresOfEachHolding) {
  const struct {
    Holding holding;
    QuoteSnapshot quote;
    HoldingFigures figures;
  } rows[] = {
      {moutaiHeld, moutai, {146880, 1680, 1.15702479338843, -3170, -2.112629123625458}},
      {fundHeld, fund, {1666.656, 61.728, 3.8461538461538463, 185.184, 12.5}},
      {giftHeld, gift, {500, 100, 25, 500, std::nullopt}},  // a cost of 0: no percentage
  };
  for (const auto& r : rows) {
    const HoldingFigures f = holdingFigures(r.holding, r.quote);
    const HoldingFigures& e = r.figures;
    for (const auto& [got, want] :
         {std::pair{f.marketValue, e.marketValue},
          {f.dayProfit, e.dayProfit},
          {f.dayProfitPct, e.dayProfitPct},
          {f.totalProfit, e.totalProfit},
          {f.totalProfitPct.value_or(-1e9), e.totalProfitPct.value_or(-1e9)}})
      EXPECT_NEAR(got, want, 1e-9) << r.holding.symbolID;
  }
  // Texts: the amounts signed, zero without a sign, rounded half away from zero as written
  // (10.5 × 186.25 = 1,955.625; 1.005 lies just below its half in binary).
  const std::pair<double, const char*> amounts[] = {
      {1680, "+1,680.00"}, {-270, "-270.00"}, {0, "0.00"},
      {-0.004, "0.00"},    {0.006, "+0.01"},  {10.5 * 186.25, "+1,955.63"},
      {1.005, "+1.01"},    {-0.005, "-0.01"}, {1e13 + 0.5, "+10,000,000,000,000.50"},
  };
  for (const auto& [value, text] : amounts) EXPECT_EQ(signedAmountText(value), text) << value;
  EXPECT_EQ(centRounded(10.5 * 186.25), 1955.63);
  EXPECT_EQ(amountText(1955.625), "1,955.63");
  EXPECT_EQ(amountText(-0.004), "0.00");
  // The form's own digits: four places at most, no separators.
  const std::pair<double, const char*> editable[] = {
      {5.1234, "5.1234"}, {1500.5, "1500.5"}, {1234.56, "1234.56"}, {100, "100"}, {0.00004, "0"}};
  for (const auto& [value, text] : editable) EXPECT_EQ(editableNumberText(value), text) << value;
}

TEST(Holdings, TotalsPerCurrencyInTheirOrder) {
  const std::vector<QuoteSnapshot> quotes{moutai, fund, tencent, nvidia};
  const auto find = [&](const std::string& id) -> const QuoteSnapshot* {
    for (const auto& q : quotes)
      if (q.id == id) return &q;
    return nullptr;
  };
  const auto totals = holdingsTotals({nvidiaHeld, unquoted, tencentHeld, moutaiHeld, fundHeld},
                                     find, [](const std::string&) { return "CNY"; });
  const std::vector<HoldingsTotal> expected{
      {"CNY", 148546.656, 1741.728, 1.186423387639957, -2984.816, -1.9697663862197548, 1},
      {"HKD", 82480, 840, 1.02890739833415, 6480, 8.526315789473683, 0},
      {"USD", 1862.5, 38.5, 2.1107456140350878, -37.5, -1.9736842105263157, 0}};
  ASSERT_EQ(totals.size(), expected.size());
  for (size_t i = 0; i < totals.size(); ++i) {
    const HoldingsTotal &t = totals[i], &e = expected[i];
    EXPECT_EQ(std::tie(t.currency, t.missing), std::tie(e.currency, e.missing));
    for (const auto& [got, want] : {std::pair{t.marketValue, e.marketValue},
                                    {t.dayProfit, e.dayProfit},
                                    {*t.dayProfitPct, *e.dayProfitPct},
                                    {t.totalProfit, e.totalProfit},
                                    {*t.totalProfitPct, *e.totalProfitPct}})
      EXPECT_NEAR(got, want, 1e-9) << e.currency;
  }
  // Only a free holding: no total percentage; only one without a quote: a total of nothing.
  const auto free = holdingsTotals(
      {giftHeld}, [&](const std::string&) { return &gift; },
      [](const std::string&) { return "USD"; });
  EXPECT_EQ(free.at(0).totalProfitPct, std::nullopt);
  EXPECT_EQ(holdingsTotals({unquoted}, find, [](const std::string&) { return "CNY"; }),
            (std::vector<HoldingsTotal>{{"CNY", 0, 0, std::nullopt, 0, std::nullopt, 1}}));
}

#define START "816832800.0"

TEST(Holdings, TheModelRefusesKeepsAndStoresThem) {
  ModelHarness h;
  auto m = h.make();
  const std::tuple<const char*, double, double, std::optional<std::string>> entries[] = {
      {"601318", 100, 50, "只能为自选中的标的录入持仓"},
      {"hkHSI", 100, 50, "指数不能录入持仓"},
      {"600519", 0, 1500, "持有数量须大于 0"},
      {"600519", std::nan(""), 1500, "持有数量须大于 0"},
      {"600519", 100, -1, "成本价须为不小于 0 的数字"},
      {"600519", 100, INFINITY, "成本价须为不小于 0 的数字"},
      {"600519", 1.000001e12, 1500, "持有数量不能超过 1 万亿"},
      {"600519", 100, 1.000001e9, "成本价不能超过 10 亿"},
      {"600519", 1e12, 1e9, std::nullopt},    // the bounds themselves
      {"600519", 100, 1500.5, std::nullopt},  // replaces
      {"00700", 0.5, 0, std::nullopt},
  };
  for (const auto& [symbol, shares, cost, refused] : entries)
    EXPECT_EQ(m->setHolding(symbol, shares, cost), refused) << symbol << " " << shares;
  EXPECT_EQ(m->holdings(), (std::vector<Holding>{{"600519", 100, 1500.5}, {"00700", 0.5, 0}}));
  m->setShowsDayProfitInTray(true);
  const std::string stored =
      R"({"version":1,"savedAt":)" START R"(,"holdings":[{"symbolID":"600519","shares":100.0,)"
      R"("cost":1500.5},{"symbolID":"00700","shares":0.5,"cost":0.0}],"showsDayProfitInTray":true})";
  EXPECT_EQ(h.store.data(storeKeys::holdings), stored);
  std::error_code error;
  EXPECT_EQ(readFile(h.folder.path() / "holdings.json", error), stored);

  // Out of the watchlist, a holding is kept but counted nowhere; back in, it counts again.
  m->remove("00700");
  EXPECT_EQ(m->holdings().size(), 2u);
  EXPECT_EQ(m->holdingsTotals().size(), 1u) << "CNY only";
  m->add("00700");
  ASSERT_EQ(m->holdingsTotals().size(), 2u);
  EXPECT_EQ(m->holdingsTotals()[1].currency, "HKD");
  m->removeHolding("00700");
  EXPECT_EQ(m->holdings(), (std::vector<Holding>{{"600519", 100, 1500.5}}));
  EXPECT_TRUE(h.make()->showsDayProfitInTray()) << "read back";
}

// The newer of the file and the store is read, the file on a tie; an unreadable one is set
// aside; a bad entry costs only itself.
TEST(Holdings, TheNewerRecordIsReadAndABadOneSetAside) {
  const std::string fileRecord =
      R"({"version":1,"savedAt":)" START R"(,"holdings":[{"symbolID":"600519","shares":100,)"
      R"("cost":1500.5},{"symbolID":"00700","shares":-1,"cost":3}]})";
  const std::string storeNewer =
      R"({"version":1,"savedAt":816832801.0,"holdings":[{"symbolID":"NVDA","shares":3,"cost":1}]})";
  const std::string storeSame = R"({"version":1,"savedAt":)" START
                                R"(,"holdings":[{"symbolID":"NVDA","shares":3,"cost":1}]})";
  const std::string fileSame = R"({"version":1,"savedAt":)" START
                               R"(,"holdings":[{"symbolID":"600519","shares":100,"cost":1500.5}]})";
  const Holding nvda{"NVDA", 3, 1};
  const struct {
    const char* what;
    std::optional<std::string> file, store;
    std::vector<Holding> read;
    std::string setAside;  // the records' names, in order
  } cases[] = {
      {"a newer store", fileRecord, storeNewer, {nvda}, "holdings.json "},
      {"a tie: the file, bad entry dropped", fileRecord, storeSame, {moutaiHeld}, "holdings.json "},
      {"an unreadable file", "{broken", storeSame, {nvda}, "holdings.json "},
      {"a tie: the store's bad entry is written over", fileSame, fileRecord, {moutaiHeld}, ""},
      {"an unreadable store", std::nullopt, "[]", {}, storeKeys::holdings + std::string(" ")},
      {"nothing stored", std::nullopt, std::nullopt, {}, ""},
  };
  for (const auto& k : cases) {
    ModelHarness h;
    if (k.file) std::ofstream(h.folder.path() / "holdings.json") << *k.file;
    if (k.store) h.store.setData(storeKeys::holdings, *k.store);
    auto m = h.make();
    EXPECT_EQ(m->holdings(), k.read) << k.what;
    std::string aside;
    for (const auto& r : m->setAsideRecords())
      aside += std::filesystem::path(r.record).filename().string() + " ";
    EXPECT_EQ(aside, k.setAside) << k.what;
    // What is stored afterwards holds no entry that could not be read.
    EXPECT_EQ(h.store.data(storeKeys::holdings).value_or("").find("-1"), std::string::npos)
        << k.what;
    if (k.store == "[]") {
      EXPECT_EQ(h.store.data(storeKeys::holdingsUnreadable), "[]");
    }
    if (!k.file && !k.store) {
      EXPECT_FALSE(std::filesystem::exists(h.folder.path() / "holdings.json")) << "none written";
    }
  }
}

// The export carries the holdings; an import with them replaces them, bad entries skipped and
// counted; one without them leaves them alone.
TEST(Holdings, ExportAndImportCarryThem) {
  ModelHarness h;
  auto m = h.make();
  m->setWatchlist({"600519", "00700"});
  ASSERT_EQ(m->setHolding("600519", 100, 1500.5), std::nullopt);
  const auto file = h.folder.path() / "export.json";
  m->exportWatchlist(file);
  std::error_code error;
  EXPECT_EQ(readFile(file, error),
            "{\n  \"exportedAt\": \"2026-11-20T02:00:00Z\",\n  \"holdings\": [\n    {\n"
            "      \"cost\": 1500.5,\n      \"shares\": 100.0,\n      \"symbolID\": \"600519\"\n"
            "    }\n  ],\n  \"symbols\": [\n    \"600519\",\n    \"00700\"\n  ],\n"
            "  \"version\": 1\n}\n");
  const struct {
    const char* file;
    std::vector<Holding> holdings;
    std::optional<size_t> imported;
    size_t skipped;
  } imports[] = {
      // An index is watched, never held.
      {R"({"symbols":["NVDA","sh000001"],"holdings":[{"symbolID":"NVDA","shares":2,"cost":180},)"
       R"({"symbolID":"00700","shares":0,"cost":1},{"shares":1,"cost":1},"x",)"
       R"({"symbolID":"sh000001","shares":1,"cost":3000}]})",
       {{"NVDA", 2, 180}},
       1,
       4},
      // Numbers beyond the bounds are no holding; a later entry replaces an earlier in place.
      {R"({"symbols":["NVDA"],"holdings":[{"symbolID":"NVDA","shares":1e308,"cost":1},)"
       R"({"symbolID":"00700","shares":1,"cost":2e9},{"symbolID":"NVDA","shares":1,"cost":1},)"
       R"({"symbolID":"AAPL","shares":3,"cost":4},{"symbolID":"NVDA","shares":2,"cost":180}]})",
       {{"NVDA", 2, 180}, {"AAPL", 3, 4}},
       2,
       2},
      {R"({"symbols":["600519"]})", {{"NVDA", 2, 180}, {"AAPL", 3, 4}}, std::nullopt, 0},
      {R"({"symbols":["600519"],"holdings":[]})", {}, 0, 0},
  };
  for (const auto& k : imports) {
    std::ofstream(file) << k.file;
    const auto result = m->importWatchlist(file);
    EXPECT_EQ(m->holdings(), k.holdings) << k.file;
    EXPECT_EQ(result.holdings, k.imported) << k.file;
    EXPECT_EQ(result.skippedHoldings, k.skipped) << k.file;
  }
  // At most 5000 holdings are taken, the rest counted as skipped; then none can be added.
  std::string many = R"({"symbols":["600519"],"holdings":[)";
  for (int k = 0; k < 5001; ++k)
    many +=
        (k ? "," : "") + (R"({"symbolID":"A)" + std::to_string(k)) + R"(","shares":1,"cost":1})";
  std::ofstream(file) << many << "]}";
  const auto capped = m->importWatchlist(file);
  EXPECT_EQ(std::pair(capped.holdings, capped.skippedHoldings),
            std::pair(std::optional<size_t>(5000), size_t(1)));
  EXPECT_EQ(m->holdings().back().symbolID, "A4999");
  EXPECT_EQ(m->setHolding("600519", 1, 1), "持仓最多 5000 项");
  std::ofstream(file) << R"({"symbols":["NVDA"],"holdings":{"symbolID":"NVDA"}})";
  EXPECT_THROW(m->importWatchlist(file), ModelError);
  EXPECT_EQ(m->watchlist(), std::vector<std::string>{"600519"}) << "a refused file changes nothing";
}

}  // namespace
}  // namespace tidemark
