#pragma once

#include <functional>

#include "core/ChangeSignal.h"

namespace tidemark {

// A scheduled piece of work; destroying or cancelling the handle stops it from running.
class TimerHandle {
 public:
  TimerHandle() = default;
  explicit TimerHandle(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
  TimerHandle(TimerHandle&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
  TimerHandle& operator=(TimerHandle&& other) noexcept {
    if (this != &other) {
      cancel();
      cancel_ = std::exchange(other.cancel_, nullptr);
    }
    return *this;
  }
  TimerHandle(const TimerHandle&) = delete;
  TimerHandle& operator=(const TimerHandle&) = delete;
  ~TimerHandle() { cancel(); }

  void cancel() {
    if (auto cancel = std::exchange(cancel_, nullptr)) cancel();
  }
  explicit operator bool() const { return static_cast<bool>(cancel_); }

 private:
  std::function<void()> cancel_;
};

// Work on the main thread: now, later, or repeatedly.
class Scheduler {
 public:
  virtual ~Scheduler() = default;
  // Runs `work` on a later turn of the main loop; may be called from any thread.
  virtual void post(std::function<void()> work) = 0;
  virtual TimerHandle after(double seconds, std::function<void()> work) = 0;
  virtual TimerHandle every(double seconds, std::function<void()> work) = 0;
  // Runs `work` whenever the wall clock jumps (set by hand or by a time service, or moved on by a
  // resume from suspend) while the timers keep their own pace.
  [[nodiscard]] virtual ChangeSignal::Subscription whenClockJumps(std::function<void()> work) = 0;
};

}  // namespace tidemark
