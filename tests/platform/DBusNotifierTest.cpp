// Runs under dbus-run-session: a private session bus, with or without a notification service.

#include <gtest/gtest.h>

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>
#include <QTest>

#include "platform/DBusNotifier.h"

namespace tidemark {
namespace {

bool authorized(DBusNotifier& notifier) {
  std::optional<bool> answer;
  notifier.queryAuthorization([&](bool value) { answer = value; });
  EXPECT_FALSE(answer) << "answered inline";
  EXPECT_TRUE(QTest::qWaitFor([&] { return answer.has_value(); }, 5000));
  return answer.value_or(false);
}

TEST(DBusNotifier, WithoutAServiceNothingIsAuthorisedAndNothingFails) {
  DBusNotifier notifier;
  EXPECT_FALSE(authorized(notifier));
  bool done = false;
  notifier.add({"tidemark.price-alert.600519", "t", "b"}, [&] { done = true; });
  EXPECT_TRUE(QTest::qWaitFor([&] { return done; }, 5000));

  DBusNotifier unconnected(QDBusConnection::connectToBus(
      QStringLiteral("unix:path=/nonexistent/bus"), QStringLiteral("nowhere")));
  EXPECT_FALSE(authorized(unconnected));
}

TEST(DBusNotifier, PostsReplacesAndWithdrawsThroughTheService) {
  QProcess server;
  server.start(QStringLiteral(FAKE_NOTIFICATION_SERVER), {});
  ASSERT_TRUE(server.waitForStarted());
  auto* bus = QDBusConnection::sessionBus().interface();
  ASSERT_TRUE(QTest::qWaitFor(
      [&] { return bus->isServiceRegistered(QStringLiteral("org.freedesktop.Notifications")); },
      5000));

  DBusNotifier notifier;
  EXPECT_TRUE(authorized(notifier));
  int completions = 0;
  notifier.add({"tidemark.price-alert.600519", "贵州茅台 价格提醒", "CNY 1,600.50"},
               [&] { ++completions; });
  EXPECT_TRUE(QTest::qWaitFor([&] { return completions == 1; }, 5000));
  notifier.add({"tidemark.price-alert.600519", "贵州茅台 价格提醒", "again"},
               [&] { ++completions; });
  EXPECT_TRUE(QTest::qWaitFor([&] { return completions == 2; }, 5000));
  notifier.remove("tidemark.price-alert.600519");
  notifier.remove("tidemark.price-alert.00700");  // never shown: nothing to withdraw

  QStringList calls;
  EXPECT_TRUE(QTest::qWaitFor(
      [&] {
        QDBusMessage reply = QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.Notifications"),
            QStringLiteral("/org/freedesktop/Notifications"), QStringLiteral("org.tidemark.Test"),
            QStringLiteral("Calls")));
        calls = reply.arguments().value(0).toStringList();
        return calls.size() == 3;
      },
      5000));
  EXPECT_EQ(calls, (QStringList{QStringLiteral("Notify|潮汐栏|0|贵州茅台 价格提醒|CNY 1,600.50"),
                                QStringLiteral("Notify|潮汐栏|1|贵州茅台 价格提醒|again"),
                                QStringLiteral("CloseNotification|1")}));
  server.kill();
  server.waitForFinished();
}

}  // namespace
}  // namespace tidemark
