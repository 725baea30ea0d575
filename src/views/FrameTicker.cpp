#include "views/FrameTicker.h"

namespace tidemark {

FrameTicker::FrameTicker(const Clock& clock, std::function<bool(double)> step)
    : clock_(clock), step_(std::move(step)) {
  timer_.setTimerType(Qt::PreciseTimer);
  timer_.setInterval(16);
  QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { tick(); });
}

void FrameTicker::wake() {
  if (timer_.isActive()) return;
  last_ = clock_.now();
  timer_.start();
}

void FrameTicker::tick() {
  const Date now = clock_.now();
  const double seconds = now - last_;
  last_ = now;
  if (!step_(seconds)) timer_.stop();
}

}  // namespace tidemark
