#include "support/EndlessServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tidemark::test {

EndlessServer::EndlessServer(bool announceLength) : announceLength_(announceLength) {
  listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  ::bind(listener_, reinterpret_cast<sockaddr*>(&address), length);
  ::listen(listener_, 16);
  ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] { acceptLoop(); });
}

EndlessServer::~EndlessServer() {
  stopping_ = true;
  ::shutdown(listener_, SHUT_RDWR);  // wakes the blocked accept()
  acceptor_.join();
  {
    std::lock_guard lock(mutex_);
    for (int connection : connections_) ::shutdown(connection, SHUT_RDWR);
  }
  for (std::thread& server : servers_) server.join();
  ::close(listener_);
}

std::string EndlessServer::base() const {
  return "http://127.0.0.1:" + std::to_string(port_);
}

std::vector<std::string> EndlessServer::targets() const {
  std::lock_guard lock(mutex_);
  return targets_;
}

void EndlessServer::acceptLoop() {
  while (!stopping_) {
    const int connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) continue;  // shut down, or a connection that went away
    std::lock_guard lock(mutex_);
    if (stopping_) {
      ::close(connection);
      break;
    }
    connections_.push_back(connection);
    servers_.emplace_back([this, connection] { serve(connection); });
  }
}

void EndlessServer::serve(int connection) {
  std::string request;
  char buffer[4096];
  while (request.find("\r\n\r\n") == std::string::npos && request.size() < (64 << 10)) {
    const ssize_t got = ::recv(connection, buffer, sizeof buffer, 0);
    if (got <= 0) break;
    request.append(buffer, static_cast<size_t>(got));
  }
  const size_t from = request.find(' ') + 1;
  if (from == 0) {  // a connection that asked nothing
    std::lock_guard lock(mutex_);
    std::erase(connections_, connection);
    ::close(connection);
    return;
  }
  {
    std::lock_guard lock(mutex_);
    targets_.push_back(request.substr(from, request.find(' ', from) - from));
  }
  std::string head = "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nConnection: close\r\n";
  if (announceLength_) head += "Content-Length: 1073741824\r\n";
  head += "\r\n";
  ::send(connection, head.data(), head.size(), MSG_NOSIGNAL);
  const std::string block(64 << 10, 'x');
  while (!stopping_) {
    const ssize_t written = ::send(connection, block.data(), block.size(), MSG_NOSIGNAL);
    if (written <= 0) break;  // the client gave up
    sent_ += static_cast<size_t>(written);
  }
  // The descriptor is closed here only; shutting down in the destructor never races a reuse.
  std::lock_guard lock(mutex_);
  std::erase(connections_, connection);
  ::close(connection);
}

}  // namespace tidemark::test
