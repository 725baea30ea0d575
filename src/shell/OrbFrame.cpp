#include "shell/OrbFrame.h"

#include <algorithm>
#include <cmath>

namespace tidemark {
namespace {

Rect united(const Rect& a, const Rect& b) {
  const double x0 = std::min(a.minX(), b.minX()), y0 = std::min(a.minY(), b.minY());
  const double x1 = std::max(a.maxX(), b.maxX()), y1 = std::max(a.maxY(), b.maxY());
  return {x0, y0, x1 - x0, y1 - y0};
}

Rect intersected(const Rect& a, const Rect& b) {
  const double x0 = std::max(a.minX(), b.minX()), y0 = std::max(a.minY(), b.minY());
  const double x1 = std::min(a.maxX(), b.maxX()), y1 = std::min(a.maxY(), b.maxY());
  return {x0, y0, std::max(0.0, x1 - x0), std::max(0.0, y1 - y0)};
}

}  // namespace

Rect windowFrame(const FrameState& state) {
  const Rect canvas{0, 0, canvasSide, canvasSide};
  if (state.controlsOut && !state.dock) return canvas;
  const double reach = orbReach(state.orbSize);
  Rect frame = state.bare && state.held ? canvas
               : state.bare
                   ? state.bare->insetBy(-2)
                   : Rect{canvasCenter.x - reach, canvasCenter.y - reach, 2 * reach, 2 * reach};
  // The capsule's antialiased rim needs a point more on every side.
  if (state.hint) frame = united(frame, state.hint->insetBy(-2));
  // Docked, the half of the canvas beyond the screen's edge shows nothing.
  frame = intersected(frame, dockClip(state.dock, canvas));
  const double x0 = std::floor(frame.minX()), y0 = std::floor(frame.minY());
  return {x0, y0, std::ceil(frame.maxX()) - x0, std::ceil(frame.maxY()) - y0};
}

}  // namespace tidemark
