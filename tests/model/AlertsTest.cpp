// Several alerts: each kind at, past and short of its level, the exchanges' dates, one
// notification per symbol and minute, the stored record, and what the model refuses and reads.

#include <gtest/gtest.h>

#include <fstream>

#include "core/FileIO.h"
#include "support/ModelHarness.h"

namespace tidemark {
namespace {

using test::ModelHarness;

Date at(const char* iso) {
  return *parseISO8601(iso);
}

QuoteSnapshot quoted(const std::string& id, const char* market, double price, double prevClose) {
  return {id, market, "名称" + id, price, prevClose};
}

AlertRule rule(const char* id, const char* symbol, AlertKind kind, double threshold,
               AlertRepeat repeat = AlertRepeat::once) {
  return AlertRule{id, symbol, kind, threshold, repeat, true, std::nullopt};
}

// Shanghai trades (10:00 on a Friday); New York sleeps (21:00 the evening before).
const Date shanghaiMorning = at("2026-11-20T02:00:00Z");
// Shanghai sleeps (23:00), New York trades (10:00).
const Date newYorkMorning = at("2026-11-20T15:00:00Z");

TEST(Alerts, EachKindFiresAtAndPastItsLevelAndOnlyWithWholePrices) {
  using enum AlertKind;
  const struct {
    const char* what;
    AlertKind kind;
    double threshold, price, prevClose;
    bool fires;
    const char* symbol = "600519";
    Date now = shanghaiMorning;
  } rows[] = {
      {"above, at", priceAbove, 1500, 1500, 1400, true},
      {"above, past", priceAbove, 1500, 1501, 1400, true},
      {"above, short", priceAbove, 1500, 1499.99, 1400, false},
      {"below, at", priceBelow, 1400, 1400, 1500, true},
      {"below, short", priceBelow, 1400, 1401, 1500, false},
      {"up, at 5 %", changeUp, 5, 105, 100, true},
      {"up, short", changeUp, 5, 104.99, 100, false},
      {"up, a fall", changeUp, 5, 90, 100, false},
      {"down, at -5 %", changeDown, 5, 95, 100, true},
      {"down, past", changeDown, 5, 90, 100, true},
      {"down, a rise", changeDown, 5, 110, 100, false},
      {"a zero price", priceBelow, 1400, 0, 1500, false},
      {"no previous close", priceAbove, 1, 10, 0, false},
      {"a change while its market sleeps", changeUp, 3, 110, 100, false, "NVDA"},
      {"the same change once it trades", changeUp, 3, 110, 100, true, "NVDA", newYorkMorning},
      {"a price while its market sleeps", priceAbove, 1, 10, 9, true, "600519", newYorkMorning},
  };
  for (const auto& r : rows) {
    const QuoteSnapshot quote = quoted(r.symbol, "", r.price, r.prevClose);
    AlertBook book;
    book.restore({1, {}, false, {rule("a", r.symbol, r.kind, r.threshold)}});
    const size_t fired = book.evaluate({[&quote](const std::string&) { return &quote; },
                                        [](const std::string&) { return true; }, r.now});
    EXPECT_EQ(fired, r.fires ? 1u : 0u) << r.what;
    EXPECT_EQ(book.rules()[0].triggeredAt, r.fires ? std::optional(r.now) : std::nullopt) << r.what;
  }
}

// A daily rule comes back on its exchange's next date: at the same instant Shanghai has passed
// midnight and New York has not, and eight hours later the other way round.
TEST(Alerts, ADailyRuleIsArmedAgainOnItsExchangesNextDate) {
  const struct {
    const char* triggered;
    const char* now;
    bool shanghai, newYork;
  } rows[] = {
      {"2026-11-20T15:30:00Z", "2026-11-20T16:30:00Z", true, false},  // 23:30 → 00:30 Shanghai
      {"2026-11-21T04:30:00Z", "2026-11-21T05:30:00Z", false, true},  // 23:30 → 00:30 New York
      {"2026-11-20T02:00:00Z", "2026-11-20T03:00:00Z", false, false},
  };
  for (const auto& r : rows) {
    for (const auto& [symbol, armed] : {std::pair{"600519", r.shanghai}, {"NVDA", r.newYork}}) {
      AlertRule daily = rule("d", symbol, AlertKind::priceAbove, 1, AlertRepeat::daily);
      daily.triggeredAt = at(r.triggered);
      EXPECT_EQ(rearmed(daily, at(r.now)), armed) << symbol << " " << r.now;
      EXPECT_EQ(alertState(daily, true, at(r.now)),
                armed ? AlertState::armed : AlertState::triggered);
      AlertRule once = daily;
      once.repeat = AlertRepeat::once;
      EXPECT_FALSE(rearmed(once, at(r.now))) << "once stays fired";
    }
  }
}

TEST(Alerts, OneNotificationPerSymbolAndMinuteWithItsSentences) {
  const QuoteSnapshot moutai = quoted("600519", "A股", 1530, 1455.5),
                      tencent = quoted("00700", "港股", 380, 400);
  using enum AlertKind;
  AlertBook book;
  const std::vector<AlertRule> rules{rule("r1", "600519", priceAbove, 1500),
                                     rule("r2", "600519", changeUp, 5, AlertRepeat::daily),
                                     rule("r3", "00700", changeDown, 5, AlertRepeat::daily),
                                     rule("r4", "600519", priceBelow, 1000)};
  book.restore({1, {}, false, rules});
  const auto world = [&](Date now, bool masked = false) {
    return AlertWorld{[&](const std::string& s) { return s == "600519" ? &moutai : &tencent; },
                      [](const std::string&) { return true; }, now, masked};
  };
  EXPECT_EQ(book.evaluate(world(shanghaiMorning)), 3u);
  const auto first = book.takeNotifications();
  ASSERT_EQ(first.size(), 2u);
  EXPECT_EQ(first[0].identifier, "tidemark.price-alert.600519.r1");
  EXPECT_EQ(first[0].title, "名称600519 价格提醒");
  EXPECT_EQ(first[0].body,
            "CNY 1,530.00，目标 CNY 1,500.00 已达到提醒条件。\n"
            "今日涨幅 +5.12%，已达到 +5.00% 的提醒条件。现价 CNY 1,530.00");
  EXPECT_EQ(first[1].identifier, "tidemark.price-alert.00700.r3");
  EXPECT_EQ(first[1].body, "今日跌幅 -5.00%，已达到 -5.00% 的提醒条件。现价 HKD 380.00");

  // The next trading day (a Monday), masked; within the minute a second firing is not notified.
  const Date nextDay = shanghaiMorning + 3 * 86400;
  EXPECT_EQ(book.evaluate(world(nextDay, true)), 2u) << "the two daily rules";
  const auto again = book.takeNotifications();
  ASSERT_EQ(again.size(), 2u);
  EXPECT_EQ(again[0].body, maskedAlertBody);
  book.setEnabled("r2", false);
  book.setEnabled("r2", true);  // switched on again, it starts afresh
  EXPECT_EQ(book.evaluate(world(nextDay + 59)), 1u);
  EXPECT_TRUE(book.takeNotifications().empty());
  EXPECT_EQ(book.find("r2")->triggeredAt, nextDay + 59);

  book.setPaused(true);
  book.setEnabled("r2", false);
  book.setEnabled("r2", true);
  EXPECT_EQ(book.evaluate(world(nextDay + 120)), 0u) << "paused";
}

#define SAVED "816832800.0"

TEST(Alerts, TheListRefusesInWordsAndIsStoredAsWritten) {
  ModelHarness h;
  auto m = h.make();
  using enum AlertKind;
  const std::pair<AlertRule, std::optional<std::string>> entries[] = {
      {rule("", "600519", priceAbove, 1500), std::nullopt},
      {rule("", "600519", changeDown, 5, AlertRepeat::daily), std::nullopt},
      {rule("", "600519", priceAbove, 1500), "已有相同的提醒"},
      {rule("", "600519", priceBelow, 0), "请输入大于 0 的价格"},
      {rule("", "600519", priceBelow, NAN), "请输入大于 0 的价格"},
      {rule("", "600519", changeUp, 0.009), "涨跌幅须在 0.01% 到 100% 之间"},
      {rule("", "600519", changeUp, 100.01), "涨跌幅须在 0.01% 到 100% 之间"},
      {rule("", "601318", priceAbove, 50), "只能为自选中的标的设置提醒"},
  };
  for (const auto& [r, refused] : entries)
    EXPECT_EQ(m->addAlert(r), refused) << conditionText(r, PricePrecision::two);
  ASSERT_EQ(m->alertBook().rules().size(), 2u);
  const std::string stored =
      R"({"version":1,"savedAt":)" SAVED R"(,"paused":false,"rules":[)"
      R"({"id":"r1795140000000","symbolID":"600519","kind":"priceAbove","threshold":1500.0,)"
      R"("repeat":"once","enabled":true,"triggeredAt":null},)"
      R"({"id":"r1795140000000-2","symbolID":"600519","kind":"changeDown","threshold":5.0,)"
      R"("repeat":"daily","enabled":true,"triggeredAt":null}]})";
  EXPECT_EQ(h.store.data(storeKeys::alerts), stored);
  std::error_code error;
  EXPECT_EQ(readFile(h.folder.path() / "alerts.json", error), stored);

  // Ten a symbol, the primary one counted.
  m->setQuotes({quoted("600519", "A股", 1400, 1390)});
  m->setAlert("600519", 2000, true);
  for (int i = 3; i <= 9; ++i)
    EXPECT_EQ(m->addAlert(rule("", "600519", priceAbove, i)), std::nullopt);
  EXPECT_EQ(m->addAlert(rule("", "600519", priceAbove, 10)), "每个标的最多 10 条提醒");
  m->removeAlert("r1795140000000");
  m->setAlertsPaused(true);
  m->setAlert("600519", 1000, true);  // 1,400 has passed it: paused, the single alert waits too
  EXPECT_FALSE(m->alertRule().triggered);
  EXPECT_EQ(h.make()->alertBook().rules().size(), 8u) << "read back";
  EXPECT_TRUE(h.make()->alertBook().paused());
}

// The newer of the file and the store is read, a bad entry costs only itself, an unreadable
// record is set aside; the primary alert of the stored preferences is listed first.
TEST(Alerts, StoredAlertsAreReadBackAndTheSingleAlertListedFirst) {
  const std::string good =
      R"({"version":1,"savedAt":816832801,"paused":true,"rules":[{"id":"x","symbolID":"00700",)"
      R"("kind":"changeUp","threshold":3,"repeat":"daily","enabled":false,"triggeredAt":816000000},)"
      R"({"id":"y","symbolID":"00700","kind":"sideways","threshold":3,"repeat":"daily",)"
      R"("enabled":true,"triggeredAt":null}]})";
  const struct {
    const char* what;
    std::optional<std::string> file, store;
    size_t rules;
    std::string setAside;
  } cases[] = {
      {"a file with a bad entry", good, std::nullopt, 1, "alerts.json"},
      {"an unreadable file, a readable store", "{", good, 1, "alerts.json"},
      {"an unreadable store", std::nullopt, "[]", 0, storeKeys::alerts},
  };
  for (const auto& k : cases) {
    ModelHarness h;
    if (k.file) std::ofstream(h.folder.path() / "alerts.json") << *k.file;
    if (k.store) h.store.setData(storeKeys::alerts, *k.store);
    auto m = h.make();
    EXPECT_EQ(m->alertBook().rules().size(), k.rules) << k.what;
    ASSERT_EQ(m->setAsideRecords().size(), 1u) << k.what;
    EXPECT_EQ(std::filesystem::path(m->setAsideRecords()[0].record).filename(), k.setAside);
  }
  ModelHarness h;
  std::ofstream(h.folder.path() / "alerts.json") << good;
  // A single alert as the preferences have always kept it.
  h.store.setData(storeKeys::preferences,
                  R"({"activeID":"600519","theme":"dark","reduceMotion":false,)"
                  R"("refreshInterval":2.6,"sourceMode":"mock","masked":false,"orbSize":96,)"
                  R"("autoRotate":true,"menuDensity":0,"phase":"live","latencyMS":0,)"
                  R"("updatedAt":816832800,"onboardingSeen":true,"alertPrice":1500,)"
                  R"("alertAbove":false,"alertTriggered":false,"alertSymbolID":"600519"})");
  auto m = h.make();
  const auto list = m->alertList();
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].first, (AlertRule{"primary", "600519", AlertKind::priceBelow, 1500,
                                      AlertRepeat::once, true, std::nullopt}));
  EXPECT_EQ(list[1].second, AlertState::disabled);
  EXPECT_EQ(conditionText(list[0].first, PricePrecision::two), "价格跌到 1,500.00");
}

// At a start on Saturday the cache holds Friday's quote, 6 % up: the price rule fires from it,
// the change rule waits for Monday's session.
TEST(Alerts, ACachedQuoteAtStartFiresPriceRulesOnly) {
  ModelHarness h;
  h.clock.set(at("2026-11-21T02:00:00Z"));
  h.store.setData(storeKeys::snapshots,
                  R"([{"id":"600519","market":"A股","name":"贵州茅台","price":106,"prevClose":100,)"
                  R"("high":106,"low":100,"volume":1,"updatedAt":817000000,"source":"tencent"}])");
  Preferences p;
  p.sourceMode = SourceMode::tencent;  // its load never answers: the cached quote stays
  h.store.setData(storeKeys::preferences, toJson(p).dump());
  h.source.holdAnswers = true;
  h.store.setData(storeKeys::alerts,
                  R"({"version":1,"savedAt":1,"paused":false,"rules":[)"
                  R"({"id":"c","symbolID":"600519","kind":"changeUp","threshold":5,)"
                  R"("repeat":"once","enabled":true,"triggeredAt":null},)"
                  R"({"id":"p","symbolID":"600519","kind":"priceAbove","threshold":105,)"
                  R"("repeat":"once","enabled":true,"triggeredAt":null}]})");
  auto m = h.make();
  ASSERT_NE(m->quote("600519"), nullptr);
  EXPECT_EQ(m->alertBook().find("c")->triggeredAt, std::nullopt);
  EXPECT_EQ(m->alertBook().find("p")->triggeredAt, h.clock.now());
  h.clock.set(at("2026-11-23T02:00:00Z"));
  h.source.answers[SourceMode::tencent] = {{*m->quote("600519")}, std::nullopt};
  ASSERT_FALSE(h.source.held.empty());
  while (!h.source.held.empty()) h.source.releaseNext();  // the start's loads answer at last
  EXPECT_EQ(m->alertBook().find("c")->triggeredAt, h.clock.now());
}

// The export carries the alerts in their stored form; an import of it brings them back.
TEST(Alerts, TravelWithTheWatchlist) {
  ModelHarness h;
  auto m = h.make();
  ASSERT_EQ(m->addAlert(rule("", "600519", AlertKind::changeUp, 2.5, AlertRepeat::daily)),
            std::nullopt);
  const auto file = h.folder.path() / "export.json";
  m->exportWatchlist(file);
  std::error_code error;
  EXPECT_EQ((*json::parse(readFile(file, error).value_or("{}")))["alerts"],
            *json::parse(R"([{"enabled":true,"id":"r1795140000000","kind":"changeUp",)"
                         R"("repeat":"daily","symbolID":"600519","threshold":2.5,)"
                         R"("triggeredAt":null}])"));
  ModelHarness other;
  auto imported = other.make();
  EXPECT_EQ(imported->importWatchlist(file).alerts, 1u);
  EXPECT_EQ(imported->alertBook().rules(), m->alertBook().rules());
}

}  // namespace
}  // namespace tidemark
