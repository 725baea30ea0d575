// One app per user: a stale lock and socket are taken over, a later start is forwarded to the
// running one, and a holder that does not answer is reported.

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <thread>

#include <QHostInfo>
#include <QTest>

#include "app/SingleInstance.h"
#include "support/Fakes.h"

namespace tidemark {
namespace {

TEST(SingleInstance, StaleLocksGoLaterStartsAreForwardedSilentHoldersReported) {
  test::TemporaryFolder folder;
  const QString path = QString::fromStdString((folder.path() / "tidemark.socket").string());
  // What a killed holder leaves: its lock naming a process that is gone, and its socket file.
  std::ofstream(folder.path() / "tidemark.socket.lock")
      << "999999999\ntidemark\n"
      << QHostInfo::localHostName().toStdString() << "\n";
  std::ofstream(folder.path() / "tidemark.socket") << "";

  SingleInstance first(path);
  int shown = 0;
  first.onShowRequested = [&] { ++shown; };
  ASSERT_EQ(first.claim(), SingleInstance::Claim::first);

  // A later start, in a thread of its own while this one serves the socket.
  std::atomic<int> later{-1};
  std::thread second([&] { later = int(SingleInstance(path).claim()); });
  EXPECT_TRUE(QTest::qWaitFor([&] { return later != -1; }, 8000));
  second.join();
  EXPECT_EQ(later, int(SingleInstance::Claim::forwarded));
  EXPECT_EQ(shown, 1);

  // Nobody serves the socket while this thread is blocked: the holder does not answer.
  EXPECT_EQ(SingleInstance(path, 300).claim(), SingleInstance::Claim::unresponsive);
  EXPECT_EQ(shown, 1);
}

}  // namespace
}  // namespace tidemark
