#pragma once

#include <cmath>

namespace tidemark {

// Plain geometry for the orb's layout and hit testing, free of Qt so the rules can be checked
// without a display. Coordinates are Qt's: origin at the upper left, y grows downwards.

struct Vector {
  double dx = 0, dy = 0;

  double length() const { return std::hypot(dx, dy); }
  bool operator==(const Vector&) const = default;
};

struct Point {
  double x = 0, y = 0;

  bool operator==(const Point&) const = default;
};

inline Point operator+(Point p, Vector v) {
  return {p.x + v.dx, p.y + v.dy};
}
inline Vector operator-(Point a, Point b) {
  return {a.x - b.x, a.y - b.y};
}

struct Rect {
  double x = 0, y = 0, width = 0, height = 0;

  double minX() const { return x; }
  double maxX() const { return x + width; }
  double minY() const { return y; }
  double maxY() const { return y + height; }
  double midX() const { return x + width / 2; }
  double midY() const { return y + height / 2; }
  Point center() const { return {midX(), midY()}; }
  // Edges count as inside, so a point on a shared border belongs to either rectangle.
  bool contains(Point p) const {
    return p.x >= minX() && p.x <= maxX() && p.y >= minY() && p.y <= maxY();
  }
  // A negative inset enlarges the rectangle.
  Rect insetBy(double d) const { return {x + d, y + d, width - 2 * d, height - 2 * d}; }
  bool operator==(const Rect&) const = default;
};

}  // namespace tidemark
