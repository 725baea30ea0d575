#include "platform/Autostart.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

namespace tidemark {
namespace {

// A program path as one argument of an Exec key: quoted, with the four reserved characters
// escaped, whenever it holds anything beyond plain path characters.
QString execArgument(const QString& path) {
  bool plain = !path.isEmpty();
  for (QChar c : path)
    if (!(c.isLetterOrNumber() || c == u'/' || c == u'.' || c == u'-' || c == u'_')) plain = false;
  if (plain) return path;
  QString quoted;
  for (QChar c : path) {
    if (c == u'"' || c == u'`' || c == u'$' || c == u'\\') quoted += u'\\';
    quoted += c;
  }
  // The whole value is unescaped once more as a string: backslashes double.
  quoted.replace(u'\\', QStringLiteral("\\\\"));
  // "%" starts a field code.
  quoted.replace(u'%', QStringLiteral("%%"));
  return u'"' + quoted + u'"';
}

}  // namespace

QString Autostart::entryPath() {
  return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
         QStringLiteral("/autostart/org.tidemark.Tidemark.desktop");
}

bool Autostart::isEnabled() {
  QFile file(entryPath());
  if (!file.open(QIODevice::ReadOnly)) return false;
  // Session tools switch an entry off by marking it rather than removing it.
  while (!file.atEnd()) {
    const QByteArray line = file.readLine().trimmed();
    if (line == "Hidden=true" || line == "X-GNOME-Autostart-enabled=false") return false;
  }
  return true;
}

QByteArray Autostart::entry(const QString& executable) {
  return (QStringLiteral("[Desktop Entry]\n"
                         "Type=Application\n"
                         "Name=Tidemark\n"
                         "Name[zh_CN]=潮汐栏\n"
                         "Comment=A floating orb with your watchlist\n"
                         "TryExec=") +
          QString(executable).replace(u'\\', QStringLiteral("\\\\")) + QStringLiteral("\nExec=") +
          execArgument(executable) +
          QStringLiteral("\n"
                         "Icon=org.tidemark.Tidemark\n"
                         "Terminal=false\n"
                         "X-GNOME-Autostart-enabled=true\n"))
      .toUtf8();
}

std::optional<std::string> Autostart::setEnabled(bool on, const QString& executable) {
  const QString path = entryPath();
  if (!on) {
    if (QFile::exists(path) && !QFile::remove(path))
      return "无法删除自启动项 " + path.toStdString();
    return std::nullopt;
  }
  if (!QDir().mkpath(QFileInfo(path).absolutePath()))
    return "无法创建自启动目录 " + QFileInfo(path).absolutePath().toStdString();
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(entry(executable)) < 0 || !file.commit())
    return "无法写入自启动项 " + path.toStdString();
  return std::nullopt;
}

}  // namespace tidemark
