#pragma once

#include <functional>

#include <QTimer>

#include "core/Clock.h"

namespace tidemark {

// Drives a view's animations at the frame rate, and only while something moves: the step is
// called with the seconds since the previous frame and answers whether another frame is needed.
// At rest no timer runs.
class FrameTicker {
 public:
  FrameTicker(const Clock& clock, std::function<bool(double seconds)> step);

  // Starts the frames if they are not running.
  void wake();
  bool isRunning() const { return timer_.isActive(); }
  // Milliseconds between frames: the full rate for springs, fewer for slow idle motion.
  void setInterval(int milliseconds) { timer_.setInterval(milliseconds); }
  int interval() const { return timer_.interval(); }
  // One frame now, as the timer would run it (tests step through time with a manual clock).
  void tick();

 private:
  const Clock& clock_;
  std::function<bool(double)> step_;
  QTimer timer_;
  Date last_;
};

}  // namespace tidemark
