#include <gtest/gtest.h>

#include <limits>

#include "support/ModelHarness.h"

namespace tidemark {
namespace {

using test::ModelHarness;

Json storedRecord() {
  return *json::parse(
      R"({"activeID":"00700","theme":"aurora","reduceMotion":false,"refreshInterval":5.0,)"
      R"("sourceMode":"mock","masked":true,"orbSize":132.0,"autoRotate":true,"menuDensity":2,)"
      R"("orbShowsName":false,"phase":"live","latencyMS":0,"updatedAt":816832800.0,)"
      R"("onboardingSeen":false,"alertAbove":true,"alertTriggered":false})");
}

TEST(Preferences, RestoreAcceptsOrIgnoresStoredRecords) {
  struct Case {
    const char* what;
    std::function<void(Json&)> edit;
    AppTheme theme;  // aurora: the record was applied; dark: it was ignored
    double refreshInterval, orbSize;
    int64_t menuDensity;
  };
  const Case cases[] = {
      {"as stored", [](Json&) {}, AppTheme::aurora, 5.0, 132, 2},
      {"optional keys missing",
       [](Json& j) {
         for (auto key : {"orbShowsName", "lastError", "alertPrice", "alertSymbolID"}) j.erase(key);
       },
       AppTheme::aurora, 5.0, 132, 2},
      {"clamped values",
       [](Json& j) {
         j["refreshInterval"] = 3;
         j["orbSize"] = 100;
         j["menuDensity"] = 7;
       },
       AppTheme::aurora, 2.6, 96, 0},
      {"negative density", [](Json& j) { j["menuDensity"] = -1; }, AppTheme::aurora, 5.0, 132, 0},
      {"required key missing", [](Json& j) { j.erase("masked"); }, AppTheme::dark, 2.6, 96, 0},
      {"unknown theme", [](Json& j) { j["theme"] = "neon"; }, AppTheme::dark, 2.6, 96, 0},
      {"unknown source", [](Json& j) { j["sourceMode"] = "staticJSON"; }, AppTheme::dark, 2.6, 96,
       0},
      {"wrong type", [](Json& j) { j["masked"] = "yes"; }, AppTheme::dark, 2.6, 96, 0},
      {"optional of wrong type", [](Json& j) { j["alertPrice"] = "1"; }, AppTheme::dark, 2.6, 96,
       0},
  };
  for (const Case& c : cases) {
    ModelHarness h;
    Json record = storedRecord();
    c.edit(record);
    h.store.setData(AppModel::preferencesKey, record.dump());
    auto model = h.make();
    EXPECT_EQ(model->theme(), c.theme) << c.what;
    EXPECT_EQ(model->refreshInterval(), c.refreshInterval) << c.what;
    EXPECT_EQ(model->orbSize(), c.orbSize) << c.what;
    EXPECT_EQ(model->menuDensity(), c.menuDensity) << c.what;
  }
}

TEST(Preferences, RestoredAlertPricesMustBeFiniteAndPositive) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(validAlertPrice(12.5), 12.5);
  for (double bad : {0.0, -3.0, inf, std::numeric_limits<double>::quiet_NaN()})
    EXPECT_EQ(validAlertPrice(bad), std::nullopt) << bad;
  ModelHarness h;
  Json record = storedRecord();
  record["alertPrice"] = -2;
  record["alertSymbolID"] = "600519";
  h.store.setData(AppModel::preferencesKey, record.dump());
  EXPECT_EQ(h.make()->alertPrice(), std::nullopt);
}

// Records the first preferences document written, to see what construction wrote first.
struct FirstWrite : MemoryKeyValueStore {
  void setData(const std::string& key, const std::string& bytes) override {
    if (key == AppModel::preferencesKey && !first) first = bytes;
    MemoryKeyValueStore::setData(key, bytes);
  }
  std::optional<std::string> first;
};

TEST(Preferences, NothingIsWrittenWhileRestoring) {
  ModelHarness h;
  FirstWrite store;
  store.setData(AppModel::preferencesKey, storedRecord().dump());
  store.first.reset();
  AppModel model({store, h.clock, h.scheduler, h.source, h.notifier, std::nullopt}, std::nullopt,
                 false, h.bundle);
  ASSERT_TRUE(store.first);
  // Had any restoring setter saved, the first document would still show the default theme.
  EXPECT_EQ(json::parse(*store.first)->at("theme"), "aurora");
}

TEST(Preferences, SettersClampAndSave) {
  ModelHarness h;
  auto model = h.make();
  model->setRefreshInterval(4);
  model->setOrbSize(100);
  model->setMenuDensity(-1);
  model->setTheme(AppTheme::rose);
  EXPECT_EQ(model->refreshInterval(), 2.6);
  EXPECT_EQ(model->orbSize(), 96);
  EXPECT_EQ(model->menuDensity(), 0);
  auto saved = preferencesFromJson(*json::parse(*h.store.data(AppModel::preferencesKey)));
  EXPECT_EQ(saved->theme, AppTheme::rose);
  EXPECT_EQ(saved->refreshInterval, 2.6);
  EXPECT_EQ(*saved, model->currentPreferences());
}

TEST(Preferences, ResetRestoresDefaultsButKeepsTheWatchlist) {
  ModelHarness h;
  auto model = h.make();
  model->setWatchlist({"NVDA", "600519"});
  model->select("600519");
  model->setTheme(AppTheme::amber);
  model->setMasked(true);
  model->setSourceMode(SourceMode::staticJSON);
  model->setAlert("NVDA", 1000, true);
  model->resetPreferences();
  EXPECT_EQ(model->theme(), AppTheme::dark);
  EXPECT_FALSE(model->masked());
  EXPECT_EQ(model->sourceMode(), SourceMode::mock);
  EXPECT_EQ(model->alertPrice(), std::nullopt);
  EXPECT_EQ(model->watchlist(), (std::vector<std::string>{"NVDA", "600519"}));
  EXPECT_EQ(model->activeID(), "600519");
  EXPECT_EQ(model->quote("NVDA")->source, "mock");
  auto reopened = h.make();
  EXPECT_EQ(reopened->theme(), AppTheme::dark);
  EXPECT_EQ(reopened->watchlist(), model->watchlist());
}

}  // namespace
}  // namespace tidemark
