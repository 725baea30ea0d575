// The tidemark binary as a user runs it, in a home of its own.

#include <gtest/gtest.h>

#include <signal.h>

#include <sys/resource.h>

#include <fstream>

#include <QElapsedTimer>
#include <QLocalServer>
#include <QProcess>
#include <QTest>
#include <QThread>

#include "app/DesktopApp.h"
#include "core/DataSourceEndpoints.h"
#include "core/FileIO.h"
#include "core/Json.h"
#include "model/AppModel.h"
#include "model/Preferences.h"
#include "platform/SettingsStore.h"
#include "support/EndlessServer.h"
#include "support/Fakes.h"
#include "support/LoopbackServer.h"
#include "support/PeakMemory.h"

namespace tidemark {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
constexpr bool sanitized = __has_feature(address_sanitizer);
#else
constexpr bool sanitized = false;
#endif

struct Outcome {
  int code = -1;
  std::string out, err;
};

class CommandLine : public testing::Test {
 protected:
  // Starts the binary in the private home with the arguments separated by single blanks, with
  // the extra environment given; the desktop app on the off-screen platform with a runtime
  // folder of its own.
  void start(QProcess& process, const std::string& arguments, bool desktop = false,
             const std::map<std::string, std::string>& extra = {}) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "TMPDIR"}) {
      const auto dir = home.path() / name;
      std::filesystem::create_directories(dir);
      environment.insert(QString::fromLatin1(name), QString::fromStdString(dir.string()));
    }
    // As on a machine without a desktop session.
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
      environment.remove(QString::fromLatin1(name));
    if (desktop) {
      const auto runtime = home.path() / "XDG_RUNTIME_DIR";
      std::filesystem::create_directories(runtime);
      std::filesystem::permissions(runtime, std::filesystem::perms::owner_all);
      environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), QString::fromStdString(runtime));
      environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    }
    for (const auto& [name, value] : extra)
      environment.insert(QString::fromStdString(name), QString::fromStdString(value));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TIDEMARK_BINARY),
                  QString::fromStdString(arguments).split(u' ', Qt::SkipEmptyParts));
  }
  Outcome run(const std::string& arguments) {
    QProcess process;
    start(process, arguments);
    // The event loop keeps turning meanwhile, for loopback servers in this process.
    EXPECT_TRUE(QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 60000));
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
  }
  // An endpoint file: every feed on `base`, the package's under "/sdk" unless it has its own.
  std::string endpointsFile(const std::string& base, const std::string& sdk = "") const {
    DataSourceEndpoints endpoints = DataSourceEndpoints::bundled();
    endpoints.tencentQuote = base + "/q=";
    endpoints.sinaQuote = base + "/list=";
    endpoints.stockSDKTencentBase = sdk.empty() ? base + "/sdk" : sdk;
    const auto file = home.path() / "endpoints.json";
    std::ofstream(file) << toJson(endpoints).dump();
    return file.string();
  }
  // The user's store: a watchlist with last time's quote of 600519, and preferences.
  void storeHeldQuote(std::optional<Preferences> preferences = std::nullopt,
                      const std::vector<std::string>& watchlist = {"600519"}) {
    const auto config = home.path() / "XDG_CONFIG_HOME" / "Tidemark";
    std::filesystem::create_directories(config);
    SettingsStore store(QString::fromStdString((config / "Tidemark.conf").string()));
    store.setStringArray(AppModel::watchlistKey, watchlist);
    QuoteSnapshot held{"600519", "A股", "贵州茅台",        1400,     1390, 1401,
                       1388,     9,     Date{814'000'000}, "tencent"};
    store.setData(AppModel::snapshotsKey, Json::array({toJson(held)}).dump());
    if (preferences) store.setData(AppModel::preferencesKey, toJson(*preferences).dump());
  }
  // Files below the private home, other than the folders made for the run.
  std::vector<std::string> filesLeft() const {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home.path()))
      if (!entry.is_directory()) files.push_back(entry.path().lexically_relative(home.path()));
    return files;
  }
  test::TemporaryFolder home;
};

TEST_F(CommandLine, ExitStatusesAndMessages) {
  const std::string minute = TIDEMARK_TEST_DATA_DIR "/tencent-minute-sh600519.json";
  const std::tuple<std::string, int, std::string, std::string> cases[] = {
      {"--version", 0, "tidemark 0.1.0\n", ""},
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
      {"--endpoints /nonexistent.json", 2, "",
       "tidemark: cannot read /nonexistent.json: No such file or directory See --help.\n"},
      {"--endpoints " + minute, 2, "",
       "tidemark: " + minute +
           " holds no endpoint set (the nine addresses, alone or under \"endpoints\") See "
           "--help.\n"},
  };
  for (const auto& [arguments, code, out, err] : cases) {
    Outcome result = run(arguments);
    EXPECT_EQ(result.code, code) << arguments;
    EXPECT_EQ(result.out, out);
    EXPECT_EQ(result.err, err);
  }
  EXPECT_TRUE(run("--help").out.find("--self-test") != std::string::npos);
}

TEST_F(CommandLine, SelfTestAndQuotesOfTheDefaultOrTheUsersWatchlistWriteNothing) {
  Outcome self = run("--self-test");
  EXPECT_EQ(self.code, 0) << self.err;
  EXPECT_EQ(self.out, "Native event-routing checks passed\nAll model and native checks passed\n");

  Outcome table = run("--quotes");
  EXPECT_EQ(table.code, 0) << table.err;
  EXPECT_TRUE(table.out.starts_with(
      "代码    名称          市场          价格  涨跌幅    成交量  来源  状态\n"
      "600519  贵州茅台      A股       1,468.80  +1.16%     3.2万  mock  实时\n"))
      << table.out;
  EXPECT_NE(table.out.find("\n000858  五粮液"), std::string::npos);
  EXPECT_NE(table.out.find("行情源：模拟源 · 实时 · 更新于 "), std::string::npos);

  Outcome json = run("--quotes --json");
  auto document = json::parse(json.out);
  ASSERT_TRUE(document) << json.out;
  EXPECT_EQ((*document)["phase"], "live");
  EXPECT_EQ((*document)["lastError"], nullptr);
  EXPECT_EQ((*document)["sourceLabel"], "模拟源");
  std::vector<std::string> ids;
  for (const auto& q : (*document)["quotes"]) ids.push_back(q["id"]);
  EXPECT_EQ(ids, (std::vector<std::string>{"600519", "00700", "NVDA", "03033", "000858"}));
  EXPECT_EQ((*document)["quotes"][1]["market"], "港股");
  EXPECT_EQ(filesLeft(), std::vector<std::string>{});
  EXPECT_FALSE(std::filesystem::exists(home.path() / "XDG_CONFIG_HOME" / "Tidemark"));

  const auto file = home.path() / "XDG_DATA_HOME" / "Tidemark" / "watchlist.json";
  std::filesystem::create_directories(file.parent_path());
  const std::string saved = R"({"version":1,"exportedAt":800000000,"symbols":["AAPL","00700"]})";
  std::ofstream(file) << saved;
  Outcome result = run("--quotes");
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_NE(result.out.find("\nAAPL   苹果      美股  229.95"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("\n00700  腾讯控股"), std::string::npos);
  EXPECT_EQ(result.out.find("600519"), std::string::npos);
  std::error_code error;
  EXPECT_EQ(readFile(file, error), saved);
  EXPECT_EQ(filesLeft(), std::vector<std::string>{"XDG_DATA_HOME/Tidemark/watchlist.json"});
}

TEST_F(CommandLine, TheDesktopAppSaysWhatItSetAsideAndOnceThatSettingsCannotBeSaved) {
  const auto config = home.path() / "XDG_CONFIG_HOME" / "Tidemark";
  const auto data = home.path() / "XDG_DATA_HOME" / "Tidemark";
  std::filesystem::create_directories(config);
  std::filesystem::create_directories(data);
  const QString settingsFile = QString::fromStdString(config / "Tidemark.conf");
  SettingsStore(settingsFile).setData(AppModel::preferencesKey, R"({"theme":"midnight")");
  std::ofstream(data / "watchlist.json") << "{broken";
  // Runs the desktop app until its standard error holds `line`, and `more` ms longer; it takes
  // SIGTERM as a quit only once it has started.
  const auto desktop = [this](const std::string& line, int more) {
    QProcess process;
    start(process, "", true);
    std::string err;
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
          return (err += process.readAllStandardError().toStdString()).find(line) !=
                 std::string::npos;
        },
        20000))
        << err;
    QTest::qWait(more);
    process.terminate();
    EXPECT_TRUE(process.waitForFinished(10000));
    return err + process.readAllStandardError().toStdString();
  };

  // A look at the quotes leaves everything as it was, unreadable parts included.
  EXPECT_EQ(run("--quotes").code, 0);
  EXPECT_FALSE(std::filesystem::exists(data / "watchlist.unreadable.json"));

  const std::string watchlistLine =
      "tidemark: could not read the watchlist file " + (data / "watchlist.json").string() +
      " (not a watchlist record); kept as " + (data / "watchlist.unreadable.json").string() + "\n";
  const std::string err = desktop(watchlistLine, 1500);
  EXPECT_NE(err.find("tidemark: could not read the stored settings (not JSON); kept as "
                     "tidemark.native.preferences.unreadable.v2 in " +
                     settingsFile.toStdString() + "; the defaults are used\n"),
            std::string::npos)
      << err;
  EXPECT_EQ(SettingsStore(settingsFile).data("tidemark.native.preferences.unreadable.v2"),
            R"({"theme":"midnight")");
  std::error_code error;
  EXPECT_EQ(readFile(data / "watchlist.unreadable.json", error), "{broken");

  // A plain file where the settings folder belongs: told once over several failed saves.
  std::filesystem::remove_all(config);
  std::ofstream(config) << "in the way";
  const std::string failure = "tidemark: settings cannot be saved: " + settingsFile.toStdString() +
                              ": Not a directory; changes last until tidemark quits\n";
  const std::string blocked = desktop(failure, 3500);
  EXPECT_EQ(blocked.find(failure), blocked.rfind(failure)) << blocked;
  EXPECT_EQ(blocked.find("could not read"), std::string::npos) << blocked;
}

// Signals of logging out, a closed terminal and Ctrl+C end the desktop app as a quit does, also
// while it is still starting; a session bus that never answers does not keep the orb from
// coming.
TEST_F(CommandLine, TheDesktopAppEndsCleanlyOnSignalsAndStartsBesideASilentBus) {
  const auto runtime = home.path() / "XDG_RUNTIME_DIR";
  const auto conf = home.path() / "XDG_CONFIG_HOME" / "Tidemark" / "Tidemark.conf";
  // Whether the process catches all three, from its status: bit n − 1 stands for signal n.
  const auto catches = [](qint64 pid) {
    const unsigned long long all =
        1ull << (SIGHUP - 1) | 1ull << (SIGINT - 1) | 1ull << (SIGTERM - 1);
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);)
      if (line.starts_with("SigCgt:"))
        return (std::stoull(line.substr(7), nullptr, 16) & all) == all;
    return false;
  };
  for (int signal : {SIGHUP, SIGTERM, SIGINT}) {
    std::filesystem::remove(conf);
    QProcess process;
    start(process, "", true);
    // The handlers are in place before the app takes its one-instance socket.
    while (process.state() != QProcess::NotRunning && !catches(process.processId()))
      QThread::usleep(200);
    const bool early = !std::filesystem::exists(runtime / "tidemark.socket");
    ::kill(static_cast<pid_t>(process.processId()), signal);
    ASSERT_TRUE(process.waitForFinished(10000)) << signal;
    EXPECT_TRUE(early) << signal;
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << signal;
    EXPECT_EQ(process.exitCode(), 0) << signal;
    EXPECT_FALSE(std::filesystem::exists(runtime / "tidemark.socket")) << signal;
    EXPECT_FALSE(std::filesystem::exists(runtime / "tidemark.socket.lock")) << signal;
    std::error_code error;
    EXPECT_NE(readFile(conf, error).value_or("").find("tidemark.orb.position.v2="),
              std::string::npos)
        << signal << ": the position was not saved";
  }

  // A bus that takes connections and never answers them.
  QLocalServer silent;
  const auto bus = home.path() / "silent-bus";
  ASSERT_TRUE(silent.listen(QString::fromStdString(bus.string())));
  QProcess process;
  start(process, "", true, {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + bus.string()}});
  QElapsedTimer elapsed;
  elapsed.start();
  // Running means answering a second start.
  const auto answers = [&] {
    QProcess second;
    start(second, "", true, {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + bus.string()}});
    return second.waitForFinished(10000) && second.exitCode() == 0;
  };
  EXPECT_TRUE(QTest::qWaitFor(
      [&] { return std::filesystem::exists(runtime / "tidemark.socket") && answers(); }, 8000));
  EXPECT_LT(elapsed.elapsed(), 6000);
  process.terminate();
  ASSERT_TRUE(process.waitForFinished(10000));
  EXPECT_EQ(process.exitCode(), 0);
  EXPECT_NE(process.readAllStandardError().toStdString().find(
                "tidemark: the session bus at unix:path=" + bus.string() +
                " does not answer; running without the tray item's label, notifications and "
                "the desktop's motion setting\n"),
            std::string::npos);
}

TEST_F(CommandLine, LiveQuotesThroughTheModelsOwnPath) {
  // The bridge fails, Tencent answers three of the four symbols and Sina the last.
  const std::string tencent = test::testData("tencent-basic.gbk");
  const std::string sina = test::testData("sina-basic.gbk");
  test::LoopbackServer server([&](const std::string& target) -> test::LoopbackServer::Reply {
    if (target.starts_with("/q=")) return {200, tencent};
    if (target.starts_with("/list=")) return {200, sina};
    return {500, "down"};
  });
  Outcome result = run("--quotes --source automatic --symbols 600519,NVDA,601318 --endpoints " +
                       endpointsFile(server.base()));
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_TRUE(
      result.out.starts_with("代码    名称      市场      价格  涨跌幅    成交量  来源     状态\n"
                             "600519  贵州茅台  A股   1,468.80  +1.16%     3.2万  tencent  实时\n"
                             "NVDA    英伟达    美股    186.25  +2.11%    1.68亿  tencent  实时\n"
                             "601318  中国平安  A股      57.42  +1.09%  6129.1万  sina     实时\n"
                             "行情源：腾讯行情 · 实时 · 更新于 "))
      << result.out;
  // The package's own requests come first; then one batch to each feed.
  EXPECT_TRUE(server.targets.front().starts_with("/sdk/")) << server.targets.front();
  EXPECT_NE(std::find(server.targets.begin(), server.targets.end(), "/q=sh600519,usNVDA,sh601318"),
            server.targets.end());
  EXPECT_EQ(server.targets.back(), "/list=sh601318");
  EXPECT_EQ(filesLeft(), std::vector<std::string>{"endpoints.json"});
}

// A refused connection and an answer without end (cut off at the client's cap, the app's memory
// bounded) are transport failures: the held quote stays, the failures are told.
TEST_F(CommandLine, WithEveryFeedDownTheHeldQuotesStay) {
  storeHeldQuote();
  test::LoopbackServer endless([](const std::string& target) -> test::LoopbackServer::Reply {
    if (target.starts_with("/sdk")) return {404, ""};
    return {200, std::string(64 << 10, 'x'), test::LoopbackServer::Delivery::endless};
  });
  const std::pair<std::string, std::string> cases[] = {
      {"http://127.0.0.1:" + std::to_string(test::LoopbackServer::closedPort()),
       "无法连接服务器（连接被拒绝）；stock-sdk 未返回有效报价；无法连接服务器（连接被拒绝）"},
      {endless.base(), "服务器返回的数据过大；stock-sdk 未返回有效报价；服务器返回的数据过大"},
  };
  for (const auto& [base, failures] : cases) {
    QElapsedTimer elapsed;
    elapsed.start();
    Outcome table = run("--quotes --source tencent --endpoints " + endpointsFile(base));
    EXPECT_LT(elapsed.elapsed(), 8000) << failures;
    EXPECT_EQ(table.code, 0) << table.err;
    EXPECT_NE(table.out.find("\n600519  贵州茅台  A股   1,400.00  +0.72%       9  tencent  降级\n"),
              std::string::npos)
        << table.out;
    EXPECT_NE(table.out.find("\n提示：" + failures + " · 保留上一份快照\n"), std::string::npos)
        << table.out;
  }
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  EXPECT_LT(usage.ru_maxrss, 400 << 10) << "kB at most in one child";
}

// Peak resident memory of each process on its own, with the bridge's feeds on a server thread
// that sends without end as fast as the socket takes it: the app at most 80 MB, every child
// 200 MB, and never two bridge children of one kind at once; for the command line and for the
// desktop app refreshing every 2.6 s. The text feeds are refused, so the figures are the
// bridge's; bench/endless-memory measures with every feed endless.
TEST_F(CommandLine, AnEndlessServerLeavesEveryProcessBounded) {
  test::EndlessServer server;
  const std::string endpoints = endpointsFile(
      "http://127.0.0.1:" + std::to_string(test::LoopbackServer::closedPort()), server.base());
  const std::vector<std::string> kinds{"--quotes", "--timeline", "--search", "--health"};
  // Three feeds of the package, so three downloads at once in each load.
  const std::vector<std::string> watchlist{"600519", "00700", "NVDA"};
  const auto expectBounded = [&](test::PeakMemory& memory, const char* run) {
    memory.stop();
    // A sanitized app's own figure is mostly the sanitizer's; its Node.js children are not.
    if (!sanitized) {
      EXPECT_LE(memory.rootPeakKB, 80u << 10) << run;
    }
    for (const auto& [pid, child] : memory.descendants)
      EXPECT_LE(child.peakKB, 200u << 10) << run << ": " << child.commandLine;
    EXPECT_EQ(memory.mostAtOnce.at("--quotes"), 1) << run;  // seen, and never two at once
    for (const std::string& kind : kinds) EXPECT_LE(memory.mostAtOnce.at(kind), 1) << run << kind;
  };
  {
    storeHeldQuote(std::nullopt, watchlist);
    QProcess process;
    start(process, "--quotes --json --source stockSDK --endpoints " + endpoints);
    test::PeakMemory memory(static_cast<pid_t>(process.processId()), kinds);
    EXPECT_TRUE(QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 30000));
    expectBounded(memory, "--quotes");
    // The usual failures, and last time's quote stays.
    auto document = json::parse(process.readAllStandardOutput().toStdString());
    ASSERT_TRUE(document);
    EXPECT_EQ((*document)["lastError"],
              "stock-sdk 未返回有效报价；无法连接服务器（连接被拒绝）；"
              "无法连接服务器（连接被拒绝） · 保留上一份快照");
    EXPECT_EQ((*document)["quotes"][0]["price"], 1400);
  }
  Preferences preferences;
  preferences.sourceMode = SourceMode::stockSDK;
  preferences.onboardingSeen = true;
  preferences.autoRotate = false;
  storeHeldQuote(preferences, watchlist);
  QProcess process;
  start(process, "--endpoints " + endpoints, true);
  test::PeakMemory memory(static_cast<pid_t>(process.processId()), kinds);
  // Two loads and the held quote's intraday series.
  const size_t before = server.targets().size();
  const auto seen = [&] {
    int quotes = 0, timeline = 0;
    const auto targets = server.targets();
    for (auto target = targets.begin() + before; target != targets.end(); ++target) {
      quotes += target->starts_with("/?q=");
      timeline += target->starts_with("/appstock/app/minute/query");
    }
    return quotes >= 6 && timeline >= 1;
  };
  EXPECT_TRUE(QTest::qWaitFor(seen, 30000));
  EXPECT_EQ(process.state(), QProcess::Running) << process.readAllStandardError().toStdString();
  process.terminate();
  EXPECT_TRUE(process.waitForFinished(5000));
  expectBounded(memory, "desktop");
}

TEST_F(CommandLine, WatchPrintsEachNewLoad) {
  QProcess process;
  start(process, "--watch --json --symbols 600519");
  QByteArray lines;
  EXPECT_TRUE(QTest::qWaitFor(
      [&] {
        lines += process.readAllStandardOutput();
        return lines.count('\n') >= 2;
      },
      10000));
  process.kill();
  process.waitForFinished();
  const QList<QByteArray> loads = lines.split('\n');
  auto first = json::parse(loads[0].toStdString());
  auto second = json::parse(loads[1].toStdString());
  ASSERT_TRUE(first && second) << lines.toStdString();
  EXPECT_NE((*first)["updatedAt"], (*second)["updatedAt"]);
  EXPECT_NE((*first)["quotes"][0]["price"], (*second)["quotes"][0]["price"]);  // mock data moves
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
  struct Case {
    std::map<std::string, std::string> environment;
    std::string platform;
    std::string says;  // a word of the message, or nothing at all
  } cases[] = {
      {{{"DISPLAY", ":0"}}, "", ""},
      {{{"WAYLAND_DISPLAY", "wayland-0"}, {"DISPLAY", ":0"}}, "xcb", "XWayland"},
      {{{"XDG_SESSION_TYPE", "wayland"}, {"DISPLAY", ":1"}}, "xcb", "XWayland"},
      {{{"WAYLAND_DISPLAY", "wayland-0"}}, "", "do not work"},
      {{{"WAYLAND_DISPLAY", "wayland-0"}, {"DISPLAY", ":0"}, {"QT_QPA_PLATFORM", "wayland"}},
       "",
       ""},
      {{{"XDG_SESSION_TYPE", "x11"}, {"DISPLAY", ":0"}}, "", ""},
  };
  for (const Case& c : cases) {
    const PlatformChoice choice = choosePlatform([&](const char* name) -> const char* {
      const auto it = c.environment.find(name);
      return it == c.environment.end() ? nullptr : it->second.c_str();
    });
    EXPECT_EQ(choice.platform, c.platform);
    EXPECT_EQ(choice.message.empty(), c.says.empty()) << choice.message;
    EXPECT_NE(choice.message.find(c.says), std::string::npos) << choice.message;
  }
}

}  // namespace
}  // namespace tidemark
