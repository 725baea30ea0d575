#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace tidemark {

// Held by an object that hands callbacks to timers, processes or the bus, which may call them
// after it is gone: a guarded callback runs only while its holder is alive.
class Lifeline {
 public:
  Lifeline() = default;
  Lifeline(const Lifeline&) = delete;
  Lifeline& operator=(const Lifeline&) = delete;

  std::function<void()> guard(std::function<void()> work) const {
    return [alive = std::weak_ptr<const int>(alive_), work = std::move(work)] {
      if (!alive.expired()) work();
    };
  }
  template <class... Args>
  std::function<void(Args...)> guard(std::function<void(Args...)> work) const {
    return [alive = std::weak_ptr<const int>(alive_), work = std::move(work)](Args... args) {
      if (!alive.expired()) work(std::forward<Args>(args)...);
    };
  }

 private:
  std::shared_ptr<const int> alive_ = std::make_shared<const int>(0);
};

}  // namespace tidemark
