#pragma once

#include "shell/DockGeometry.h"

namespace tidemark {

// Where an auxiliary window opens, in global coordinates (its frame's top left and its size).
// Windows open on the screen that holds the orb and never larger than its visible frame, title
// bar and borders included: a window that does not fit shrinks, and its content scrolls.
struct WindowRequest {
  double width = 0, height = 0;
};

// Centred on the visible frame.
Rect centredWindow(const Rect& visibleFrame, WindowRequest request);
// Beside the orb, on the side with room for the whole window (the right first), vertically
// centred on the orb and kept inside the visible frame, so the orb stays in view next to the
// window; centred when neither side has room.
Rect windowBesideOrb(const Rect& visibleFrame, Point orbCenter, double orbSize,
                     WindowRequest request);

}  // namespace tidemark
