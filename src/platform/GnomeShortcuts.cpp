#include "platform/GnomeShortcuts.h"

#include <QProcess>
#include <QProcessEnvironment>

#include "core/GlobalCommands.h"

namespace tidemark {
namespace {

struct Shortcut {
  const char* path;
  const GlobalCommandSpec& command;
};
const Shortcut shortcuts[] = {
    {GnomeShortcuts::orbPath, specOf(GlobalCommand::toggleOrb)},
    {GnomeShortcuts::maskPath, specOf(GlobalCommand::toggleMask)},
};

QString text(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

// A GNOME accelerator in one spelling: modifiers in order, <Primary> and <Ctrl> as <Control>,
// the key in lower case ("<Primary><Alt>M" and "<Alt><Control>m" are one binding).
QString normalBinding(QString binding) {
  binding = binding.toLower()
                .replace(QStringLiteral("<primary>"), QStringLiteral("<control>"))
                .replace(QStringLiteral("<ctrl>"), QStringLiteral("<control>"));
  QStringList modifiers;
  while (binding.startsWith(u'<') && binding.contains(u'>')) {
    const qsizetype end = binding.indexOf(u'>');
    modifiers << binding.left(end + 1);
    binding = binding.mid(end + 1);
  }
  modifiers.sort();
  return modifiers.join(QString()) + binding;
}

QString entry(const char* path) {
  return QLatin1String(GnomeShortcuts::entrySchema) + u':' + QLatin1String(path);
}

}  // namespace

GnomeShortcuts::GnomeShortcuts(QString executable, QString gsettings)
    : executable_(std::move(executable)), gsettings_(std::move(gsettings)) {}

bool GnomeShortcuts::isGnomeDesktop() {
  const QString desktops =
      QProcessEnvironment::systemEnvironment().value(QStringLiteral("XDG_CURRENT_DESKTOP"));
  return desktops.split(u':').contains(QStringLiteral("GNOME"), Qt::CaseInsensitive);
}

std::optional<QString> GnomeShortcuts::run(const QStringList& arguments) const {
  QProcess process;
  process.start(gsettings_, arguments);
  if (!process.waitForFinished(3000) || process.exitStatus() != QProcess::NormalExit ||
      process.exitCode() != 0) {
    process.kill();
    return std::nullopt;
  }
  return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

QString GnomeShortcuts::command(std::string_view option) const {
  // GNOME splits the command as a shell would, without running one.
  const bool plain = !executable_.contains(u'\'') && !executable_.contains(u' ') &&
                     !executable_.contains(u'"') && !executable_.contains(u'\\');
  const QString program =
      plain ? executable_
            : u'\'' + QString(executable_).replace(u'\'', QStringLiteral("'\\''")) + u'\'';
  return program + QStringLiteral(" --") + text(option);
}

bool GnomeShortcuts::isAvailable() const {
  return run({QStringLiteral("get"), QLatin1String(listSchema),
              QStringLiteral("custom-keybindings")})
      .has_value();
}

bool GnomeShortcuts::isInstalled() const {
  const auto list =
      run({QStringLiteral("get"), QLatin1String(listSchema), QStringLiteral("custom-keybindings")});
  if (!list) return false;
  const QStringList paths = parseStringArray(*list);
  for (const Shortcut& s : shortcuts) {
    if (!paths.contains(QLatin1String(s.path))) return false;
    const auto command = run({QStringLiteral("get"), entry(s.path), QStringLiteral("command")});
    const auto binding = run({QStringLiteral("get"), entry(s.path), QStringLiteral("binding")});
    // gsettings quotes a string with double quotes when it holds a single one.
    const auto value = [](const std::optional<QString>& printed) {
      return printed ? parseStringArray(*printed).value(0) : QString();
    };
    if (value(command) != this->command(s.command.option) ||
        value(binding) != text(s.command.gnomeBinding))
      return false;
  }
  return true;
}

std::optional<std::string> GnomeShortcuts::install() const {
  const auto list =
      run({QStringLiteral("get"), QLatin1String(listSchema), QStringLiteral("custom-keybindings")});
  if (!list) return std::string("无法读取 GNOME 的自定义快捷键（gsettings 不可用）");
  // Keys another shortcut of the user's already has are never bound over it: nothing is bound.
  for (const QString& path : parseStringArray(*list)) {
    if (path == QLatin1String(orbPath) || path == QLatin1String(maskPath)) continue;
    const auto value = [&](const char* key) {
      const auto printed =
          run({QStringLiteral("get"), entry(path.toUtf8().constData()), QLatin1String(key)});
      return printed ? parseStringArray(*printed).value(0) : QString();
    };
    const QString taken = normalBinding(value("binding"));
    for (const Shortcut& s : shortcuts)
      if (!taken.isEmpty() && taken == normalBinding(text(s.command.gnomeBinding)))
        return std::string(s.command.keys) + " 已被 GNOME 快捷键「" + value("name").toStdString() +
               "」占用；没有绑定任何快捷键";
  }
  // Each entry first, the list last: GNOME never sees a listed shortcut without its keys.
  for (const Shortcut& s : shortcuts) {
    for (const auto& [key, value] : {std::pair{"name", text(s.command.gnomeName)},
                                     {"command", command(s.command.option)},
                                     {"binding", text(s.command.gnomeBinding)}}) {
      if (!run({QStringLiteral("set"), entry(s.path), QLatin1String(key), stringLiteral(value)}))
        return "无法写入 GNOME 快捷键 " + std::string(s.command.gnomeBinding);
    }
  }
  QStringList paths = parseStringArray(*list);
  for (const Shortcut& s : shortcuts)
    if (!paths.contains(QLatin1String(s.path))) paths << QLatin1String(s.path);
  QStringList literals;
  for (const QString& path : paths) literals << stringLiteral(path);
  if (!run({QStringLiteral("set"), QLatin1String(listSchema), QStringLiteral("custom-keybindings"),
            u'[' + literals.join(QStringLiteral(", ")) + u']'}))
    return std::string("无法写入 GNOME 的自定义快捷键列表");
  return std::nullopt;
}

QStringList GnomeShortcuts::parseStringArray(const QString& text) {
  QStringList items;
  QString current;
  QChar quote;
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text[i];
    if (quote.isNull()) {
      if (c == u'\'' || c == u'"') {
        quote = c;
        current.clear();
      }
    } else if (c == u'\\' && i + 1 < text.size()) {
      current += text[++i];
    } else if (c == quote) {
      items << current;
      quote = QChar();
    } else {
      current += c;
    }
  }
  return items;
}

QString GnomeShortcuts::stringLiteral(const QString& text) {
  QString escaped = text;
  escaped.replace(u'\\', QStringLiteral("\\\\")).replace(u'\'', QStringLiteral("\\'"));
  return u'\'' + escaped + u'\'';
}

}  // namespace tidemark
