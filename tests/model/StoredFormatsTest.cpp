// What the model stores, pinned byte for byte against documents written out by hand: a wrong
// date epoch, key order or number form fails here.

#include <gtest/gtest.h>

#include <sys/stat.h>

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
    R"("alertSymbolID":"600519","riseColors":"greenRises","pricePrecision":"automatic"})";

TEST(StoredFormats, PreferencesRecord) {
  ModelHarness h;
  h.make();
  EXPECT_EQ(
      h.store.data(storeKeys::preferences),
      R"({"activeID":"600519","theme":"dark","reduceMotion":false,"refreshInterval":2.6,)"
      R"("sourceMode":"mock","masked":false,"orbSize":96.0,"autoRotate":true,)"
      R"("menuDensity":0,"orbShowsName":false,"phase":"live","latencyMS":86,"updatedAt":)" START
      R"(,"onboardingSeen":false,"alertAbove":true,"alertTriggered":false})");
  // A record that differs from the defaults everywhere is read whole: saved again, it is the same.
  ModelHarness reader;
  reader.store.setData(storeKeys::preferences, preferences);
  reader.make();
  EXPECT_EQ(reader.store.data(storeKeys::preferences), preferences);
}

TEST(StoredFormats, WatchlistBackupAndFile) {
  ModelHarness h;
  auto m = h.make();
  m->setWatchlist({"NVDA", "00700"});
  const std::string backup =
      R"({"version":1,"exportedAt":)" START R"(,"symbols":["NVDA","00700"]})";
  EXPECT_EQ(h.store.data(storeKeys::watchlistBackup), backup);
  std::error_code error;
  EXPECT_EQ(readFile(h.folder.path() / "watchlist.json", error), backup);
  // A backup one second newer than the file wins; on a tie the file does.
  h.store.setData(storeKeys::watchlistBackup,
                  R"({"version":1,"exportedAt":816832801.0,"symbols":["03033"]})");
  EXPECT_EQ(h.make()->watchlist(), List{"03033"});
  std::ofstream(h.folder.path() / "watchlist.json") << backup;
  h.store.setData(storeKeys::watchlistBackup,
                  R"({"version":1,"exportedAt":)" START R"(,"symbols":["03033"]})");
  EXPECT_EQ(h.make()->watchlist(), (List{"NVDA", "00700"}));
}

TEST(StoredFormats, SnapshotCache) {
  const std::string older =
      R"([{"id":"600519","market":"A股","name":"贵州茅台","price":1470.5,"prevClose":1452.0,)"
      R"("high":1475.0,"low":1448.1,"volume":32165,"updatedAt":)" START R"(,"source":"tencent")";
  const std::string cache =
      older + R"(,"open":1455.0,"pe":-3.5,"high52w":1770.0,"quoteTime":)" START R"(}])";
  ModelHarness h;
  QuoteSnapshot quote{"600519", "A股", "贵州茅台",        1470.5,   1452, 1475,
                      1448.1,   32165, test::testStart(), "tencent"};
  quote.open = 1455;
  quote.pe = -3.5;
  quote.high52w = 1770;
  quote.quoteTime = test::testStart();
  h.source.answers[SourceMode::tencent] = {{quote}, std::nullopt};
  auto m = h.make();
  m->setWatchlist({"600519"});
  m->setSourceMode(SourceMode::tencent);
  EXPECT_EQ(h.store.data(storeKeys::snapshots), cache);
  // Read back whole, or not at all when one entry is broken; the phase follows the saved time.
  // A record of an earlier version, without the figures, reads as before; a figure of the wrong
  // type is left out.
  QuoteSnapshot bare = quote;
  bare.open = bare.pe = bare.high52w = std::nullopt;
  bare.quoteTime = std::nullopt;
  QuoteSnapshot withoutPE = quote;
  withoutPE.pe = std::nullopt;
  const std::tuple<std::string, double, std::vector<QuoteSnapshot>, QuotePhase> reads[] = {
      {cache, 20, {quote}, QuotePhase::stale},
      {older + "}]", 20, {bare}, QuotePhase::stale},
      {older + R"(,"open":1455,"pe":"-3.5","high52w":1770,"quoteTime":)" START "}]",
       20,
       {withoutPE},
       QuotePhase::stale},
      {cache.substr(0, cache.size() - 1) + R"(,{"id":"00700"}])", 10, {}, QuotePhase::live},
  };
  for (const auto& [bytes, age, quotes, phase] : reads) {
    ModelHarness reader;
    reader.store.setData(storeKeys::snapshots, bytes);
    Preferences p;
    p.sourceMode = SourceMode::tencent;  // its load never answers: nothing replaces the quotes
    p.updatedAt = test::testStart() + -age;
    reader.store.setData(storeKeys::preferences, toJson(p).dump());
    reader.source.holdAnswers = true;
    auto r = reader.make();
    EXPECT_EQ(r->quotes(), quotes) << bytes;
    EXPECT_EQ(r->phase(), phase) << age;
  }
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
}

// An export replaces a regular file or a link's file only, keeping the permissions it had; a new
// one follows the umask. The app's own files are created for the user alone and keep a mode the
// user gave them.
TEST(StoredFormats, ExportAndSavesTouchOnlyRegularFilesAndKeepTheirPermissions) {
  namespace fs = std::filesystem;
  ModelHarness h;
  auto m = h.make();
  m->setWatchlist({"600519"});
  const fs::path dir = h.folder.path();
  const auto mode = [](const fs::path& p) {
    return int(fs::status(p).permissions() & fs::perms::mask);
  };
  std::ofstream(dir / "kept.json") << "old";
  fs::permissions(dir / "kept.json", fs::perms(0640));
  std::ofstream(dir / "target.json") << "old";
  fs::create_symlink(dir / "target.json", dir / "link.json");
  fs::create_symlink(dir / "nowhere.json", dir / "dangling.json");
  fs::create_directory(dir / "folder.json");
  ASSERT_EQ(::mkfifo((dir / "pipe.json").c_str(), 0600), 0);
  const struct {
    const char* name;
    mode_t umask;
    int mode;  // of the file written, or -1 when refused
  } exports[] = {
      {"new.json", 022, 0644},  {"private.json", 077, 0600}, {"kept.json", 022, 0640},
      {"link.json", 022, 0644}, {"dangling.json", 022, -1},  {"folder.json", 022, -1},
      {"pipe.json", 022, -1},
  };
  for (const auto& e : exports) {
    const mode_t before = ::umask(e.umask);
    const fs::path file = dir / e.name;
    std::string refused;
    try {
      m->exportWatchlist(file);
    } catch (const std::exception& error) {
      refused = error.what();
    }
    ::umask(before);
    if (e.mode < 0) {
      EXPECT_EQ(refused, "无法写入 " + file.string() + "：不是普通文件") << e.name;
      continue;
    }
    EXPECT_EQ(refused, "") << e.name;
    EXPECT_EQ(mode(file), e.mode) << e.name;
    std::error_code error;
    EXPECT_TRUE(readFile(file, error)->starts_with("{\n  \"exportedAt\"")) << e.name;
  }
  EXPECT_TRUE(fs::is_symlink(dir / "link.json"));
  EXPECT_TRUE(fs::is_symlink(dir / "dangling.json"));
  EXPECT_FALSE(fs::exists(dir / "nowhere.json"));
  EXPECT_TRUE(fs::is_fifo(dir / "pipe.json"));
  EXPECT_TRUE(fs::is_directory(dir / "folder.json"));

  ASSERT_EQ(m->setHolding("600519", 1, 1), std::nullopt);
  for (const char* own : {"watchlist.json", "holdings.json"})
    EXPECT_EQ(mode(dir / own), 0600) << own;
  fs::permissions(dir / "watchlist.json", fs::perms(0640));
  m->setWatchlist({"600519", "NVDA"});
  EXPECT_EQ(mode(dir / "watchlist.json"), 0640);
  for (const auto& entry : fs::directory_iterator(dir))
    EXPECT_FALSE(entry.path().filename().string().find(".json.") != std::string::npos)
        << "a temporary file left: " << entry.path();
}

}  // namespace
}  // namespace tidemark
