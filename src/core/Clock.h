#pragma once

#include "core/Date.h"

namespace tidemark {

class Clock {
 public:
  virtual ~Clock() = default;
  virtual Date now() const = 0;
};

// A clock that moves only when told; the self-test and the tests run on it.
class ManualClock final : public Clock {
 public:
  explicit ManualClock(Date start = {}) : now_(start) {}
  Date now() const override { return now_; }
  void set(Date date) { now_ = date; }
  void advance(double seconds) { now_ = now_ + seconds; }

 private:
  Date now_;
};

}  // namespace tidemark
