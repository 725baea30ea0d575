#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <QPointer>
#include <QSize>
#include <QTimer>

#include "core/Clock.h"
#include "core/KeyValueStore.h"
#include "core/Lifeline.h"
#include "core/Scheduler.h"
#include "model/AppModel.h"
#include "seams/DesktopSeams.h"
#include "shell/DockGeometry.h"
#include "shell/OrbMotion.h"
#include "shell/OrbPanel.h"
#include "shell/StatusItem.h"
#include "shell/TrayPresenter.h"
#include "shell/WindowKind.h"
#include "views/MiniOrb.h"
#include "views/OrbWindowModel.h"
#include "views/SettingsView.h"

namespace tidemark {

class AppDelegate;

// Calls `changed` whenever a window it watches (as an event filter) moves, resizes, shows or
// hides.
std::unique_ptr<QObject> watchOwnWindows(std::function<void()> changed);

// The windows besides the orb; at most one of each is open.
enum class AuxWindow { settings, guide, alert };

// The root widget of an auxiliary window, and its settings view when it shows the settings.
struct WindowContent {
  QWidget* root = nullptr;
  SettingsView* settings = nullptr;
};

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
  // Whether the orb is shown; it may still stand aside for a window of ours (yieldsToWindow).
  bool orbShown() const { return shown_; }
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
  void updatePointerMode();
  // A left or right press at this global point, anywhere on the desktop: the open ring menu
  // closes unless the press is on one of the orb's controls.
  void pressedAt(Point global);
  // A press somewhere on the desktop at this time, reported by the window system before or after
  // a window of ours got it.
  void pressedSomewhere(unsigned long time);
  // A compositing manager started or stopped: without one the orb's window shows only what is
  // drawn, without glows.
  void setCompositing(bool on);
  // One of our windows has the focus and overlaps the orb, which then fades to a quarter (hides,
  // without a compositor) and lets the pointer through until that window closes, moves off it or
  // loses the focus.
  bool yieldsToWindow() const { return yielding_; }
  void updateYield();
  // The desktop asks for less motion: the orb and the detail follow it.
  void setSystemCalm(bool calm);
  bool systemCalm() const { return systemCalm_; }

  void openWindow(AuxWindow key, std::optional<SettingsSection> section = std::nullopt);
  void openSettings(SettingsSection section);
  void closeWindow(AuxWindow key);
  QWidget* window(AuxWindow key) const;

  // Where the orb's 460-point canvas stands on the screen (its top left); the window covers
  // only the part of it that draws something.
  Point origin() const;

  // Whole, in the middle of the screen under the pointer, and shown.
  void centerOrb();
  OrbMotion& motion() { return *motion_; }

  AppModel& model() { return deps_.model; }
  OrbWindowModel& windowModel() { return windowModel_; }
  OrbPanel& panel() { return *panel_; }
  // The tray item, made now if the orb has not yet been painted.
  StatusItem& statusItem();
  bool passesPointerThrough() const { return passThrough_; }
  // Whether the pointer is being looked for (a round trip to the display server each time).
  bool watchesPointer() const { return hoverTimer_.isActive(); }
  // Quit the application (the ring menu's and the tray menu's last item).
  std::function<void()> onQuit;

 private:
  // The steps of launch(): the orb's events, the screens, the pointer's timers, presses
  // elsewhere, the global keys.
  void wireOrbEvents(OrbContentView& content);
  void watchScreens();
  void startPointerTimers();
  void watchPresses();
  void installKeys();
  void moveOrigin(Point origin);
  // Sizes the window to what is drawn and sets its input and (without a compositor) visible
  // regions.
  void applyWindowGeometry();
  void applyOrbVisibility();
  void setPassThrough(bool on);
  std::vector<Screen> screens() const { return deps_.screens(); }
  void scheduleSynchronize();
  void placeWindow(QWidget& window, QSize size);
  // What the settings show of the desktop: its calm, and the keys other programs hold.
  void tellSettings(SettingsView& settings);
  // The screen the orb stands on (for a docked orb, the one whose edge it sits on).
  std::optional<Screen> orbScreen() const;

  Dependencies deps_;
  OrbWindowModel windowModel_;
  std::unique_ptr<OrbPanel> panel_;
  std::unique_ptr<OrbMotion> motion_;
  std::unique_ptr<TrayPresenter> tray_;
  struct OpenWindow {
    QPointer<QWidget> window;
    QPointer<SettingsView> settings;  // in the settings window
  };
  std::map<AuxWindow, OpenWindow> windows_;
  std::vector<ChangeSignal::Subscription> subscriptions_;
  QTimer hoverTimer_;
  TimerHandle keysRetry_;
  bool keysInstalled_ = false;
  bool desktopKeysBound_ = false;
  TimerHandle clickWork_, hintWork_, statusItemWork_;
  std::optional<Date> leaveDate_;
  bool synchronizePending_ = false;
  bool passThrough_ = false;
  bool held_ = false;  // the pointer holds the orb down
  bool shown_ = false, yielding_ = false, compositing_ = true;
  QRegion lastInput_;
  std::optional<QRegion> lastVisible_;
  std::unique_ptr<QObject> windowWatcher_;
  QMetaObject::Connection focusConnection_;
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
