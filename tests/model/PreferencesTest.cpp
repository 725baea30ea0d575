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
  // Each merge patch edits the stored record (null removes a key); the theme shows whether the
  // record was applied (aurora) or ignored (dark). StoredFormats reads a complete record back.
  using enum AppTheme;
  const std::tuple<const char*, AppTheme, double, double, int64_t> cases[] = {
      {R"({"orbShowsName":null,"lastError":null,"alertPrice":null,"alertSymbolID":null})", aurora,
       5.0, 132, 2},
      {R"({"refreshInterval":3,"orbSize":100,"menuDensity":7})", aurora, 2.6, 96, 0},
      {R"({"menuDensity":-1})", aurora, 5.0, 132, 0},
      {R"({"masked":null})", dark, 2.6, 96, 0},
      {R"({"theme":"neon"})", dark, 2.6, 96, 0},
      {R"({"sourceMode":"staticJSON"})", dark, 2.6, 96, 0},
      {R"({"masked":"yes"})", dark, 2.6, 96, 0},
      {R"({"alertPrice":"1"})", dark, 2.6, 96, 0},
      // A threshold that is not finite and positive is dropped, the rest applied.
      {R"({"alertPrice":-2,"alertSymbolID":"600519"})", aurora, 5.0, 132, 2},
  };
  for (const auto& [patch, theme, refreshInterval, orbSize, menuDensity] : cases) {
    ModelHarness h;
    Json record = storedRecord();
    record.merge_patch(*json::parse(patch));
    h.store.setData(AppModel::preferencesKey, record.dump());
    auto model = h.make();
    EXPECT_EQ(std::tuple(model->theme(), model->refreshInterval(), model->orbSize(),
                         model->menuDensity()),
              std::tuple(theme, refreshInterval, orbSize, menuDensity))
        << patch;
    EXPECT_EQ(model->alertPrice(), std::nullopt) << patch;
  }
}

TEST(Preferences, AlertPricesMustBeFiniteAndPositive) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(validAlertPrice(12.5), 12.5);
  for (double bad : {0.0, -3.0, inf, std::numeric_limits<double>::quiet_NaN()})
    EXPECT_EQ(validAlertPrice(bad), std::nullopt) << bad;
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
  EXPECT_EQ(model->refreshInterval(), 2.6);
  EXPECT_EQ(model->orbSize(), 96);
  EXPECT_EQ(model->menuDensity(), 0);
  // What each setter writes is pinned in StoredFormats; here the clamped values are saved.
  auto saved = preferencesFromJson(*json::parse(*h.store.data(AppModel::preferencesKey)));
  EXPECT_EQ(*saved, model->currentPreferences());
}

// The defaults after a reset, also after a restart, and the kept watchlist and active symbol are
// checked by the self-test; here the quotes follow the mode back and the list stays stored.
TEST(Preferences, ResetGoesBackToTheDemonstrationQuotes) {
  ModelHarness h;
  auto model = h.make();
  model->setWatchlist({"NVDA", "600519"});
  model->setSourceMode(SourceMode::staticJSON);
  model->resetPreferences();
  EXPECT_EQ(model->quote("NVDA")->source, "mock");
  EXPECT_EQ(h.make()->watchlist(), (std::vector<std::string>{"NVDA", "600519"}));
}

}  // namespace
}  // namespace tidemark
