#pragma once

#include <QObject>

#include "core/ProcessRunner.h"

namespace tidemark {

// Child processes on QProcess: an argument vector, never a shell. A process past its deadline
// is terminated, and killed a second later if it is still there.
//
// With a memory bound, the resident memory of each child is looked at while it runs (Linux's
// /proc; elsewhere children go unwatched) and a child past the bound is killed: it ends like a
// crashed one, with no output kept.
class QtProcessRunner final : public ProcessRunner {
 public:
  explicit QtProcessRunner(size_t maxResidentBytes = 0);  // 0: no bound
  ~QtProcessRunner() override;
  void run(const ProcessRequest& request, std::function<void(ProcessResult)> completion) override;

  // How often a child's memory is looked at: fast enough that a child growing by a few hundred
  // megabytes a second passes the bound by a few tens at most.
  static constexpr int memoryCheckMS = 50;

 private:
  size_t maxResidentBytes_;
  QObject context_;  // owns the processes and their timers
};

}  // namespace tidemark
