#include "support/PeakMemory.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <sstream>

#include <fcntl.h>
#include <unistd.h>

namespace tidemark::test {
namespace {

// Read with plain system calls: a process may end between the open and the read, which fails
// with ESRCH, and a stream's buffer turns that failure into an exception.
std::string procFile(pid_t pid, const std::string& name) {
  const int fd =
      ::open(("/proc/" + std::to_string(pid) + "/" + name).c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return {};
  std::string text;
  char chunk[4096];
  for (ssize_t got; (got = ::read(fd, chunk, sizeof chunk)) > 0;) text.append(chunk, size_t(got));
  ::close(fd);
  return text;
}

size_t highWaterKB(pid_t pid) {
  const std::string status = procFile(pid, "status");
  const size_t at = status.find("VmHWM:");
  return at == std::string::npos ? 0 : std::strtoull(status.c_str() + at + 6, nullptr, 10);
}

// Children of every thread: a child belongs to the thread that started it.
void addChildren(pid_t pid, std::vector<pid_t>& found) {
  std::error_code error;
  for (const auto& task :
       std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task", error)) {
    std::istringstream list(procFile(pid, "task/" + task.path().filename().string() + "/children"));
    for (pid_t child; list >> child;) found.push_back(child);
  }
}

}  // namespace

PeakMemory::PeakMemory(pid_t root, const std::vector<std::string>& counted) : root_(root) {
  for (const std::string& word : counted) mostAtOnce[word] = 0;
  poller_ = std::thread([this] {
    for (; !stopping_; std::this_thread::sleep_for(std::chrono::milliseconds(5))) sample();
  });
}

void PeakMemory::stop() {
  if (!stopping_.exchange(true)) poller_.join();
}

void PeakMemory::sample() {
  rootPeakKB = std::max(rootPeakKB, highWaterKB(root_));
  std::map<std::string, int> alive;
  // Each pending child with its parent's command line: a fork runs as a copy of its parent,
  // sharing the parent's pages, until it starts its own program; the copy is not counted, and
  // the program begins a new peak.
  std::string rootLine = procFile(root_, "cmdline");
  std::vector<std::pair<pid_t, std::string>> pending;
  const auto addChildrenOf = [&](pid_t pid, const std::string& line) {
    std::vector<pid_t> children;
    addChildren(pid, children);
    for (pid_t child : children) pending.emplace_back(child, line);
  };
  for (addChildrenOf(root_, rootLine); !pending.empty();) {
    const auto [pid, parentLine] = pending.back();
    pending.pop_back();
    std::string commandLine = procFile(pid, "cmdline");
    addChildrenOf(pid, commandLine);
    if (commandLine.empty() || commandLine == parentLine) continue;  // ended, or not yet started
    std::replace(commandLine.begin(), commandLine.end(), '\0', ' ');
    Process& process = descendants[pid];
    if (process.commandLine != commandLine) process = {commandLine, 0};
    process.peakKB = std::max(process.peakKB, highWaterKB(pid));
    for (auto& [word, most] : mostAtOnce)
      alive[word] += commandLine.find(word) != std::string::npos;
  }
  for (auto& [word, most] : mostAtOnce) most = std::max(most, alive[word]);
}

}  // namespace tidemark::test
