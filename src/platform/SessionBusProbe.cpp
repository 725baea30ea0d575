#include "platform/SessionBusProbe.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <optional>

namespace tidemark {
namespace {

struct SocketAddress {
  std::string name;
  bool abstract = false;
};

// The first UNIX socket among the address's alternatives ("a;b"), each "transport:key=value,…".
std::optional<SocketAddress> firstUnixSocket(const std::string& address) {
  size_t start = 0;
  while (start <= address.size()) {
    const size_t end = std::min(address.find(';', start), address.size());
    const std::string entry = address.substr(start, end - start);
    if (entry.starts_with("unix:")) {
      std::string rest = entry.substr(5);
      size_t from = 0;
      while (from <= rest.size()) {
        const size_t to = std::min(rest.find(',', from), rest.size());
        const std::string pair = rest.substr(from, to - from);
        if (pair.starts_with("path=")) return SocketAddress{pair.substr(5), false};
        if (pair.starts_with("abstract=")) return SocketAddress{pair.substr(9), true};
        from = to + 1;
      }
    }
    start = end + 1;
  }
  return std::nullopt;
}

}  // namespace

BusAnswer probeSessionBus(const std::string& address, std::chrono::milliseconds deadline) {
  const auto target = firstUnixSocket(address);
  if (!target) return BusAnswer::answered;
  sockaddr_un where{};
  where.sun_family = AF_UNIX;
  const size_t offset = target->abstract ? 1 : 0;  // an abstract name starts with a zero byte
  if (target->name.size() + offset >= sizeof where.sun_path) return BusAnswer::absent;
  std::memcpy(where.sun_path + offset, target->name.data(), target->name.size());
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + offset +
                                             target->name.size() + (target->abstract ? 0 : 1));

  // Without blocking anywhere: a daemon that never takes a connection off its queue would hold a
  // plain connect as long as one that takes it and never answers holds a read.
  const auto until = std::chrono::steady_clock::now() + deadline;
  const auto left = [until] {
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(
        until - std::chrono::steady_clock::now());
    return static_cast<int>(std::max<long long>(0, ms.count()));
  };
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) return BusAnswer::absent;
  BusAnswer answer = BusAnswer::absent;
  const int connected = ::connect(fd, reinterpret_cast<const sockaddr*>(&where), length);
  if (connected == 0 || errno == EINPROGRESS || errno == EAGAIN) {
    answer = BusAnswer::silent;
    pollfd writable{fd, POLLOUT, 0};
    int error = connected == 0 ? 0 : -1;
    if (connected != 0 && ::poll(&writable, 1, left()) == 1) {
      socklen_t size = sizeof error;
      ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size);
      if (error != 0) answer = BusAnswer::absent;
    }
    if (error == 0) {
      // The credentials byte, then authentication as this user; any line back is an answer.
      std::string hex;
      for (char c : std::to_string(::getuid())) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(c));
        hex += digits;
      }
      const std::string hello = std::string(1, '\0') + "AUTH EXTERNAL " + hex + "\r\n";
      pollfd readable{fd, POLLIN, 0};
      char reply[64];
      if (::send(fd, hello.data(), hello.size(), MSG_NOSIGNAL) ==
              static_cast<ssize_t>(hello.size()) &&
          ::poll(&readable, 1, left()) == 1 && ::recv(fd, reply, sizeof reply, 0) > 0)
        answer = BusAnswer::answered;
    }
  }
  ::close(fd);
  return answer;
}

}  // namespace tidemark
