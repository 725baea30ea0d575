#include "app/SingleInstance.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
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

std::optional<SingleInstance::Request> requestOf(const QByteArray& line) {
  for (const auto& [request, text] : requestLines)
    if (line == text) return request;
  return std::nullopt;
}

// A request line is short: a peer that sends more without a line end is not one of ours.
constexpr qsizetype longestLine = 256;

// The socket's address; false when the path is too long for one.
bool addressOf(const QString& path, sockaddr_un& address) {
  const QByteArray name = QFile::encodeName(path);
  if (name.isEmpty() || static_cast<size_t>(name.size()) >= sizeof(address.sun_path)) return false;
  address = {};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, name.constData(), static_cast<size_t>(name.size()));
  return true;
}

bool readable(int fd, int milliseconds) {
  pollfd watched{fd, POLLIN, 0};
  return ::poll(&watched, 1, milliseconds) == 1;
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

SingleInstance::~SingleInstance() {
  // Each notifier goes before its socket is closed.
  for (auto* notifier : connections_.findChildren<QSocketNotifier*>()) {
    const auto socket = static_cast<int>(notifier->socket());
    delete notifier;
    ::close(socket);
  }
  accepting_.reset();
  if (listening_ < 0) return;
  ::close(listening_);
  ::unlink(QFile::encodeName(path_).constData());  // ours: the lock is still held
}

bool SingleInstance::tell(const QString& path, Request request) {
  sockaddr_un address{};
  if (!addressOf(path, address)) return false;
  // Not blocking: a holder that accepts nothing would otherwise hold a start once its queue is
  // full.
  const int running = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (running < 0) return false;
  QByteArray answer;
  const QByteArray line = lineOf(request);
  // A connection to a local socket is made or refused at once, a full queue refusing it too.
  if (::connect(running, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
      ::send(running, line.constData(), static_cast<size_t>(line.size()), MSG_NOSIGNAL) ==
          line.size()) {
    char chunk[64];
    ssize_t n = 0;
    while (!answer.endsWith('\n') && answer.size() < longestLine && readable(running, 500) &&
           (n = ::recv(running, chunk, sizeof chunk, 0)) > 0)
      answer.append(chunk, n);
  }
  ::close(running);
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
  // The lock is ours: a socket left behind by a holder that died goes. Without a socket the app
  // still runs, alone.
  sockaddr_un address{};
  const QByteArray name = QFile::encodeName(path_);
  ::unlink(name.constData());
  if (!addressOf(path_, address)) return Claim::first;
  listening_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (listening_ < 0) return Claim::first;
  // Only the user may connect: the folder is theirs alone, and the socket's mode says so too.
  if (::bind(listening_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::chmod(name.constData(), 0600) != 0 || ::listen(listening_, 8) != 0) {
    ::close(listening_);
    listening_ = -1;
    return Claim::first;
  }
  accepting_ = std::make_unique<QSocketNotifier>(listening_, QSocketNotifier::Read);
  QObject::connect(accepting_.get(), &QSocketNotifier::activated, accepting_.get(),
                   [this] { acceptWaiting(); });
  return Claim::first;
}

// Each connection sends one line and is answered "ok" when it is a request, then closed.
void SingleInstance::acceptWaiting() {
  int client = -1;
  while ((client = ::accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)) >= 0) {
    auto* notifier = new QSocketNotifier(client, QSocketNotifier::Read, &connections_);
    auto received = std::make_shared<QByteArray>();
    QObject::connect(
        notifier, &QSocketNotifier::activated, notifier, [this, notifier, client, received] {
          char chunk[64];
          const ssize_t n = ::recv(client, chunk, sizeof chunk, 0);
          if (n < 0 && (errno == EAGAIN || errno == EINTR)) return;
          if (n > 0) received->append(chunk, n);
          const qsizetype end = received->indexOf('\n');
          if (n > 0 && end < 0 && received->size() < longestLine) return;
          const auto request = end < 0 ? std::nullopt : requestOf(received->left(end + 1));
          if (request)
            ::send(client, acknowledged.constData(), static_cast<size_t>(acknowledged.size()),
                   MSG_NOSIGNAL);
          notifier->setEnabled(false);
          notifier->setParent(nullptr);
          notifier->deleteLater();
          ::close(client);
          if (request && onRequest) onRequest(*request);
        });
  }
}

}  // namespace tidemark
