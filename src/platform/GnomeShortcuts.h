#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <QString>
#include <QStringList>

namespace tidemark {

// Ctrl+Alt+Space and Ctrl+Alt+M as two of GNOME's custom keyboard shortcuts, running
// "tidemark --toggle-orb" and "tidemark --toggle-mask": where X11 key grabs cannot reach (a
// Wayland session), the desktop itself hears the keys. Read and written through the gsettings
// tool, so the user's own shortcuts stay as they are and GNOME picks the new ones up at once.
class GnomeShortcuts {
 public:
  static constexpr const char* listSchema = "org.gnome.settings-daemon.plugins.media-keys";
  static constexpr const char* entrySchema =
      "org.gnome.settings-daemon.plugins.media-keys.custom-keybinding";
  static constexpr const char* orbPath =
      "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/tidemark-toggle-orb/";
  static constexpr const char* maskPath =
      "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/tidemark-toggle-mask/";

  explicit GnomeShortcuts(QString executable, QString gsettings = QStringLiteral("gsettings"));

  // A GNOME session (XDG_CURRENT_DESKTOP) whose settings hold custom shortcuts.
  static bool isGnomeDesktop();
  bool isAvailable() const;
  // Both shortcuts are there and run this program.
  bool isInstalled() const;
  // Adds or renews the two; the failure in words, or none.
  std::optional<std::string> install() const;

  // The strings gsettings prints for a string array ("@as []", "['/a/', '/b/']") or one string
  // ("'a'", "\"it's\"").
  static QStringList parseStringArray(const QString& text);
  // Text as a GSettings string literal.
  static QString stringLiteral(const QString& text);

 private:
  std::optional<QString> run(const QStringList& arguments) const;
  // The command line that runs the option (without its dashes).
  QString command(std::string_view option) const;

  QString executable_, gsettings_;
};

}  // namespace tidemark
