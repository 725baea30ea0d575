#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "views/OrbLayout.h"

namespace tidemark {

// Which points of the mostly transparent orb panel take mouse events. Points are in the panel's
// coordinates (Qt's, y down); the orb is centred on the canvas.

// The orb itself, which is dragged and clicked directly. Docked, it is the visible half-disc's
// rectangle, widened by 24 on its round side so the thin half stays easy to grab.
bool isCore(Point p, double orbSize, std::optional<DockEdge> dock);
// That rectangle for a docked orb.
Rect dockedCoreRect(double orbSize, DockEdge dock);

struct OrbHitState {
  double orbSize = 0;
  std::optional<DockEdge> dock;
  bool expanded = false;
  bool radialOpen = false;
  std::size_t satellites = 0;
};

// The rectangles of the controls around the core that take input in this state: the ring
// buttons while the menu is open, else the satellites of a free orb.
std::vector<Rect> controlRects(const OrbHitState& state);

// The core or a control drawn around it; everything else lets the event fall through to the
// window below.
bool isInteractive(Point p, const OrbHitState& state);

}  // namespace tidemark
