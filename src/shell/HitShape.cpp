#include "shell/HitShape.h"

namespace tidemark {

Rect dockedCoreRect(double orbSize, DockEdge dock) {
  const double r = orbSize / 2;
  const double mx = canvasCenter.x, my = canvasCenter.y;
  switch (dock) {
    case DockEdge::left:
      return {mx, my - r, r + 24, 2 * r};
    case DockEdge::right:
      return {mx - r - 24, my - r, r + 24, 2 * r};
    case DockEdge::top:
      return {mx - r, my, 2 * r, r + 24};
    case DockEdge::bottom:
      return {mx - r, my - r - 24, 2 * r, r + 24};
  }
  return {};
}

bool isCore(Point p, double orbSize, std::optional<DockEdge> dock) {
  if (!dock) return (p - canvasCenter).length() <= orbSize / 2 + 5;
  return dockedCoreRect(orbSize, *dock).contains(p);
}

bool isInteractive(Point p, const OrbHitState& state) {
  if (isCore(p, state.orbSize, state.dock)) return true;
  // The open ring menu hides the satellites, so only its buttons count.
  if (state.radialOpen) {
    for (int k = 0; k < ringButtonCount; ++k)
      if (ringButtonHitRect(k, state.orbSize).contains(p)) return true;
    return false;
  }
  // Satellites are clipped away while docked.
  if (state.dock) return false;
  for (std::size_t i = 0; i < state.satellites; ++i)
    if (satelliteHitRect(i, state.satellites, state.orbSize, state.expanded).contains(p))
      return true;
  return false;
}

}  // namespace tidemark
