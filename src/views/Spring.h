#pragma once

namespace tidemark {

// A damped spring of unit mass, given as response (the period of the undamped oscillation, in
// seconds) and damping fraction. Its target may change at any time; position and velocity carry
// over, so a retargeted motion stays smooth.
class Spring {
 public:
  Spring(double response, double dampingFraction, double value = 0);

  void setTarget(double target) { target_ = target; }
  // Jumps to a value and rests there (no animation).
  void snap(double value);
  // Advances by `seconds` of time; a long gap is cut into small steps so the motion stays stable.
  void advance(double seconds);

  double value() const { return value_; }
  double target() const { return target_; }
  double velocity() const { return velocity_; }
  bool isMoving() const { return value_ != target_ || velocity_ != 0; }

 private:
  double stiffness_, damping_;
  double value_, velocity_ = 0, target_;
};

}  // namespace tidemark
