// The tidemark binary as a user runs it, in a home of its own, and its one-instance lock.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <thread>

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QHostInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QTest>
#include <QThread>

#include "app/DesktopApp.h"
#include "app/SingleInstance.h"
#include "core/DataSourceEndpoints.h"
#include "core/FileIO.h"
#include "core/Json.h"
#include "model/AppModel.h"
#include "model/Preferences.h"
#include "model/StoreKeys.h"
#include "platform/SettingsStore.h"
#include "support/EndlessServer.h"
#include "support/Fakes.h"
#include "support/LoopbackServer.h"
#include "support/PeakMemory.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;

using testing::HasSubstr;
using testing::Not;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
constexpr bool sanitized = __has_feature(address_sanitizer);
#else
constexpr bool sanitized = false;
#endif

using Environment = std::map<std::string, std::string>;

struct Outcome {
  int code = -1;
  std::string out, err;
};

std::string contents(const std::filesystem::path& file) {
  std::error_code error;
  return readFile(file, error).value_or("");
}

bool ended(QProcess& process, int milliseconds) {
  // The event loop keeps turning meanwhile, for loopback servers in this process.
  return QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, milliseconds);
}

// Debian's libfaketime, under the machine's multiarch folder.
std::string libfaketime() {
  for (const auto& folder : std::filesystem::directory_iterator("/usr/lib"))
    if (auto library = folder.path() / "faketime" / "libfaketime.so.1";
        std::filesystem::exists(library))
      return library.string();
  return "libfaketime.so.1";
}

class CommandLine : public testing::Test {
 protected:
  // Starts the binary in the private home without a desktop session (the desktop app off screen);
  // under `fakeTime` (UTC) libfaketime's wall clock starts there, the timers keep the real pace.
  void start(QProcess& process, const std::string& arguments, bool desktop = false,
             const Environment& extra = {}, const std::string& fakeTime = "") {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "TMPDIR"}) {
      std::filesystem::create_directories(home.path() / name);
      environment.insert(QString::fromLatin1(name), QString::fromStdString(home.path() / name));
    }
    std::filesystem::create_directories(runtime);
    std::filesystem::permissions(runtime, std::filesystem::perms::owner_all);
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), QString::fromStdString(runtime));
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
      environment.remove(QString::fromLatin1(name));
    if (desktop) environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    for (const auto& [name, value] : extra)
      environment.insert(QString::fromStdString(name), QString::fromStdString(value));
    if (!fakeTime.empty()) {
      // Into the binary itself: faketime(1)'s child would outlive a terminated wrapper.
      environment.insert(QStringLiteral("LD_PRELOAD"), QString::fromStdString(libfaketime()));
      environment.insert(QStringLiteral("FAKETIME"), QString::fromStdString("@" + fakeTime));
      environment.insert(QStringLiteral("TZ"), QStringLiteral("UTC"));
      environment.insert(QStringLiteral("FAKETIME_DONT_FAKE_MONOTONIC"), QStringLiteral("1"));
      // The preloaded library comes before a sanitized binary's runtime.
      environment.insert(QStringLiteral("ASAN_OPTIONS"),
                         environment.value(QStringLiteral("ASAN_OPTIONS")) +
                             QStringLiteral(":verify_asan_link_order=0"));
    }
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TIDEMARK_BINARY),
                  QString::fromStdString(arguments).split(u' ', Qt::SkipEmptyParts));
  }
  Outcome run(const std::string& arguments, const Environment& extra = {}) {
    QProcess process;
    start(process, arguments, false, extra);
    EXPECT_TRUE(ended(process, 60000)) << arguments;
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
  }
  // The desktop app's standard error, run until it holds `line` and `ready()`, then `more` ms.
  std::string desktopUntil(const std::string& line, int more, const std::function<bool()>& ready,
                           const Environment& extra = {}) {
    QProcess process;
    start(process, "", true, extra);
    std::string err;
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
          err += process.readAllStandardError().toStdString();
          return err.find(line) != err.npos && ready();
        },
        20000))
        << err;
    QTest::qWait(more);
    process.terminate();
    EXPECT_TRUE(process.waitForFinished(10000));
    EXPECT_EQ(process.exitCode(), 0);
    return err + process.readAllStandardError().toStdString();
  }
  // An endpoint file: the quote and candle feeds on `base`, the package's under "/sdk" or `sdk`.
  std::string endpointsFile(const std::string& base, const std::string& sdk = "") const {
    DataSourceEndpoints endpoints = DataSourceEndpoints::bundled();
    endpoints.tencentQuote = base + "/q=";
    endpoints.sinaQuote = base + "/list=";
    endpoints.tencentKline = base + "/kline?param=";
    endpoints.stockSDKTencentBase = sdk.empty() ? base + "/sdk" : sdk;
    const auto file = home.path() / "endpoints.json";
    std::ofstream(file) << toJson(endpoints).dump();
    return file.string();
  }
  // The user's store: a watchlist with last time's quote of 600519, and preferences.
  void storeHeldQuote(std::optional<Preferences> preferences = std::nullopt,
                      const std::vector<std::string>& watchlist = {"600519"}) {
    std::filesystem::create_directories(config);
    SettingsStore store(QString::fromStdString((config / "Tidemark.conf").string()));
    store.setStringArray(storeKeys::watchlist, watchlist);
    QuoteSnapshot held{"600519", "A股", "贵州茅台",        1400,     1390, 1401,
                       1388,     9,     Date{814'000'000}, "tencent"};
    store.setData(storeKeys::snapshots, Json::array({toJson(held)}).dump());
    if (preferences) store.setData(storeKeys::preferences, toJson(*preferences).dump());
  }
  // Files below the private home, other than the folders made for the run.
  std::vector<std::string> filesLeft() const {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home.path()))
      if (!entry.is_directory()) files.push_back(entry.path().lexically_relative(home.path()));
    return files;
  }
  test::TemporaryFolder home;
  const std::filesystem::path config = home.path() / "XDG_CONFIG_HOME" / "Tidemark",
                              data = home.path() / "XDG_DATA_HOME" / "Tidemark",
                              runtime = home.path() / "XDG_RUNTIME_DIR";
};

TEST_F(CommandLine, ExitStatusesAndMessages) {
  const std::string minute = TIDEMARK_TEST_DATA_DIR "/tencent-minute-sh600519.json";
  const std::tuple<std::string, int, std::string, std::string> cases[] = {
      {"--version", 0, "tidemark 0.1.0\n", ""},
      {"--self-test", 0, "Native event-routing checks passed\nAll model and native checks passed\n",
       ""},
      {"", 1, "",
       "tidemark: no display to show the orb on; tidemark --quotes prints the watchlist's quotes "
       "instead\n"},
      {"--bogus", 2, "", "tidemark: Unknown option 'bogus'. See --help.\n"},
      {"--self-test --json", 2, "", "tidemark: --self-test takes no other option See --help.\n"},
      {"extra", 2, "", "tidemark: unexpected argument 'extra' See --help.\n"},
      {"--source yahoo", 2, "",
       "tidemark: unknown source 'yahoo' (mock, static, automatic, tencent, sina, stockSDK) See "
       "--help.\n"},
      {"--symbols ,", 2, "", "tidemark: --symbols needs at least one symbol See --help.\n"},
      {"--period week", 2, "", "tidemark: --period goes with --kline See --help.\n"},
      {"--kline 600519 --period year", 2, "",
       "tidemark: unknown period 'year' (day, week, month) See --help.\n"},
      {"--kline 600519 --watch", 2, "", "tidemark: --kline does not take --watch See --help.\n"},
      {"--kline 600519600519600519", 2, "",
       "tidemark: --kline needs a symbol, not '600519600519600519' See --help.\n"},
      {"--kline 012345 --source mock", 1, "",
       "tidemark: no day candles for 012345: 场外基金没有K线\n"},
      {"--toggle-orb", 1, "", "潮汐栏没有在运行\n"},
      {"--toggle-mask --json", 2, "",
       "tidemark: --toggle-mask takes no other option See --help.\n"},
      {"--endpoints /nonexistent.json", 2, "",
       "tidemark: cannot read /nonexistent.json: No such file or directory See --help.\n"},
      {"--endpoints " + minute, 2, "",
       "tidemark: " + minute +
           " holds no endpoint set (the nine addresses, alone or under \"endpoints\") See "
           "--help.\n"},
      {"--search=", 2, "", "tidemark: --search needs a text to look for See --help.\n"},
      {"--search gzmt --watch", 2, "", "tidemark: --search does not take --watch See --help.\n"},
      {"--holdings --symbols NVDA", 2, "",
       "tidemark: --holdings does not take --symbols See --help.\n"},
      {"--alerts --watch", 2, "", "tidemark: --alerts does not take --watch See --help.\n"},
  };
  for (const auto& [arguments, code, out, err] : cases) {
    Outcome result = run(arguments);
    EXPECT_EQ(result.code, code) << arguments;
    EXPECT_EQ(result.out, out) << arguments;
    EXPECT_EQ(result.err, err) << arguments;
  }
  const std::string help = run("--help").out;
  EXPECT_THAT(help, HasSubstr("--self-test"));
  EXPECT_THAT(help, HasSubstr("--holdings"));
}

// The watchlist manager's search: the local securities offline; a live source asks the bridge's
// search and lists the hits that have quotes, in the search's order.
TEST_F(CommandLine, SearchAsATableAndAsJson) {
  test::LoopbackServer server([&](const std::string& target) -> test::LoopbackServer::Reply {
    if (target.starts_with("/sdk/s3/?")) return {200, test::testData("smartbox-search.txt")};
    if (target.starts_with("/sdk/?q=")) return {200, test::testData("tencent-basic.gbk")};
    return {404, ""};
  });
  const std::pair<std::string, std::string> cases[] = {
      {"--search gzmt --source mock", "代码    名称      市场\n600519  贵州茅台  A股\n"},
      {"--search 300 --source static",
       "代码      名称        市场\n"
       "300750    宁德时代    A股\n"
       "510300    沪深300ETF  A股基金\n"
       "sh000300  沪深300     A股指数\n"},
      {"--search qqqqq --source mock", "没有找到匹配的标的\n"},
      {"--search hs300 --json --source static",
       "{\n  \"results\": [\n"
       "    {\n      \"id\": \"510300\",\n      \"name\": \"沪深300ETF\",\n"
       "      \"market\": \"A股基金\"\n    },\n"
       "    {\n      \"id\": \"sh000300\",\n      \"name\": \"沪深300\",\n"
       "      \"market\": \"A股指数\"\n    }\n  ]\n}\n"},
      {"--search qqqqq --json --source mock", "{\n  \"results\": []\n}\n"},
      {"--search 茅台 --source tencent --endpoints " + endpointsFile(server.base()),
       "代码    名称      市场\n"
       "600519  贵州茅台  A股\n"
       "00700   腾讯控股  港股\n"
       "NVDA    英伟达    美股\n"
       "000858  五粮液    A股\n"},
  };
  for (const auto& [arguments, out] : cases) {
    const Outcome result = run(arguments);
    EXPECT_EQ(std::pair(result.code, result.out), std::pair(0, out)) << arguments << result.err;
  }
  EXPECT_FALSE(std::filesystem::exists(data / "watchlist.json")) << "nothing is written";
}

TEST_F(CommandLine, QuotesOfTheDefaultOrTheUsersWatchlistWriteNothing) {
  Outcome table = run("--quotes");
  EXPECT_EQ(table.code, 0) << table.err;
  EXPECT_TRUE(table.out.starts_with(
      "代码    名称          市场          价格  涨跌幅    成交量  来源  状态\n"
      "600519  贵州茅台      A股       1,468.80  +1.16%     3.2万  mock  实时\n"))
      << table.out;
  auto document = json::parse(run("--quotes --json").out);
  ASSERT_TRUE(document);
  EXPECT_EQ((*document)["phase"], "live");
  EXPECT_EQ((*document)["lastError"], nullptr);
  EXPECT_EQ((*document)["sourceLabel"], "模拟源");
  std::vector<std::string> ids;
  for (const auto& q : (*document)["quotes"]) ids.push_back(q["id"]);
  EXPECT_EQ(ids, (std::vector<std::string>{"600519", "00700", "NVDA", "03033", "000858"}));
  EXPECT_EQ(filesLeft(), std::vector<std::string>{});
  EXPECT_FALSE(std::filesystem::exists(config));

  std::filesystem::create_directories(data);
  const std::string saved = R"({"version":1,"exportedAt":800000000,"symbols":["AAPL","00700"]})";
  std::ofstream(data / "watchlist.json") << saved;
  Outcome result = run("--quotes");
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("\nAAPL   苹果      美股  229.95"));
  EXPECT_THAT(result.out, HasSubstr("\n00700  腾讯控股"));
  EXPECT_THAT(result.out, Not(HasSubstr("600519")));
  EXPECT_EQ(contents(data / "watchlist.json"), saved);
  EXPECT_EQ(filesLeft(), std::vector<std::string>{"XDG_DATA_HOME/Tidemark/watchlist.json"});
}

// At the demonstration's prices and rates, then live: a symbol no longer watched counts nowhere.
TEST_F(CommandLine, HoldingsAsATableAndAsJsonInYuanAtTheDemoOrFetchedRates) {
  std::filesystem::create_directories(data);
  const std::string held =
      R"({"version":1,"savedAt":800000000,"holdings":[{"symbolID":"600519","shares":100,)"
      R"("cost":1500.5},{"symbolID":"00700","shares":200,"cost":380},)"
      R"({"symbolID":"601318","shares":10,"cost":50},{"symbolID":"NVDA","shares":10.5,"cost":190}]})";
  std::ofstream(data / "holdings.json") << held;
  const Outcome table = run("--holdings");
  ASSERT_EQ(table.code, 0) << table.err;
  // 10.5 × 186.25 = 1,955.625, to the cent; in yuan at 0.915 and 7.12.
  EXPECT_EQ(table.out,
            "代码    名称        持有      成本      现价   今日盈亏   今日%    持有盈亏    持有%"
            "        市值\n"
            "600519  贵州茅台     100  1,500.50  1,468.80  +1,680.00  +1.16%   -3,170.00   -2.11%"
            "  146,880.00\n"
            "00700   腾讯控股     200    380.00    485.20  +1,320.00  +1.38%  +21,040.00  +27.68%"
            "   97,040.00\n"
            "601318  不在自选中    10     50.00         —          —       —           —        —"
            "           —\n"
            "NVDA    英伟达      10.5    190.00    186.25     +40.43  +2.11%      -39.38   -1.97%"
            "    1,955.63\n"
            "合计 CNY  今日盈亏 +1,680.00 (+1.16%)  持有盈亏 -3,170.00 (-2.11%)  市值 146,880.00\n"
            "合计 HKD  今日盈亏 +1,320.00 (+1.38%)  持有盈亏 +21,040.00 (+27.68%)  市值 97,040.00\n"
            "合计 USD  今日盈亏 +40.43 (+2.11%)  持有盈亏 -39.38 (-1.97%)  市值 1,955.63\n"
            "折合人民币  今日盈亏 +3,175.63 (+1.29%)  持有盈亏 +15,801.25 (+6.76%)  市值 "
            "249,595.65  演示汇率 USD 7.1200 · HKD 0.9150\n");

  auto document = json::parse(run("--holdings --json").out);
  ASSERT_TRUE(document);
  EXPECT_EQ((*document)["holdings"][0].dump(),
            R"({"id":"600519","name":"贵州茅台","currency":"CNY","shares":100.0,"cost":1500.5,)"
            R"("price":1468.8,"prevClose":1452.0,"marketValue":146880.0,"dayProfit":1680.0,)"
            R"("dayProfitPct":1.157,"totalProfit":-3170.0,"totalProfitPct":-2.1126})");
  EXPECT_EQ((*document)["holdings"][2].dump(),
            R"({"id":"601318","name":null,"currency":"CNY","shares":10.0,"cost":50.0,)"
            R"("price":null,"prevClose":null,"marketValue":null,"dayProfit":null,)"
            R"("dayProfitPct":null,"totalProfit":null,"totalProfitPct":null})");
  EXPECT_EQ((*document)["totals"][1].dump(),
            R"({"currency":"HKD","marketValue":97040.0,"dayProfit":1320.0,"dayProfitPct":1.379,)"
            R"("totalProfit":21040.0,"totalProfitPct":27.6842,"missing":0})");
  EXPECT_EQ((*document)["holdings"][3]["marketValue"].dump(), "1955.63");
  EXPECT_EQ((*document)["totals"][2]["marketValue"].dump(), "1955.63");
  EXPECT_EQ((*document)["cny"].dump(),
            R"({"marketValue":249595.65,"dayProfit":3175.63,"totalProfit":15801.25,)"
            R"("rates":{"USD":7.12,"HKD":0.915}})");
  EXPECT_EQ(contents(data / "holdings.json"), held);

  // Live, the rate rows come with the quotes: 00700 has no quote here, so only USD converts.
  test::LoopbackServer server([&](const std::string& target) -> test::LoopbackServer::Reply {
    if (target == "/q=whUSDCNY,whHKDCNY")
      return {200, "v_whUSDCNY=\"1~2~3~7.1034\";\nv_whHKDCNY=\"1~2~3~0.9123\";\n"};
    if (target.starts_with("/q=")) return {200, test::testData("tencent-basic.gbk")};
    return {500, "down"};
  });
  const auto live = json::parse(
      run("--holdings --json --source tencent --endpoints " + endpointsFile(server.base())).out);
  ASSERT_TRUE(live);
  // 146,880 + 1,955.625 × 7.1034; 1,680 + 40.425 × 7.1034; -3,170 - 39.375 × 7.1034.
  EXPECT_EQ((*live)["cny"].dump(),
            R"({"marketValue":160771.59,"dayProfit":1967.15,"totalProfit":-3449.7,)"
            R"("rates":{"USD":7.1034,"HKD":0.9123}})");
}

// The alerts as the user's files hold them, in Shanghai's time: nothing is evaluated or written.
TEST_F(CommandLine, AlertsAsStoredAsATableAndAsJson) {
  std::filesystem::create_directories(data);
  const std::string alerts =
      R"({"version":1,"savedAt":800000000,"paused":false,"rules":[)"
      R"({"id":"r1","symbolID":"600519","kind":"priceAbove","threshold":1500,"repeat":"once",)"
      R"("enabled":true,"triggeredAt":816000000},)"
      R"({"id":"r2","symbolID":"600519","kind":"changeDown","threshold":5,"repeat":"daily",)"
      R"("enabled":true,"triggeredAt":800000000},)"
      R"({"id":"r3","symbolID":"00700","kind":"changeUp","threshold":3,"repeat":"once",)"
      R"("enabled":false,"triggeredAt":null},)"
      R"({"id":"r4","symbolID":"NVDA","kind":"priceBelow","threshold":150,"repeat":"once",)"
      R"("enabled":true,"triggeredAt":null},)"
      R"({"id":"r5","symbolID":"600519","kind":"changeUp","threshold":0,"repeat":"once",)"
      R"("enabled":true,"triggeredAt":null}]})";
  std::ofstream(data / "alerts.json") << alerts;
  storeHeldQuote(std::nullopt, {"600519", "00700"});
  {
    SettingsStore store(QString::fromStdString((config / "Tidemark.conf").string()));
    store.setData(storeKeys::preferences,
                  R"({"activeID":"600519","theme":"dark","reduceMotion":false,)"
                  R"("refreshInterval":2.6,"sourceMode":"mock","masked":false,"orbSize":96,)"
                  R"("autoRotate":true,"menuDensity":0,"phase":"live","latencyMS":0,)"
                  R"("updatedAt":816832800,"onboardingSeen":true,"alertPrice":1400,)"
                  R"("alertAbove":false,"alertTriggered":true,"alertSymbolID":"600519"})");
  }
  const auto files = filesLeft();
  const Environment shanghai{{"TZ", "Asia/Shanghai"}};
  const Outcome table = run("--alerts", shanghai);
  ASSERT_EQ(table.code, 0) << table.err;
  EXPECT_EQ(table.out,
            "代码    名称      条件               重复      状态\n"
            "600519  贵州茅台  价格跌到 1,400.00  仅一次    已触发\n"
            "600519  贵州茅台  价格涨到 1,500.00  仅一次    已触发 11-10 18:40\n"
            "600519  贵州茅台  跌幅达到 5.00%     每日一次  待触发\n"
            "00700   腾讯控股  涨幅达到 3.00%     仅一次    已关闭\n"
            "NVDA    英伟达    价格跌到 150.00    仅一次    不在自选中\n");
  auto document = json::parse(run("--alerts --json", shanghai).out);
  ASSERT_TRUE(document);
  EXPECT_EQ(document->dump(),
            R"({"paused":false,"rules":[)"
            R"({"id":"primary","symbolID":"600519","kind":"priceBelow","threshold":1400.0,)"
            R"("repeat":"once","enabled":true,"triggeredAt":null,"state":"triggered"},)"
            R"({"id":"r1","symbolID":"600519","kind":"priceAbove","threshold":1500.0,)"
            R"("repeat":"once","enabled":true,"triggeredAt":816000000.0,"state":"triggered"},)"
            R"({"id":"r2","symbolID":"600519","kind":"changeDown","threshold":5.0,)"
            R"("repeat":"daily","enabled":true,"triggeredAt":800000000.0,"state":"armed"},)"
            R"({"id":"r3","symbolID":"00700","kind":"changeUp","threshold":3.0,)"
            R"("repeat":"once","enabled":false,"triggeredAt":null,"state":"disabled"},)"
            R"({"id":"r4","symbolID":"NVDA","kind":"priceBelow","threshold":150.0,)"
            R"("repeat":"once","enabled":true,"triggeredAt":null,"state":"dormant"}]})");
  EXPECT_EQ(contents(data / "alerts.json"), alerts);
  EXPECT_EQ(filesLeft(), files) << "nothing written";
}

// What the desktop app set aside is told; beside a bus that never answers a second start is.
TEST_F(CommandLine, TheDesktopAppBesideASilentBusSaysWhatItSetAsideAndOnceThatSettingsFail) {
  std::filesystem::create_directories(config);
  std::filesystem::create_directories(data);
  const QString settingsFile = QString::fromStdString(config / "Tidemark.conf");
  SettingsStore(settingsFile).setData(storeKeys::preferences, R"({"theme":"midnight")");
  std::ofstream(data / "watchlist.json") << "{broken";

  // A look at the quotes leaves everything as it was, unreadable parts included.
  EXPECT_EQ(run("--quotes").code, 0);
  EXPECT_FALSE(std::filesystem::exists(data / "watchlist.unreadable.json"));

  QLocalServer silent;
  ASSERT_TRUE(silent.listen(QString::fromStdString(home.path() / "silent-bus")));
  const std::string bus = "unix:path=" + (home.path() / "silent-bus").string();
  const Environment silentBus{{"DBUS_SESSION_BUS_ADDRESS", bus}};
  QElapsedTimer elapsed;
  elapsed.start();
  qint64 answeredAfter = 0;
  const auto answered = [&] {
    QProcess second;
    start(second, "", true, silentBus);
    const bool ok = second.waitForFinished(10000) && second.exitCode() == 0;
    answeredAfter = elapsed.elapsed();
    return ok;
  };
  const std::string err =
      desktopUntil("tidemark: could not read the watchlist file " +
                       (data / "watchlist.json").string() + " (not a watchlist record); kept as " +
                       (data / "watchlist.unreadable.json").string() + "\n",
                   0, answered, silentBus);
  EXPECT_LT(answeredAfter, 6000);
  EXPECT_THAT(err, HasSubstr("tidemark: the session bus at " + bus +
                             " does not answer; running without the tray item's label, "
                             "notifications and the desktop's motion setting\n"));
  EXPECT_THAT(err, HasSubstr("tidemark: could not read the stored settings (not JSON); kept as "
                             "tidemark.native.preferences.unreadable.v2 in " +
                             settingsFile.toStdString() + "; the defaults are used\n"));

  // A plain file where the settings folder belongs: told once over several failed saves.
  std::filesystem::remove_all(config);
  std::ofstream(config) << "in the way";
  const std::string failure = "tidemark: settings cannot be saved: " + settingsFile.toStdString() +
                              ": Not a directory; changes last until tidemark quits\n";
  const std::string blocked = desktopUntil(failure, 3500, [] { return true; });
  EXPECT_EQ(blocked.find(failure), blocked.rfind(failure)) << blocked;
  EXPECT_THAT(blocked, Not(HasSubstr("could not read")));
}

// Logging out, a closed terminal and Ctrl+C share one handler, all three caught before the app
// takes its one-instance socket: a hang-up ends it as a quit does, also while it is starting.
TEST_F(CommandLine, TheDesktopAppEndsCleanlyOnSignals) {
  // Whether the process catches all three, from its status: bit n − 1 stands for signal n.
  const auto catches = [](qint64 pid) {
    const auto all = 1ull << (SIGHUP - 1) | 1ull << (SIGINT - 1) | 1ull << (SIGTERM - 1);
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);)
      if (line.starts_with("SigCgt:"))
        return (std::stoull(line.substr(7), nullptr, 16) & all) == all;
    return false;
  };
  QProcess process;
  start(process, "", true);
  // A socket seen before the handlers is out of order (a busy machine may show both at once,
  // which proves nothing either way).
  bool caught = false, socketFirst = false;
  for (QDeadlineTimer limit(10000); !caught && !limit.hasExpired();) {
    const bool socket = std::filesystem::exists(runtime / "tidemark.socket");
    caught = catches(process.processId());
    socketFirst = socketFirst || (socket && !caught);
    if (!caught) QThread::usleep(200);
  }
  ::kill(static_cast<pid_t>(process.processId()), SIGHUP);
  ASSERT_TRUE(process.waitForFinished(10000));
  EXPECT_TRUE(caught);
  EXPECT_FALSE(socketFirst);
  EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(process.exitCode(), 0);
  for (const char* left : {"tidemark.socket", "tidemark.socket.lock"})
    EXPECT_FALSE(std::filesystem::exists(runtime / left)) << left;
  EXPECT_THAT(contents(config / "Tidemark.conf"), HasSubstr("tidemark.orb.position.v2="))
      << "the position was not saved";
}

// Tencent and Sina answer while the bridge fails; then every feed sends without end.
TEST_F(CommandLine, LiveQuotesThroughTheModelsOwnPathAndHeldOnesWhenTheFeedsFail) {
  const std::string tencent = test::testData("tencent-basic.gbk");
  const std::string sina = test::testData("sina-basic.gbk");
  bool endless = false;
  test::LoopbackServer server([&](const std::string& target) -> test::LoopbackServer::Reply {
    if (target.starts_with("/sdk")) return {500, "down"};
    if (endless) return {200, std::string(64 << 10, 'x'), test::LoopbackServer::Delivery::endless};
    return {200, target.starts_with("/q=") ? tencent : sina};
  });
  const std::string endpoints = endpointsFile(server.base());
  Outcome live =
      run("--quotes --source automatic --symbols 600519,NVDA,601318 --endpoints " + endpoints);
  EXPECT_EQ(live.code, 0) << live.err;
  EXPECT_TRUE(
      live.out.starts_with("代码    名称      市场      价格  涨跌幅    成交量  来源     状态\n"
                           "600519  贵州茅台  A股   1,468.80  +1.16%     3.2万  tencent  实时\n"
                           "NVDA    英伟达    美股    186.25  +2.11%    1.68亿  tencent  实时\n"
                           "601318  中国平安  A股      57.42  +1.09%  6129.1万  sina     实时\n"
                           "行情源：腾讯行情 · 实时 · 更新于 "))
      << live.out;
  EXPECT_EQ(filesLeft(), std::vector<std::string>{"endpoints.json"});
  // The quote's time on its exchange's clock.
  const auto document = json::parse(
      run("--quotes --json --source automatic --symbols 600519,NVDA,601318 --endpoints " +
          endpoints)
          .out);
  ASSERT_TRUE(document);
  std::vector<std::string> figures;
  for (const Json& quote : (*document)["quotes"]) {
    std::string line = quote["id"].get<std::string>();
    for (const char* key : {"open", "amount", "turnoverPct", "pe", "limitUp", "limitDown",
                            "high52w", "low52w", "quoteTime"})
      if (quote.contains(key)) line += std::string(" ") + key + "=" + quote[key].dump();
    figures.push_back(line);
  }
  EXPECT_EQ(figures,
            (std::vector<std::string>{
                "600519 open=1455.0 amount=4724390000.0 turnoverPct=0.26 pe=21.42 limitUp=1597.2 "
                "limitDown=1306.8 high52w=1770.0 low52w=1230.88 "
                "quoteTime=\"2026-10-16T15:00:03+08:00\"",
                "NVDA open=182.4 amount=31368282738.0 turnoverPct=0.69 pe=52.84 high52w=244.27 "
                "low52w=109.05 quoteTime=\"2026-10-16T16:00:01-04:00\"",
                "601318 open=56.9 quoteTime=\"2026-10-16T15:00:03+08:00\""}));

  storeHeldQuote();
  endless = true;
  Outcome held = run("--quotes --source tencent --endpoints " + endpoints);
  EXPECT_EQ(held.code, 0) << held.err;
  EXPECT_THAT(held.out, HasSubstr("\n提示：服务器返回的数据过大；stock-sdk 未返回有效报价；"
                                  "服务器返回的数据过大 · 保留上一份快照\n"));
}

// The real clock and time zones: 10:00 on a Wednesday in Beijing every 2.6 s, on Saturday once.
TEST_F(CommandLine, WatchingGoesQuietWhileTheMarketSleeps) {
  const std::string body = test::testData("tencent-basic.gbk");
  test::LoopbackServer server([&](const std::string&) -> test::LoopbackServer::Reply {
    return {200, body};
  });
  const std::string arguments =
      "--quotes --watch --json --source tencent --symbols 600519 "
      "--endpoints " +
      endpointsFile(server.base());
  QProcess weekday, saturday;
  start(weekday, arguments, false, {}, "2026-11-25 02:00:00");
  start(saturday, arguments, false, {}, "2026-11-28 04:00:00");
  std::string weekdayOut, saturdayOut;
  const auto loads = [](const std::string& out) {
    return std::count(out.begin(), out.end(), '\n');
  };
  EXPECT_TRUE(QTest::qWaitFor(
      [&] {
        weekdayOut += weekday.readAllStandardOutput().toStdString();
        saturdayOut += saturday.readAllStandardOutput().toStdString();
        return loads(weekdayOut) >= 4 && loads(saturdayOut) >= 1;
      },
      30000))
      << weekdayOut << weekday.readAllStandardError().toStdString();
  saturdayOut += saturday.readAllStandardOutput().toStdString();
  EXPECT_EQ(loads(saturdayOut), 1) << saturdayOut;
  EXPECT_THAT(saturdayOut, HasSubstr("\"updatedAt\":\"2026-11-28T04:00:0"));
  EXPECT_THAT(weekdayOut, HasSubstr("\"updatedAt\":\"2026-11-25T02:00:0"));
  for (QProcess* process : {&weekday, &saturday}) {
    process->terminate();
    EXPECT_TRUE(process->waitForFinished(10000));
  }
}

// Candles as fetched, as JSON and as a table.
TEST_F(CommandLine, KlineAsFetched) {
  test::LoopbackServer server([&](const std::string& target) -> test::LoopbackServer::Reply {
    if (target == "/kline?param=sh000001,month,,,160,qfq")
      return {200, test::testData("tencent-kline-sh000001-month.json")};
    return {500, "busy"};
  });
  const std::string file = endpointsFile(server.base());
  Outcome out = run("--kline sh000001 --period month --json --source tencent --endpoints " + file);
  EXPECT_EQ(out.code, 0) << out.err;
  const std::string bar1 =
      R"({"date":"2026-09-30","open":3820.11,"high":3899.1,"low":3790.0,"close":3882.78,)"
      R"("volume":48500000000.0,"ma5":null,"ma10":null,"ma20":null})";
  const std::string bar2 =
      R"({"date":"2026-10-31","open":3882.78,"high":3950.0,"low":3850.25,"close":3901.5,)"
      R"("volume":45210000000.0,"ma5":null,"ma10":null,"ma20":null})";
  EXPECT_EQ(json::parse(out.out), json::parse(R"({"symbol":"sh000001","period":"month","bars":[)" +
                                              bar1 + "," + bar2 + "]}"));
  Outcome table = run("--kline sh000001 --period month --source tencent --endpoints " + file);
  EXPECT_EQ(table.out,
            "日期            开盘      最高      最低      收盘    成交量  MA5  MA10  MA20\n"
            "2026-09-30  3,820.11  3,899.10  3,790.00  3,882.78  485.00亿    —     —     —\n"
            "2026-10-31  3,882.78  3,950.00  3,850.25  3,901.50  452.10亿    —     —     —\n");
}

// The bridge's feeds without end (the text feeds refused): peak memory of the app and of each
// child, and never two children of one kind at once; the desktop app on a Wednesday morning.
TEST_F(CommandLine, AnEndlessServerLeavesEveryProcessBounded) {
  test::EndlessServer server;
  const std::string endpoints = endpointsFile(
      "http://127.0.0.1:" + std::to_string(test::LoopbackServer::closedPort()), server.base());
  const std::vector<std::string> kinds{"--quotes", "--timeline", "--search", "--health"};
  const Preferences desktopPreferences{
      .sourceMode = SourceMode::stockSDK, .autoRotate = false, .onboardingSeen = true};
  for (const bool desktop : {false, true}) {
    // Three feeds of the package, so three downloads at once in each load.
    storeHeldQuote(desktop ? std::optional(desktopPreferences) : std::nullopt,
                   {"600519", "00700", "NVDA"});
    QProcess process;
    start(process,
          (desktop ? "" : "--quotes --json --source stockSDK ") + ("--endpoints " + endpoints),
          desktop, {}, "2026-11-25 02:00:00");
    test::PeakMemory memory(static_cast<pid_t>(process.processId()), kinds);
    if (desktop) {
      // Two loads and the held quote's intraday series.
      const size_t before = server.targets().size();
      EXPECT_TRUE(QTest::qWaitFor(
          [&] {
            const auto targets = server.targets();
            const auto count = [&](const char* prefix) {
              return std::count_if(targets.begin() + before, targets.end(),
                                   [&](const std::string& t) { return t.starts_with(prefix); });
            };
            return count("/?q=") >= 6 && count("/appstock/app/minute/query") >= 1;
          },
          30000));
      EXPECT_EQ(process.state(), QProcess::Running) << process.readAllStandardError().toStdString();
      process.terminate();
      EXPECT_TRUE(process.waitForFinished(5000));
    } else {
      EXPECT_TRUE(ended(process, 30000));
      // The usual failures, and last time's quote stays.
      auto document = json::parse(process.readAllStandardOutput().toStdString());
      ASSERT_TRUE(document);
      EXPECT_EQ((*document)["lastError"],
                "stock-sdk 未返回有效报价；无法连接服务器（连接被拒绝）；"
                "无法连接服务器（连接被拒绝） · 保留上一份快照");
      EXPECT_EQ((*document)["quotes"][0]["price"], 1400);
    }
    memory.stop();
    // A sanitized app's own figure is mostly the sanitizer's; its Node.js children are not.
    if (!sanitized) {
      EXPECT_LE(memory.rootPeakKB, 80u << 10) << desktop;
    }
    for (const auto& [pid, child] : memory.descendants)
      EXPECT_LE(child.peakKB, 200u << 10) << desktop << ": " << child.commandLine;
    EXPECT_EQ(memory.mostAtOnce.at("--quotes"), 1) << desktop;  // seen, and never two at once
    for (const std::string& kind : kinds)
      EXPECT_LE(memory.mostAtOnce.at(kind), 1) << desktop << kind;
  }
}

// After a run of endless answers the desktop app's resident memory comes back.
TEST_F(CommandLine, AfterARunOfNetworkFaultsTheMemoryComesBack) {
  const std::string body = test::testData("tencent-basic.gbk");
  bool faulty = false;
  test::LoopbackServer server([&](const std::string&) -> test::LoopbackServer::Reply {
    if (faulty) return {200, std::string(64 << 10, 'x'), test::LoopbackServer::Delivery::endless};
    return {200, body};
  });
  storeHeldQuote(
      Preferences{.sourceMode = SourceMode::tencent, .autoRotate = false, .onboardingSeen = true});
  QProcess process;
  start(process, "--endpoints " + endpointsFile(server.base()), true, {}, "2026-11-25 02:00:00");
  const auto residentKB = [&] {
    std::ifstream status("/proc/" + std::to_string(process.processId()) + "/status");
    for (std::string line; std::getline(status, line);)
      if (line.starts_with("VmRSS:")) return std::stoul(line.substr(6));
    return 0ul;
  };
  const auto loads = [&](size_t more) {
    const size_t until = server.targets.size() + more;
    return QTest::qWaitFor([&] { return server.targets.size() >= until; }, 30000);
  };
  ASSERT_TRUE(loads(3));
  const unsigned long before = residentKB();
  faulty = true;
  ASSERT_TRUE(loads(6));
  faulty = false;
  ASSERT_TRUE(loads(3));
  const unsigned long after = residentKB();
  EXPECT_EQ(process.state(), QProcess::Running) << process.readAllStandardError().toStdString();
  // The sanitizer's allocator keeps what it frees for a while on purpose.
  if (!sanitized) {
    EXPECT_LE(after, before + (3 << 10)) << before << " → " << after;
  }
  process.terminate();
  EXPECT_TRUE(process.waitForFinished(10000));
}

// The standard buttons of Qt's dialogs, as the reset confirmation shows them.
TEST(Platform, QtsOwnTextsAreChinese) {
  ASSERT_TRUE(loadQtTranslations()) << "Debian's qt6-translations-l10n is missing";
  const std::pair<const char*, const char*> buttons[] = {
      {"&Yes", "是(&Y)"}, {"&No", "否(&N)"}, {"Cancel", "取消"}, {"Save", "保存"}};
  for (const auto& [english, chinese] : buttons)
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", english).toStdString(), chinese)
        << english;
}

TEST(Platform, WaylandSessionsRunThroughXWaylandUnlessTheUserChose) {
  // Environment, platform chosen, a word of the message (or none), runs as in a Wayland session.
  const std::tuple<Environment, std::string, std::string, bool> cases[] = {
      {{{"DISPLAY", ":0"}}, "", "", false},
      {{{"WAYLAND_DISPLAY", "wayland-0"}, {"DISPLAY", ":0"}}, "xcb", "XWayland", true},
      {{{"XDG_SESSION_TYPE", "wayland"}, {"DISPLAY", ":1"}}, "xcb", "XWayland", true},
      {{{"WAYLAND_DISPLAY", "wayland-0"}}, "", "do not work", false},
      {{{"WAYLAND_DISPLAY", "w"}, {"DISPLAY", ":0"}, {"QT_QPA_PLATFORM", "wayland"}},
       "",
       "",
       false},
      {{{"WAYLAND_DISPLAY", "w"}, {"DISPLAY", ":0"}, {"QT_QPA_PLATFORM", "xcb"}}, "", "", true},
      {{{"XDG_SESSION_TYPE", "x11"}, {"DISPLAY", ":0"}}, "", "", false},
  };
  for (const auto& [environment, platform, says, wayland] : cases) {
    const PlatformChoice choice = choosePlatform([&](const char* name) -> const char* {
      const auto it = environment.find(name);
      return it == environment.end() ? nullptr : it->second.c_str();
    });
    EXPECT_EQ(choice.platform, platform);
    EXPECT_EQ(choice.wayland, wayland) << choice.message;
    EXPECT_EQ(choice.message.empty(), says.empty()) << choice.message;
    EXPECT_THAT(choice.message, HasSubstr(says));
  }
}

// A stale lock and socket are taken over, later starts forwarded, a silent holder reported.
TEST(SingleInstance, StaleLocksGoLaterStartsAreForwardedSilentHoldersReported) {
  test::TemporaryFolder folder;
  const QString path = QString::fromStdString((folder.path() / "tidemark.socket").string());
  // What a killed holder leaves: its lock naming a process that is gone, and its socket file.
  std::ofstream(folder.path() / "tidemark.socket.lock")
      << "999999999\ntidemark\n"
      << QHostInfo::localHostName().toStdString() << "\n";
  std::ofstream(folder.path() / "tidemark.socket") << "";

  using Request = SingleInstance::Request;
  EXPECT_FALSE(SingleInstance::tell(path, Request::toggleOrb)) << "nobody runs yet";
  SingleInstance first(path);
  std::vector<Request> heard;
  first.onRequest = [&](Request request) { heard.push_back(request); };
  ASSERT_EQ(first.claim(), SingleInstance::Claim::first);

  // A later start and the two toggles, each in a thread of its own while this one serves.
  const auto later = [&](std::function<int()> ask) {
    std::atomic<int> answer{-1};
    std::thread other([&] { answer = ask(); });
    EXPECT_TRUE(QTest::qWaitFor([&] { return answer != -1; }, 8000));
    other.join();
    return int(answer);
  };
  EXPECT_EQ(later([&] { return int(SingleInstance(path).claim()); }),
            int(SingleInstance::Claim::forwarded));
  EXPECT_EQ(later([&] { return int(SingleInstance::tell(path, Request::toggleOrb)); }), 1);
  EXPECT_EQ(later([&] { return int(SingleInstance::tell(path, Request::toggleMask)); }), 1);
  EXPECT_EQ(heard, (std::vector{Request::show, Request::toggleOrb, Request::toggleMask}));

  // A peer that is not one of ours is closed unanswered: an unknown line, or one with no end.
  for (const QByteArray& sent : {QByteArray("hello\n"), QByteArray(300, 'x')}) {
    QLocalSocket peer;
    peer.connectToServer(path);
    ASSERT_TRUE(peer.waitForConnected(1000));
    peer.write(sent);
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return peer.state() == QLocalSocket::UnconnectedState; }, 3000))
        << sent.size();
    EXPECT_EQ(peer.readAll(), QByteArray()) << sent.size();
  }

  // Nobody serves the socket while this thread is blocked.
  SingleInstance silent(path, 300);
  EXPECT_EQ(silent.claim(), SingleInstance::Claim::unresponsive);
  EXPECT_EQ(silent.holder, QCoreApplication::applicationPid());
  EXPECT_EQ(heard.size(), 3u);
}

// A lock that names nobody is taken over; a folder in its place is left alone; both told.
TEST(SingleInstance, DamagedLocksAreTakenOverAndAFolderIsTold) {
  const std::pair<const char*, const char*> locks[] = {
      {"",
       "tidemark: took over LOCK, which named no running process (left damaged by an earlier "
       "run)"},
      {nullptr,
       "tidemark: LOCK is a folder, not a lock; running without the one-instance channel "
       "(remove the folder to have it back)"},
  };
  for (const auto& [contents, notice] : locks) {
    test::TemporaryFolder folder;
    const auto lock = folder.path() / "tidemark.socket.lock";
    if (contents) {
      std::ofstream(lock) << contents;
    } else {
      std::filesystem::create_directories(lock / "inside");
    }
    SingleInstance instance(QString::fromStdString((folder.path() / "tidemark.socket").string()));
    EXPECT_EQ(instance.claim(), SingleInstance::Claim::first) << notice;
    QString expected = QString::fromUtf8(notice);
    expected.replace(u"LOCK"_s, QString::fromStdString(lock.string()));
    EXPECT_EQ(instance.notice, expected);
    EXPECT_EQ(std::filesystem::exists(lock / "inside"), !contents);
  }
}

// $XDG_RUNTIME_DIR when usable, else a private folder in the temporary one, else none; told.
TEST(SingleInstance, ARuntimeFolderOfTheUsersOwnOrNone) {
  test::TemporaryFolder tmp;
  const std::string own = (tmp.path() / ("tidemark-" + std::to_string(::getuid()))).string();
  const std::string file = (tmp.path() / "a-file").string();
  std::ofstream(file) << "";
  const char* notPrivate =
      "tidemark: $XDG_RUNTIME_DIR is not set, and OWN is not a private folder of yours; running "
      "without the one-instance channel, so a second start and tidemark --toggle-orb will not "
      "reach this app";
  const struct {
    const char* runtime;  // none: unset
    const char* prepare;  // what stands at the private folder's place first
    bool ownChosen;
    const char* notice;
  } cases[] = {
      {"TMP", nullptr, false, ""},
      {nullptr, nullptr, true,
       "tidemark: $XDG_RUNTIME_DIR is not set; the one-instance channel is in OWN"},
      {"FILE", "private", true,
       "tidemark: $XDG_RUNTIME_DIR (FILE) is not a folder of yours that you may write; the "
       "one-instance channel is in OWN"},
      {nullptr, "open", false, notPrivate},  // others may write to it
      {nullptr, "link", false, notPrivate},
  };
  const QByteArray savedRuntime = qgetenv("XDG_RUNTIME_DIR"), savedTmp = qgetenv("TMPDIR");
  qputenv("TMPDIR", QByteArray::fromStdString(tmp.path().string()));
  for (const auto& c : cases) {
    std::filesystem::remove_all(own);
    const std::string prepare = c.prepare ? c.prepare : "";
    if (prepare == "private") std::filesystem::create_directory(own);
    if (prepare == "open") ::mkdir(own.c_str(), 0700), ::chmod(own.c_str(), 0777);
    if (prepare == "link") std::filesystem::create_directory_symlink(tmp.path(), own);
    const std::string runtime = !c.runtime                        ? ""
                                : std::string(c.runtime) == "TMP" ? tmp.path().string()
                                                                  : file;
    if (c.runtime)
      qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtime));
    else
      qunsetenv("XDG_RUNTIME_DIR");
    QString notice;
    const QString chosen = SingleInstance::runtimeFolder(&notice);
    EXPECT_EQ(chosen.toStdString(), c.ownChosen                 ? own
                                    : c.runtime && !c.notice[0] ? runtime
                                                                : "")
        << c.notice;
    QString expected = QString::fromUtf8(c.notice);
    expected.replace(u"OWN"_s, QString::fromStdString(own))
        .replace(u"FILE"_s, QString::fromStdString(file));
    EXPECT_EQ(notice, expected);
    if (c.ownChosen) {
      EXPECT_EQ(int(std::filesystem::status(own).permissions() & std::filesystem::perms::mask),
                0700);
    }
  }
  for (const auto& [name, value] :
       {std::pair{"XDG_RUNTIME_DIR", savedRuntime}, {"TMPDIR", savedTmp}})
    value.isNull() ? qunsetenv(name) : qputenv(name, value);
}

}  // namespace
}  // namespace tidemark
