#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QMetaObject>
#include <QPointer>
#include <QRegion>
#include <QTimer>

#include "core/Clock.h"
#include "model/AppModel.h"
#include "seams/DesktopSeams.h"
#include "shell/OrbPanel.h"
#include "shell/WindowKind.h"
#include "views/OrbWindowModel.h"

namespace tidemark {

// Calls `changed` whenever a window it watches (as an event filter) moves, resizes, shows or
// hides.
std::unique_ptr<QObject> watchOwnWindows(std::function<void()> changed);

// What the orb's window covers and lets through: its frame on the canvas, the input and visible
// regions, the pointer passing through where the orb draws nothing, and the orb standing aside
// (hidden) while a window of ours covers it.
class OrbSurface {
 public:
  struct Host {
    OrbWindowModel& windowModel;
    const AppModel& model;  // the orb's size
    WindowSystem& windowSystem;
    const Clock& clock;
    std::function<Point()> mouseLocation;
    OrbWindowKind windowKind;
    // A Wayland session: the X server hears of the pointer only over windows of X11 clients.
    bool waylandSession = false;
    // Whether a top-level window is one of ours (a dialog of one included).
    std::function<bool(const QWidget*)> ownsWindow;
  };

  explicit OrbSurface(Host host);
  ~OrbSurface();
  OrbSurface(const OrbSurface&) = delete;
  OrbSurface& operator=(const OrbSurface&) = delete;

  // The orb's window, once it exists; its regions follow from here on, as does the watch on our
  // other windows and the focus.
  void attach(OrbPanel& panel);
  // The timers and watches end; the window stays as it is.
  void stop();

  // Where the orb's 460-point canvas stands on the screen (its top left); the window covers
  // only the part of it that draws something.
  Point origin() const;
  void moveOrigin(Point origin);

  // Sizes the window to what is drawn and sets its input and (without a compositor) visible
  // regions.
  void applyWindowGeometry();
  // A compositing manager started or stopped: without one the orb's window shows only what is
  // drawn, without glows.
  void setCompositing(bool on);
  bool compositing() const { return compositing_; }

  bool shown() const { return shown_; }
  void setShown(bool shown);
  // The pointer holds the orb down.
  void setHeld(bool held);

  // One of our windows overlaps the orb, which then hides and lets the pointer through until
  // that window closes or moves off it.
  bool yielding() const { return yielding_; }
  void updateYield();

  bool passesPointerThrough() const { return passThrough_; }
  // Looks where the pointer is: over the orb the window takes it, elsewhere (after a moment) it
  // passes through to what lies below.
  void updatePointerMode();
  // Whether the pointer is being looked for (a round trip to the display server each time).
  bool watchesPointer() const { return hoverTimer_.isActive(); }
  // The forced pass-through (观察模式) was switched.
  void observeChanged();

 private:
  void applyOrbVisibility();
  void setPassThrough(bool on);
  void pointerEntered();

  Host host_;
  // Null once the panel is gone: the delegate destroys it before the surface.
  QPointer<OrbPanel> panel_;
  bool shown_ = false, yielding_ = false, compositing_ = true, passThrough_ = false;
  bool held_ = false;
  QRegion lastInput_;
  // The orb's disc as a region, kept for its square: a region from an ellipse is built row by
  // row, and every refresh asks for it again.
  const QRegion& disc(const QRect& square);
  QRect discSquare_;
  QRegion disc_;
  std::optional<QRegion> lastVisible_;
  QTimer hoverTimer_;
  std::optional<Date> leaveDate_;
  std::unique_ptr<QObject> windowWatcher_;
  QMetaObject::Connection focusConnection_;
};

}  // namespace tidemark
