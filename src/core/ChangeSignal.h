#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

namespace tidemark {

// A parameterless "something changed" signal. A subscription ends when its token is destroyed,
// which is safe whether or not the signal still exists.
class ChangeSignal {
  using Handlers = std::map<uint64_t, std::function<void()>>;

 public:
  class Subscription {
   public:
    Subscription() = default;
    Subscription(std::weak_ptr<Handlers> handlers, uint64_t id)
        : handlers_(std::move(handlers)), id_(id) {}
    Subscription(Subscription&&) noexcept = default;
    Subscription& operator=(Subscription&& other) noexcept {
      if (this != &other) {
        reset();
        handlers_ = std::move(other.handlers_);
        id_ = other.id_;
      }
      return *this;
    }
    ~Subscription() { reset(); }
    void reset() {
      if (auto handlers = handlers_.lock()) handlers->erase(id_);
      handlers_.reset();
    }

   private:
    std::weak_ptr<Handlers> handlers_;
    uint64_t id_ = 0;
  };

  [[nodiscard]] Subscription subscribe(std::function<void()> handler) {
    uint64_t id = nextID_++;
    handlers_->emplace(id, std::move(handler));
    return Subscription(handlers_, id);
  }

  void notify() const {
    if (handlers_->empty()) return;
    // A handler may subscribe or unsubscribe while we call them, or destroy the signal's owner:
    // the handler table is kept alive here for the whole round.
    const std::shared_ptr<Handlers> handlers = handlers_;
    Handlers snapshot = *handlers;
    for (auto& [id, handler] : snapshot)
      if (handlers->contains(id)) handler();
  }

 private:
  std::shared_ptr<Handlers> handlers_ = std::make_shared<Handlers>();
  uint64_t nextID_ = 1;
};

}  // namespace tidemark
