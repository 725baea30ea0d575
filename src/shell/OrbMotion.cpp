// The orb's movement: drag, throw and glide, docking, and the remembered position.

#include <cmath>

#include "core/Json.h"
#include "shell/AppDelegate.h"

namespace tidemark {

void AppDelegate::startDrag() {
  clickWork_.cancel();
  glideTimer_.stop();
  windowModel_.setRadialOpen(false);
  windowModel_.setExpanded(false);
  windowModel_.setDockEdge(std::nullopt);  // dragged, the orb is whole
  lastDockedSize_.reset();
  windowModel_.setDragging(true);
  lastMouse_ = deps_.mouseLocation();
  lastMouseDate_ = deps_.clock.now();
  velocity_ = {};
}

void AppDelegate::moveDrag(Point proposed) {
  const Point mouse = deps_.mouseLocation();
  // A report without movement (the release repeats the last place) keeps the speed the pointer
  // had, or a throw would always start at rest.
  if (mouse != lastMouse_) {
    const Date now = deps_.clock.now();
    velocity_ = dragVelocity(lastMouse_, mouse, now - lastMouseDate_);
    lastMouse_ = mouse;
    lastMouseDate_ = now;
  }
  windowModel_.setStretch(dragStretch(velocity_, deps_.model.reduceMotion()));
  windowModel_.setDragAngle(dragAngle(velocity_));
  moveOrigin(clampedOrigin(screens(), proposed, 0));
  windowModel_.setPreviewEdge(
      nearestEdge(screens(), centerOfOrigin(origin()), deps_.model.orbSize()));
}

void AppDelegate::endDrag() {
  windowModel_.setDragging(false);
  windowModel_.setPreviewEdge(std::nullopt);
  windowModel_.setStretch(0);  // the orb view springs it back unless motion is reduced
  const bool withinReach =
      nearestEdge(screens(), centerOfOrigin(origin()), deps_.model.orbSize()).has_value();
  if (startsThrow(deps_.model.reduceMotion(), deps_.clock.now() - lastMouseDate_, withinReach)) {
    velocity_ = throwVelocity(velocity_);
    glideTimer_.start();
    return;
  }
  settle(std::nullopt);
}

void AppDelegate::glideStep() {
  const GlideStep step = tidemark::glideStep(screens(), origin(), velocity_);
  if (step.finished) {
    glideTimer_.stop();
    settle(std::nullopt);
    return;
  }
  velocity_ = step.velocity;
  moveOrigin(step.origin);
}

void AppDelegate::settle(std::optional<DockEdge> forced) {
  glideTimer_.stop();
  const double size = deps_.model.orbSize();
  const Settlement result = tidemark::settle(screens(), centerOfOrigin(origin()), size, forced);
  if (result.edge) {
    windowModel_.setExpanded(false);
    windowModel_.setDockEdge(result.edge);
    lastDockedSize_ = size;
    moveOrigin(originOfCenter(result.center));
    savePosition(result.center);
    return;
  }
  windowModel_.setDockEdge(std::nullopt);
  moveOrigin(originOfCenter(result.center));
  savePosition();
}

Point AppDelegate::undock(double margin) {
  // Off the edge of its own screen, not onto the neighbour that shares the edge.
  const auto edge = windowModel_.dockEdge();
  windowModel_.setDockEdge(std::nullopt);
  lastDockedSize_.reset();
  moveOrigin(clampedOrigin(screens(), origin(), margin, edge));
  return centerOfOrigin(origin());
}

void AppDelegate::centerOrb() {
  windowModel_.setDockEdge(std::nullopt);
  lastDockedSize_.reset();
  windowModel_.setExpanded(false);
  windowModel_.setRadialOpen(false);
  const auto all = screens();
  if (!all.empty()) {
    const size_t index = nearestScreen(all, deps_.mouseLocation()).value_or(0);
    moveOrigin(originOfCenter(all[index].visibleFrame.center()));
  }
  if (panel_) {
    shown_ = true;
    applyOrbVisibility();
    panel_->raise();
  }
  savePosition();
}

void AppDelegate::screenParametersDidChange() {
  if (!panel_) return;
  // A docked orb stays on its edge; the margin would pull it half a width back onto the screen.
  if (auto edge = windowModel_.dockEdge()) {
    settle(edge);
  } else {
    moveOrigin(clampedOrigin(screens(), origin(), deps_.model.orbSize() / 2 + 6));
  }
  savePosition();
}

void AppDelegate::savePosition(std::optional<Point> center) {
  if (!panel_) return;
  // The orb's centre in Qt's global coordinates (logical pixels, origin at the top left of the
  // primary screen, y down), and the docked edge or "".
  const Point c = center.value_or(centerOfOrigin(origin()));
  const auto edge = windowModel_.dockEdge();
  const Json position{{"x", c.x}, {"y", c.y}, {"edge", edge ? std::string(rawValue(*edge)) : ""}};
  deps_.defaults.setData(positionKey, position.dump());
}

void AppDelegate::restorePosition() {
  std::optional<Point> center;
  std::optional<DockEdge> edge;
  if (auto bytes = deps_.defaults.data(positionKey)) {
    if (auto document = json::parse(*bytes); document && document->is_object()) {
      auto x = json::number(*document, "x"), y = json::number(*document, "y");
      if (x && y) center = Point{*x, *y};
      if (auto raw = json::string(*document, "edge")) edge = dockEdgeFromRawValue(*raw);
    }
  }
  if (!center || !isRestorable(screens(), *center)) {
    centerOrb();
    return;
  }
  moveOrigin(originOfCenter(*center));
  windowModel_.setDockEdge(edge);
  if (edge) {
    settle(edge);
  } else {
    moveOrigin(clampedOrigin(screens(), origin(), deps_.model.orbSize() / 2 + 6));
  }
}

}  // namespace tidemark
