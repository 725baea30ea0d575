#pragma once

#include <cstdint>
#include <map>
#include <string>

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

#include "core/Notifier.h"

namespace tidemark {

// Desktop notifications through the freedesktop notification service on D-Bus. There is no
// permission to ask for there: notifications count as authorised when the service answers, and
// without a service nothing is posted and nothing fails. Notifications carry the app's icon (by
// name, and as a file where one is given) and desktop entry. An id names a notification only for
// the service that gave it: when the service is restarted or replaced, the ids it gave are
// forgotten and never replaced or closed.
class DBusNotifier final : public Notifier {
 public:
  explicit DBusNotifier(QDBusConnection bus = QDBusConnection::sessionBus(),
                        QString applicationName = QStringLiteral("潮汐栏"),
                        QString imageFile = QString());

  void queryAuthorization(std::function<void(bool)> completion) override;
  void requestAuthorization(std::function<void(bool)> completion) override;
  void add(const NotificationRequest& request, std::function<void()> completion) override;
  void remove(const std::string& identifier) override;

 private:
  // Calls a method of the service; `done` gets the reply on the main thread.
  void call(const QString& method, const QList<QVariant>& arguments,
            std::function<void(const QDBusMessage& reply)> done);

  QDBusConnection bus_;
  QString applicationName_;
  QString imageFile_;  // the icon as an absolute file, for daemons that cannot find it by name
  // The service's id of the last notification shown per identifier, so a new one replaces it,
  // with the unique bus name of the service that gave it.
  struct Shown {
    uint32_t id;
    QString service;
  };
  std::map<std::string, Shown> shown_;
  QString service_;  // the service's unique name, as far as known
  QObject context_;  // owns pending calls; their callbacks die with the notifier
  QDBusServiceWatcher watcher_;
};

}  // namespace tidemark
