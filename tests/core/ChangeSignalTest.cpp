// The small building blocks under the model: scheduler, stores, change signal, files.

#include <gtest/gtest.h>

#include <fstream>

#include "core/ChangeSignal.h"
#include "core/FileIO.h"
#include "core/KeyValueStore.h"
#include "core/ManualScheduler.h"
#include "support/Fakes.h"

namespace tidemark {
namespace {

TEST(ManualScheduler, RunsDueWorkInOrderAndHonoursCancellation) {
  ManualClock clock(Date{100});
  ManualScheduler scheduler(clock);
  std::vector<std::string> log;
  auto late = scheduler.after(
      2, [&] { log.push_back("late@" + std::to_string(int(clock.now().sinceReference))); });
  auto early = scheduler.after(1, [&] { log.push_back("early"); });
  auto cancelled = scheduler.after(1.5, [&] { log.push_back("cancelled"); });
  int ticks = 0;
  auto repeating = scheduler.every(0.5, [&] { ++ticks; });
  scheduler.post([&] { log.push_back("posted"); });
  cancelled.cancel();
  scheduler.advance(2.2);
  EXPECT_EQ(log, (std::vector<std::string>{"posted", "early", "late@102"}));
  EXPECT_EQ(ticks, 4);
  EXPECT_EQ(clock.now().sinceReference, 102.2);
  repeating = TimerHandle();  // dropping the handle stops it
  scheduler.advance(5);
  EXPECT_EQ(ticks, 4);
  EXPECT_EQ(scheduler.pendingCount(), 0u);
}

TEST(OverlayKeyValueStore, ReadsThroughAndNeverWritesToTheBase) {
  MemoryKeyValueStore base;
  base.setData("a", "base");
  base.setStringArray("list", {"x"});
  OverlayKeyValueStore overlay(base);
  EXPECT_EQ(overlay.data("a"), "base");
  overlay.setData("a", "mine");
  overlay.remove("list");
  overlay.setStringArray("new", {});
  EXPECT_EQ(overlay.data("a"), "mine");
  EXPECT_EQ(overlay.stringArray("list"), std::nullopt);
  EXPECT_EQ(overlay.stringArray("new"), std::vector<std::string>{});
  EXPECT_EQ(base.data("a"), "base");
  EXPECT_EQ(base.stringArray("list"), std::vector<std::string>{"x"});
  EXPECT_FALSE(base.contains("new"));
  EXPECT_EQ(overlay.data("list"), std::nullopt);  // a list is no byte value
}

TEST(ChangeSignal, SubscriptionsEndWithTheirTokenAndMayOutliveTheSignal) {
  ChangeSignal::Subscription survivor;
  int calls = 0;
  {
    ChangeSignal signal;
    auto first = signal.subscribe([&] { ++calls; });
    {
      auto second = signal.subscribe([&] { calls += 10; });
      signal.notify();
    }
    signal.notify();
    survivor = signal.subscribe([&] { ++calls; });
  }
  survivor.reset();  // the signal is gone: nothing happens
  EXPECT_EQ(calls, 12);
}

TEST(FileIO, AtomicWriteReplacesWholeOrLeavesTheOldFile) {
  test::TemporaryFolder folder;
  const auto file = folder.path() / "list.json";
  ASSERT_FALSE(writeFileAtomically(file, "first"));
  ASSERT_FALSE(writeFileAtomically(file, "second"));
  std::error_code error;
  EXPECT_EQ(readFile(file, error), "second");
  // A missing folder: the write fails and leaves nothing behind.
  EXPECT_TRUE(writeFileAtomically(folder.path() / "missing" / "x", "x"));
  EXPECT_EQ(readFile(folder.path() / "missing" / "x", error), std::nullopt);
  EXPECT_EQ(error, std::errc::no_such_file_or_directory);
  EXPECT_EQ(readFile(folder.path(), error), std::nullopt);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

}  // namespace
}  // namespace tidemark
