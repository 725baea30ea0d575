#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QStackedWidget>
#include <QWidget>

#include "core/ChangeSignal.h"
#include "core/Clock.h"
#include "model/AppModel.h"
#include "views/Theme.h"

namespace tidemark {

class DetailView;
class AlertsView;
class HoldingsView;
class WatchlistView;

// The settings window's sections, in the side bar's order.
enum class SettingsSection {
  appearance,
  detail,
  watchlist,
  holdings,
  alerts,
  source,
  alertsAndPrivacy
};
// The side bar's title of a section ("外观", "圆形详情", ...).
std::string_view sectionTitle(SettingsSection section);

// The settings window: a list of sections beside the chosen one. Every control writes through
// the model's setters, so the orb and the tray follow at once.
class SettingsView final : public QWidget {
 public:
  // The global keys where X11 grabs cannot reach other programs' windows (a Wayland session): the
  // commands to bind in the desktop's keyboard settings, and on GNOME a button that adds them.
  struct DesktopKeys {
    bool wayland = false;
    QString program = QStringLiteral("tidemark");  // as the commands name it
    std::function<bool()> gnomeInstalled;          // none: not GNOME
    std::function<std::optional<std::string>()> addGnome;
    std::function<void()> changed;  // the shortcuts were added
  };

  struct Actions {
    std::function<void()> openGuide;
    std::function<void()> openAlert;
    std::function<void()> close;
    // Asked before the preferences are reset; a dialog unless replaced.
    std::function<bool()> confirmReset;
    // The file to export to (save) or import from; empty when the user cancels. Dialogs unless
    // replaced.
    std::function<QString(bool save)> chooseFile;
    // Starting at login; without these the switch is not offered.
    std::function<bool()> autostartEnabled;
    std::function<std::optional<std::string>(bool on)> setAutostart;
    DesktopKeys keys;
  };

  // In the side bar's order.
  static const std::array<SettingsSection, 7>& sections();

  SettingsView(AppModel& model, const Clock& clock, Actions actions,
               SettingsSection initialSection = SettingsSection::appearance,
               QWidget* parent = nullptr);

  void showSection(SettingsSection section);
  SettingsSection currentSection() const;
  // A section's page, built now if it was not yet: each is built when first shown or asked for.
  QWidget* page(SettingsSection section);
  DetailView& detail();
  WatchlistView& watchlist();
  HoldingsView& holdings();
  AlertsView& alerts();

  // What the settings say of the global keys: empty while both are the app's, else which other
  // programs hold.
  void setShortcutNotice(const QString& text);
  // The desktop asks for less motion: the detail's orb follows it, also once it is built.
  void setSystemCalm(bool calm);
  QString shortcutNotice() const { return shortcutText_; }

  void resetPreferences();
  void exportWatchlist();
  void importWatchlist();
  // Where the file dialogs start: the folder of the last import or export, at first the home
  // folder (never the process's working folder); for an export with the file's usual name.
  QString fileDialogStart(bool save) const;
  // The outcome of the last import or export, in words.
  QString transferMessage() const { return transferText_; }

 private:
  QWidget* appearancePage();
  QWidget* themeCard(QWidget* page);
  QWidget* orbCard(QWidget* page);
  QWidget* trayCard(QWidget* page);
  QWidget* quotesCard(QWidget* page);
  QWidget* startCard(QWidget* page);
  // Pills for a setting with a few fixed values, the one `current` names selected.
  using Choice = std::pair<QString, std::function<void()>>;
  std::vector<ProductPill*> addPills(ProductCard* card, const QString& title,
                                     const std::vector<Choice>& choices,
                                     const std::function<int()>& current);
  void addSwitch(ProductCard* card, const QString& text, const std::function<bool()>& get,
                 const std::function<void(bool)>& set);
  QWidget* keysCard(QWidget* page);
  // The list of sections with the guide and reset buttons below it.
  QWidget* sideBar();
  // Export and import of the watchlist, with the outcome of the last one.
  QWidget* transferCard(QWidget* page);
  QWidget* sourcePage();
  QWidget* alertPage();
  void sync();
  void showEvent(QShowEvent*) override;
  QWidget* ensurePage(int index);
  void setTransfer(const QString& text);

  AppModel& model_;
  Actions actions_;
  QListWidget* list_;
  QStackedWidget* stack_;
  const Clock& clock_;
  DetailView* detail_ = nullptr;
  WatchlistView* watchlist_ = nullptr;
  HoldingsView* holdings_ = nullptr;
  AlertsView* alerts_ = nullptr;
  std::vector<std::function<QWidget*()>> builders_;  // one per section, until it is built
  QString transferText_, shortcutText_;
  bool systemCalm_ = false;
  QString lastFolder_ = QDir::homePath();
  std::vector<std::function<void()>> syncers_;
  QLabel* transfer_ = nullptr;
  QLabel* shortcutNotice_ = nullptr;
  std::function<void()> readAutostart_;
  ChangeSignal::Subscription subscription_;
  bool syncPending_ = false;
};

}  // namespace tidemark
