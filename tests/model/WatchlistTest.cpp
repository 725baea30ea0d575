#include <gtest/gtest.h>

#include <fstream>

#include "core/FileIO.h"
#include "support/ModelHarness.h"

namespace tidemark {
namespace {

using test::ModelHarness;
using List = std::vector<std::string>;

TEST(WatchlistRules, TrimOnlyDecidesAndTheFirstDuplicateWins) {
  const std::pair<List, List> cases[] = {
      {{"600519", " 600519 ", "00700"}, {"600519", "00700"}},
      {{" NVDA", "NVDA", "\t\n", ""}, {" NVDA"}},
      {{"ABCDEFGHIJKLMNOP", "ABCDEFGHIJKLMNOPQ"}, {"ABCDEFGHIJKLMNOP"}},
      {{"\u3000600519\u3000", "600519"}, {"\u3000600519\u3000"}},
      {{"贵州茅台贵州茅台贵州茅台贵州茅台"}, {"贵州茅台贵州茅台贵州茅台贵州茅台"}},
  };
  for (const auto& [input, kept] : cases) EXPECT_EQ(validSymbols(input), kept);
}

TEST(WatchlistRules, RecognisedSymbols) {
  for (const char* s : {"600519", "510300", "159915", "00700", "03033", "NVDA", "BRK.B", "BF-B",
                        "A", "aapl", "GOOGL"})
    EXPECT_TRUE(isRecognizedSymbol(s)) << s;
  for (const char* s :
       {"UNKNOWN", "6005190", "0070", "BRK.", "BRK.BBB", "N VDA", "", "贵州茅台", "600519X", ".B"})
    EXPECT_FALSE(isRecognizedSymbol(s)) << s;
}

TEST(Watchlist, StartsWithTheDefaultListOrTheStoredOne) {
  ModelHarness fresh;
  auto model = fresh.make();
  EXPECT_EQ(model->watchlist(), AppModel::defaultWatchlist());
  EXPECT_EQ(model->activeID(), "600519");
  EXPECT_EQ(model->watchedQuotes().size(), 5u);

  ModelHarness empty;
  empty.store.setStringArray(AppModel::watchlistKey, {});
  auto emptied = empty.make();
  EXPECT_EQ(emptied->watchlist(), List{});
  EXPECT_EQ(emptied->activeID(), "");
}

TEST(Watchlist, Operations) {
  ModelHarness h;
  auto m = h.make();
  m->add("AAPL");  // has a demonstration quote
  m->add("AAPL");
  m->add("601999");  // no quote: refused
  EXPECT_EQ(m->watchlist(), (List{"600519", "00700", "NVDA", "03033", "000858", "AAPL"}));
  m->add(test::quote("601999", 5.2));
  EXPECT_EQ(m->watchlist().back(), "601999");
  EXPECT_EQ(m->activeID(), "600519");

  m->remove("600519");  // the active first symbol: the next one, now first, becomes active
  EXPECT_EQ(m->activeID(), "00700");
  m->select("UNKNOWN");
  m->select("NVDA");
  EXPECT_EQ(m->activeID(), "NVDA");

  m->setWatchlist({"A", "B", "C", "D"});
  const std::tuple<const char*, int, List> moves[] = {
      {"D", 1, {"A", "B", "C", "D"}},  {"A", -5, {"A", "B", "C", "D"}},
      {"C", -5, {"C", "A", "B", "D"}}, {"C", 99, {"A", "B", "D", "C"}},
      {"X", 1, {"A", "B", "D", "C"}},
  };
  for (const auto& [symbol, offset, expected] : moves) {
    m->move(symbol, offset);
    EXPECT_EQ(m->watchlist(), expected) << symbol << offset;
  }
  m->setWatchlist({"NVDA"});
  m->remove("NVDA");
  EXPECT_EQ(m->activeID(), "");
}

TEST(Watchlist, RotationSkipsSymbolsWithoutQuotes) {
  ModelHarness h;
  auto m = h.make();
  m->setWatchlist({"600519", "399999", "00700", "99999"});
  List seen;
  for (int i = 0; i < 4; ++i) {
    m->cycleActive();
    seen.push_back(m->activeID());
  }
  EXPECT_EQ(seen, (List{"00700", "600519", "00700", "600519"}));
  m->setWatchlist({"600519", "399999"});
  m->cycleActive();
  EXPECT_EQ(m->activeID(), "600519");
}

TEST(Watchlist, TheNewestListWinsAfterAFailedFileWrite) {
  ModelHarness h;
  auto m = h.make();
  m->setWatchlist({"600519"});  // written to the file too
  h.clock.advance(1);
  // The file cannot be written while a directory stands where its temporary file would go.
  const auto file = h.folder.path() / "watchlist.json";
  std::filesystem::rename(file, h.folder.path() / "kept");
  std::filesystem::create_directory(file);
  m->setWatchlist({"NVDA", "00700"});
  std::filesystem::remove(file);
  std::filesystem::rename(h.folder.path() / "kept", file);
  EXPECT_EQ(h.make()->watchlist(), (List{"NVDA", "00700"}));

  std::ofstream(file) << "{broken";
  h.store.setData(AppModel::watchlistBackupKey,
                  R"({"version":1,"exportedAt":0.0,"symbols":["00700"]})");
  EXPECT_EQ(h.make()->watchlist(), (List{"00700"}));  // an unreadable file is skipped
  h.store.remove(AppModel::watchlistBackupKey);
  std::ofstream(file) << "{broken";
  h.store.setStringArray(AppModel::watchlistKey, {"03033", " 03033"});
  EXPECT_EQ(h.make()->watchlist(), (List{"03033"}));  // the plain list is the last resort
}

TEST(Watchlist, ImportRejectionsLeaveEverythingAsItWas) {
  const std::pair<const char*, const char*> cases[] = {
      {R"(["600519"])", "文件中没有有效的 symbols 列表"},
      {R"({"symbols":"600519"})", "文件中没有有效的 symbols 列表"},
      {R"({"symbols":["600519", 7]})", "文件中没有有效的 symbols 列表"},
      {R"({"version":1})", "文件中没有有效的 symbols 列表"},
      {R"({"symbols":[" ", ""]})", "没有可识别的股票代码"},
      {R"({"symbols":["UNKNOWN"]})", "没有可识别的股票代码"},
      {R"({"symbols":[1, 2]})", "文件中没有有效的 symbols 列表"},
      {"{not json", "文件不是有效的 JSON"},
  };
  ModelHarness h;
  auto m = h.make();
  const auto before = h.store.data(AppModel::watchlistBackupKey);
  for (const auto& [content, message] : cases) {
    const auto file = h.folder.path() / "import.json";
    std::ofstream(file) << content;
    try {
      m->importWatchlist(file);
      ADD_FAILURE() << content << " was accepted";
    } catch (const std::exception& error) {
      EXPECT_STREQ(error.what(), message) << content;
    }
    EXPECT_EQ(m->watchlist(), AppModel::defaultWatchlist());
    EXPECT_EQ(h.store.data(AppModel::watchlistBackupKey), before);
  }
  EXPECT_THROW(m->importWatchlist(h.folder.path() / "missing.json"), std::system_error);
  // Unrecognised entries are dropped, the rest imported.
  std::ofstream(h.folder.path() / "mixed.json") << R"({"symbols":["UNKNOWN","00700"," NVDA "]})";
  m->importWatchlist(h.folder.path() / "mixed.json");
  EXPECT_EQ(m->watchlist(), (List{"00700", " NVDA "}));
}

}  // namespace
}  // namespace tidemark
