#pragma once

#include <functional>
#include <memory>

#include <QLocalServer>
#include <QLockFile>
#include <QString>

namespace tidemark {

// One desktop app per user. The first start holds a lock file and listens on a socket beside it
// in the user's runtime folder; a later start asks it over the socket to show its orb and steps
// aside, and the command line's toggles ask it to show or hide the orb or to mask. A lock left by
// a process that died is taken over.
class SingleInstance {
 public:
  enum class Request { show, toggleOrb, toggleMask };
  enum class Claim {
    first,        // this process runs the app
    forwarded,    // the running app took the request
    unresponsive  // another process holds the lock but does not answer
  };

  // "tidemark.socket" in $XDG_RUNTIME_DIR (Qt's runtime location); the lock is "<it>.lock".
  static QString defaultPath();

  explicit SingleInstance(QString path = defaultPath(), int answerMilliseconds = 5000);

  Claim claim();
  // Called in the running process for every later start and toggle.
  std::function<void(Request)> onRequest;

  // Asks the app running at `path`; answers whether it took the request.
  static bool tell(const QString& path, Request request);

  QString path_;
  int answerMilliseconds_;
  QLockFile lock_;
  QLocalServer server_;
};

}  // namespace tidemark
