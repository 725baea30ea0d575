#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <vector>

#include "views/Geometry2D.h"

namespace tidemark {

// Where the polar intraday chart draws, in a canvas of the given size (y grows downwards).
// Radii are designed for a 240-wide canvas and scale with the width.
struct PolarChartGeometry {
  struct Tick {
    Point inner, outer;
  };
  Point center;
  std::array<double, 3> ringRadii{};
  std::array<Tick, 24> ticks{};
  // Time runs clockwise from the top; the day's low sits at 46 units, its high at 90. Empty with
  // fewer than two values.
  std::vector<Point> points;
};
PolarChartGeometry polarChartGeometry(const std::vector<double>& values, double width,
                                      double height);

// The linear chart's line in a plot rectangle: low at the bottom, high at the top, with a little
// air above and below; a flat series runs through the middle.
std::vector<Point> linearChartPoints(const std::vector<double>& values, const Rect& plot);
// The value under a horizontal position of the plot; none outside it or without values.
std::optional<size_t> linearChartIndex(double x, size_t count, const Rect& plot);

// The three time-axis labels under the linear chart for a market label.
std::array<std::string_view, 3> marketTimes(std::string_view market);

}  // namespace tidemark
