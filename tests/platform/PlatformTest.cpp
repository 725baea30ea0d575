// The event-loop scheduler, the HTTP client against a loopback server, the settings file and the
// login entry.

#include <gtest/gtest.h>

#include <fstream>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include "core/FileIO.h"
#include "platform/Autostart.h"
#include "platform/GnomeShortcuts.h"
#include "platform/QtHttpClient.h"
#include "platform/QtScheduler.h"
#include "platform/SettingsStore.h"
#include "support/Fakes.h"
#include "support/LoopbackServer.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;
using Delivery = test::LoopbackServer::Delivery;
using List = std::vector<std::string>;
using Told = std::vector<std::optional<StoreWriteFailure>>;

struct ConfigHome {
  explicit ConfigHome(const std::filesystem::path& path) {
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(path.string()));
  }
  ~ConfigHome() { qputenv("XDG_CONFIG_HOME", saved); }
  QByteArray saved = qgetenv("XDG_CONFIG_HOME");
};

TEST(QtScheduler, RunsLaterWorkOnTheEventLoopUnlessCancelledDroppedOrItsSchedulerIsGone) {
  QtScheduler scheduler;
  std::vector<std::string> log;
  const auto note = [&log](const char* what) { return [&log, what] { log.push_back(what); }; };
  scheduler.post(note("posted"));
  EXPECT_TRUE(log.empty());  // never inline
  QElapsedTimer elapsed;
  elapsed.start();
  qint64 ranAfter = 0;
  TimerHandle once = scheduler.after(0.05, [&] {
    ranAfter = elapsed.elapsed();
    log.push_back("once");
  });
  TimerHandle cancelled = scheduler.after(0.02, note("cancelled"));
  cancelled.cancel();
  { TimerHandle dropped = scheduler.after(0.01, note("dropped")); }
  int ticks = 0;
  TimerHandle repeating = scheduler.every(0.01, [&] {
    if (++ticks == 3) repeating.cancel();  // may stop itself
  });
  TimerHandle outlived;
  {
    QtScheduler gone;
    outlived = gone.after(0.01, note("outlived its scheduler"));
    gone.post(note("posted to a gone scheduler"));
  }
  EXPECT_TRUE(QTest::qWaitFor([&] { return log.size() == 2; }, 2000));
  QTest::qWait(60);
  EXPECT_EQ(log, (std::vector<std::string>{"posted", "once"}));
  EXPECT_GE(ranAfter, 45);
  EXPECT_EQ(ticks, 3);
  once.cancel();      // after firing: harmless
  outlived.cancel();  // its scheduler is gone: harmless
}

TEST(QtHttpClient, AnswersAndFailuresFromALoopbackServer) {
  const std::string body = test::testData("tencent-basic.gbk");
  const std::string block(64 << 10, 'x');
  test::LoopbackServer server([&](const std::string& target) -> test::LoopbackServer::Reply {
    if (target == "/ok") return {200, body};
    if (target == "/broken") return {500, "oops"};
    if (target == "/cut") return {200, body, Delivery::cut};
    if (target == "/stalled") return {200, body, Delivery::stalled};
    if (target == "/endless") return {200, block, Delivery::endless};
    return {0, "", Delivery::silent};
  });
  const std::string closed =
      "http://127.0.0.1:" + std::to_string(test::LoopbackServer::closedPort()) + "/";
  // The address, the time-out and the cap; the status, body and error answered.
  using Text = std::optional<std::string>;
  using Case = std::tuple<std::string, double, size_t, std::optional<int>, Text, Text>;
  const std::string base = server.base();
  const Case cases[] = {
      {base + "/ok", 8, 8 << 20, 200, body, {}},        // GB 18030 bytes untouched
      {base + "/broken", 8, 8 << 20, 500, "oops", {}},  // an HTTP answer, not a transport error
      {base + "/cut", 8, 8 << 20, 200, {}, "服务器意外断开了连接"},
      {base + "/stalled", 0.3, 8 << 20, 200, {}, "请求超时"},
      {base + "/silent", 0.3, 8 << 20, {}, {}, "请求超时"},
      {base + "/endless", 8, 8 << 20, 200, {}, "服务器返回的数据过大"},
      // Announced past the cap: refused by its length, not left to stall.
      {base + "/stalled", 0.3, body.size(), 200, {}, "服务器返回的数据过大"},
      {closed, 8, 8 << 20, {}, {}, "无法连接服务器（连接被拒绝）"},
  };
  QtHttpClient client;
  for (const auto& [url, timeout, maxBytes, status, answer, error] : cases) {
    std::optional<HttpResponse> response;
    QElapsedTimer elapsed;
    elapsed.start();
    client.get({url, {{"Referer", "https://finance.qq.com/"}}, timeout, maxBytes},
               [&](HttpResponse r) { response = std::move(r); });
    EXPECT_FALSE(response) << "answered inside get()";
    ASSERT_TRUE(QTest::qWaitFor([&] { return response.has_value(); }, 10000)) << url;
    EXPECT_EQ(std::tuple(response->status, response->body, response->error),
              std::tuple(status, answer, error))
        << url;
    EXPECT_LT(elapsed.elapsed(), 3000) << url;
  }
  EXPECT_LT(server.endlessBytes, size_t{16} << 20);  // it stopped reading at the cap
  EXPECT_NE(std::find(server.headers[0].begin(), server.headers[0].end(),
                      "Referer: https://finance.qq.com/"),
            server.headers[0].end());
}

TEST(SettingsStore, ValuesRoundTripThroughTheFile) {
  test::TemporaryFolder folder;
  const QString path = QString::fromStdString((folder.path() / "store.conf").string());
  const std::string bytes("{\"a\":1}\0\xff\xfe tail", 16);
  const std::pair<const char*, List> lists[] = {
      {"list.empty", {}},
      {"list.one", {"600519"}},
      {"list.many", {"a,b", "腾讯控股", "", " spaced ", "@Invalid()"}},
  };
  {
    SettingsStore store(path);
    store.setData("tidemark.native.preferences.v2", bytes);
    for (const auto& [key, list] : lists) store.setStringArray(key, list);
    store.setData("gone", "x");
    store.remove("gone");
    ASSERT_TRUE(store.sync());
  }
  SettingsStore reopened(path);
  EXPECT_EQ(reopened.data("tidemark.native.preferences.v2"), bytes);
  for (const auto& [key, list] : lists) EXPECT_EQ(reopened.stringArray(key), list) << key;
  EXPECT_EQ(reopened.data("list.one"), std::nullopt);  // a list is no byte value
  EXPECT_EQ(reopened.stringArray("tidemark.native.preferences.v2"), std::nullopt);
  EXPECT_EQ(reopened.data("gone"), std::nullopt);
  EXPECT_EQ(reopened.stringArray("missing"), std::nullopt);
}

TEST(SettingsStore, EachWriteIsKeptAtTheEndOfItsTurnAndTheObserverHearsHowItWent) {
  // The store's folder cannot be made while a plain file stands in its place (for root too).
  test::TemporaryFolder folder;
  const auto blocker = folder.path() / "Tidemark";
  const std::string path = (blocker / "Tidemark.conf").string();
  std::ofstream(blocker) << "not a folder";
  Told told;
  {
    SettingsStore store(QString::fromStdString(path));
    store.setWriteObserver([&](const std::optional<StoreWriteFailure>& f) { told.push_back(f); });
    const auto turn = [&](auto write) {
      write();
      QCoreApplication::processEvents();
    };
    const StoreWriteFailure blocked{path, "Not a directory"};
    turn([&] {
      store.setData("a", "1");
      store.setStringArray("list", {"x", "y"});
    });
    turn([&] { store.setData("b", "2"); });
    turn([] {});                             // nothing written, nothing to tell
    turn([&] { store.setData("b", "2"); });  // the same bytes, not yet on disk: tried again
    std::filesystem::remove(blocker);
    turn([&] { store.remove("a"); });
    // What the file holds already is not written again.
    turn([&] {
      store.setData("b", "2");
      store.setStringArray("list", {"x", "y"});
    });
    EXPECT_EQ(told, (Told{blocked, blocked, blocked, std::nullopt}));  // once a turn
  }
  // What was handed over while the file could not be written reached it later.
  SettingsStore reopened(QString::fromStdString(path));
  EXPECT_EQ(reopened.data("a"), std::nullopt);
  EXPECT_EQ(reopened.data("b"), "2");
  EXPECT_EQ(reopened.stringArray("list"), (List{"x", "y"}));
}

// A lazy write is read back at once, written with the next sync so refreshes do not flush the disk.
TEST(SettingsStore, LazyWritesWaitForTheNextSyncOrTheStoresEnd) {
  test::TemporaryFolder folder;
  const QString path = QString::fromStdString((folder.path() / "store.conf").string());
  const auto onDisk = [&](const char* key) { return SettingsStore(path).data(key); };
  {
    SettingsStore store(path);
    Told told;
    store.setWriteObserver([&](const std::optional<StoreWriteFailure>& f) { told.push_back(f); });
    store.setDataLazily("cache", "1");
    QCoreApplication::processEvents();
    EXPECT_EQ(store.data("cache"), "1");
    EXPECT_EQ(onDisk("cache"), std::nullopt);
    EXPECT_TRUE(told.empty()) << "no sync at the end of the turn";
    store.setData("choice", "a");  // a prompt write carries the waiting one along
    QCoreApplication::processEvents();
    EXPECT_EQ(std::pair(onDisk("choice"), onDisk("cache")),
              std::pair(std::optional<std::string>("a"), std::optional<std::string>("1")));
    store.setDataLazily("cache", "2");
    store.setData("cache", "3");  // a prompt write of the same key wins
    QCoreApplication::processEvents();
    EXPECT_EQ(onDisk("cache"), "3");
    store.setDataLazily("cache", "4");
  }
  EXPECT_EQ(onDisk("cache"), "4") << "written when the store ends";
}

TEST(SettingsStore, SuitesLiveOnTheirOwnFileAndGoWithTheirDomain) {
  test::TemporaryFolder folder;
  ConfigHome home(folder.path());
  const std::string name = "tidemark.self-test.unit";
  {
    auto suite = SettingsStore::suite(name);
    ASSERT_NE(suite, nullptr);
    suite->setStringArray("k", {"v"});
    ASSERT_TRUE(suite->sync());
    EXPECT_EQ(suite->fileName(),
              QString::fromStdString(folder.path().string()) +
                  QStringLiteral("/Tidemark/suites/tidemark.self-test.unit.conf"));
  }
  EXPECT_TRUE(SettingsStore::removeSuite(name));
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
  EXPECT_EQ(SettingsStore::suite("bad/name"), nullptr);
}

// The login entry: written, read back, removed, and refused.
TEST(Autostart, OnWritesTheEntryQuotingOnlyWhatNeedsItOffRemovesItFailuresAreWords) {
  test::TemporaryFolder folder;
  ConfigHome home(folder.path());
  const QString path = Autostart::entryPath();
  EXPECT_EQ(path.toStdString(),
            (folder.path() / "autostart/org.tidemark.Tidemark.desktop").string());
  EXPECT_FALSE(Autostart::isEnabled());

  EXPECT_EQ(Autostart::setEnabled(true, QStringLiteral("/usr/bin/tidemark")), std::nullopt);
  EXPECT_TRUE(Autostart::isEnabled());
  std::error_code error;
  EXPECT_EQ(readFile(path.toStdString(), error),
            "[Desktop Entry]\nType=Application\nName=Tidemark\nName[zh_CN]=潮汐栏\n"
            "Comment=A floating orb with your watchlist\nTryExec=/usr/bin/tidemark\n"
            "Exec=/usr/bin/tidemark\nIcon=org.tidemark.Tidemark\nTerminal=false\n"
            "X-GNOME-Autostart-enabled=true\n");
  const std::pair<const char*, const char*> execs[] = {
      {"/opt/潮汐栏/tidemark", "Exec=/opt/潮汐栏/tidemark"},
      {"/opt/My Apps/tidemark", R"(Exec="/opt/My Apps/tidemark")"},
      {"/opt/$HOME/`x`/tidemark", R"(Exec="/opt/\\$HOME/\\`x\\`/tidemark")"},
      {R"(/opt/a\b "c"/50%/tidemark)", R"(Exec="/opt/a\\\\b \\"c\\"/50%%/tidemark")"},
  };
  for (const auto& [program, exec] : execs)
    EXPECT_EQ(Autostart::entry(QString::fromUtf8(program)).split('\n')[6].toStdString(), exec);
  // Switched off by a session tool, the entry stays but starts nothing.
  for (const char* mark : {"Hidden=true\n", "X-GNOME-Autostart-enabled=false\n"}) {
    ASSERT_FALSE(writeFileAtomically(path.toStdString(), std::string("[Desktop Entry]\n") + mark));
    EXPECT_FALSE(Autostart::isEnabled()) << mark;
  }

  EXPECT_EQ(Autostart::setEnabled(false, {}), std::nullopt);
  EXPECT_FALSE(QFile::exists(path));
  EXPECT_EQ(Autostart::setEnabled(false, {}), std::nullopt);  // already off

  // A file where the folder should be.
  std::filesystem::remove(folder.path() / "autostart");
  ASSERT_FALSE(writeFileAtomically(folder.path() / "autostart", "x"));
  EXPECT_EQ(Autostart::setEnabled(true, QStringLiteral("/usr/bin/tidemark")),
            "无法创建自启动目录 " + (folder.path() / "autostart").string());
  EXPECT_FALSE(Autostart::isEnabled());
}

// Through the real gsettings tool into a key file of the test's own: the user's shortcut stays.
TEST(GnomeShortcuts, AddedBesideTheUsersOwnAndReadBack) {
  const std::pair<const char*, QStringList> printed[] = {
      {"@as []", {}},
      {"['/a/', '/b/']", {u"/a/"_s, u"/b/"_s}},
      {R"("it's")", {u"it's"_s}},
      {R"('back\\slash \'q\'')", {uR"(back\slash 'q')"_s}},
  };
  for (const auto& [text, items] : printed)
    EXPECT_EQ(GnomeShortcuts::parseStringArray(QString::fromUtf8(text)), items) << text;

  test::TemporaryFolder folder;
  ConfigHome home(folder.path());
  qputenv("GSETTINGS_BACKEND", "keyfile");
  const std::filesystem::path keyfile = folder.path() / "glib-2.0/settings/keyfile";
  std::filesystem::create_directories(keyfile.parent_path());
  const std::string users =
      "[org/gnome/settings-daemon/plugins/media-keys]\n"
      "custom-keybindings=['/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/"
      "custom0/']\n";
  std::ofstream(keyfile) << users;

  const GnomeShortcuts gnome(u"/opt/My Apps/tidemark"_s);
  ASSERT_TRUE(gnome.isAvailable());
  EXPECT_FALSE(gnome.isInstalled());
  EXPECT_EQ(gnome.install(), std::nullopt);
  EXPECT_TRUE(gnome.isInstalled());
  EXPECT_EQ(gnome.install(), std::nullopt);  // again: nothing doubles
  std::error_code error;
  EXPECT_EQ(
      readFile(keyfile, error),
      "[org/gnome/settings-daemon/plugins/media-keys]\n"
      "custom-keybindings=['/org/gnome/settings-daemon/plugins/media-keys/"
      "custom-keybindings/custom0/', '/org/gnome/settings-daemon/plugins/media-keys/"
      "custom-keybindings/tidemark-toggle-orb/', '/org/gnome/settings-daemon/plugins/"
      "media-keys/custom-keybindings/tidemark-toggle-mask/']\n\n"
      "[org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/tidemark-toggle-orb]\n"
      "name='潮汐栏：显示或隐藏灵球'\n"
      "command=\"'/opt/My Apps/tidemark' --toggle-orb\"\n"
      "binding='<Control><Alt>space'\n\n"
      "[org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/tidemark-toggle-mask]\n"
      "name='潮汐栏：遮蔽行情数字'\n"
      "command=\"'/opt/My Apps/tidemark' --toggle-mask\"\n"
      "binding='<Control><Alt>m'\n");
  // Another program's path: the shortcuts no longer run this one.
  EXPECT_FALSE(GnomeShortcuts(u"/usr/bin/tidemark"_s).isInstalled());
  // A shortcut of the user's on the same keys, spelled otherwise: nothing is bound over it.
  const std::string taken =
      "[org/gnome/settings-daemon/plugins/media-keys]\n"
      "custom-keybindings=['/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/"
      "custom0/']\n\n"
      "[org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/custom0]\n"
      "name='Screen recorder'\nbinding='<Alt><Primary>M'\n";
  std::ofstream(keyfile) << taken;
  EXPECT_EQ(gnome.install(),
            "Ctrl+Alt+M 已被 GNOME 快捷键「Screen recorder」占用；没有绑定任何快捷键");
  EXPECT_EQ(readFile(keyfile, error), taken);

  const GnomeShortcuts missing(u"/usr/bin/tidemark"_s, u"/nonexistent/gsettings"_s);
  EXPECT_FALSE(missing.isAvailable());
  EXPECT_EQ(missing.install(), "无法读取 GNOME 的自定义快捷键（gsettings 不可用）");
  qunsetenv("GSETTINGS_BACKEND");
}

}  // namespace
}  // namespace tidemark
