#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "views/OrbLayout.h"

namespace tidemark {

// Drag, throw, glide and edge docking of the orb panel, as pure functions of the screens and the
// panel's position. Global screen coordinates, Qt's: origin at the upper left, y down, so the top
// edge of a screen is its frame's minY. The panel is a fixed canvas with the orb at its centre,
// hence origin = orb centre - canvasSide / 2 on both axes.

struct Screen {
  Rect frame;         // the whole screen
  Rect visibleFrame;  // without panels and docks
};

inline Point centerOfOrigin(Point origin) {
  return {origin.x + canvasSide / 2, origin.y + canvasSide / 2};
}
inline Point originOfCenter(Point center) {
  return {center.x - canvasSide / 2, center.y - canvasSide / 2};
}

// The first screen containing p, its left and top edges in and its right and bottom edges out,
// so a border two screens share belongs to the one right of or below it; otherwise the one whose
// visible centre is closest (the earlier on a tie); none without screens.
std::optional<std::size_t> nearestScreen(const std::vector<Screen>& screens, Point p);

// The screen a docked orb belongs to. Its centre lies on its screen's edge, which a neighbouring
// screen may share: the side where its visible half shows decides.
std::optional<std::size_t> dockedScreen(const std::vector<Screen>& screens, Point center,
                                        DockEdge edge);

// Moves the panel origin so the orb's centre stays `margin` inside the nearest screen's frame
// (for an orb still docked on `dockedOn`, its own screen's). The margin shrinks to half the
// screen's smaller side; unchanged without screens.
Point clampedOrigin(const std::vector<Screen>& screens, Point origin, double margin,
                    std::optional<DockEdge> dockedOn = std::nullopt);

// The edge of the nearest screen the orb would dock to from `center`, if within reach.
std::optional<DockEdge> nearestEdge(const std::vector<Screen>& screens, Point center,
                                    double orbSize);

struct Settlement {
  std::optional<DockEdge> edge;
  Point center;
};

// Where the orb comes to rest: on `forced` or the edge within reach, with its centre on the edge
// line; else free and kept orbSize / 2 + 6 inside the screen.
Settlement settle(const std::vector<Screen>& screens, Point center, double orbSize,
                  std::optional<DockEdge> forced);

// A press becomes a drag once the pointer has moved more than 3 points from where it went down.
inline bool startsDrag(Vector moved) {
  return moved.length() > 3;
}

// Points per 1/60 s frame, so the glide needs no time scaling.
Vector dragVelocity(Point last, Point now, double seconds);
double dragStretch(Vector velocity, bool reduceMotion);
// Direction of travel in degrees, clockwise on screen as the view rotates; straight left is -180.
double dragAngle(Vector velocity);

// A release glides only while the pointer was still moving and the orb is not about to dock.
bool startsThrow(bool reduceMotion, double secondsSinceLastMove, bool withinReach);
Vector throwVelocity(Vector velocity);

struct GlideStep {
  Point origin;
  Vector velocity;
  bool finished = false;  // settle now; origin and velocity are unchanged
};

// One 1/60 s tick of a thrown orb: move, bounce off the screen frame, lose speed.
GlideStep glideStep(const std::vector<Screen>& screens, Point origin, Vector velocity);

// Whether a stored orb centre is still on some screen (1 point of slack on every side).
bool isRestorable(const std::vector<Screen>& screens, Point center);

}  // namespace tidemark
