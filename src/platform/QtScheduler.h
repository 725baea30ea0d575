#pragma once

#include <memory>

#include <QObject>

#include "core/Clock.h"
#include "core/Scheduler.h"

namespace tidemark {

// The wall clock.
class SystemClock final : public Clock {
 public:
  Date now() const override;
};

// Work on the Qt event loop of the thread that created the scheduler (the main thread).
class QtScheduler final : public Scheduler {
 public:
  QtScheduler();
  ~QtScheduler() override;
  void post(std::function<void()> work) override;
  TimerHandle after(double seconds, std::function<void()> work) override;
  TimerHandle every(double seconds, std::function<void()> work) override;
  // Told by the kernel: a wall-clock timer set to be cancelled by any change of the wall clock,
  // which a resume from suspend counts as. Watched from the first subscription on.
  ChangeSignal::Subscription whenClockJumps(std::function<void()> work) override;

 private:
  class ClockWatch;
  TimerHandle start(double seconds, bool repeating, std::function<void()> work);
  QObject context_;  // owns the timers; work never runs after the scheduler is gone
  ChangeSignal clockJumps_;
  std::unique_ptr<ClockWatch> clockWatch_;
};

}  // namespace tidemark
