#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QImage>
#include <QMenu>
#include <QPoint>
#include <QRegion>
#include <QWidget>

namespace tidemark {

// What the shell needs from the window system beyond Qt: a pointer-input region and a visible
// region for the orb's window, presence on every virtual desktop, whether a compositor blends
// translucent windows, exclusion from screen capture, and the presses elsewhere that close the
// ring menu. Each platform supplies its own; the quiet one does nothing and always composites.
class WindowSystem {
 public:
  virtual ~WindowSystem() = default;
  // Only `region` (window coordinates) takes pointer input; an empty region lets every click
  // through to the window below.
  virtual void setInputRegion(QWidget& window, const QRegion& region) = 0;
  // Only `region` (window coordinates) of the window shows on the screen; none shows all of it.
  virtual void setVisibleRegion(QWidget& window, const std::optional<QRegion>& region) = 0;
  // Call before the window is first shown: it is put on every desktop, kept out of task bars, and
  // a move and resize in one request leaves its pixels where they stand on the screen.
  virtual void prepareOrbWindow(QWidget& window) = 0;
  // Call right after a window the window manager manages is shown. Qt marks a tool window as a
  // dialog of the application's hidden group window, which KWin then keeps on one desktop and
  // hides on the others: the mark goes, and the window asks again to be on every desktop.
  virtual void orbWindowShown(QWidget&) {}
  // Whether a compositing manager blends translucent windows now; `changed` hears one start or
  // stop.
  virtual bool compositing() const = 0;
  virtual void watchCompositing(std::function<void(bool on)> changed) = 0;
  // Where the system can keep a window out of screenshots and screen sharing.
  virtual bool canExcludeFromCapture() const = 0;
  virtual void setExcludedFromCapture(QWidget& window, bool excluded) = 0;
  // Calls `pressed` for every left or right button press anywhere on the desktop, other
  // applications' windows and the desktop itself included, without taking the press from them,
  // with the press's time (the window system's milliseconds, as Qt's input events carry them).
  // Where the system cannot watch the pointer it never calls.
  virtual void watchPointerPresses(std::function<void(unsigned long time)> pressed) = 0;
};

// Ctrl+Alt+Space (id 1) and Ctrl+Alt+M (id 2), from any application. A key another program holds
// cannot be taken; it is asked for again later, and meanwhile the menu and the orb offer the same
// actions.
class GlobalHotKeys {
 public:
  virtual ~GlobalHotKeys() = default;
  // Answers how many of the two keys were taken.
  virtual int install(std::function<void(int id)> pressed) = 0;
  // Whether the key of this id is ours now. Where the system has no global keys at all, none is
  // missing either: nothing is said about them.
  virtual bool holds(int id) const = 0;
  virtual bool canHold() const = 0;
  // Asks again for the keys another program held; answers whether one more is ours now.
  virtual bool retry() = 0;
};

// A tray item the application exports itself where the desktop has a host for one
// (StatusNotifierItem over D-Bus): unlike the system tray icon it can carry a text beside the
// icon. Every value is sent to the host only when it really changed.
class StatusNotifier {
 public:
  struct Handlers {
    std::function<void()> activate;           // a click on the icon
    std::function<void(QPoint)> contextMenu;  // the host wants our menu at this point
    std::function<void()> scroll;             // one step of the wheel over the icon
    std::function<void(QMenu&)> buildMenu;    // fills the exported menu afresh
    std::function<void()> availabilityChanged;
  };
  virtual ~StatusNotifier() = default;
  virtual void start(Handlers handlers) = 0;
  // Registered with a watcher that has a host to show the item.
  virtual bool isAvailable() const = 0;
  // A watcher is there and has not answered yet; availabilityChanged follows its answer.
  virtual bool isPending() const = 0;
  // The icon at 22 and 44 pixels.
  virtual void setIcon(const QImage& small, const QImage& large) = 0;
  virtual void setToolTip(const std::string& text) = 0;
  // The text beside the icon; empty for none.
  virtual void setLabel(const std::string& text) = 0;
  // A label, check mark or submenu of the menu may have changed: hosts that keep the menu they
  // were given hear of it.
  virtual void menuChanged() = 0;
};

// The desktop's own switch for less motion (GNOME's animations, KDE's animation speed) where the
// desktop tells it; not calm while nothing says so.
class DesktopMotionSetting {
 public:
  virtual ~DesktopMotionSetting() = default;
  virtual bool calm() const = 0;
  // Called with the new value whenever the desktop's setting changes.
  virtual void watch(std::function<void(bool calm)> changed) = 0;
};

// The best seams for the platform the application runs on (X11 or none).
std::unique_ptr<WindowSystem> makeWindowSystem();
// Without `grab` (a Wayland session, where X11 grabs reach only X11 windows) none are taken.
std::unique_ptr<GlobalHotKeys> makeGlobalHotKeys(bool grab = true);
// None without a session bus. Without `labels`, an icon with no text beside it.
std::unique_ptr<StatusNotifier> makeStatusNotifier(bool labels = true);
std::unique_ptr<DesktopMotionSetting> makeDesktopMotionSetting();

}  // namespace tidemark
