#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>

#include "support/ModelHarness.h"

namespace tidemark {
namespace {

using test::ModelHarness;

const char* const unreadableKey = "tidemark.native.preferences.unreadable.v2";

Json storedRecord() {
  return *json::parse(
      R"({"activeID":"00700","theme":"aurora","reduceMotion":false,"refreshInterval":5.0,)"
      R"("sourceMode":"mock","masked":true,"orbSize":132.0,"autoRotate":true,"menuDensity":2,)"
      R"("orbShowsName":false,"phase":"live","latencyMS":0,"updatedAt":816832800.0,)"
      R"("onboardingSeen":false,"alertAbove":true,"alertTriggered":false})");
}

// A day of refreshes and rotation is no day of disk flushes: what they change is written lazily
// (the store keeps it for good within a minute); each choice of the user's at once.
TEST(Preferences, RefreshesAndRotationWriteLazilyTheUsersChoicesAtOnce) {
  ModelHarness h;
  auto m = h.make(true);
  const auto prompt = [&] {
    std::vector<std::string> keys;
    for (const auto& [key, bytes] : h.store.writes) keys.push_back(key);
    for (const std::string& key : h.store.lazy)
      keys.erase(std::find(keys.begin(), keys.end(), key));
    h.store.writes.clear();
    h.store.lazy.clear();
    return keys;
  };
  prompt();
  const std::string before = m->activeID();
  h.scheduler.advance(30);  // refreshes every 2.6 s and the rotation
  EXPECT_NE(m->activeID(), before);
  const std::set<std::string> lazy(h.store.lazy.begin(), h.store.lazy.end());
  EXPECT_EQ(lazy, (std::set<std::string>{storeKeys::preferences, storeKeys::snapshots}));
  EXPECT_EQ(prompt(), std::vector<std::string>{});
  m->setTheme(AppTheme::light);
  m->refresh();
  h.scheduler.advance(3);
  EXPECT_EQ(prompt(), std::vector<std::string>{storeKeys::preferences});
  EXPECT_EQ(h.make()->activeID(), m->activeID());
  // A start that finds everything stored writes nothing; one missing a file writes it.
  ASSERT_EQ(m->setHolding("600519", 100, 1500.5), std::nullopt);
  m.reset();
  h.clock.advance(60);
  const auto file = h.folder.path() / "watchlist.json";
  std::error_code error;
  const auto written = std::filesystem::last_write_time(file, error);
  prompt();
  m = h.make(true);
  EXPECT_EQ(prompt(), std::vector<std::string>{});
  EXPECT_EQ(std::filesystem::last_write_time(file, error), written);
  std::filesystem::remove(h.folder.path() / "holdings.json");
  m = h.make(true);
  EXPECT_EQ(prompt(), std::vector<std::string>{storeKeys::holdings});
  EXPECT_TRUE(std::filesystem::exists(h.folder.path() / "holdings.json"));
}

TEST(Preferences, RestoreAcceptsOrIgnoresStoredRecords) {
  // Each patch edits the stored record (null removes a key; one not JSON is the record). An
  // ignored record replaces the one set aside before. Nothing is saved while restoring.
  using enum AppTheme;
  using enum MenuDensity;
  using Shown = std::tuple<AppTheme, double, double, MenuDensity>;
  const Shown applied{aurora, 5.0, 132, full}, ignored{dark, 2.6, 96, iconOnly};
  const std::tuple<const char*, Shown, const char*> cases[] = {
      {R"({"orbShowsName":null,"lastError":null,"alertPrice":null,"alertSymbolID":null})", applied,
       nullptr},
      {R"({"refreshInterval":3,"orbSize":100,"menuDensity":7})",
       {aurora, 2.6, 96, iconOnly},
       nullptr},
      {R"({"masked":null})", ignored, R"(field "masked")"},
      {R"({"sourceMode":"staticJSON","updatedAt":"now"})", ignored, R"(field "sourceMode")"},
      {R"({"alertPrice":"1"})", ignored, R"(field "alertPrice")"},
      {R"({"detailChart":"month"})", applied, nullptr},
      {R"({"detailChart":"year"})", ignored, R"(field "detailChart")"},
      {R"({"riseColors":"greenRises","pricePrecision":null})", applied, nullptr},
      {R"({"pricePrecision":"three"})", ignored, R"(field "pricePrecision")"},
      {R"({"riseColors":1})", ignored, R"(field "riseColors")"},
      {R"(["dark"])", ignored, "not a JSON object"},
      {"first", ignored, "not JSON"},
      // A threshold that is not finite and positive is dropped, the rest applied.
      {R"({"alertPrice":-2,"alertSymbolID":"600519"})", applied, nullptr},
  };
  for (const auto& [patch, shown, problem] : cases) {
    ModelHarness h;
    Json record = storedRecord();
    const auto edit = json::parse(patch);
    if (edit) record.merge_patch(*edit);
    const std::string bytes = edit ? record.dump() : patch;
    h.store.setData(storeKeys::preferences, bytes);
    h.store.setData(unreadableKey, "older");
    h.store.writes.clear();
    auto model = h.make();
    EXPECT_EQ(
        Shown(model->theme(), model->refreshInterval(), model->orbSize(), model->menuDensity()),
        shown)
        << patch;
    EXPECT_EQ(model->alertRule().price, std::nullopt) << patch;
    std::vector<SetAsideRecord> aside;
    if (problem) aside.push_back({"tidemark.native.preferences.v2", problem, unreadableKey, ""});
    EXPECT_EQ(model->setAsideRecords(), aside) << patch;
    EXPECT_EQ(h.make()->setAsideRecords(), std::vector<SetAsideRecord>{}) << patch;
    EXPECT_EQ(h.store.data(unreadableKey), problem ? bytes : "older") << patch;
    const auto& [key, saved] = h.store.writes.at(problem ? 1 : 0);
    EXPECT_EQ(h.store.writes[0].first, problem ? unreadableKey : storeKeys::preferences);
    EXPECT_EQ(key, storeKeys::preferences) << patch;
    EXPECT_EQ(json::string(*json::parse(saved), "theme"), rawValue(std::get<0>(shown))) << patch;
  }
}

TEST(Preferences, SettingsThatCannotBeSavedAreToldOncePerStreakOfFailures) {
  ModelHarness h;
  auto model = h.make();
  int changes = 0;
  auto subscription = model->subscribe([&] { ++changes; });
  const StoreWriteFailure denied{"/home/u/.config/Tidemark/Tidemark.conf", "Permission denied"};
  const StoreWriteFailure full{"/home/u/.config/Tidemark/Tidemark.conf", "No space left on device"};
  // Each save's outcome, then the published failure and whether subscribers heard of it.
  const std::tuple<std::optional<StoreWriteFailure>, std::optional<StoreWriteFailure>, int>
      steps[] = {
          {std::nullopt, std::nullopt, 0}, {denied, denied, 1}, {full, denied, 0},
          {std::nullopt, std::nullopt, 1}, {full, full, 1},
      };
  for (const auto& [outcome, published, told] : steps) {
    changes = 0;
    h.store.report(outcome);
    EXPECT_EQ(model->settingsWriteFailure(), published);
    EXPECT_EQ(changes, told);
  }
  model.reset();
  h.store.report(denied);  // a save reported after the model is gone is dropped
}

// The defaults after a reset are checked by the self-test; here the quotes follow the mode back.
TEST(Preferences, SettersClampAndResetGoesBackToTheDemonstrationQuotes) {
  ModelHarness h;
  auto model = h.make();
  model->setRefreshInterval(4);
  model->setOrbSize(100);
  model->setMenuDensity(static_cast<MenuDensity>(-1));
  EXPECT_EQ(std::tuple(model->refreshInterval(), model->orbSize(), model->menuDensity()),
            std::tuple(2.6, 96.0, MenuDensity::iconOnly));
  model->setSourceMode(SourceMode::staticJSON);
  model->resetPreferences();
  EXPECT_EQ(model->quote("NVDA")->source, "mock");
}

// A model in tencent mode whose feed serves the given prices for 600519 and 00700.
struct AlertHarness : ModelHarness {
  std::unique_ptr<AppModel> model;
  explicit AlertHarness(bool authorized = true, bool startTimers = true) {
    notifier.authorized = authorized;
    source.probeAnswers = {true};  // the start-up bootstrap loads at once
    reload(1500, 480);
    model = make(startTimers);
    model->setRefreshInterval(0);
    model->setSourceMode(SourceMode::tencent);
  }
  void reload(double moutai, double tencent) {
    source.answers[SourceMode::tencent] = {
        {{"600519", "A股", "贵州茅台", moutai, 1450, moutai, moutai, 1, {}, "tencent"},
         {"00700", "港股", "腾讯控股", tencent, 470, tencent, tencent, 1, {}, "tencent"}},
        std::nullopt};
    if (model) model->loadSource(false);
  }
};

TEST(Alert, FiresAndDeliversOnceUntilSetAnewIgnoresInvalidThresholdsAndIsWithdrawnWhenCleared) {
  const double inf = std::numeric_limits<double>::infinity();
  AlertHarness h;
  h.model->setAlert("600519", 1600, true);
  h.reload(1600.5, 480);
  h.reload(1500, 480);
  h.reload(1700, 480);
  ASSERT_EQ(h.notifier.added.size(), 1u);
  EXPECT_EQ(h.notifier.added[0].identifier, "tidemark.price-alert.600519");
  EXPECT_EQ(h.notifier.added[0].title, "贵州茅台 价格提醒");
  EXPECT_EQ(h.notifier.added[0].body, "CNY 1,600.50，目标 CNY 1,600.00 已达到提醒条件。");
  h.model->setAlert("600519", 1700, true);  // re-armed: fires again, at an equal price too
  EXPECT_EQ(h.notifier.added.size(), 2u);
  EXPECT_TRUE(h.make()->alertRule().triggered);  // remembered across restarts

  h.model->setAlert("00700", 500, true);
  const std::pair<const char*, double> cases[] = {{"600519", 0}, {"600519", inf}, {"601999", 100}};
  for (auto [symbol, price] : cases) {
    h.model->setAlert(symbol, price, false);
    EXPECT_EQ(h.model->alertRule().symbolID, "00700") << symbol << " " << price;
  }
  h.model->setAlert("00700", 480, false);  // at the threshold
  EXPECT_TRUE(h.model->alertRule().triggered);
  h.model->clearAlert();
  EXPECT_EQ(h.notifier.removed, std::vector<std::string>{"tidemark.price-alert.00700"});
  EXPECT_EQ(std::tuple(h.model->alertRule().price, h.model->alertRule().symbolID,
                       h.model->alertRule().triggered),
            std::tuple(std::nullopt, std::nullopt, false));
}

TEST(Alert, DeliveryWaitsForPermissionAndHappensOnce) {
  AlertHarness quiet(true, false);  // without timers nothing is asked, so nothing is posted
  quiet.model->setAlert("00700", 400, true);
  EXPECT_EQ(quiet.notifier.authorizationRequests, 0);
  EXPECT_TRUE(quiet.notifier.added.empty());
  AlertHarness h(false);
  h.model->setAlert("00700", 400, true);
  EXPECT_TRUE(h.notifier.added.empty());
  EXPECT_EQ(h.notifier.authorizationRequests, 1);
  // Granted later: delivered then, once, though the first post is still on its way.
  h.notifier.authorized = true;
  h.notifier.holdCompletions = true;
  h.model->requestPriceAlertNotifications();
  h.model->requestPriceAlertNotifications();
  ASSERT_EQ(h.notifier.added.size(), 1u);
  EXPECT_EQ(h.notifier.added[0].body, "HKD 480.00，目标 HKD 400.00 已达到提醒条件。");
  h.notifier.heldCompletions[0]();
  h.model->requestPriceAlertNotifications();
  EXPECT_EQ(h.notifier.added.size(), 1u);
}

// An index is in points: its price stands without a currency.
TEST(Alert, AnIndexIsNotifiedWithoutACurrency) {
  AlertHarness h;
  h.source.answers[SourceMode::tencent].quotes.push_back(
      {"sh000001", "A股指数", "上证指数", 3900.12, 3870, 3900.12, 3870, 1, {}, "tencent"});
  h.model->setWatchlist({"600519", "00700", "sh000001"});
  h.model->loadSource(false);
  h.model->setAlert("sh000001", 3900, true);
  ASSERT_EQ(h.notifier.added.size(), 1u);
  EXPECT_EQ(h.notifier.added[0].title, "上证指数 价格提醒");
  EXPECT_EQ(h.notifier.added[0].body, "3,900.12，目标 3,900.00 已达到提醒条件。");
}

// The threshold reads as typed in either precision; the price takes the security's decimals.
TEST(Alert, NotificationsWriteThePricesAtTheChosenPrecision) {
  const std::pair<PricePrecision, const char*> cases[] = {
      {PricePrecision::two, "HKD 0.85，目标 HKD 0.8555 已达到提醒条件。"},
      {PricePrecision::automatic, "HKD 0.851，目标 HKD 0.8555 已达到提醒条件。"},
  };
  for (const auto& [precision, body] : cases) {
    AlertHarness h;
    h.model->setQuoteStyle({RiseColors::greenRises, precision});
    h.model->setAlert("00700", 0.8555, false);
    h.reload(1500, 0.851);
    ASSERT_EQ(h.notifier.added.size(), 1u) << body;
    EXPECT_EQ(h.notifier.added[0].body, body);
    EXPECT_EQ(h.make()->quoteStyle(), (QuoteStyle{RiseColors::greenRises, precision})) << body;
  }
}

}  // namespace
}  // namespace tidemark
