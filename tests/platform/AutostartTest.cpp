// The login entry in a temporary XDG_CONFIG_HOME: written, read back, removed, and refused.

#include <gtest/gtest.h>

#include <QFile>

#include "core/FileIO.h"
#include "platform/Autostart.h"
#include "support/Fakes.h"

namespace tidemark {
namespace {

TEST(Autostart, OnWritesTheEntryOffRemovesItAndFailuresAreWords) {
  test::TemporaryFolder folder;
  const QByteArray saved = qgetenv("XDG_CONFIG_HOME");
  qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(folder.path().string()));
  const QString path = Autostart::entryPath();
  EXPECT_EQ(path.toStdString(),
            (folder.path() / "autostart/org.tidemark.Tidemark.desktop").string());
  EXPECT_FALSE(Autostart::isEnabled());

  EXPECT_EQ(Autostart::setEnabled(true, QStringLiteral("/opt/My \"Apps\"/50%/tidemark")),
            std::nullopt);
  EXPECT_TRUE(Autostart::isEnabled());
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll().toStdString(),
            "[Desktop Entry]\nType=Application\nName=Tidemark\nName[zh_CN]=潮汐栏\n"
            "Comment=A floating orb with your watchlist\n"
            "Exec=\"/opt/My \\\\\"Apps\\\\\"/50%%/tidemark\"\n"
            "Icon=org.tidemark.Tidemark\nTerminal=false\nX-GNOME-Autostart-enabled=true\n");
  EXPECT_EQ(Autostart::entry(QStringLiteral("/usr/bin/tidemark")).split('\n')[5],
            "Exec=/usr/bin/tidemark");

  EXPECT_EQ(Autostart::setEnabled(false, {}), std::nullopt);
  EXPECT_FALSE(Autostart::isEnabled());
  EXPECT_EQ(Autostart::setEnabled(false, {}), std::nullopt);  // already off

  // A file where the folder should be.
  std::filesystem::remove(folder.path() / "autostart");
  ASSERT_FALSE(writeFileAtomically(folder.path() / "autostart", "x"));
  EXPECT_EQ(Autostart::setEnabled(true, QStringLiteral("/usr/bin/tidemark")),
            "无法创建自启动目录 " + (folder.path() / "autostart").string());
  EXPECT_FALSE(Autostart::isEnabled());
  qputenv("XDG_CONFIG_HOME", saved);
}

}  // namespace
}  // namespace tidemark
