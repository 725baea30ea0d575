#include "support/PeakMemory.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace tidemark::test {
namespace {

std::string procFile(pid_t pid, const std::string& name) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/" + name);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

size_t highWaterKB(pid_t pid) {
  const std::string status = procFile(pid, "status");
  const size_t at = status.find("VmHWM:");
  return at == std::string::npos ? 0 : std::strtoull(status.c_str() + at + 6, nullptr, 10);
}

// Children of every thread: a child belongs to the thread that started it.
std::vector<pid_t> children(pid_t pid) {
  std::vector<pid_t> found;
  std::error_code error;
  for (const auto& task :
       std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task", error)) {
    std::ifstream list(task.path() / "children");
    for (pid_t child; list >> child;) found.push_back(child);
  }
  return found;
}

}  // namespace

PeakMemory::PeakMemory(pid_t root, const std::vector<std::string>& counted) : root_(root) {
  for (const std::string& word : counted) mostAtOnce_[word] = 0;
  poller_ = std::thread([this] {
    while (!stopping_) {
      sample();
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  });
}

void PeakMemory::stop() {
  if (stopping_.exchange(true)) return;
  poller_.join();
}

void PeakMemory::sample() {
  std::vector<pid_t> pending = children(root_);
  std::map<pid_t, std::pair<std::string, size_t>> seen;
  while (!pending.empty()) {
    const pid_t pid = pending.back();
    pending.pop_back();
    std::string commandLine = procFile(pid, "cmdline");
    std::replace(commandLine.begin(), commandLine.end(), '\0', ' ');
    seen[pid] = {commandLine, highWaterKB(pid)};
    for (pid_t child : children(pid)) pending.push_back(child);
  }
  const size_t rootKB = highWaterKB(root_);
  std::lock_guard lock(mutex_);
  rootPeakKB_ = std::max(rootPeakKB_, rootKB);
  std::map<std::string, int> alive;
  for (const auto& [pid, entry] : seen) {
    if (entry.first.empty()) continue;  // ended, not yet reaped
    Process& process = descendants_[pid];
    if (process.commandLine != entry.first) {
      // A fork runs as a copy of its parent until it starts its program, which begins a new
      // peak: the copy's is the parent's.
      process.commandLine = entry.first;
      process.peakKB = 0;
    }
    process.peakKB = std::max(process.peakKB, entry.second);
    for (auto& [word, most] : mostAtOnce_)
      if (process.commandLine.find(word) != std::string::npos) ++alive[word];
  }
  for (auto& [word, most] : mostAtOnce_) most = std::max(most, alive[word]);
}

size_t PeakMemory::rootPeakKB() const {
  std::lock_guard lock(mutex_);
  return rootPeakKB_;
}

std::map<pid_t, PeakMemory::Process> PeakMemory::descendants() const {
  std::lock_guard lock(mutex_);
  return descendants_;
}

int PeakMemory::mostAtOnce(const std::string& word) const {
  std::lock_guard lock(mutex_);
  auto it = mostAtOnce_.find(word);
  return it == mostAtOnce_.end() ? 0 : it->second;
}

}  // namespace tidemark::test
