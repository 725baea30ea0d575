#include "support/EndlessServer.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace tidemark::test {

EndlessServer::EndlessServer() {
  listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  ::bind(listener_, reinterpret_cast<sockaddr*>(&address), length);
  ::listen(listener_, 16);
  ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] {
    // accept() fails once the destructor shuts the listener down.
    for (int connection;
         (connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0 || !stopping_;)
      if (connection >= 0) servers_.emplace_back([this, connection] { serve(connection); });
  });
}

EndlessServer::~EndlessServer() {
  stopping_ = true;
  ::shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  for (std::thread& server : servers_) server.join();
  ::close(listener_);
}

void EndlessServer::serve(int connection) {
  // Blocked calls return every 100 ms to see whether the server is stopping.
  const timeval tick{0, 100'000};
  ::setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &tick, sizeof tick);
  ::setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &tick, sizeof tick);
  const auto going = [this](ssize_t done) {
    return !stopping_ && (done > 0 || (done < 0 && errno == EAGAIN));
  };
  std::string request;
  char buffer[4096];
  while (request.find("\r\n\r\n") == std::string::npos) {
    const ssize_t got = ::recv(connection, buffer, sizeof buffer, 0);
    if (!going(got)) break;
    request.append(buffer, std::max<ssize_t>(got, 0));
  }
  if (const size_t from = request.find(' ') + 1; from > 0 && !stopping_) {
    std::unique_lock lock(mutex_);
    targets_.push_back(request.substr(from, request.find(' ', from) - from));
    lock.unlock();
    const std::string head =
        "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nConnection: close\r\n\r\n";
    const std::string block(64 << 10, 'x');
    for (ssize_t sent = ::send(connection, head.data(), head.size(), MSG_NOSIGNAL); going(sent);
         sent_ += std::max<ssize_t>(sent, 0))
      sent = ::send(connection, block.data(), block.size(), MSG_NOSIGNAL);
  }
  ::close(connection);
}

}  // namespace tidemark::test
