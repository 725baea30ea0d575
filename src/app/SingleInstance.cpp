#include "app/SingleInstance.h"

#include <QDeadlineTimer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>

namespace tidemark {
namespace {

const QByteArray acknowledged = "ok\n";
const std::pair<SingleInstance::Request, QByteArray> requestLines[] = {
    {SingleInstance::Request::show, "show\n"},
    {SingleInstance::Request::toggleOrb, "toggle-orb\n"},
    {SingleInstance::Request::toggleMask, "toggle-mask\n"},
};

QByteArray lineOf(SingleInstance::Request request) {
  for (const auto& [r, line] : requestLines)
    if (r == request) return line;
  return {};
}

}  // namespace

QString SingleInstance::defaultPath() {
  return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) +
         QStringLiteral("/tidemark.socket");
}

SingleInstance::SingleInstance(QString path, int answerMilliseconds)
    : path_(std::move(path)),
      answerMilliseconds_(answerMilliseconds),
      lock_(path_ + QStringLiteral(".lock")) {
  // Only a holder that no longer runs makes the lock stale, never its age.
  lock_.setStaleLockTime(0);
}

bool SingleInstance::tell(const QString& path, Request request) {
  QLocalSocket running;
  running.connectToServer(path);
  if (!running.waitForConnected(500)) return false;
  running.write(lineOf(request));
  running.waitForBytesWritten(500);
  QByteArray answer;
  while (!answer.endsWith('\n') && running.waitForReadyRead(500)) answer += running.readAll();
  return answer == acknowledged;
}

SingleInstance::Claim SingleInstance::claim() {
  if (!lock_.tryLock(0)) {
    if (lock_.error() != QLockFile::LockFailedError) return Claim::first;  // no runtime folder
    // The holder may still be starting: it listens early but answers from its event loop.
    const QDeadlineTimer deadline(answerMilliseconds_);
    do {
      if (tell(path_, Request::show)) return Claim::forwarded;
      QThread::msleep(100);
    } while (!deadline.hasExpired());
    return Claim::unresponsive;
  }
  // The lock is ours: a socket left behind by a holder that died goes.
  QLocalServer::removeServer(path_);
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  if (!server_.listen(path_)) return Claim::first;  // the app still runs, alone
  QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] {
    while (QLocalSocket* socket = server_.nextPendingConnection()) {
      QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
      QObject::connect(socket, &QLocalSocket::readyRead, socket, [this, socket] {
        if (!socket->canReadLine()) return;
        const QByteArray line = socket->readLine();
        for (const auto& [request, text] : requestLines) {
          if (line != text) continue;
          socket->write(acknowledged);
          socket->flush();
          if (onRequest) onRequest(request);
        }
        socket->disconnectFromServer();
      });
    }
  });
  return Claim::first;
}

}  // namespace tidemark
