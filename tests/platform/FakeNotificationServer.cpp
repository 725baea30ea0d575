// A notification service for tests: answers the freedesktop calls on the session bus and
// prints each Notify and CloseNotification as a line on standard output.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <cstdio>

namespace {

class Server final : public QDBusVirtualObject {
 public:
  QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    const QString member = message.member();
    const QList<QVariant> args = message.arguments();
    QList<QVariant> reply;
    if (member == QStringLiteral("GetServerInformation")) {
      reply = {QStringLiteral("fake"), QStringLiteral("tidemark"), QStringLiteral("1.0"),
               QStringLiteral("1.2")};
    } else if (member == QStringLiteral("Notify") && args.size() == 8) {
      const uint replaces = args[1].toUInt();
      print(QStringLiteral("Notify|%1|%2|%3|%4")
                .arg(args[0].toString(), QString::number(replaces), args[3].toString(),
                     args[4].toString()));
      reply = {QVariant::fromValue(replaces ? replaces : ++lastID_)};
    } else if (member == QStringLiteral("CloseNotification")) {
      print(QStringLiteral("CloseNotification|") + QString::number(args.value(0).toUInt()));
    } else {
      return false;
    }
    connection.send(message.createReply(reply));
    return true;
  }

 private:
  static void print(const QString& call) {
    std::puts(call.toUtf8().constData());
    std::fflush(stdout);
  }
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
