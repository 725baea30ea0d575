#include "views/OrbLayout.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tidemark {
namespace {

constexpr std::array<DockEdge, 4> dockEdges{DockEdge::left, DockEdge::right, DockEdge::top,
                                            DockEdge::bottom};
constexpr std::array<std::string_view, 4> dockEdgeNames{"left", "right", "top", "bottom"};

Rect centeredRect(Point c, double width, double height) {
  return {c.x - width / 2, c.y - height / 2, width, height};
}

}  // namespace

std::string_view rawValue(DockEdge edge) {
  return dockEdgeNames[static_cast<std::size_t>(edge)];
}

std::optional<DockEdge> dockEdgeFromRawValue(std::string_view raw) {
  for (DockEdge edge : dockEdges)
    if (rawValue(edge) == raw) return edge;
  return std::nullopt;
}

const std::array<DockEdge, 4>& allDockEdges() {
  return dockEdges;
}

Point orbitPoint(std::size_t i, std::size_t n, double radius) {
  const double count = static_cast<double>(std::max<std::size_t>(n, 1));
  // With y down, an angle of -90° is straight up and growing angles turn clockwise.
  const double angle = 2 * std::numbers::pi * static_cast<double>(i) / count - std::numbers::pi / 2;
  return {canvasCenter.x + std::cos(angle) * radius, canvasCenter.y + std::sin(angle) * radius};
}

Point satelliteCenter(std::size_t i, std::size_t n, double orbSize, bool expanded) {
  return orbitPoint(i, n, orbSize * (expanded ? 1.06 : 0.6));
}

Rect satelliteHitRect(std::size_t i, std::size_t n, double orbSize, bool expanded) {
  const Point c = satelliteCenter(i, n, orbSize, expanded);
  return centeredRect({c.x, c.y + 12}, 120, 44);
}

std::size_t satelliteCapacity(double orbSize) {
  // Dots grow to 13.2 points and to 1.4 times that under the pointer: 24 points apart.
  const double circumference = 2 * std::numbers::pi * orbSize * 1.06;
  return std::max<std::size_t>(1, static_cast<std::size_t>(circumference / 24));
}

SatellitePage satellitePage(std::size_t total, std::optional<std::size_t> active, double orbSize) {
  const std::size_t capacity = satelliteCapacity(orbSize);
  if (total <= capacity) return {0, total};
  const std::size_t first = (active && *active < total ? *active : 0) / capacity * capacity;
  return {first, std::min(capacity, total - first)};
}

double captionOpacity(double radiusFactor) {
  return std::clamp((radiusFactor - 0.6) / (1.06 - 0.6), 0.0, 1.0);
}

Point ringButtonCenter(int k, double orbSize) {
  // 200°, 252°, ... measured clockwise on screen: the fan opens over the top of the orb.
  const double angle = (200.0 + 52.0 * k) * std::numbers::pi / 180;
  const double distance = orbSize / 2 + 45;
  return {canvasCenter.x + std::cos(angle) * distance,
          canvasCenter.y + std::sin(angle) * distance + 9};
}

Rect ringButtonHitRect(int k, double orbSize) {
  return centeredRect(ringButtonCenter(k, orbSize), 48, 62);
}

Rect dockClip(std::optional<DockEdge> edge, Rect frame) {
  if (!edge) return frame;
  const double halfW = frame.width / 2, halfH = frame.height / 2;
  switch (*edge) {
    case DockEdge::left:
      return {frame.midX(), frame.y, halfW, frame.height};
    case DockEdge::right:
      return {frame.x, frame.y, halfW, frame.height};
    case DockEdge::top:
      return {frame.x, frame.midY(), frame.width, halfH};
    case DockEdge::bottom:
      return {frame.x, frame.y, frame.width, halfH};
  }
  return frame;
}

Rect hintCapsule(double orbSize, std::optional<DockEdge> dock, double textWidth) {
  const double s = orbSize, w = textWidth + 24, cx = canvasCenter.x, cy = canvasCenter.y;
  Point at{cx, cy + 1.35 * s};
  switch (dock.value_or(DockEdge::bottom)) {
    case DockEdge::left:
      at = {cx + s / 2 + 12 + w / 2, cy};
      break;
    case DockEdge::right:
      at = {cx - s / 2 - 12 - w / 2, cy};
      break;
    case DockEdge::top:
      at = {cx, cy + s / 2 + 24};
      break;
    case DockEdge::bottom:
      if (dock) at = {cx, cy - s / 2 - 24};
      break;
  }
  return centeredRect(at, w, 24);
}

double rangeProgress(double price, double low, double high, bool hasQuote) {
  if (!hasQuote) return 0.5;
  // A flat day (high == low) must not divide by zero.
  return std::clamp((price - low) / std::max(high - low, 0.01), 0.0, 1.0);
}

double satelliteDotDiameter(double changePct) {
  return std::min(std::abs(changePct), 4.0) * 1.8 + 6;
}

}  // namespace tidemark
