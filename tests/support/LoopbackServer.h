#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <QTcpServer>

namespace tidemark::test {

// An HTTP/1.1 server on 127.0.0.1 for tests, answering from a handler on the test's event loop.
class LoopbackServer {
 public:
  enum class Delivery {
    whole,
    silent,   // accept the request and never answer
    cut,      // announce more than the body, send the body, close
    stalled,  // announce more than the body, send the body, then nothing
    endless,  // no length; the body again and again until the client gives up
  };
  struct Reply {
    int status = 200;
    std::string body;
    Delivery delivery = Delivery::whole;
  };
  using Handler = std::function<Reply(const std::string& target)>;

  explicit LoopbackServer(Handler handler);

  std::string base() const { return "http://127.0.0.1:" + std::to_string(server_.serverPort()); }
  // Request targets ("/q=sh600519,...") and header lines, in arrival order.
  std::vector<std::string> targets;
  std::vector<std::vector<std::string>> headers;
  // Bytes sent without end so far (bounded: the server stops at 1 GB).
  size_t endlessBytes = 0;

  // A port nothing listens on.
  static int closedPort();

 private:
  void answer(QTcpSocket* socket);

  Handler handler_;
  QTcpServer server_;
};

// The bytes of a file under tests/data.
std::string testData(const std::string& name);

}  // namespace tidemark::test
