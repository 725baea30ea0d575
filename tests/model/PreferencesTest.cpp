#include <gtest/gtest.h>

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

TEST(Preferences, RestoreAcceptsOrIgnoresStoredRecords) {
  // Each patch edits the stored record (null removes a key; one not JSON is the record); the theme
  // shows whether it was applied (aurora) or ignored (dark). An ignored record replaces the one
  // set aside before, ahead of the readable defaults. Nothing is saved while restoring.
  using enum AppTheme;
  const std::tuple<const char*, AppTheme, double, double, int64_t, const char*> cases[] = {
      {R"({"orbShowsName":null,"lastError":null,"alertPrice":null,"alertSymbolID":null})", aurora,
       5.0, 132, 2, nullptr},
      {R"({"refreshInterval":3,"orbSize":100,"menuDensity":7})", aurora, 2.6, 96, 0, nullptr},
      {R"({"masked":null})", dark, 2.6, 96, 0, R"(field "masked")"},
      {R"({"sourceMode":"staticJSON","updatedAt":"now"})", dark, 2.6, 96, 0,
       R"(field "sourceMode")"},
      {R"({"alertPrice":"1"})", dark, 2.6, 96, 0, R"(field "alertPrice")"},
      {R"(["dark"])", dark, 2.6, 96, 0, "not a JSON object"},
      {"first", dark, 2.6, 96, 0, "not JSON"},
      // A threshold that is not finite and positive is dropped, the rest applied.
      {R"({"alertPrice":-2,"alertSymbolID":"600519"})", aurora, 5.0, 132, 2, nullptr},
  };
  for (const auto& [patch, theme, refreshInterval, orbSize, menuDensity, problem] : cases) {
    ModelHarness h;
    Json record = storedRecord();
    const auto edit = json::parse(patch);
    if (edit) record.merge_patch(*edit);
    const std::string bytes = edit ? record.dump() : patch;
    h.store.setData(AppModel::preferencesKey, bytes);
    h.store.setData(unreadableKey, "older");
    h.store.writes.clear();
    auto model = h.make();
    EXPECT_EQ(std::tuple(model->theme(), model->refreshInterval(), model->orbSize(),
                         model->menuDensity()),
              std::tuple(theme, refreshInterval, orbSize, menuDensity))
        << patch;
    EXPECT_EQ(model->alertPrice(), std::nullopt) << patch;
    std::vector<AppModel::SetAsideRecord> aside;
    if (problem) aside.push_back({"tidemark.native.preferences.v2", problem, unreadableKey, ""});
    EXPECT_EQ(model->setAsideRecords(), aside) << patch;
    EXPECT_EQ(h.make()->setAsideRecords(), std::vector<AppModel::SetAsideRecord>{}) << patch;
    EXPECT_EQ(h.store.data(unreadableKey), problem ? bytes : "older") << patch;
    const auto& [key, saved] = h.store.writes.at(problem ? 1 : 0);
    EXPECT_EQ(h.store.writes[0].first, problem ? unreadableKey : AppModel::preferencesKey);
    EXPECT_EQ(key, AppModel::preferencesKey) << patch;
    EXPECT_EQ(json::string(*json::parse(saved), "theme"), rawValue(theme)) << patch;
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

// The defaults after a reset, also after a restart, and the kept watchlist and active symbol are
// checked by the self-test; here the quotes follow the mode back.
TEST(Preferences, SettersClampAndResetGoesBackToTheDemonstrationQuotes) {
  ModelHarness h;
  auto model = h.make();
  model->setRefreshInterval(4);
  model->setOrbSize(100);
  model->setMenuDensity(-1);
  EXPECT_EQ(std::tuple(model->refreshInterval(), model->orbSize(), model->menuDensity()),
            std::tuple(2.6, 96.0, int64_t{0}));
  model->setSourceMode(SourceMode::staticJSON);
  model->resetPreferences();
  EXPECT_EQ(model->quote("NVDA")->source, "mock");
}

}  // namespace
}  // namespace tidemark
