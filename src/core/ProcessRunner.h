#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tidemark {

struct ProcessRequest {
  std::string program;
  std::vector<std::string> arguments;  // passed as they are, never through a shell
  std::string workingDirectory;
  std::map<std::string, std::string> environment;  // the child's whole environment
  double deadline = 22;         // seconds; a process still running then is terminated
  size_t maxOutput = 32 << 20;  // bytes of standard output; a child printing more is killed
};

struct ProcessResult {
  std::optional<std::string> launchError;  // the process could not be started
  int exitCode = -1;
  bool exitedNormally = false;  // false after a crash or termination
  bool timedOut = false;
  std::string standardOutput;   // standard error goes to the null device
  bool outputTooLarge = false;  // killed for printing more than maxOutput; no output kept
  bool replaced = false;        // never run: a newer request took its place first
};

// Child processes; the completion runs once, on the main thread, never inside run().
class ProcessRunner {
 public:
  virtual ~ProcessRunner() = default;
  virtual void run(const ProcessRequest& request,
                   std::function<void(ProcessResult)> completion) = 0;
};

}  // namespace tidemark
