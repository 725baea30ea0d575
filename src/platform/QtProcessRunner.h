#pragma once

#include <QObject>

#include "core/ProcessRunner.h"

namespace tidemark {

// Child processes on QProcess: an argument vector, never a shell. A process past its deadline
// is terminated, and killed a second later if it is still there.
class QtProcessRunner final : public ProcessRunner {
 public:
  ~QtProcessRunner() override;
  void run(const ProcessRequest& request, std::function<void(ProcessResult)> completion) override;

 private:
  QObject context_;  // owns the processes and their timers
};

}  // namespace tidemark
