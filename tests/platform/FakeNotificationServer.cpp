// A notification service for tests: answers the freedesktop calls on the session bus and
// prints each Notify and CloseNotification as a line on standard output.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

class Server final : public QDBusVirtualObject {
 public:
  QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    const QList<QVariant> args = message.arguments();
    QList<QVariant> reply;  // to GetServerInformation too: the notifier reads no field of it
    if (message.member() == u"Notify"_s && args.size() == 8) {
      const uint replaces = args[1].toUInt();
      print(u"Notify|%1|%2|%3|%4"_s.arg(args[0].toString(), QString::number(replaces),
                                        args[3].toString(), args[4].toString()));
      reply = {QVariant::fromValue(replaces ? replaces : ++lastID_)};
    } else if (message.member() == u"CloseNotification"_s) {
      print(u"CloseNotification|"_s + QString::number(args.value(0).toUInt()));
    } else if (message.member() != u"GetServerInformation"_s) {
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
  if (!bus.registerVirtualObject(u"/org/freedesktop/Notifications"_s, &server) ||
      !bus.registerService(u"org.freedesktop.Notifications"_s)) {
    std::fprintf(stderr, "cannot register the notification service\n");
    return 1;
  }
  return app.exec();
}
