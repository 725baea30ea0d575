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

std::vector<Rect> controlRects(const OrbHitState& state) {
  std::vector<Rect> rects;
  // The open ring menu hides the satellites, so only its buttons count.
  if (state.radialOpen) {
    for (int k = 0; k < ringButtonCount; ++k) rects.push_back(ringButtonHitRect(k, state.orbSize));
  } else if (!state.dock) {  // satellites are clipped away while docked
    for (std::size_t i = 0; i < state.satellites; ++i)
      rects.push_back(satelliteHitRect(i, state.satellites, state.orbSize, state.expanded));
  }
  return rects;
}

bool isInteractive(Point p, const OrbHitState& state) {
  if (isCore(p, state.orbSize, state.dock)) return true;
  for (const Rect& r : controlRects(state))
    if (r.contains(p)) return true;
  return false;
}

}  // namespace tidemark
