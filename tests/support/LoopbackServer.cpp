#include "support/LoopbackServer.h"

#include <QTcpSocket>

#include "core/FileIO.h"

namespace tidemark::test {

LoopbackServer::LoopbackServer(Handler handler) : handler_(std::move(handler)) {
  server_.listen(QHostAddress::LocalHost);
  QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] {
    while (QTcpSocket* socket = server_.nextPendingConnection()) {
      QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
      QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { answer(socket); });
    }
  });
}

void LoopbackServer::answer(QTcpSocket* socket) {
  const qsizetype end = socket->peek(64 << 10).indexOf("\r\n\r\n");
  if (end < 0) return;
  const QList<QByteArray> lines = socket->read(end + 4).trimmed().split('\n');
  targets.push_back(lines[0].split(' ').value(1).toStdString());
  headers.emplace_back();
  for (qsizetype i = 1; i < lines.size(); ++i)
    headers.back().push_back(lines[i].trimmed().toStdString());
  const Reply reply = handler_(targets.back());
  if (reply.delivery == Delivery::silent) return;
  const QByteArray body = QByteArray::fromStdString(reply.body);
  QByteArray head = "HTTP/1.1 " + QByteArray::number(reply.status) +
                    " Status\r\nContent-Type: text/html; charset=GBK\r\nConnection: close\r\n";
  if (reply.delivery != Delivery::endless) {
    const qsizetype announced = body.size() + (reply.delivery == Delivery::whole ? 0 : 100);
    head += "Content-Length: " + QByteArray::number(announced) + "\r\n";
  }
  socket->write(head + "\r\n" + body);
  if (reply.delivery == Delivery::endless) {
    QObject::connect(socket, &QTcpSocket::bytesWritten, socket, [this, socket, body] {
      if (socket->bytesToWrite() > 0) return;
      if (endlessBytes > (size_t{1} << 30)) return socket->disconnectFromHost();
      endlessBytes += static_cast<size_t>(body.size());
      socket->write(body);
    });
  } else if (reply.delivery != Delivery::stalled) {
    socket->disconnectFromHost();
  }
}

int LoopbackServer::closedPort() {
  QTcpServer probe;
  probe.listen(QHostAddress::LocalHost);
  return probe.serverPort();  // closed as it goes
}

std::string testData(const std::string& name) {
  std::error_code error;
  return readFile(std::filesystem::path(TIDEMARK_TEST_DATA_DIR) / name, error).value_or("");
}

}  // namespace tidemark::test
