#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/Clock.h"
#include "core/KeyValueStore.h"
#include "core/Lifeline.h"
#include "core/Scheduler.h"
#include "model/AppModel.h"
#include "seams/DesktopSeams.h"
#include "shell/DockGeometry.h"
#include "shell/OrbMotion.h"
#include "shell/OrbPanel.h"
#include "shell/OrbSurface.h"
#include "shell/StatusItem.h"
#include "shell/TrayPresenter.h"
#include "shell/WindowKind.h"
#include "shell/WindowRegistry.h"
#include "views/MiniOrb.h"
#include "views/OrbWindowModel.h"
#include "views/SettingsView.h"

namespace tidemark {

class AppDelegate;

// Builds the content of an auxiliary window (the settings with their initial section). The
// windows themselves belong to the delegate.
using WindowContentFactory = std::function<WindowContent(AppDelegate& delegate, AuxWindow window,
                                                         std::optional<SettingsSection> section)>;

// The real windows: settings (opening the guide and the alert editor from its buttons, with the
// login switch given), the guide and the alert editor, each closing its own window.
WindowContentFactory standardWindowContent(
    AppModel& model, const Clock& clock, std::function<bool()> autostartEnabled,
    std::function<std::optional<std::string>(bool on)> setAutostart,
    SettingsView::DesktopKeys keys = {});

// The desktop shell: owns the orb panel, the tray item, the auxiliary windows, the global keys,
// and keeps them in step with the model.
class AppDelegate {
 public:
  struct Dependencies {
    AppModel& model;
    KeyValueStore& defaults;  // the standard store: the orb's position lives there
    const Clock& clock;
    Scheduler& scheduler;  // hints and the delayed single click
    WindowSystem& windowSystem;
    GlobalHotKeys& hotKeys;
    WindowContentFactory windowContent;
    // What the screens look like; the real one reads QGuiApplication's screens.
    std::function<std::vector<Screen>()> screens;
    std::function<Point()> mouseLocation;
    // The tray item exported over D-Bus, where there is a session bus; none in tests.
    std::function<std::unique_ptr<StatusNotifier>()> statusNotifier = {};
    // The desktop's reduce-motion switch; none in tests.
    std::function<std::unique_ptr<DesktopMotionSetting>()> motionSetting = {};
    // A Wayland session (through its X server): the orb's window is managed rather than
    // bypassing the window manager, and the global keys are the desktop's to bind.
    bool waylandSession = false;
    // There, whether the desktop's own shortcuts run our toggles (GNOME's, as the settings add
    // them); asked at launch and after the settings add them.
    std::function<bool()> desktopKeysBound = {};
    // The orb window's kind for this desktop.
    OrbWindowKind windowKind = {};
  };

  explicit AppDelegate(Dependencies dependencies);
  ~AppDelegate();
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  void launch();
  void terminate();

  // What the tray and windows show for the model's current state.
  void synchronize();
  std::string statusTitle() const;
  std::string tooltip() const;
  // Which global keys other programs hold, in words; empty when both are ours.
  std::string unavailableKeys() const;
  // The desktop's shortcuts for our toggles were added: the tooltip says so.
  void desktopKeysChanged();

  void showHint(const std::string& text);
  void toggleOrb();
  // Brings a hidden orb back (as toggleOrb does), or a shown one to the front.
  void showOrb();
  void toggleMask();
  void toggleObserve();
  void toggleBloom();
  void refresh();
  void scheduleClick();
  void ringAction(RingCommand command);
  bool handleKey(int key);
  // A left or right press at this global point, anywhere on the desktop: the open ring menu
  // closes unless the press is on one of the orb's controls.
  void pressedAt(Point global);
  // A press somewhere on the desktop at this time, reported by the window system before or after
  // a window of ours got it.
  void pressedSomewhere(unsigned long time);
  // The desktop asks for less motion: the orb and the detail follow it.
  void setSystemCalm(bool calm);
  bool systemCalm() const { return systemCalm_; }

  void openSettings(SettingsSection section) { windows_->open(AuxWindow::settings, section); }
  WindowRegistry& windows() { return *windows_; }

  // Whole, in the middle of the screen under the pointer, and shown.
  void centerOrb();
  OrbMotion& motion() { return *motion_; }

  AppModel& model() { return deps_.model; }
  OrbWindowModel& windowModel() { return windowModel_; }
  OrbPanel& panel() { return *panel_; }
  OrbSurface& surface() { return *surface_; }
  // The tray item, made now if the orb has not yet been painted.
  StatusItem& statusItem();
  // Quit the application (the ring menu's and the tray menu's last item).
  std::function<void()> onQuit;

 private:
  // The steps of launch(): the orb's events, the screens, presses elsewhere, the global keys.
  void wireOrbEvents(OrbContentView& content);
  void watchScreens();
  void watchPresses();
  void installKeys();
  std::vector<Screen> screens() const { return deps_.screens(); }
  void scheduleSynchronize();
  // What the settings show of the desktop: its calm, and the keys other programs hold.
  void tellSettings(SettingsView& settings);
  // Where the orb stands (for a docked orb, on the screen whose edge it sits on).
  std::optional<OrbPlace> orbPlace() const;

  Dependencies deps_;
  OrbWindowModel windowModel_;
  // Before the panel, which reports the pointer to it: gone after the panel.
  std::unique_ptr<OrbSurface> surface_;
  std::unique_ptr<OrbPanel> panel_;
  std::unique_ptr<OrbMotion> motion_;
  std::unique_ptr<TrayPresenter> tray_;
  std::unique_ptr<WindowRegistry> windows_;
  std::vector<ChangeSignal::Subscription> subscriptions_;
  TimerHandle keysRetry_;
  bool keysInstalled_ = false;
  bool desktopKeysBound_ = false;
  TimerHandle clickWork_, hintWork_, statusItemWork_;
  bool synchronizePending_ = false;
  std::vector<QMetaObject::Connection> screenConnections_;
  std::unique_ptr<QObject> pressWatcher_;
  std::unique_ptr<DesktopMotionSetting> motionSetting_;
  bool systemCalm_ = false;
  unsigned long lastOwnPress_ = 0;
  bool toldSaveFailure_ = false;
  std::map<unsigned long, TimerHandle> pressVerdicts_;  // by the press's time
  // Last, so that it is gone first: no timer runs into a half-destroyed delegate.
  Lifeline lifeline_;
};

}  // namespace tidemark
