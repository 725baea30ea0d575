#pragma once

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
  void post(std::function<void()> work) override;
  TimerHandle after(double seconds, std::function<void()> work) override;
  TimerHandle every(double seconds, std::function<void()> work) override;

 private:
  TimerHandle start(double seconds, bool repeating, std::function<void()> work);
  QObject context_;  // owns the timers; work never runs after the scheduler is gone
};

}  // namespace tidemark
