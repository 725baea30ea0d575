// Runs under dbus-run-session: a private session bus, first without a notification service,
// then with the recording one.

#include <gtest/gtest.h>

#include <QDBusConnectionInterface>
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

TEST(DBusNotifier, WithoutAServiceNothingFailsWithOneItPostsReplacesAndWithdraws) {
  DBusNotifier unconnected(QDBusConnection::connectToBus(
      QStringLiteral("unix:path=/nonexistent/bus"), QStringLiteral("nowhere")));
  EXPECT_FALSE(authorized(unconnected));
  DBusNotifier notifier;
  EXPECT_FALSE(authorized(notifier));
  int completions = 0;
  const auto add = [&](const char* body) {
    notifier.add({"tidemark.price-alert.600519", "贵州茅台 价格提醒", body},
                 [&] { ++completions; });
    return QTest::qWaitFor([&, want = completions + 1] { return completions == want; }, 5000);
  };
  EXPECT_TRUE(add("no service"));

  QProcess server;
  server.start(QStringLiteral(FAKE_NOTIFICATION_SERVER), {});
  ASSERT_TRUE(QTest::qWaitFor(
      [] {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(
            QStringLiteral("org.freedesktop.Notifications"));
      },
      5000));
  EXPECT_TRUE(authorized(notifier));
  for (const char* body : {"CNY 1,600.50", "again"}) EXPECT_TRUE(add(body));
  notifier.remove("tidemark.price-alert.600519");
  notifier.remove("tidemark.price-alert.00700");  // never shown: nothing to withdraw

  QByteArray calls;
  EXPECT_TRUE(QTest::qWaitFor(
      [&] { return (calls += server.readAllStandardOutput()).count('\n') == 3; }, 5000));
  EXPECT_EQ(calls.toStdString(),
            "Notify|潮汐栏|0|贵州茅台 价格提醒|CNY 1,600.50\n"
            "Notify|潮汐栏|1|贵州茅台 价格提醒|again\n"
            "CloseNotification|1\n");
  server.kill();
  server.waitForFinished();
}

}  // namespace
}  // namespace tidemark
