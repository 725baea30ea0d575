#pragma once

#include <functional>

#include <QLocalServer>
#include <QString>

namespace tidemark {

// One desktop app per user. The first start listens on a socket in the user's runtime folder; a
// second start finds it there, asks it to show its orb and steps aside.
class SingleInstance {
 public:
  // The socket: "tidemark.socket" in $XDG_RUNTIME_DIR (Qt's runtime location).
  static QString defaultPath();

  explicit SingleInstance(QString path = defaultPath());

  // True when this process is the one to run; false when a running one took the request.
  bool claim();
  // Called in the running process for every later start.
  std::function<void()> onShowRequested;

 private:
  QString path_;
  QLocalServer server_;
};

}  // namespace tidemark
