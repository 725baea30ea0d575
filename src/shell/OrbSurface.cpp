// What the orb's window covers and lets through: its frame on the canvas, the input and visible
// regions, the pointer passing through, and the orb standing aside for a window of ours.

#include <cmath>

#include <QApplication>
#include <QEvent>

#include "shell/AppDelegate.h"
#include "shell/OrbFrame.h"

namespace tidemark {
namespace {

QRect toQRect(const Rect& r) {
  return QRectF(r.x, r.y, r.width, r.height).toAlignedRect();
}

class WindowWatcher final : public QObject {
 public:
  explicit WindowWatcher(std::function<void()> changed) : changed_(std::move(changed)) {}

 protected:
  // Watches every top-level window of the process, dialogs included, for they open over the orb
  // too; the widgets inside a window move and resize far more often and say nothing here.
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (!watched->isWidgetType() || !static_cast<QWidget*>(watched)->isWindow()) return false;
    switch (event->type()) {
      case QEvent::Move:
      case QEvent::Resize:
      case QEvent::Show:
      case QEvent::Hide:
        changed_();
        break;
      default:
        break;
    }
    return false;
  }

 private:
  std::function<void()> changed_;
};

}  // namespace

std::unique_ptr<QObject> watchOwnWindows(std::function<void()> changed) {
  return std::make_unique<WindowWatcher>(std::move(changed));
}

Point AppDelegate::origin() const {
  if (!panel_) return {};
  const QPoint o = panel_->canvasOrigin();
  return {double(o.x()), double(o.y())};
}

void AppDelegate::moveOrigin(Point origin) {
  if (!panel_) return;
  panel_->place(QPoint(int(std::lround(origin.x)), int(std::lround(origin.y))), panel_->frame());
  updateYield();
}

void AppDelegate::applyWindowGeometry() {
  if (!panel_) return;
  OrbView& orb = panel_->content().orbView();
  const OrbHitState state = panel_->content().hitState();
  std::optional<Rect> bare;
  // Measured only where it decides the frame: spread, the window is the canvas anyway.
  if (!deps_.windowKind.inputShapeHonoured && (!orb.controlsOut() || state.dock)) {
    const QRect drawn = orb.paintedRegion().boundingRect();
    bare =
        Rect{double(drawn.x()), double(drawn.y()), double(drawn.width()), double(drawn.height())};
  }
  const QRect frame =
      toQRect(windowFrame({orb.drawnSize(), state.dock, orb.controlsOut(), orb.hintRect(), bare,
                           held_ && !deps_.windowKind.managed}));
  const bool reframed = frame != panel_->frame();
  panel_->place(panel_->canvasOrigin(), frame);

  QRegion input;
  if (!deps_.windowKind.inputShapeHonoured) {
    // The compositor sends every press on the window to its X server, which would drop one
    // outside the shape: the whole window takes them, and the content tells the orb from beside it.
    if (!passThrough_ && !yielding_) input = QRegion(0, 0, frame.width(), frame.height());
  } else if (!windowModel_.forcedObserve() && !yielding_) {
    // The orb and its controls take the pointer even while it is let through elsewhere: the
    // window hears it arrive and takes a click at once, where a look at the pointer would come
    // up to a poll later.
    const double r = state.orbSize / 2;
    const Point c = canvasCenter;
    if (!state.dock) {
      const double d = r + 5;
      input = QRegion(QRectF(c.x - d, c.y - d, 2 * d, 2 * d).toAlignedRect(), QRegion::Ellipse);
    } else {
      input = QRegion(toQRect(dockedCoreRect(state.orbSize, *state.dock)));
    }
    for (const Rect& control : controlRects(state)) input += toQRect(control);
    input = (input & frame).translated(-frame.topLeft());
  }
  // The regions are the window's own: a new frame moves them even when they are the same.
  if (reframed || input != lastInput_) {
    lastInput_ = input;
    deps_.windowSystem.setInputRegion(*panel_, input);
  }
  std::optional<QRegion> visible;
  if (!compositing_) visible = (orb.paintedRegion() & frame).translated(-frame.topLeft());
  if (reframed || visible != lastVisible_) {
    lastVisible_ = visible;
    deps_.windowSystem.setVisibleRegion(*panel_, visible);
  }
  if (reframed) updateYield();
}

void AppDelegate::setCompositing(bool on) {
  if (!panel_ || compositing_ == on) return;
  compositing_ = on;
  panel_->content().orbView().setCompositing(on);
  applyOrbVisibility();
  applyWindowGeometry();
}

void AppDelegate::applyOrbVisibility() {
  if (!panel_) return;
  // Standing aside, the orb hides, with a compositor or without: a ghost of it over a chart or a
  // form is in the way all the same.
  const bool visible = shown_ && !yielding_;
  if (visible == panel_->isVisible()) return;
  // Window managers drop a hidden window's states (above, on every desktop, off the task bar):
  // they are given again before every show.
  if (visible) deps_.windowSystem.prepareOrbWindow(*panel_);
  panel_->setVisible(visible);
  if (visible && deps_.windowKind.managed) deps_.windowSystem.orbWindowShown(*panel_);
  // Shown again, the pointer may be anywhere: looked for until it is found away or on the orb.
  if (visible) hoverTimer_.start();
}

void AppDelegate::updateYield() {
  if (!panel_) return;
  bool yield = false;
  // The sphere, or its visible half: a window that only reaches into the glow leaves it be.
  const double r = deps_.model.orbSize() / 2;
  const Rect sphere =
      dockClip(windowModel_.dockEdge(), {canvasCenter.x - r, canvasCenter.y - r, 2 * r, 2 * r});
  const QRect orb = toQRect(sphere).translated(panel_->canvasOrigin());
  // Our windows, and the dialogs they open (a file dialog, a question), focused or not.
  const auto ours = [this](const QWidget* top) {
    for (; top; top = top->parentWidget() ? top->parentWidget()->window() : nullptr)
      for (const auto& [key, open] : windows_)
        if (open.window.data() == top) return true;
    return false;
  };
  for (QWidget* top : QApplication::topLevelWidgets())
    if (top != panel_.get() && top->isVisible() && top->frameGeometry().intersects(orb) &&
        ours(top))
      yield = true;
  if (yield == yielding_) return;
  yielding_ = yield;
  applyOrbVisibility();
  applyWindowGeometry();
}

void AppDelegate::setPassThrough(bool on) {
  if (passThrough_ == on) return;
  passThrough_ = on;
  applyWindowGeometry();
}

void AppDelegate::updatePointerMode() {
  if (!panel_ || !panel_->isVisible()) return hoverTimer_.stop();
  // Forced, only the menu item brings the orb back; under Wayland the X server learns where the
  // pointer is only while it is over a window of X11 clients, so a panel that let everything
  // through would never hear of it coming back: its input region alone lets the rest through.
  if (windowModel_.forcedObserve() || deps_.waylandSession) {
    setPassThrough(windowModel_.forcedObserve());
    return hoverTimer_.stop();
  }
  const Point mouse = deps_.mouseLocation();
  const Point o = origin();
  const QPointF p(mouse.x - o.x, mouse.y - o.y);
  if (panel_->content().isInteractive(p) || windowModel_.dragging()) {
    leaveDate_.reset();
    setPassThrough(false);
    return;
  }
  const Date now = deps_.clock.now();
  if (!leaveDate_) {
    leaveDate_ = now;
  } else if (now - *leaveDate_ > 0.4) {
    // From here the window's own pointer events tell when the pointer comes back.
    setPassThrough(true);
    hoverTimer_.stop();
  }
}

}  // namespace tidemark
