#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tuple>

#include <QMenu>

#include "model/AppModel.h"
#include "seams/DesktopSeams.h"
#include "shell/StatusItem.h"
#include "views/MiniOrb.h"

namespace tidemark {

// The tray item as the user sees it: its title, the small orb, the tooltip and the menu, kept in
// step with the model and the orb. The item itself is made on the first call of item().
class TrayPresenter {
 public:
  struct Host {
    AppModel& model;
    // The item exported over D-Bus, where there is a session bus; none in tests.
    std::function<std::unique_ptr<StatusNotifier>()> notifier;
    std::function<std::string()> tooltip;
    // What the menu shows of the orb: shown, and letting the pointer through.
    std::function<bool()> orbShown, observing;
    std::function<qreal()> pixelRatio;
    // The commands of the icon and the menu.
    std::function<void()> toggleOrb, openSettings, openAlert, openGuide, refresh, toggleMask,
        toggleObserve, centerOrb, quit;
  };

  explicit TrayPresenter(Host host) : host_(std::move(host)) {}

  bool exists() const { return item_ != nullptr; }
  // Made now if there is none yet; then `made` runs, for the caller to show the state on it.
  StatusItem& item(const std::function<void()>& made);
  // Shows the model's state: the title, the icon (drawn again only when what it shows changes),
  // the tooltip, and a menu whose labels or marks changed.
  void update();

 private:
  void buildMenu(QMenu& menu);
  // Everything the menu's labels and check marks are made of.
  std::string menuState() const;

  Host host_;
  std::unique_ptr<StatusItem> item_;
  std::optional<std::tuple<MiniOrbFace, AppTheme, qreal, bool>> icon_;  // as last drawn
  std::string menuState_;
};

}  // namespace tidemark
