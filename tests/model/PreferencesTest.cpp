#include <gtest/gtest.h>

#include <algorithm>
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
  // record was applied (aurora) or ignored (dark). An ignored record is set aside under its
  // problem before the defaults replace it. StoredFormats reads a complete record back.
  using enum AppTheme;
  const std::tuple<const char*, AppTheme, double, double, int64_t, const char*> cases[] = {
      {R"({"orbShowsName":null,"lastError":null,"alertPrice":null,"alertSymbolID":null})", aurora,
       5.0, 132, 2, nullptr},
      {R"({"refreshInterval":3,"orbSize":100,"menuDensity":7})", aurora, 2.6, 96, 0, nullptr},
      {R"({"menuDensity":-1})", aurora, 5.0, 132, 0, nullptr},
      {R"({"masked":null})", dark, 2.6, 96, 0, R"(field "masked")"},
      {R"({"theme":"neon"})", dark, 2.6, 96, 0, R"(field "theme")"},
      {R"({"sourceMode":"staticJSON","updatedAt":"now"})", dark, 2.6, 96, 0,
       R"(field "sourceMode")"},
      {R"({"masked":"yes"})", dark, 2.6, 96, 0, R"(field "masked")"},
      {R"({"alertPrice":"1"})", dark, 2.6, 96, 0, R"(field "alertPrice")"},
      // A threshold that is not finite and positive is dropped, the rest applied.
      {R"({"alertPrice":-2,"alertSymbolID":"600519"})", aurora, 5.0, 132, 2, nullptr},
  };
  for (const auto& [patch, theme, refreshInterval, orbSize, menuDensity, problem] : cases) {
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
    std::vector<AppModel::SetAsideRecord> aside;
    if (problem)
      aside.push_back({"tidemark.native.preferences.v2", problem,
                       "tidemark.native.preferences.unreadable.v2", ""});
    EXPECT_EQ(model->setAsideRecords(), aside) << patch;
    EXPECT_EQ(h.store.data("tidemark.native.preferences.unreadable.v2"),
              problem ? std::optional(record.dump()) : std::nullopt)
        << patch;
  }
}

TEST(Preferences, AnUnreadableRecordIsKeptBeforeTheDefaultsReplaceItAndOnlyTheNewest) {
  ModelHarness h;
  h.store.setData("tidemark.native.preferences.v2", R"(["dark"])");
  h.store.writes.clear();
  auto model = h.make();
  EXPECT_EQ(model->setAsideRecords().at(0).problem, "not a JSON object");
  EXPECT_EQ(h.store.writes.at(0).first, "tidemark.native.preferences.unreadable.v2");
  EXPECT_EQ(h.store.writes.at(0).second, R"(["dark"])");
  EXPECT_EQ(model->theme(), AppTheme::dark);
  // The defaults saved over it are readable: the next start sets nothing aside and keeps the
  // kept record; a later unreadable one takes its place.
  h.store.setData(AppModel::preferencesKey, "first");
  h.make();
  EXPECT_EQ(h.make()->setAsideRecords(), std::vector<AppModel::SetAsideRecord>{});
  EXPECT_EQ(h.store.data("tidemark.native.preferences.unreadable.v2"), "first");
  h.store.setData(AppModel::preferencesKey, "second");
  h.make();
  EXPECT_EQ(h.store.data("tidemark.native.preferences.unreadable.v2"), "second");
}

TEST(Preferences, AlertPricesMustBeFiniteAndPositive) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(validAlertPrice(12.5), 12.5);
  for (double bad : {0.0, -3.0, inf, std::numeric_limits<double>::quiet_NaN()})
    EXPECT_EQ(validAlertPrice(bad), std::nullopt) << bad;
}

TEST(Preferences, NothingIsWrittenWhileRestoring) {
  ModelHarness h;
  h.store.setData(AppModel::preferencesKey, storedRecord().dump());
  h.store.writes.clear();
  auto model = h.make();
  auto first = std::find_if(h.store.writes.begin(), h.store.writes.end(),
                            [](const auto& w) { return w.first == AppModel::preferencesKey; });
  ASSERT_NE(first, h.store.writes.end());
  // Had any restoring setter saved, the first document would still show the default theme.
  EXPECT_EQ(json::parse(first->second)->at("theme"), "aurora");
}

TEST(Preferences, SettersClampAndSave) {
  ModelHarness h;
  auto model = h.make();
  model->setRefreshInterval(4);
  model->setOrbSize(100);
  model->setMenuDensity(-1);
  EXPECT_EQ(std::tuple(model->refreshInterval(), model->orbSize(), model->menuDensity()),
            std::tuple(2.6, 96.0, int64_t{0}));
  auto saved = preferencesFromJson(*json::parse(*h.store.data(AppModel::preferencesKey)));
  EXPECT_EQ(*saved, model->currentPreferences());
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
          {std::nullopt, std::nullopt, 0},
          {denied, denied, 1},
          {denied, denied, 0},
          {full, denied, 0},
          {std::nullopt, std::nullopt, 1},
          {std::nullopt, std::nullopt, 0},
          {full, full, 1},
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
