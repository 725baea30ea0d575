#include "views/ChartGeometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "core/Market.h"

namespace tidemark {

PolarChartGeometry polarChartGeometry(const std::vector<double>& values, double width,
                                      double height) {
  PolarChartGeometry g;
  const double k = width / 240;
  g.center = {width / 2, height / 2};
  g.ringRadii = {44 * k, 66 * k, 88 * k};
  const auto at = [&](double angle, double radius) {
    return Point{g.center.x + std::cos(angle) * radius, g.center.y + std::sin(angle) * radius};
  };
  constexpr double pi = std::numbers::pi;
  for (size_t j = 0; j < g.ticks.size(); ++j) {
    const double angle = 2 * pi * double(j) / 24 - pi / 2;
    const double inner = (j % 6 == 0 ? 92 : 96) * k;
    g.ticks[j] = {at(angle, inner), at(angle, 100 * k)};
  }
  if (values.size() < 2) return g;
  const auto [lo, hi] = std::minmax_element(values.begin(), values.end());
  const double low = *lo, range = std::max(*hi - *lo, 0.001);
  const double n = double(values.size());
  g.points.reserve(values.size());
  for (size_t i = 0; i < values.size(); ++i) {
    // The divisor is n, not n - 1: the last value stops one step short of closing the circle.
    const double angle = 2 * pi * double(i) / n - pi / 2;
    g.points.push_back(at(angle, k * (46 + 44 * (values[i] - low) / range)));
  }
  return g;
}

std::vector<Point> linearChartPoints(const std::vector<double>& values, const Rect& plot) {
  std::vector<Point> points;
  if (values.empty()) return points;
  const auto [lo, hi] = std::minmax_element(values.begin(), values.end());
  const double range = *hi - *lo;
  const double step = values.size() > 1 ? plot.width / double(values.size() - 1) : 0;
  // 8 % of the height stays free above the high and below the low.
  const double top = plot.y + plot.height * 0.08, span = plot.height * 0.84;
  points.reserve(values.size());
  for (size_t i = 0; i < values.size(); ++i) {
    const double share = range > 0 ? (values[i] - *lo) / range : 0.5;
    points.push_back({plot.x + step * double(i), top + span * (1 - share)});
  }
  return points;
}

std::optional<size_t> linearChartIndex(double x, size_t count, const Rect& plot) {
  if (count == 0 || x < plot.x || x > plot.x + plot.width) return std::nullopt;
  if (count == 1) return 0;
  const double share = (x - plot.x) / plot.width;
  return std::min(count - 1, size_t(std::lround(share * double(count - 1))));
}

std::array<std::string_view, 3> marketTimes(std::string_view market) {
  // By exchange: funds and indices keep their exchange's hours.
  switch (axisExchangeOfLabel(market)) {
    case Exchange::shanghai:
      return {"09:30", "11:30 / 13:00", "15:00"};
    case Exchange::hongKong:
      return {"09:30", "12:00 / 13:00", "16:00"};
    case Exchange::newYork:
      break;
  }
  return {"09:30", "12:45", "16:00 ET"};
}

}  // namespace tidemark
