// What the model stores, pinned byte for byte against documents written out by hand: a wrong
// date epoch, key order or number form fails here.

#include <gtest/gtest.h>

#include <fstream>

#include "core/FileIO.h"
#include "support/ModelHarness.h"

namespace tidemark {
namespace {

using test::ModelHarness;
using List = std::vector<std::string>;

// 2026-11-20T02:00:00Z in seconds since 2001-01-01T00:00:00Z.
#define START "816832800.0"

const std::string preferences =
    R"({"activeID":"00700","theme":"rose","reduceMotion":true,"refreshInterval":5.0,)"
    R"("sourceMode":"mock","masked":true,"orbSize":132.0,"autoRotate":false,"menuDensity":2,)"
    R"("orbShowsName":true,"phase":"live","latencyMS":86,"updatedAt":)" START
    R"(,"onboardingSeen":true,"alertPrice":1500.0,"alertAbove":false,"alertTriggered":true,)"
    R"("alertSymbolID":"600519"})";

TEST(StoredFormats, PreferencesRecord) {
  ModelHarness h;
  auto m = h.make();
  EXPECT_EQ(
      h.store.data(AppModel::preferencesKey),
      R"({"activeID":"600519","theme":"dark","reduceMotion":false,"refreshInterval":2.6,)"
      R"("sourceMode":"mock","masked":false,"orbSize":96.0,"autoRotate":true,)"
      R"("menuDensity":0,"orbShowsName":false,"phase":"live","latencyMS":86,"updatedAt":)" START
      R"(,"onboardingSeen":false,"alertAbove":true,"alertTriggered":false})");
  m->select("00700");
  m->setTheme(AppTheme::rose);
  m->setReduceMotion(true);
  m->setRefreshInterval(5);
  m->setMasked(true);
  m->setOrbSize(132);
  m->setAutoRotate(false);
  m->setMenuDensity(2);
  m->setOrbShowsName(true);
  m->setOnboardingSeen(true);
  m->setAlert("600519", 1500, false);
  EXPECT_EQ(h.store.data(AppModel::preferencesKey), preferences);

  ModelHarness reader;
  reader.store.setData(AppModel::preferencesKey, preferences);
  auto r = reader.make();
  EXPECT_EQ(
      std::tuple(r->activeID(), r->theme(), r->reduceMotion(), r->refreshInterval(), r->masked(),
                 r->orbSize(), r->autoRotate(), r->menuDensity(), r->orbShowsName(),
                 r->onboardingSeen(), r->alertPrice(), r->alertAbove(), r->alertSymbolID()),
      std::tuple(std::string("00700"), AppTheme::rose, true, 5.0, true, 132.0, false, int64_t{2},
                 true, true, std::optional<double>(1500), false,
                 std::optional<std::string>("600519")));
}

TEST(StoredFormats, WatchlistBackupAndFile) {
  ModelHarness h;
  auto m = h.make();
  m->setWatchlist({"NVDA", "00700"});
  const std::string backup =
      R"({"version":1,"exportedAt":)" START R"(,"symbols":["NVDA","00700"]})";
  EXPECT_EQ(h.store.stringArray(AppModel::watchlistKey), (List{"NVDA", "00700"}));
  EXPECT_EQ(h.store.data(AppModel::watchlistBackupKey), backup);
  std::error_code error;
  EXPECT_EQ(readFile(h.folder.path() / "watchlist.json", error), backup);

  // A backup one second newer than the file wins; on a tie the file does.
  h.store.setData(AppModel::watchlistBackupKey,
                  R"({"version":1,"exportedAt":816832801.0,"symbols":["03033"]})");
  EXPECT_EQ(h.make()->watchlist(), List{"03033"});
  std::ofstream(h.folder.path() / "watchlist.json") << backup;
  h.store.setData(AppModel::watchlistBackupKey,
                  R"({"version":1,"exportedAt":)" START R"(,"symbols":["03033"]})");
  EXPECT_EQ(h.make()->watchlist(), (List{"NVDA", "00700"}));
}

TEST(StoredFormats, SnapshotCache) {
  const std::string cache =
      R"([{"id":"600519","market":"A股","name":"贵州茅台","price":1470.5,"prevClose":1452.0,)"
      R"("high":1475.0,"low":1448.1,"volume":32165,"updatedAt":)" START R"(,"source":"tencent"}])";
  ModelHarness h;
  h.source.answers[SourceMode::tencent] = {{{"600519", "A股", "贵州茅台", 1470.5, 1452, 1475,
                                             1448.1, 32165, test::testStart(), "tencent"}},
                                           std::nullopt};
  auto m = h.make();
  m->setWatchlist({"600519"});
  m->setSourceMode(SourceMode::tencent);
  EXPECT_EQ(h.store.data(AppModel::snapshotsKey), cache);

  ModelHarness reader;
  reader.store.setData(AppModel::snapshotsKey, cache);
  std::string live = preferences;
  live.replace(live.find("mock"), 4, "tencent");
  reader.store.setData(AppModel::preferencesKey, live);
  reader.source.holdAnswers = true;  // nothing replaces the restored quotes
  auto r = reader.make();
  ASSERT_EQ(r->quotes().size(), 1u);
  EXPECT_EQ(r->quotes()[0], m->quotes()[0]);
}

TEST(StoredFormats, Export) {
  ModelHarness h;
  auto m = h.make();
  m->setWatchlist({"03033", "600519", "NVDA"});
  const auto file = h.folder.path() / "export.json";
  m->exportWatchlist(file);
  std::error_code error;
  EXPECT_EQ(readFile(file, error),
            "{\n  \"exportedAt\": \"2026-11-20T02:00:00Z\",\n  \"symbols\": [\n    \"03033\",\n"
            "    \"600519\",\n    \"NVDA\"\n  ],\n  \"version\": 1\n}\n");
  m->setWatchlist({"00700"});
  m->importWatchlist(file);
  EXPECT_EQ(m->watchlist(), (List{"03033", "600519", "NVDA"}));
  EXPECT_EQ(m->activeID(), "03033");
}

}  // namespace
}  // namespace tidemark
