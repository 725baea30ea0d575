#include "core/ManualScheduler.h"

namespace tidemark {

void ManualScheduler::post(std::function<void()> work) {
  queue_.emplace(std::make_pair(clock_.now().sinceReference, sequence_++),
                 Entry{std::move(work), 0, std::make_shared<bool>(false)});
}

TimerHandle ManualScheduler::after(double seconds, std::function<void()> work) {
  return schedule(seconds, 0, std::move(work));
}

TimerHandle ManualScheduler::every(double seconds, std::function<void()> work) {
  return schedule(seconds, seconds, std::move(work));
}

TimerHandle ManualScheduler::schedule(double delay, double interval, std::function<void()> work) {
  auto cancelled = std::make_shared<bool>(false);
  double due = clock_.now().sinceReference + delay;
  queue_.emplace(std::make_pair(due, sequence_++), Entry{std::move(work), interval, cancelled});
  return TimerHandle([cancelled] { *cancelled = true; });
}

void ManualScheduler::advance(double seconds) {
  const double end = clock_.now().sinceReference + seconds;
  while (!queue_.empty() && queue_.begin()->first.first <= end) {
    auto node = queue_.extract(queue_.begin());
    Entry& entry = node.mapped();
    if (*entry.cancelled) continue;
    double due = node.key().first;
    if (due > clock_.now().sinceReference) clock_.set(Date{due});
    if (entry.interval > 0) {
      // Re-arm before running so the work may cancel itself.
      queue_.emplace(std::make_pair(due + entry.interval, sequence_++), entry);
    }
    ++runs_;
    entry.work();
  }
  if (end > clock_.now().sinceReference) clock_.set(Date{end});
}

void ManualScheduler::jumpClock(double seconds) {
  decltype(queue_) shifted;
  for (auto& [key, entry] : queue_)
    shifted.emplace(std::make_pair(key.first + seconds, key.second), std::move(entry));
  queue_ = std::move(shifted);
  clock_.advance(seconds);
  clockJumps_.notify();
}

size_t ManualScheduler::pendingCount() const {
  size_t count = 0;
  for (const auto& [key, entry] : queue_)
    if (!*entry.cancelled) ++count;
  return count;
}

}  // namespace tidemark
