#pragma once

#include <functional>
#include <memory>

#include <QLockFile>
#include <QObject>
#include <QSocketNotifier>
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

  // "tidemark.socket" in the runtime folder; the lock is "<it>.lock". Empty without a folder.
  static QString defaultPath();
  // $XDG_RUNTIME_DIR when it is a folder of the user's that they may write; otherwise a private
  // folder of the user's own in the temporary folder ("tidemark-<uid>", created 0700, its owner
  // and mode checked); empty when neither can be had. `notice` says which, when not the first.
  static QString runtimeFolder(QString* notice = nullptr);

  explicit SingleInstance(QString path = defaultPath(), int answerMilliseconds = 5000);
  ~SingleInstance();
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;

  Claim claim();
  // What the claim found and did that the user should hear of: a lock left behind and taken
  // over, a folder in the lock's place, no runtime folder; empty when all was as it should be.
  QString notice;
  // The process that holds the lock, when the claim found one that does not answer.
  qint64 holder = 0;
  // Called in the running process for every later start and toggle.
  std::function<void(Request)> onRequest;

  // Asks the app running at `path`; answers whether it took the request.
  static bool tell(const QString& path, Request request);

  Claim listen();
  void acceptWaiting();

  QString path_;
  int answerMilliseconds_;
  QLockFile lock_;
  // A plain Unix socket watched by the event loop: QtNetwork's local server would load the whole
  // network stack into every session for these few bytes.
  int listening_ = -1;
  std::unique_ptr<QSocketNotifier> accepting_;
  QObject connections_;  // a notifier per connection not yet answered
};

}  // namespace tidemark
