#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "core/FileIO.h"
#include "core/NumberText.h"
#include "core/Text.h"
#include "model/DemoMarket.h"
#include "model/PinyinInitials.h"
#include "support/ModelHarness.h"

namespace tidemark {
namespace {

using test::ModelHarness;
using List = std::vector<std::string>;

TEST(WatchlistRules, TrimOnlyDecidesTheFirstDuplicateWinsAndSymbolsAreRecognised) {
  const std::pair<List, List> cases[] = {
      {{" NVDA", "NVDA", "\t\n", ""}, {" NVDA"}},
      {{"ABCDEFGHIJKLMNOP", "ABCDEFGHIJKLMNOPQ"}, {"ABCDEFGHIJKLMNOP"}},
      {{"\u3000600519\u3000", "600519"}, {"\u3000600519\u3000"}},
      {{"贵州茅台贵州茅台贵州茅台贵州茅台"}, {"贵州茅台贵州茅台贵州茅台贵州茅台"}},
  };
  for (const auto& [input, kept] : cases) EXPECT_EQ(validSymbols(input), kept);
  // A limit counts what is kept, not what is read.
  EXPECT_EQ(validSymbols({"A", " A", "", "B", "C"}, 2), (List{"A", "B"}));
  for (const char* s : {"600519", "00700", "NVDA", "BRK.B", "BF-B", "A", "aapl", "GOOGL",
                        "sh000001", "sz399001", "bj899050", "hkHSI", "hkHSTECH", "usIXIC"})
    EXPECT_TRUE(isRecognizedSymbol(s)) << s;
  for (const char* s : {"UNKNOWN", "6005190", "0070", "BRK.", "BRK.BBB", "N VDA", "", "60051X",
                        "sh00001", "SH000001", "hkABCDEFGHI", "usixic", "xx000001"})
    EXPECT_FALSE(isRecognizedSymbol(s)) << s;
}

TEST(WatchlistRules, ABadEntryCostsOnlyItself) {
  // Stored records: symbols kept and entries dropped, or no record at all.
  using Read = std::optional<std::pair<List, size_t>>;
  const std::pair<std::string, Read> cases[] = {
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

TEST(Watchlist, WhatCannotBeAddedSelectedOrMovedIsIgnored) {
  ModelHarness h;
  auto m = h.make();
  m->add("601999");   // no quote
  m->select("AAPL");  // quoted, not watched
  EXPECT_EQ(m->watchlist(), AppModel::defaultWatchlist());
  EXPECT_EQ(m->activeID(), "600519");
  m->setWatchlist({"A", "B", "C", "D"});
  m->select("B");  // watched, no quote
  EXPECT_EQ(m->activeID(), "A");
  const std::tuple<const char*, int, List> moves[] = {{"D", 1, {"A", "B", "C", "D"}},
                                                      {"C", -5, {"C", "A", "B", "D"}},
                                                      {"C", 99, {"A", "B", "D", "C"}},
                                                      {"X", 1, {"A", "B", "D", "C"}}};
  for (const auto& [symbol, offset, expected] : moves) {
    m->move(symbol, offset);
    EXPECT_EQ(m->watchlist(), expected) << symbol << offset;
  }
}

// "600000", "600001", ... as a JSON array.
std::string manySymbols(int count) {
  std::string text = "[";
  for (int i = 0; i < count; ++i) text += (i ? ",\"" : "\"") + std::to_string(600000 + i) + "\"";
  return text + "]";
}

// Moved aside, or left alone when a folder holds the name it would move to ("{blocked"); then
// the store's backup is read, or else (when given) the plain list.
TEST(Watchlist, AnUnreadableFileIsMovedAsideOrLeftAlone) {
  const std::string start = R"({"version":1,"exportedAt":816832800.0,"symbols":)";
  const std::optional<List> backup;
  const std::tuple<std::string, std::optional<List>, List, const char*> cases[] = {
      {start + manySymbols(5001) + "}",
       backup,
       {"03033"},
       "5001 symbols, more than the 5000 a watchlist holds"},
      {start + "[\"600519\",\"\xff\xfe\",\"00700\"]}",
       backup,
       {"600519", "00700"},
       "1 of 3 symbols unreadable, dropped"},
      {"{broken", backup, {"03033"}, "not a watchlist record"},
      {"{blocked", List{"03033", " 03033"}, {"03033"}, "not a watchlist record"},
      {"{broken", List{}, {}, "not a watchlist record"},
      {start + "[\"600519\",\"00700\"]}", backup, {"600519", "00700"}, nullptr},
      {"{folder", backup, {"03033"}, "Is a directory"},
      {start + "[" + std::string(16 << 20, ' ') + "]}", backup, {"03033"}, "File too large"},
  };
  for (const auto& [bytes, plain, list, problem] : cases) {
    ModelHarness h;
    const auto file = h.folder.path() / "watchlist.json";
    const auto aside = h.folder.path() / "watchlist.unreadable.json";
    const bool blocked = bytes == "{blocked", folder = bytes == "{folder";
    if (folder) std::filesystem::create_directories(file / "inside");
    if (!folder) std::ofstream(file) << bytes;
    // What a write cut short by a kill left goes; a name of the user's beside it stays.
    std::ofstream(h.folder.path() / "watchlist.json.a1B2c3") << "{half";
    std::ofstream(h.folder.path() / "watchlist.json.mine") << "{mine";
    if (blocked) std::filesystem::create_directories(aside / "x");
    if (plain) h.store.setStringArray(storeKeys::watchlist, *plain);
    if (!plain)
      h.store.setData(storeKeys::watchlistBackup,
                      R"({"version":1,"exportedAt":0.0,"symbols":["03033"]})");
    auto m = h.make();
    EXPECT_EQ(m->watchlist(), list) << bytes;
    EXPECT_EQ(m->activeID(), list.empty() ? "" : list[0]);
    EXPECT_EQ(h.store.stringArray(storeKeys::watchlist), list);
    std::error_code error;
    EXPECT_EQ(readFile(file, error),
              blocked ? std::optional(bytes) : h.store.data(storeKeys::watchlistBackup));
    std::vector<SetAsideRecord> expected;
    if (problem)
      expected.push_back(
          {file.string(), problem, blocked ? "" : aside.string(), blocked ? "Is a directory" : ""});
    EXPECT_EQ(m->setAsideRecords(), expected);
    EXPECT_EQ(readFile(aside, error, SIZE_MAX),
              problem && !blocked && !folder ? std::optional(bytes) : std::nullopt);
    EXPECT_EQ(folder, std::filesystem::exists(aside / "inside"));
    EXPECT_FALSE(std::filesystem::exists(h.folder.path() / "watchlist.json.a1B2c3"));
    EXPECT_TRUE(std::filesystem::exists(h.folder.path() / "watchlist.json.mine"));
  }
}

TEST(Watchlist, ImportRejectionsLeaveEverythingAsItWas) {
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{R"({"symbols":"600519"})", R"({"symbols":["600519", 7]})", R"({"version":1})"},
       "文件中没有有效的 symbols 列表"},
      {{R"({"symbols":["UNKNOWN"," "]})"}, "没有可识别的股票代码"},
      {{"{not json"}, "文件不是有效的 JSON"},
      // One more than a watchlist holds.
      {{R"({"symbols":)" + manySymbols(5001) + "}"}, "自选最多 5000 个标的，文件中有 5001 个"},
      {{R"({"symbols":["600519"],"pad":")" + std::string(16 << 20, 'x') + "\"}"},
       "文件超过 16 MB，不是自选列表"},
  };
  ModelHarness h;
  auto m = h.make();
  const auto file = h.folder.path() / "import.json";
  for (const auto& [contents, message] : cases) {
    for (const std::string& content : contents) {
      std::ofstream(file) << content;
      EXPECT_THAT([&] { m->importWatchlist(file); },
                  testing::ThrowsMessage<std::exception>(testing::StrEq(message)))
          << content;
      EXPECT_EQ(m->watchlist(), AppModel::defaultWatchlist());
    }
  }
  EXPECT_THROW(m->importWatchlist(h.folder.path() / "missing.json"), std::system_error);
  // As many as a watchlist holds are taken; a longer list set in code keeps the first 5000.
  std::ofstream(file) << R"({"symbols":)" << manySymbols(5000) << "}";
  m->importWatchlist(file);
  List longer = m->watchlist();
  longer.insert(longer.begin(), "NVDA");
  m->setWatchlist(longer);
  EXPECT_EQ(m->watchlist().size(), 5000u);
  EXPECT_EQ(m->watchlist().back(), "604998");
  // Unrecognised entries are dropped, the rest imported without their blanks and line breaks.
  std::ofstream(file)
      << R"({"symbols":["UNKNOWN","00700"," NVDA ","sh000001","SH000001","hkHSI\n"]})";
  m->importWatchlist(file);
  EXPECT_EQ(m->watchlist(), (List{"00700", "NVDA", "sh000001", "hkHSI"}));
}

// The demonstration serves the well-known indices in points, any other at a generated size.
TEST(Watchlist, IndicesBesideTheStockOfTheSameDigits) {
  ModelHarness h;
  auto m = h.make();
  m->setWatchlist({"000001", "sh000001", "hkHSI", "usIXIC", "sz399001", "sh000016"});
  h.scheduler.advance(1);
  m->loadSource(true);  // the opening values
  ASSERT_NE(m->quote("sh000016"), nullptr);
  std::vector<std::string> shown;
  for (const QuoteSnapshot& q : m->watchedQuotes())
    shown.push_back(q.id + " " + q.market + " " + q.name + " " + priceText(q.price) + " " +
                    q.currency());
  EXPECT_EQ(
      shown,
      (List{"000001 A股 平安银行 11.61 CNY", "sh000001 A股指数 上证指数 3,882.78 ",
            "hkHSI 港股指数 恒生指数 25,930.03 ", "usIXIC 美股指数 纳斯达克 22,870.35 ",
            "sz399001 A股指数 深证成指 12,920.36 ",
            "sh000016 A股指数 演示指数 sh000016 " + priceText(m->quote("sh000016")->price) + " "}));
  EXPECT_GE(m->quote("sh000016")->prevClose, 1000);
  m->loadSource(false);
  EXPECT_NE(m->quote("sh000001")->price, 3882.78) << "moves like the rest";
  EXPECT_LT(std::abs(m->quote("sh000001")->price / 3882.78 - 1), 0.006);
}

List ids(const std::vector<QuoteSnapshot>& quotes) {
  List list;
  for (const QuoteSnapshot& q : quotes) list.push_back(q.id);
  return list;
}

// Local modes search their own securities; live ones ask, falling back to the shipped ones.
TEST(Search, ResultsAndMessagesOfEachSource) {
  using enum SourceMode;
  using Answer = test::FakeMarketDataSource::Answer;
  std::vector<QuoteSnapshot> many;
  for (int i = 0; i < 25; ++i) many.push_back(test::quote(std::to_string(601000 + i), 5));
  const List first20 = ids({many.begin(), many.begin() + 20});
  const Answer failed{{}, "stock-sdk 搜索失败"};
  const std::optional<std::string> none, nothing = "没有找到匹配的标的";
  const std::tuple<SourceMode, const char*, Answer, List, std::optional<std::string>> cases[] = {
      {mock, " nvda\n", {}, {"NVDA"}, none},
      {mock, "etf", {}, {"510300", "159915", "QQQ", "SPY"}, none},
      {mock, "30", {}, {"300750", "03033", "510300", "sh000300"}, none},  // prefixes first
      // Indices are found offline by name and code, after the stock of the same digits.
      {mock, "000001", {}, {"000001", "sh000001"}, none},
      // Pinyin initials, of a character read two ways too (行: háng, xíng).
      {staticJSON, "SZZS", {}, {"sh000001"}, none},
      {mock, "yh", {}, {"600036", "000001"}, none},
      {staticJSON, "hs300", {}, {"510300", "sh000300"}, none},
      {mock, "gzmtx", {}, {}, nothing},
      {automatic, " 紫金\n", {{test::quote("601899", 18)}, {}}, {"601899"}, none},
      {tencent, "紫金", {}, {}, nothing},
      {sina, "紫金", failed, {}, "数据源搜索失败，请稍后重试"},
      {stockSDK, "茅台", failed, {"600519"}, none},
      {automatic, "60", {many, {}}, first20, none},
  };
  ModelHarness h;
  auto m = h.make();
  for (const auto& [mode, text, answer, found, message] : cases) {
    m->setSourceMode(mode);
    h.source.searchAnswer = answer;
    const size_t asked = h.source.searches.size();
    m->searchSource(text);
    EXPECT_EQ(ids(m->search().results()), found) << text;
    EXPECT_EQ(m->search().message(), message) << text;
    EXPECT_FALSE(m->search().isSearching());
    if (mode == mock || mode == staticJSON)
      EXPECT_EQ(h.source.searches.size(), asked);
    else
      EXPECT_EQ(h.source.searches.at(asked).first, trimmedSymbol(text));
  }
}

TEST(Search, AddingAResultAndTheNewestSearch) {
  using enum SourceMode;
  ModelHarness h;
  auto m = h.make();
  m->setSourceMode(mock);
  h.scheduler.advance(1);
  m->searchSource("茅台");
  EXPECT_EQ(m->search().results(), std::vector<QuoteSnapshot>{*m->quote("600519")});
  // Adding a result keeps the newer quote and the symbol once.
  m->addSearchResult(test::quote("601899", 18.2, 10, "tencent", h.clock.now() + 1));
  m->addSearchResult(test::quote("601899", 18.4, 10, "tencent", h.clock.now() + 2));
  m->addSearchResult(test::quote("601899", 17.0, 10, "tencent", Date{-1}));
  m->addSearchResult(test::quote("600519", 1500, 10, "tencent", h.clock.now()));
  EXPECT_EQ(m->watchlist(), (List{"600519", "00700", "NVDA", "03033", "000858", "601899"}));
  EXPECT_EQ(m->quote("601899")->price, 18.4);
  EXPECT_EQ(m->quote("600519")->price, 1500);
  EXPECT_NE(h.store.data(storeKeys::snapshots)->find("601899"), std::string::npos);
  // The newest search wins; clearing the box drops the one under way.
  h.source.holdSearches = true;
  m->setSourceMode(tencent);
  const size_t n = h.source.searches.size();
  m->searchSource("茅台");
  m->searchSource("腾讯");
  EXPECT_TRUE(m->search().isSearching());
  h.source.answerSearch(n + 1, {{test::quote("00700", 485)}, {}});
  h.source.answerSearch(n, {{test::quote("600519", 1468)}, {}});
  EXPECT_EQ(ids(m->search().results()), List{"00700"});
  m->searchSource("英伟达");
  m->searchSource(" ");
  h.source.answerSearch(n + 2, {{test::quote("NVDA", 186)}, {}});
  EXPECT_EQ(ids(m->search().results()), List{});
  EXPECT_EQ(m->search().message(), std::nullopt);
  EXPECT_FALSE(m->search().isSearching());
  m->searchSource("苹果");
  m.reset();
  h.source.answerSearch(n + 3, {{}, "late"});  // must not touch the destroyed model
}

TEST(Search, EveryLocalNameSpellsItsInitials) {
  std::vector<DemoSecurity> local = demoSecurities();
  local.insert(local.end(), demoIndices().begin(), demoIndices().end());
  for (const DemoSecurity& s : local)
    for (char32_t c : codePoints(s.name))
      if (c >= 0x3400) {
        EXPECT_FALSE(pinyinInitials(c).empty()) << s.name;
      }
  EXPECT_EQ(pinyinInitials(U'行'), "hx");
  EXPECT_EQ(pinyinInitials(U'A'), "");
}

// A full code the search did not find is offered as it stands and named by its first quote.
TEST(Search, AFullCodeNoSearchFoundIsAddedAsItStands) {
  const std::pair<const char*, std::optional<std::string>> cases[] = {
      {" 601899 ", "601899"}, {"amd", "AMD"},           {"sh000905", "sh000905"},
      {"aapl", std::nullopt}, {"600519", std::nullopt}, {"紫金矿业", std::nullopt},
  };
  ModelHarness h;
  auto m = h.make();
  for (const auto& [text, offered] : cases) {
    m->searchSource(text);
    EXPECT_EQ(codeToAdd(m->search(), m->watchlist()), offered) << text;
  }
  m->searchSource("601899");
  m->addCode();
  EXPECT_EQ(m->watchlist().back(), "601899");
  EXPECT_EQ(codeToAdd(m->search(), m->watchlist()), std::nullopt);
  h.scheduler.advance(1);
  ASSERT_NE(m->quote("601899"), nullptr);
  EXPECT_EQ(m->quote("601899")->name, "演示标的 601899");
  // Not while a search is under way, nor when the box is cleared.
  m->setSourceMode(SourceMode::tencent);
  h.source.holdSearches = true;
  m->searchSource("601898");
  EXPECT_EQ(codeToAdd(m->search(), m->watchlist()), std::nullopt);
  m->searchSource("");
  m->addCode();
  EXPECT_EQ(m->watchlist().back(), "601899");
}

// A file that is not JSON is a list of codes, one a line or in a CSV's first column.
TEST(Watchlist, PlainAndCsvListsAreImportedWithWhatWasSkipped) {
  const std::tuple<std::string, List, size_t> cases[] = {
      {"600519\n00700\r\n\n  AAPL \n", {"600519", "00700", "AAPL"}, 0},
      {"\xEF\xBB\xBF代码,名称\n\"600519\",贵州茅台\n00700;腾讯控股\nNVDA\t英伟达\n合计 3\n",
       {"600519", "00700", "NVDA"},
       2},
      {"sh000001 , 上证\n600519\n600519\nBRK.B\n", {"sh000001", "600519", "BRK.B"}, 0},
      // JSON after an editor's byte-order mark is still JSON.
      {"\xEF\xBB\xBF {\"symbols\":[\"00700\",\"NVDA\"]}", {"00700", "NVDA"}, 0},
  };
  ModelHarness h;
  auto m = h.make();
  const auto file = h.folder.path() / "codes.csv";
  for (const auto& [text, list, skipped] : cases) {
    std::ofstream(file) << text;
    const WatchlistImportResult result = m->importWatchlist(file);
    EXPECT_EQ(m->watchlist(), list) << text;
    EXPECT_EQ(std::pair(result.symbols, result.skippedLines), std::pair(list.size(), skipped));
  }
  std::ofstream(file) << "名称\n贵州茅台\n";
  EXPECT_THAT([&] { m->importWatchlist(file); },
              testing::ThrowsMessage<std::exception>(testing::StrEq("没有可识别的股票代码")));
  EXPECT_EQ(m->watchlist(), (List{"00700", "NVDA"}));
}

}  // namespace
}  // namespace tidemark
