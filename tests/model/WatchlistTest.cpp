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
  // A limit counts what is kept, not what is read.
  EXPECT_EQ(validSymbols({"A", " A", "", "B", "C"}, 2), (List{"A", "B"}));
}

TEST(WatchlistRules, RecognisedSymbols) {
  for (const char* s : {"600519", "510300", "159915", "00700", "03033", "NVDA", "BRK.B", "BF-B",
                        "A", "aapl", "GOOGL"})
    EXPECT_TRUE(isRecognizedSymbol(s)) << s;
  for (const char* s :
       {"UNKNOWN", "6005190", "0070", "BRK.", "BRK.BBB", "N VDA", "", "贵州茅台", "600519X", ".B"})
    EXPECT_FALSE(isRecognizedSymbol(s)) << s;
}

TEST(WatchlistRules, ABadEntryCostsOnlyItself) {
  // Stored records: symbols kept and entries dropped, or no record at all.
  using Read = std::optional<std::pair<List, size_t>>;
  const std::pair<std::string, Read> cases[] = {
      {R"({"version":1,"exportedAt":0,"symbols":["600519","00700"]})", {{{"600519", "00700"}, 0}}},
      {"{\"version\":1,\"exportedAt\":0,\"symbols\":[\"600519\",\"N\xffVDA\",\"00700\"]}",
       {{{"600519", "00700"}, 1}}},
      {R"({"version":1,"exportedAt":0,"symbols":["NVDA",7,null,["x"],"03033"]})",
       {{{"NVDA", "03033"}, 3}}},
      // A stored U+FFFD is text like any other, unless bad bytes needed marking too.
      {"{\"version\":1,\"exportedAt\":0,\"symbols\":[\"A\xef\xbf\xbd\"]}", {{{"A\uFFFD"}, 0}}},
      {"{\"version\":1,\"exportedAt\":0,\"symbols\":[\"A\xef\xbf\xbd\",\"\xc3\",\"B\"]}",
       {{{"B"}, 2}}},
      // Bad bytes outside a symbol, or where an escape should be, are not one entry's loss.
      {"{\"version\":1,\"exportedAt\":0\xff,\"symbols\":[\"600519\"]}", std::nullopt},
      {"{\"version\":1,\"exportedAt\":0,\"symbols\":[\"6\\\xff\"]}", std::nullopt},
      {R"({"version":1,"symbols":["600519"]})", std::nullopt},
      {R"({"version":1,"exportedAt":0,"symbols":"600519"})", std::nullopt},
  };
  for (const auto& [bytes, expected] : cases) {
    size_t dropped = 99;
    auto backup = watchlistBackupFromBytes(bytes, &dropped);
    EXPECT_EQ(backup ? Read({{backup->symbols, dropped}}) : std::nullopt, expected) << bytes;
  }
}

// The default list, removing the active symbol, emptying the list, rotation past symbols without
// quotes and the newest list winning after a failed file write are checked by the self-test.

TEST(Watchlist, Operations) {
  ModelHarness h;
  auto m = h.make();
  m->add("AAPL");  // has a demonstration quote
  m->add("AAPL");
  m->add("601999");  // no quote: refused
  EXPECT_EQ(m->watchlist(), (List{"600519", "00700", "NVDA", "03033", "000858", "AAPL"}));
  m->add(test::quote("601999", 5.2));
  m->select("UNKNOWN");
  EXPECT_EQ(m->watchlist().back(), "601999");
  EXPECT_EQ(m->activeID(), "600519");
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
}

TEST(Watchlist, AnEmptyPlainListStaysEmptyAndIsTheLastResort) {
  ModelHarness h;
  h.store.setStringArray(AppModel::watchlistKey, {});
  auto emptied = h.make();
  EXPECT_EQ(emptied->watchlist(), List{});
  EXPECT_EQ(emptied->activeID(), "");

  const auto file = h.folder.path() / "watchlist.json";
  std::ofstream(file) << "{broken";
  h.store.setData(AppModel::watchlistBackupKey,
                  R"({"version":1,"exportedAt":0.0,"symbols":["00700"]})");
  EXPECT_EQ(h.make()->watchlist(), (List{"00700"}));  // an unreadable file is skipped
  h.store.remove(AppModel::watchlistBackupKey);
  std::ofstream(file) << "{broken";
  h.store.setStringArray(AppModel::watchlistKey, {"03033", " 03033"});
  EXPECT_EQ(h.make()->watchlist(), (List{"03033"}));  // the plain list is the last resort
}

// "600000", "600001", ... as a JSON array.
std::string manySymbols(int count) {
  std::string text = "[";
  for (int i = 0; i < count; ++i) text += (i ? ",\"" : "\"") + std::to_string(600000 + i) + "\"";
  return text + "]";
}

TEST(Watchlist, AnUnreadableFileIsMovedAsideBeforeItIsReplaced) {
  const std::string start = R"({"version":1,"exportedAt":816832800.0,"symbols":)";
  const std::tuple<std::string, List, const char*> cases[] = {
      // Longer than a watchlist holds: refused whole.
      {start + manySymbols(5001) + "}",
       {"03033"},
       "5001 symbols, more than the 5000 a watchlist holds"},
      {start + "[\"600519\",\"\xff\xfe\",\"00700\"]}",
       {"600519", "00700"},
       "1 of 3 symbols unreadable, dropped"},
      // The store's backup is older, yet the only readable list.
      {"{broken", {"03033"}, "not a watchlist record"},
      {start + "[\"600519\",\"00700\"]}", {"600519", "00700"}, nullptr},
  };
  for (const auto& [bytes, list, problem] : cases) {
    ModelHarness h;
    const auto file = h.folder.path() / "watchlist.json";
    const auto aside = h.folder.path() / "watchlist.unreadable.json";
    std::ofstream(file) << bytes;
    h.store.setData(AppModel::watchlistBackupKey,
                    R"({"version":1,"exportedAt":0.0,"symbols":["03033"]})");
    auto m = h.make();
    EXPECT_EQ(m->watchlist(), list) << bytes;
    std::error_code error;
    EXPECT_EQ(readFile(file, error),
              start + (list.size() == 2 ? R"(["600519","00700"]})" : R"(["03033"]})"));
    std::vector<AppModel::SetAsideRecord> expected;
    if (problem) expected.push_back({file.string(), problem, aside.string(), ""});
    EXPECT_EQ(m->setAsideRecords(), expected);
    EXPECT_EQ(readFile(aside, error), problem ? std::optional(bytes) : std::nullopt);
  }
}

TEST(Watchlist, AnUnreadableFileThatCannotBeMovedIsLeftAlone) {
  ModelHarness h;
  const auto file = h.folder.path() / "watchlist.json";
  std::filesystem::create_directories(h.folder.path() / "watchlist.unreadable.json" / "x");
  std::ofstream(file) << "{broken";
  auto m = h.make();
  EXPECT_EQ(m->setAsideRecords(),
            (std::vector<AppModel::SetAsideRecord>{
                {file.string(), "not a watchlist record", "", "Is a directory"}}));
  m->setWatchlist({"NVDA"});
  std::error_code error;
  EXPECT_EQ(readFile(file, error), "{broken");
  EXPECT_EQ(h.store.stringArray(AppModel::watchlistKey), List{"NVDA"});
}

TEST(Watchlist, ImportRejectionsLeaveEverythingAsItWas) {
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{R"(["600519"])", R"({"symbols":"600519"})", R"({"symbols":["600519", 7]})",
        R"({"version":1})", R"({"symbols":[1, 2]})"},
       "文件中没有有效的 symbols 列表"},
      {{R"({"symbols":[" ", ""]})", R"({"symbols":["UNKNOWN"]})"}, "没有可识别的股票代码"},
      {{"{not json"}, "文件不是有效的 JSON"},
      // One more than a watchlist holds.
      {{R"({"symbols":)" + manySymbols(5001) + "}"}, "自选最多 5000 个标的，文件中有 5001 个"},
  };
  ModelHarness h;
  auto m = h.make();
  const auto before = h.store.data(AppModel::watchlistBackupKey);
  const auto file = h.folder.path() / "import.json";
  for (const auto& [contents, message] : cases) {
    for (const std::string& content : contents) {
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
  }
  EXPECT_THROW(m->importWatchlist(h.folder.path() / "missing.json"), std::system_error);
  // As many as a watchlist holds are taken, and then nothing more is added.
  std::ofstream(file) << R"({"symbols":)" << manySymbols(5000) << "}";
  m->importWatchlist(file);
  ASSERT_TRUE(m->quote("NVDA"));
  m->add("NVDA");
  EXPECT_EQ(m->watchlist().size(), 5000u);
  EXPECT_EQ(m->watchlist().back(), "604999");
  List longer = m->watchlist();
  longer.insert(longer.begin(), "NVDA");
  m->setWatchlist(longer);  // a list set in code is cut to the first 5000
  EXPECT_EQ(m->watchlist().size(), 5000u);
  EXPECT_EQ(m->watchlist().back(), "604998");
  // Unrecognised entries are dropped, the rest imported.
  std::ofstream(file) << R"({"symbols":["UNKNOWN","00700"," NVDA "]})";
  m->importWatchlist(file);
  EXPECT_EQ(m->watchlist(), (List{"00700", " NVDA "}));
}

List ids(const std::vector<QuoteSnapshot>& quotes) {
  List list;
  for (const QuoteSnapshot& q : quotes) list.push_back(q.id);
  return list;
}

// Demonstration and static modes search their own securities; live ones ask the source and fall
// back to the shipped securities when it fails.
TEST(Search, ResultsAndMessagesByMode) {
  std::vector<QuoteSnapshot> many;
  for (int i = 0; i < 25; ++i) many.push_back(test::quote(std::to_string(601000 + i), 5));
  List first20 = ids(many);
  first20.resize(20);
  const test::FakeMarketDataSource::Answer failed{{}, "stock-sdk 搜索失败"};
  const std::optional<std::string> none, nothing = "没有找到匹配的标的";
  const std::tuple<SourceMode, const char*, test::FakeMarketDataSource::Answer, List,
                   std::optional<std::string>>
      cases[] = {
          {SourceMode::mock, " nvda\n", {}, {"NVDA"}, none},
          {SourceMode::mock, "平安", {}, {"601318", "000001"}, none},
          {SourceMode::mock, "etf", {}, {"510300", "159915", "QQQ", "SPY"}, none},
          {SourceMode::mock, "30", {}, {"300750", "03033", "510300"}, none},  // prefixes first
          {SourceMode::mock, "紫金矿业", {}, {}, nothing},
          {SourceMode::mock, " \t\n", {}, {}, none},
          {SourceMode::staticJSON, "腾讯", {}, {"00700"}, none},
          {SourceMode::automatic, " 紫金\n", {{test::quote("601899", 18)}, {}}, {"601899"}, none},
          {SourceMode::tencent, "紫金", {}, {}, nothing},
          {SourceMode::sina, "紫金", failed, {}, "数据源搜索失败，请稍后重试"},
          {SourceMode::stockSDK, "茅台", failed, {"600519"}, none},
          {SourceMode::automatic, "60", {many, {}}, first20, none},
      };
  ModelHarness h;
  auto m = h.make();
  for (const auto& [mode, text, answer, found, message] : cases) {
    m->setSourceMode(mode);
    h.source.searchAnswer = answer;
    const size_t asked = h.source.searches.size();
    m->searchSource(text);
    EXPECT_EQ(ids(m->sourceSearchResults()), found) << text;
    EXPECT_EQ(m->sourceSearchMessage(), message) << text;
    EXPECT_FALSE(m->isSearchingSource());
    if (mode == SourceMode::mock || mode == SourceMode::staticJSON)
      EXPECT_EQ(h.source.searches.size(), asked);
    else
      EXPECT_EQ(h.source.searches.at(asked).first, trimmedSymbol(text));
  }
  // Demonstration results carry the prices the orb shows.
  m->setSourceMode(SourceMode::mock);
  h.scheduler.advance(1);
  m->searchSource("茅台");
  EXPECT_EQ(m->sourceSearchResults(), std::vector<QuoteSnapshot>{*m->quote("600519")});
}

TEST(Search, TheNewestSearchWins) {
  ModelHarness h;
  h.source.holdSearches = true;
  auto m = h.make();
  m->setSourceMode(SourceMode::tencent);
  m->searchSource("茅台");
  m->searchSource("腾讯");
  EXPECT_TRUE(m->isSearchingSource());
  h.source.answerSearch(1, {{test::quote("00700", 485)}, {}});
  h.source.answerSearch(0, {{test::quote("600519", 1468)}, {}});
  EXPECT_EQ(ids(m->sourceSearchResults()), List{"00700"});
  EXPECT_FALSE(m->isSearchingSource());

  m->searchSource("英伟达");
  m->searchSource(" ");  // clearing the box drops the search under way
  h.source.answerSearch(2, {{test::quote("NVDA", 186)}, {}});
  EXPECT_EQ(ids(m->sourceSearchResults()), List{});
  EXPECT_EQ(m->sourceSearchMessage(), std::nullopt);
  EXPECT_FALSE(m->isSearchingSource());

  m->searchSource("苹果");
  m.reset();
  h.source.answerSearch(3, {{}, "late"});  // must not touch the destroyed model
}

TEST(Search, AddingAResultKeepsTheNewerQuoteAndTheSymbolOnce) {
  ModelHarness h;
  auto m = h.make();
  // The demonstration source answers a newly watched symbol at once, stamped now.
  m->addSearchResult(test::quote("601899", 18.2, 10, "tencent", h.clock.now() + 1));
  m->addSearchResult(test::quote("601899", 18.4, 10, "tencent", h.clock.now() + 2));
  m->addSearchResult(test::quote("601899", 17.0, 10, "tencent", Date{-1}));
  m->addSearchResult(test::quote("600519", 1500, 10, "tencent", h.clock.now()));
  EXPECT_EQ(m->watchlist(), (List{"600519", "00700", "NVDA", "03033", "000858", "601899"}));
  EXPECT_EQ(m->quote("601899")->price, 18.4);
  EXPECT_EQ(m->quote("600519")->price, 1500);
  EXPECT_NE(h.store.data(AppModel::snapshotsKey)->find("601899"), std::string::npos);
}

}  // namespace
}  // namespace tidemark
