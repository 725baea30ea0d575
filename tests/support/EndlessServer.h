#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tidemark::test {

// An HTTP server on 127.0.0.1 whose every answer is a 200 with a body that never ends, written
// by a thread per connection as fast as the socket takes it. Nothing waits for the reader, so
// a client that buffers without bound shows it at once (a server paced by the reader hides it).
class EndlessServer {
 public:
  EndlessServer();
  ~EndlessServer();

  std::string base() const { return "http://127.0.0.1:" + std::to_string(port_); }
  std::vector<std::string> targets() const {  // request targets, in arrival order
    std::lock_guard lock(mutex_);
    return targets_;
  }
  size_t bytesSent() const { return sent_; }

 private:
  void serve(int connection);

  int listener_, port_;
  std::atomic<bool> stopping_{false};
  std::atomic<size_t> sent_{0};
  mutable std::mutex mutex_;
  std::vector<std::string> targets_;
  std::vector<std::thread> servers_;  // touched by the acceptor only, until it has ended
  std::thread acceptor_;
};

}  // namespace tidemark::test
