#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "views/Geometry2D.h"

namespace tidemark {

// Where the orb view draws its parts, shared with the panel's hit testing so that what takes a
// click is exactly what is drawn. All positions are in the panel's own coordinates (Qt's: origin
// at the upper left, y down): a square canvas with the orb centred in it.

// The screen edge a docked orb sits on, in tie-break order.
enum class DockEdge { left, right, top, bottom };

std::string_view rawValue(DockEdge edge);
std::optional<DockEdge> dockEdgeFromRawValue(std::string_view raw);
const std::array<DockEdge, 4>& allDockEdges();

// Side of the square panel; it never changes, only the orb inside it does.
inline constexpr double canvasSide = 460;
inline constexpr Point canvasCenter{canvasSide / 2, canvasSide / 2};

// Satellite i of n on its orbit: the first straight above the centre, the others clockwise.
// Collapsed satellites sit inside the sphere's silhouette but still take clicks.
Point satelliteCenter(std::size_t i, std::size_t n, double orbSize, bool expanded);
// The same place at any radius, for a satellite on its way between the two orbits.
Point orbitPoint(std::size_t i, std::size_t n, double radius);
// The label hangs under the dot, so the target sits 12 below the orbit point.
Rect satelliteHitRect(std::size_t i, std::size_t n, double orbSize, bool expanded);

// How many satellites fit round the spread orbit without their dots touching.
std::size_t satelliteCapacity(double orbSize);
// The satellites that stand round the orb: all of a watchlist that fits, else the page of
// `satelliteCapacity` entries that holds the active one (the first page without one).
struct SatellitePage {
  std::size_t first = 0, count = 0;
  bool operator==(const SatellitePage&) const = default;
};
SatellitePage satellitePage(std::size_t total, std::optional<std::size_t> active, double orbSize);

// A spread satellite's caption shows as far as it has travelled from the collapsed orbit (0.6 of
// the orb's size) to the spread one (1.06): 0 to 1.
double captionOpacity(double radiusFactor);
// Collapsed satellites, and ones still near the collapsed orbit, are drawn behind the sphere.
inline bool drawnBehindSphere(double radiusFactor) {
  return radiusFactor < 0.83;
}

// The ring menu's commands, in the order their buttons stand: button k (0...4) is fanned over
// the orb from the left round to the lower right.
enum class RingCommand { refresh, alert, appearance, mask, quit };
inline constexpr std::array allRingCommands{RingCommand::refresh, RingCommand::alert,
                                            RingCommand::appearance, RingCommand::mask,
                                            RingCommand::quit};
inline constexpr int ringButtonCount = static_cast<int>(allRingCommands.size());
Point ringButtonCenter(int k, double orbSize);
Rect ringButtonHitRect(int k, double orbSize);

// The part of `frame` left visible while docked: the half facing away from the edge.
Rect dockClip(std::optional<DockEdge> edge, Rect frame);

// The transient hint's capsule for a text `textWidth` wide: below the free orb, clear of the
// spread satellites; beside a docked half-disc, on its visible side.
Rect hintCapsule(double orbSize, std::optional<DockEdge> dock, double textWidth);

// Where the price stands in the day's range, 0...1; the middle when there is no quote.
double rangeProgress(double price, double low, double high, bool hasQuote);
// Grows with the move, capped at 4 %: 6 to 13.2.
double satelliteDotDiameter(double changePct);

}  // namespace tidemark
