// A notification service for tests: answers the freedesktop calls on the session bus and
// records them; "Calls" (interface org.tidemark.Test) returns the record.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>
#include <cstdio>

namespace {

class Server final : public QDBusVirtualObject {
 public:
  QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    const QString member = message.member();
    const QList<QVariant> args = message.arguments();
    QDBusMessage reply;
    if (member == QStringLiteral("GetServerInformation")) {
      reply =
          message.createReply(QList<QVariant>{QStringLiteral("fake"), QStringLiteral("tidemark"),
                                              QStringLiteral("1.0"), QStringLiteral("1.2")});
    } else if (member == QStringLiteral("Notify") && args.size() == 8) {
      const uint replaces = args[1].toUInt();
      const uint id = replaces ? replaces : ++lastID_;
      calls_ << QStringLiteral("Notify|%1|%2|%3|%4")
                    .arg(args[0].toString(), QString::number(replaces), args[3].toString(),
                         args[4].toString());
      reply = message.createReply(QVariant::fromValue(id));
    } else if (member == QStringLiteral("CloseNotification")) {
      calls_ << QStringLiteral("CloseNotification|") + QString::number(args.value(0).toUInt());
      reply = message.createReply();
    } else if (member == QStringLiteral("Calls")) {
      reply = message.createReply(QVariant(calls_));
    } else {
      return false;
    }
    connection.send(reply);
    return true;
  }

 private:
  QStringList calls_;
  uint lastID_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  Server server;
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.registerVirtualObject(QStringLiteral("/org/freedesktop/Notifications"), &server) ||
      !bus.registerService(QStringLiteral("org.freedesktop.Notifications"))) {
    std::fprintf(stderr, "cannot register the notification service\n");
    return 1;
  }
  return app.exec();
}
