#pragma once

#include <optional>
#include <string>

#include <QString>

namespace tidemark {

// Starting at login through the XDG autostart folder: an entry
// "$XDG_CONFIG_HOME/autostart/org.tidemark.Tidemark.desktop" that runs this program.
struct Autostart {
  static QString entryPath();
  static bool isEnabled();
  // Writes the entry for `executable` or removes it; the failure in words, or none.
  static std::optional<std::string> setEnabled(bool on, const QString& executable);
  // The entry's text for a program at `executable`.
  static QByteArray entry(const QString& executable);
};

}  // namespace tidemark
