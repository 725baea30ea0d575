#pragma once

#include <cmath>
#include <optional>

#include "views/OrbLayout.h"

namespace tidemark {

// The part of the 460-point canvas that the orb's window covers. Every rule of the shell is
// written in the canvas; the window itself is only as large as what shows, because a compositor
// that ignores input shapes (KWin's override-redirect windows, mutter's after mapping) would let
// the empty rest swallow clicks, and an X server without a compositor paints it black.
struct FrameState {
  double orbSize = 0;  // the larger of the drawn size and the one it is heading for
  std::optional<DockEdge> dock;
  bool controlsOut = false;  // satellites or ring buttons away from the sphere, or on their way
  std::optional<Rect> hint;  // the hint capsule while one shows
  // Where the desktop ignores input shapes: the bounds of what the orb draws besides glows and
  // rings, which is then all the window covers.
  std::optional<Rect> bare;
  // There, the orb held down by the pointer in a window the compositor does not manage: the
  // window is the whole canvas (its half on the screen when docked), so a quick drag stays on it
  // (wlroots keeps no pointer grab for such a window; a managed one keeps it and must keep its
  // size under the pointer).
  bool held = false;
};

// How far the orb's drawing reaches from its centre: the glow (0.86 s), a ripple (0.975 s), a
// fast drag's stretch and the idle drift, the dock preview's caption below (s / 2 + 32).
inline double orbReach(double orbSize) {
  return std::ceil(orbSize + 8);
}

// Whole points inside the canvas: the orb's reach (or its bare drawing, with room for the idle
// drift), only its visible half when docked (which then lies on screen), the whole canvas while
// controls are out; a hint widens it.
Rect windowFrame(const FrameState& state);

}  // namespace tidemark
