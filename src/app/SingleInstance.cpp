#include "app/SingleInstance.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>

#include "core/GlobalCommands.h"

namespace tidemark {
namespace {

const QByteArray acknowledged = "ok\n";
// A global command travels as its command-line option.
QByteArray commandLine(GlobalCommand command) {
  const std::string_view option = specOf(command).option;
  return QByteArray(option.data(), static_cast<qsizetype>(option.size())) + '\n';
}
const std::pair<SingleInstance::Request, QByteArray> requestLines[] = {
    {SingleInstance::Request::show, "show\n"},
    {SingleInstance::Request::toggleOrb, commandLine(GlobalCommand::toggleOrb)},
    {SingleInstance::Request::toggleMask, commandLine(GlobalCommand::toggleMask)},
};

QByteArray lineOf(SingleInstance::Request request) {
  for (const auto& [r, line] : requestLines)
    if (r == request) return line;
  return {};
}

}  // namespace

QString SingleInstance::runtimeFolder(QString* notice) {
  const uid_t uid = ::getuid();
  // A folder, not a link, of the user's, that they may write; a private one also that nobody
  // else could ever write to (then only read access is taken away from others).
  const auto usable = [uid](const QByteArray& folder, bool privateOnly) {
    struct stat info {};
    if (::lstat(folder.constData(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != uid)
      return false;
    if (privateOnly && ((info.st_mode & 022) != 0 || ::chmod(folder.constData(), 0700) != 0))
      return false;
    return ::access(folder.constData(), W_OK | X_OK) == 0;
  };
  const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
  if (!runtime.isEmpty() && usable(runtime, false)) return QString::fromLocal8Bit(runtime);
  QString own = QDir::tempPath() + QStringLiteral("/tidemark-%1").arg(uid);
  const QByteArray ownPath = QFile::encodeName(own);
  ::mkdir(ownPath.constData(), 0700);  // or it is there already, and checked below
  const QString why = runtime.isEmpty() ? QStringLiteral("$XDG_RUNTIME_DIR is not set")
                                        : QStringLiteral(
                                              "$XDG_RUNTIME_DIR (%1) is not a folder "
                                              "of yours that you may write")
                                              .arg(QString::fromLocal8Bit(runtime));
  if (usable(ownPath, true)) {
    if (notice)
      *notice = QStringLiteral("tidemark: %1; the one-instance channel is in %2").arg(why, own);
    return own;
  }
  if (notice)
    *notice = QStringLiteral(
                  "tidemark: %1, and %2 is not a private folder of yours; running without the "
                  "one-instance channel, so a second start and tidemark --toggle-orb will not "
                  "reach this app")
                  .arg(why, own);
  return {};
}

QString SingleInstance::defaultPath() {
  const QString folder = runtimeFolder();
  return folder.isEmpty() ? QString() : folder + QStringLiteral("/tidemark.socket");
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
  if (path_.isEmpty()) return Claim::first;  // no runtime folder: said where it was chosen
  const QString lockPath = path_ + QStringLiteral(".lock");
  if (!lock_.tryLock(0)) {
    if (QFileInfo(lockPath).isDir()) {
      notice = QStringLiteral(
                   "tidemark: %1 is a folder, not a lock; running without the one-instance "
                   "channel (remove the folder to have it back)")
                   .arg(lockPath);
      return Claim::first;
    }
    if (lock_.error() != QLockFile::LockFailedError) {
      notice =
          QStringLiteral("tidemark: cannot create %1; running without the one-instance channel")
              .arg(lockPath);
      return Claim::first;
    }
    // A holder names itself in the lock as it takes it; what names nobody (empty, damaged) is
    // debris, unless a process still holds the lock's own file lock, which the removal respects.
    QString host, application;
    if (!lock_.getLockInfo(&holder, &host, &application)) {
      QThread::msleep(100);  // a holder that is taking the lock right now has written it since
      if (!lock_.getLockInfo(&holder, &host, &application) && lock_.removeStaleLockFile() &&
          lock_.tryLock(0)) {
        notice = QStringLiteral(
                     "tidemark: took over %1, which named no running process (left "
                     "damaged by an earlier run)")
                     .arg(lockPath);
        return listen();
      }
    }
    // The holder may still be starting: it listens early but answers from its event loop.
    const QDeadlineTimer deadline(answerMilliseconds_);
    do {
      if (tell(path_, Request::show)) return Claim::forwarded;
      QThread::msleep(100);
    } while (!deadline.hasExpired());
    return Claim::unresponsive;
  }
  return listen();
}

SingleInstance::Claim SingleInstance::listen() {
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
