#include "shell/OrbSurface.h"

#include <cmath>

#include <QApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QWindow>

#include "shell/OrbFrame.h"
#include "views/Metrics.h"

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

OrbSurface::OrbSurface(Host host) : host_(std::move(host)) {
  hoverTimer_.setInterval(metrics::pointerPollMs);
  QObject::connect(&hoverTimer_, &QTimer::timeout, &hoverTimer_, [this] { updatePointerMode(); });
}

OrbSurface::~OrbSurface() {
  stop();
}

void OrbSurface::attach(OrbPanel& panel) {
  panel_ = &panel;
  // Everything about the window is settled before it is mapped: compositors honour some of it
  // only then.
  host_.windowSystem.prepareOrbWindow(panel);
  compositing_ = host_.windowSystem.compositing();
  OrbView& orb = panel.content().orbView();
  orb.setCompositing(compositing_);
  host_.windowSystem.watchCompositing([this](bool on) { setCompositing(on); });
  orb.onExtentChanged = [this] { applyWindowGeometry(); };
  // While the pointer is over the orb the window system reports it leaving; only elsewhere
  // must the pointer be looked for.
  panel.onPointerEntered = [this] { pointerEntered(); };
  panel.onPointerLeft = [this] {
    if (!hoverTimer_.isActive()) hoverTimer_.start();
  };
  if (auto* app = qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
    focusConnection_ = QObject::connect(app, &QGuiApplication::focusWindowChanged, &panel,
                                        [this] { updateYield(); });
  windowWatcher_ = watchOwnWindows([this] { updateYield(); });
  QCoreApplication::instance()->installEventFilter(windowWatcher_.get());
  hoverTimer_.start();
}

void OrbSurface::stop() {
  hoverTimer_.stop();
  QObject::disconnect(focusConnection_);
  windowWatcher_.reset();
  if (panel_) panel_->content().orbView().onExtentChanged = nullptr;
}

void OrbSurface::setShown(bool shown) {
  shown_ = shown;
  applyOrbVisibility();
}

void OrbSurface::setHeld(bool held) {
  held_ = held;
  applyWindowGeometry();
}

void OrbSurface::pointerEntered() {
  if (host_.windowModel.forcedObserve()) return;
  leaveDate_.reset();
  setPassThrough(false);
  hoverTimer_.stop();
}

void OrbSurface::observeChanged() {
  setPassThrough(host_.windowModel.forcedObserve());
  if (!host_.windowModel.forcedObserve()) hoverTimer_.start();
}

Point OrbSurface::origin() const {
  if (!panel_) return {};
  const QPoint o = panel_->canvasOrigin();
  return {double(o.x()), double(o.y())};
}

void OrbSurface::moveOrigin(Point origin) {
  if (!panel_) return;
  panel_->place(QPoint(int(std::lround(origin.x)), int(std::lround(origin.y))), panel_->frame());
  updateYield();
}

void OrbSurface::applyWindowGeometry() {
  if (!panel_) return;
  OrbView& orb = panel_->content().orbView();
  const OrbHitState state = panel_->content().hitState();
  std::optional<Rect> bare;
  // Measured only where it decides the frame: spread, the window is the canvas anyway.
  if (!host_.windowKind.inputShapeHonoured && (!orb.controlsOut() || state.dock)) {
    const QRect drawn = orb.paintedRegion().boundingRect();
    bare =
        Rect{double(drawn.x()), double(drawn.y()), double(drawn.width()), double(drawn.height())};
  }
  const QRect frame =
      toQRect(windowFrame({orb.drawnSize(), state.dock, orb.controlsOut(), orb.hintRect(), bare,
                           held_ && !host_.windowKind.managed}));
  const bool reframed = frame != panel_->frame();
  panel_->place(panel_->canvasOrigin(), frame);

  QRegion input;
  if (!host_.windowKind.inputShapeHonoured) {
    // The compositor sends every press on the window to its X server, which would drop one
    // outside the shape: the whole window takes them, and the content tells the orb from beside it.
    if (!passThrough_ && !yielding_) input = QRegion(0, 0, frame.width(), frame.height());
  } else if (!host_.windowModel.forcedObserve() && !yielding_) {
    // The orb and its controls take the pointer even while it is let through elsewhere: the
    // window hears it arrive and takes a click at once, where a look at the pointer would come
    // up to a poll later.
    const double r = state.orbSize / 2;
    const Point c = canvasCenter;
    if (!state.dock) {
      const double d = r + 5;
      input = disc(QRectF(c.x - d, c.y - d, 2 * d, 2 * d).toAlignedRect());
    } else {
      input = QRegion(toQRect(dockedCoreRect(state.orbSize, *state.dock)));
    }
    for (const Rect& control : controlRects(state)) input += toQRect(control);
    input = (input & frame).translated(-frame.topLeft());
  }
  // The regions are the window's own: a new frame moves them even when they are the same.
  if (reframed || input != lastInput_) {
    lastInput_ = input;
    host_.windowSystem.setInputRegion(*panel_, input);
  }
  std::optional<QRegion> visible;
  if (!compositing_) visible = (orb.paintedRegion() & frame).translated(-frame.topLeft());
  if (reframed || visible != lastVisible_) {
    lastVisible_ = visible;
    host_.windowSystem.setVisibleRegion(*panel_, visible);
  }
  if (reframed) updateYield();
}

const QRegion& OrbSurface::disc(const QRect& square) {
  if (square != discSquare_ || disc_.isEmpty()) {
    discSquare_ = square;
    disc_ = QRegion(square, QRegion::Ellipse);
  }
  return disc_;
}

void OrbSurface::setCompositing(bool on) {
  if (!panel_ || compositing_ == on) return;
  compositing_ = on;
  panel_->content().orbView().setCompositing(on);
  applyOrbVisibility();
  applyWindowGeometry();
}

void OrbSurface::applyOrbVisibility() {
  if (!panel_) return;
  // Standing aside, the orb hides, with a compositor or without: a ghost of it over a chart or a
  // form is in the way all the same.
  const bool visible = shown_ && !yielding_;
  if (visible == panel_->isVisible()) return;
  // Window managers drop a hidden window's states (above, on every desktop, off the task bar):
  // they are given again before every show.
  if (visible) host_.windowSystem.prepareOrbWindow(*panel_);
  panel_->setVisible(visible);
  if (visible && host_.windowKind.managed) host_.windowSystem.orbWindowShown(*panel_);
  // Shown again, the pointer may be anywhere: looked for until it is found away or on the orb.
  if (visible) hoverTimer_.start();
}

void OrbSurface::updateYield() {
  if (!panel_) return;
  bool yield = false;
  // The sphere, or its visible half: a window that only reaches into the glow leaves it be.
  const double r = host_.model.orbSize() / 2;
  const Rect sphere = dockClip(host_.windowModel.dockEdge(),
                               {canvasCenter.x - r, canvasCenter.y - r, 2 * r, 2 * r});
  const QRect orb = toQRect(sphere).translated(panel_->canvasOrigin());
  // Our windows, and the dialogs they open (a file dialog, a question), focused or not.
  for (QWidget* top : QApplication::topLevelWidgets())
    if (top != panel_.data() && top->isVisible() && top->frameGeometry().intersects(orb) &&
        host_.ownsWindow(top))
      yield = true;
  if (yield == yielding_) return;
  yielding_ = yield;
  applyOrbVisibility();
  applyWindowGeometry();
}

void OrbSurface::setPassThrough(bool on) {
  if (passThrough_ == on) return;
  passThrough_ = on;
  applyWindowGeometry();
}

void OrbSurface::updatePointerMode() {
  if (!panel_ || !panel_->isVisible()) return hoverTimer_.stop();
  // Forced, only the menu item brings the orb back; under Wayland the X server learns where the
  // pointer is only while it is over a window of X11 clients, so a panel that let everything
  // through would never hear of it coming back: its input region alone lets the rest through.
  if (host_.windowModel.forcedObserve() || host_.waylandSession) {
    setPassThrough(host_.windowModel.forcedObserve());
    return hoverTimer_.stop();
  }
  const Point mouse = host_.mouseLocation();
  const Point o = origin();
  const QPointF p(mouse.x - o.x, mouse.y - o.y);
  if (panel_->content().isInteractive(p) || host_.windowModel.dragging()) {
    leaveDate_.reset();
    setPassThrough(false);
    return;
  }
  const Date now = host_.clock.now();
  if (!leaveDate_) {
    leaveDate_ = now;
  } else if (now - *leaveDate_ > 0.4) {
    // From here the window's own pointer events tell when the pointer comes back.
    setPassThrough(true);
    hoverTimer_.stop();
  }
}

}  // namespace tidemark
