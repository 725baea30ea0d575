#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

#include "core/Clock.h"
#include "core/Scheduler.h"

namespace tidemark {

// A scheduler driven by hand: time passes only in advance(), which also moves the clock, and
// due work runs in order of its due time.
class ManualScheduler final : public Scheduler {
 public:
  explicit ManualScheduler(ManualClock& clock) : clock_(clock) {}

  void post(std::function<void()> work) override;
  TimerHandle after(double seconds, std::function<void()> work) override;
  TimerHandle every(double seconds, std::function<void()> work) override;
  ChangeSignal::Subscription whenClockJumps(std::function<void()> work) override {
    return clockJumps_.subscribe(std::move(work));
  }

  // Moves the clock forward by `seconds`, running everything that falls due on the way.
  void advance(double seconds);
  // The wall clock jumps by `seconds`, either way (a time change, a resume from suspend), while
  // the timers keep their own pace, as an event loop's monotonic timers do: nothing runs, and
  // everything pending stays as far from due as it was; then those waiting for a jump are told.
  void jumpClock(double seconds);
  // Runs what is due now (posted work included) without moving the clock.
  void runDue() { advance(0); }
  // Number of pending, not cancelled, entries.
  size_t pendingCount() const;
  // Number of entries run so far: the wake-ups an event loop would have had.
  size_t runCount() const { return runs_; }

 private:
  struct Entry {
    std::function<void()> work;
    double interval = 0;  // 0: runs once
    std::shared_ptr<bool> cancelled;
  };
  TimerHandle schedule(double delay, double interval, std::function<void()> work);

  ManualClock& clock_;
  // Keyed by (due time, sequence) so equal due times keep their scheduling order.
  std::map<std::pair<double, uint64_t>, Entry> queue_;
  uint64_t sequence_ = 0;
  size_t runs_ = 0;
  ChangeSignal clockJumps_;
};

}  // namespace tidemark
