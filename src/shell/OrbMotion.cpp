#include "shell/OrbMotion.h"

#include <cmath>

#include "core/Json.h"
#include "views/Metrics.h"

namespace tidemark {

OrbMotion::OrbMotion(Host host) : host_(std::move(host)) {
  glideTimer_.setInterval(metrics::glideFrameMs);
  glideTimer_.setTimerType(Qt::PreciseTimer);
  QObject::connect(&glideTimer_, &QTimer::timeout, &glideTimer_, [this] { glideStep(); });
}

void OrbMotion::startDrag() {
  glideTimer_.stop();
  host_.windowModel.setRadialOpen(false);
  host_.windowModel.setExpanded(false);
  host_.windowModel.setDockEdge(std::nullopt);  // dragged, the orb is whole
  lastDockedSize_.reset();
  host_.windowModel.setDragging(true);
  lastMouse_ = host_.mouseLocation();
  lastMouseDate_ = host_.clock.now();
  velocity_ = {};
}

void OrbMotion::moveDrag(Point proposed) {
  const Point mouse = host_.mouseLocation();
  // A report without movement (the release repeats the last place) keeps the speed the pointer
  // had, or a throw would always start at rest.
  if (mouse != lastMouse_) {
    const Date now = host_.clock.now();
    velocity_ = dragVelocity(lastMouse_, mouse, now - lastMouseDate_);
    lastMouse_ = mouse;
    lastMouseDate_ = now;
  }
  host_.windowModel.setStretch(dragStretch(velocity_, host_.model.reduceMotion()));
  host_.windowModel.setDragAngle(dragAngle(velocity_));
  host_.moveOrigin(clampedOrigin(host_.screens(), proposed, 0));
  host_.windowModel.setPreviewEdge(
      nearestEdge(host_.screens(), centerOfOrigin(host_.origin()), host_.model.orbSize()));
}

void OrbMotion::endDrag() {
  host_.windowModel.setDragging(false);
  host_.windowModel.setPreviewEdge(std::nullopt);
  host_.windowModel.setStretch(0);  // the orb view springs it back unless motion is reduced
  const bool withinReach =
      nearestEdge(host_.screens(), centerOfOrigin(host_.origin()), host_.model.orbSize())
          .has_value();
  if (startsThrow(host_.model.reduceMotion(), host_.clock.now() - lastMouseDate_, withinReach)) {
    velocity_ = throwVelocity(velocity_);
    glideTimer_.start();
    return;
  }
  settle(std::nullopt);
}

void OrbMotion::glideStep() {
  const GlideStep step = tidemark::glideStep(host_.screens(), host_.origin(), velocity_);
  if (step.finished) {
    glideTimer_.stop();
    settle(std::nullopt);
    return;
  }
  velocity_ = step.velocity;
  host_.moveOrigin(step.origin);
}

void OrbMotion::settle(std::optional<DockEdge> forced) {
  glideTimer_.stop();
  const double size = host_.model.orbSize();
  const Settlement result =
      tidemark::settle(host_.screens(), centerOfOrigin(host_.origin()), size, forced);
  if (result.edge) {
    host_.windowModel.setExpanded(false);
    host_.windowModel.setDockEdge(result.edge);
    lastDockedSize_ = size;
    host_.moveOrigin(originOfCenter(result.center));
    save(result.center);
    return;
  }
  host_.windowModel.setDockEdge(std::nullopt);
  host_.moveOrigin(originOfCenter(result.center));
  save();
}

void OrbMotion::sizeChanged() {
  const double size = host_.model.orbSize();
  if (!host_.placed() || !host_.windowModel.dockEdge() || lastDockedSize_ == size) return;
  settle(host_.windowModel.dockEdge());
  lastDockedSize_ = size;
}

Point OrbMotion::undock(double margin) {
  // Off the edge of its own screen, not onto the neighbour that shares the edge.
  const auto edge = host_.windowModel.dockEdge();
  host_.windowModel.setDockEdge(std::nullopt);
  lastDockedSize_.reset();
  host_.moveOrigin(clampedOrigin(host_.screens(), host_.origin(), margin, edge));
  return centerOfOrigin(host_.origin());
}

void OrbMotion::center() {
  host_.windowModel.setDockEdge(std::nullopt);
  lastDockedSize_.reset();
  host_.windowModel.setExpanded(false);
  host_.windowModel.setRadialOpen(false);
  const auto all = host_.screens();
  if (!all.empty()) {
    const size_t index = nearestScreen(all, host_.mouseLocation()).value_or(0);
    host_.moveOrigin(originOfCenter(all[index].visibleFrame.center()));
  }
}

void OrbMotion::screensChanged() {
  if (!host_.placed()) return;
  // A docked orb stays on its edge; the margin would pull it half a width back onto the screen.
  if (auto edge = host_.windowModel.dockEdge()) {
    settle(edge);
  } else {
    host_.moveOrigin(clampedOrigin(host_.screens(), host_.origin(), host_.model.orbSize() / 2 + 6));
  }
  save();
}

void OrbMotion::save(std::optional<Point> center) {
  if (!host_.placed()) return;
  // The orb's centre in Qt's global coordinates (logical pixels, origin at the top left of the
  // primary screen, y down), and the docked edge or "".
  const Point c = center.value_or(centerOfOrigin(host_.origin()));
  const auto edge = host_.windowModel.dockEdge();
  const Json position{{"x", c.x}, {"y", c.y}, {"edge", edge ? std::string(rawValue(*edge)) : ""}};
  host_.defaults.setData(positionKey, position.dump());
}

void OrbMotion::restore() {
  std::optional<Point> center;
  std::optional<DockEdge> edge;
  if (auto bytes = host_.defaults.data(positionKey)) {
    if (auto document = json::parse(*bytes); document && document->is_object()) {
      auto x = json::number(*document, "x"), y = json::number(*document, "y");
      if (x && y) center = Point{*x, *y};
      if (auto raw = json::string(*document, "edge")) edge = dockEdgeFromRawValue(*raw);
    }
  }
  if (!center || !isRestorable(host_.screens(), *center)) {
    this->center();
    save();
    return;
  }
  host_.moveOrigin(originOfCenter(*center));
  host_.windowModel.setDockEdge(edge);
  if (edge) {
    settle(edge);
  } else {
    host_.moveOrigin(clampedOrigin(host_.screens(), host_.origin(), host_.model.orbSize() / 2 + 6));
  }
}

}  // namespace tidemark
