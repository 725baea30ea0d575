#include <gtest/gtest.h>

#include <fstream>

#include <QCoreApplication>

#include "platform/SettingsStore.h"
#include "support/Fakes.h"

namespace tidemark {
namespace {

using List = std::vector<std::string>;
using Told = std::vector<std::optional<StoreWriteFailure>>;

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
    turn([] {});  // nothing written, nothing to tell
    std::filesystem::remove(blocker);
    turn([&] { store.remove("a"); });
    EXPECT_EQ(told, (Told{blocked, blocked, std::nullopt}));  // once a turn
  }
  // What was handed over while the file could not be written reached it later.
  SettingsStore reopened(QString::fromStdString(path));
  EXPECT_EQ(reopened.data("a"), std::nullopt);
  EXPECT_EQ(reopened.data("b"), "2");
  EXPECT_EQ(reopened.stringArray("list"), (List{"x", "y"}));
}

TEST(SettingsStore, SuitesLiveOnTheirOwnFileAndGoWithTheirDomain) {
  test::TemporaryFolder folder;
  qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(folder.path().string()));
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
  qunsetenv("XDG_CONFIG_HOME");
}

}  // namespace
}  // namespace tidemark
