#pragma once

#include <sys/types.h>

#include <atomic>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace tidemark::test {

// The peak resident memory (VmHWM) of a process and of every descendant it starts, read from
// /proc by a thread every few milliseconds until stop(). A figure from wait4() or
// `time -f %M` would be the largest of the process and its reaped children together.
class PeakMemory {
 public:
  // `counted`: words of command lines whose processes are counted at each sample.
  explicit PeakMemory(pid_t root, const std::vector<std::string>& counted = {});
  ~PeakMemory() { stop(); }
  void stop();

  // Read once stop() has returned.
  struct Process {
    std::string commandLine;  // arguments joined by blanks
    size_t peakKB = 0;
  };
  size_t rootPeakKB = 0;
  std::map<pid_t, Process> descendants;
  std::map<std::string, int> mostAtOnce;  // of each counted word, the most alive at one sample

 private:
  void sample();

  pid_t root_;
  std::atomic<bool> stopping_{false};
  std::thread poller_;
};

}  // namespace tidemark::test
