#include "views/Spring.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tidemark {

Spring::Spring(double response, double dampingFraction, double value)
    : value_(value), target_(value) {
  const double omega = 2 * std::numbers::pi / std::max(response, 0.01);
  stiffness_ = omega * omega;
  damping_ = 2 * dampingFraction * omega;
}

void Spring::snap(double value) {
  value_ = target_ = value;
  velocity_ = 0;
}

void Spring::advance(double seconds) {
  if (!isMoving()) return;
  // Semi-implicit Euler in steps of at most 2 ms; more than a second at once (a stalled event
  // loop) is not worth animating.
  double left = std::min(std::max(seconds, 0.0), 1.0);
  while (left > 0) {
    const double dt = std::min(left, 0.002);
    velocity_ += (-stiffness_ * (value_ - target_) - damping_ * velocity_) * dt;
    value_ += velocity_ * dt;
    left -= dt;
  }
  const double scale = std::max(1.0, std::abs(target_));
  if (std::abs(value_ - target_) < 1e-4 * scale && std::abs(velocity_) < 1e-3 * scale) {
    value_ = target_;
    velocity_ = 0;
  }
}

}  // namespace tidemark
