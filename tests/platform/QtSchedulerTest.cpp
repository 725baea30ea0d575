#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTest>

#include "platform/QtScheduler.h"

namespace tidemark {
namespace {

TEST(QtScheduler, RunsLaterWorkOnTheEventLoopUnlessCancelledDroppedOrItsSchedulerIsGone) {
  QtScheduler scheduler;
  std::vector<std::string> log;
  const auto note = [&log](const char* what) { return [&log, what] { log.push_back(what); }; };
  scheduler.post(note("posted"));
  EXPECT_TRUE(log.empty());  // never inline
  QElapsedTimer elapsed;
  elapsed.start();
  qint64 ranAfter = 0;
  TimerHandle once = scheduler.after(0.05, [&] {
    ranAfter = elapsed.elapsed();
    log.push_back("once");
  });
  TimerHandle cancelled = scheduler.after(0.02, note("cancelled"));
  cancelled.cancel();
  { TimerHandle dropped = scheduler.after(0.01, note("dropped")); }
  int ticks = 0;
  TimerHandle repeating = scheduler.every(0.01, [&] {
    if (++ticks == 3) repeating.cancel();  // may stop itself
  });
  TimerHandle outlived;
  {
    QtScheduler gone;
    outlived = gone.after(0.01, note("outlived its scheduler"));
    gone.post(note("posted to a gone scheduler"));
  }
  EXPECT_TRUE(QTest::qWaitFor([&] { return log.size() == 2; }, 2000));
  QTest::qWait(60);
  EXPECT_EQ(log, (std::vector<std::string>{"posted", "once"}));
  EXPECT_GE(ranAfter, 45);
  EXPECT_EQ(ticks, 3);
  once.cancel();      // after firing: harmless
  outlived.cancel();  // its scheduler is gone: harmless
}

}  // namespace
}  // namespace tidemark
