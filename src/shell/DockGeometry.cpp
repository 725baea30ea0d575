#include "shell/DockGeometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tidemark {
namespace {

// Lower bound first, then upper: on a screen too small for the margin the upper bound wins.
double clampLowThenHigh(double v, double low, double high) {
  return std::min(std::max(v, low), high);
}

std::optional<std::size_t> screenOf(const std::vector<Screen>& screens, Point c,
                                    std::optional<DockEdge> dockedOn) {
  return dockedOn ? dockedScreen(screens, c, *dockedOn) : nearestScreen(screens, c);
}

std::optional<Point> clampedCenter(const std::vector<Screen>& screens, Point c, double margin,
                                   std::optional<DockEdge> dockedOn = std::nullopt) {
  const auto s = screenOf(screens, c, dockedOn);
  if (!s) return std::nullopt;
  const Rect& f = screens[*s].frame;
  const double m = std::min(margin, std::min(f.width, f.height) / 2);
  return Point{clampLowThenHigh(c.x, f.minX() + m, f.maxX() - m),
               clampLowThenHigh(c.y, f.minY() + m, f.maxY() - m)};
}

}  // namespace

std::optional<std::size_t> nearestScreen(const std::vector<Screen>& screens, Point p) {
  for (std::size_t i = 0; i < screens.size(); ++i) {
    const Rect& f = screens[i].frame;
    if (p.x >= f.minX() && p.x < f.maxX() && p.y >= f.minY() && p.y < f.maxY()) return i;
  }
  std::optional<std::size_t> best;
  double bestDistance = 0;
  for (std::size_t i = 0; i < screens.size(); ++i) {
    const double d = (screens[i].visibleFrame.center() - p).length();
    if (!best || d < bestDistance) best = i, bestDistance = d;
  }
  return best;
}

std::optional<std::size_t> dockedScreen(const std::vector<Screen>& screens, Point center,
                                        DockEdge edge) {
  // Half a point into the visible half: inside the screen whose edge the centre sits on.
  const Vector in = edge == DockEdge::left    ? Vector{0.5, 0}
                    : edge == DockEdge::right ? Vector{-0.5, 0}
                    : edge == DockEdge::top   ? Vector{0, 0.5}
                                              : Vector{0, -0.5};
  return nearestScreen(screens, center + in);
}

Point clampedOrigin(const std::vector<Screen>& screens, Point origin, double margin,
                    std::optional<DockEdge> dockedOn) {
  const auto c = clampedCenter(screens, centerOfOrigin(origin), margin, dockedOn);
  return c ? originOfCenter(*c) : origin;
}

std::optional<DockEdge> nearestEdge(const std::vector<Screen>& screens, Point center,
                                    double orbSize) {
  const auto s = nearestScreen(screens, center);
  if (!s) return std::nullopt;
  const Rect& f = screens[*s].frame;
  const double distances[] = {std::abs(center.x - f.minX()), std::abs(center.x - f.maxX()),
                              std::abs(center.y - f.minY()), std::abs(center.y - f.maxY())};
  // Strictly smaller only, so ties go to the earlier edge.
  std::size_t best = 0;
  for (std::size_t i = 1; i < 4; ++i)
    if (distances[i] < distances[best]) best = i;
  const double reach = std::max(orbSize / 2 + 10, 58.0);
  if (distances[best] < reach) return allDockEdges()[best];
  return std::nullopt;
}

Settlement settle(const std::vector<Screen>& screens, Point center, double orbSize,
                  std::optional<DockEdge> forced) {
  const auto s = screenOf(screens, center, forced);
  if (!s) return {std::nullopt, center};
  const auto edge = forced ? forced : nearestEdge(screens, center, orbSize);
  if (!edge) return {std::nullopt, *clampedCenter(screens, center, orbSize / 2 + 6)};

  // Half the orb hangs off screen; the other axis keeps the visible half whole.
  const Rect& f = screens[*s].frame;
  const double m = orbSize / 2 + 1;
  const double x = clampLowThenHigh(center.x, f.minX() + m, f.maxX() - m);
  const double y = clampLowThenHigh(center.y, f.minY() + m, f.maxY() - m);
  switch (*edge) {
    case DockEdge::left:
      return {edge, {f.minX(), y}};
    case DockEdge::right:
      return {edge, {f.maxX(), y}};
    case DockEdge::top:
      return {edge, {x, f.minY()}};
    case DockEdge::bottom:
      return {edge, {x, f.maxY()}};
  }
  return {std::nullopt, center};
}

Vector dragVelocity(Point last, Point now, double seconds) {
  // A floor of 8 ms keeps bursts of events from exploding the speed.
  const double frames = std::max(seconds, 0.008) * 60;
  const Vector moved = now - last;
  return {moved.dx / frames, moved.dy / frames};
}

double dragStretch(Vector velocity, bool reduceMotion) {
  return reduceMotion ? 0 : std::min(velocity.length() * 0.012, 0.16);
}

double dragAngle(Vector velocity) {
  // Measured with y up and negated, which is the clockwise angle with y down; `0.0 -` keeps a
  // level move at +0 so straight left reads -180 rather than 180.
  const double dyUp = 0.0 - velocity.dy;
  return std::atan2(dyUp, velocity.dx) * -180 / std::numbers::pi;
}

bool startsThrow(bool reduceMotion, double secondsSinceLastMove, bool withinReach) {
  return !reduceMotion && secondsSinceLastMove <= 0.1 && !withinReach;
}

Vector throwVelocity(Vector velocity) {
  return {std::clamp(velocity.dx, -25.0, 25.0), std::clamp(velocity.dy, -25.0, 25.0)};
}

GlideStep glideStep(const std::vector<Screen>& screens, Point origin, Vector velocity) {
  if (velocity.length() < 0.6) return {origin, velocity, true};
  const Point target = origin + velocity;
  const Point clamped = clampedOrigin(screens, target, 0);
  // A component the screen edge held back bounces, losing 60 %.
  if (std::abs(clamped.x - target.x) > 0.1) velocity.dx *= -0.4;
  if (std::abs(clamped.y - target.y) > 0.1) velocity.dy *= -0.4;
  return {clamped, {velocity.dx * 0.93, velocity.dy * 0.93}, false};
}

bool isRestorable(const std::vector<Screen>& screens, Point center) {
  return std::any_of(screens.begin(), screens.end(),
                     [&](const Screen& s) { return s.frame.insetBy(-1).contains(center); });
}

}  // namespace tidemark
