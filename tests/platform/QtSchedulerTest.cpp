#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTest>

#include "platform/QtScheduler.h"

namespace tidemark {
namespace {

TEST(QtScheduler, RunsLaterWorkOnTheEventLoopAndHonoursCancellation) {
  QtScheduler scheduler;
  std::vector<std::string> log;
  scheduler.post([&] { log.push_back("posted"); });
  EXPECT_TRUE(log.empty());  // never inline
  QElapsedTimer elapsed;
  elapsed.start();
  qint64 ranAfter = 0;
  TimerHandle once = scheduler.after(0.05, [&] {
    ranAfter = elapsed.elapsed();
    log.push_back("once");
  });
  TimerHandle cancelled = scheduler.after(0.02, [&] { log.push_back("cancelled"); });
  cancelled.cancel();
  int ticks = 0;
  TimerHandle repeating = scheduler.every(0.01, [&] {
    if (++ticks == 3) repeating.cancel();  // may stop itself
  });
  EXPECT_TRUE(QTest::qWaitFor([&] { return log.size() == 2; }, 2000));
  QTest::qWait(60);
  EXPECT_EQ(log, (std::vector<std::string>{"posted", "once"}));
  EXPECT_GE(ranAfter, 45);
  EXPECT_EQ(ticks, 3);
  once.cancel();  // after firing: harmless
}

TEST(QtScheduler, DroppedHandlesAndSchedulersRunNothing) {
  int runs = 0;
  TimerHandle outlived;
  {
    QtScheduler scheduler;
    {
      TimerHandle dropped = scheduler.after(0.01, [&] { ++runs; });
    }
    outlived = scheduler.after(0.01, [&] { ++runs; });
    scheduler.post([&] { ++runs; });
  }
  QTest::qWait(50);
  EXPECT_EQ(runs, 0);
  outlived.cancel();  // its scheduler is gone: harmless
}

}  // namespace
}  // namespace tidemark
