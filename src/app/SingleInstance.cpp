#include "app/SingleInstance.h"

#include <QLocalSocket>
#include <QStandardPaths>

namespace tidemark {
namespace {

const QByteArray showRequest = "show\n";
const QByteArray acknowledged = "ok\n";

}  // namespace

QString SingleInstance::defaultPath() {
  return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) +
         QStringLiteral("/tidemark.socket");
}

SingleInstance::SingleInstance(QString path) : path_(std::move(path)) {}

bool SingleInstance::claim() {
  {
    QLocalSocket running;
    running.connectToServer(path_);
    if (running.waitForConnected(1000)) {
      running.write(showRequest);
      running.waitForBytesWritten(1000);
      // The answer says the running app is alive and took the request, not a dying one.
      if (running.waitForReadyRead(2000) && running.readAll() == acknowledged) return false;
    }
  }
  // Nobody answers: a socket left by a process that was killed goes.
  QLocalServer::removeServer(path_);
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  // A socket we cannot create leaves the app running alone, as before.
  if (!server_.listen(path_)) return true;
  QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] {
    while (QLocalSocket* socket = server_.nextPendingConnection()) {
      QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
      QObject::connect(socket, &QLocalSocket::readyRead, socket, [this, socket] {
        if (!socket->canReadLine()) return;
        if (socket->readLine() == showRequest) {
          socket->write(acknowledged);
          socket->flush();
          if (onShowRequested) onShowRequested();
        }
        socket->disconnectFromServer();
      });
    }
  });
  return true;
}

}  // namespace tidemark
