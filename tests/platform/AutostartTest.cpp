// The login entry in a temporary XDG_CONFIG_HOME: written, read back, removed, and refused.

#include <gtest/gtest.h>

#include <QFile>

#include "core/FileIO.h"
#include "platform/Autostart.h"
#include "support/Fakes.h"

namespace tidemark {
namespace {

struct ConfigHome {
  explicit ConfigHome(const std::filesystem::path& path) {
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(path.string()));
  }
  ~ConfigHome() { qputenv("XDG_CONFIG_HOME", saved); }
  QByteArray saved = qgetenv("XDG_CONFIG_HOME");
};

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

}  // namespace
}  // namespace tidemark
