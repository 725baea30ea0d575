#include <gtest/gtest.h>

#include "core/ChangeSignal.h"

namespace tidemark {
namespace {

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

}  // namespace
}  // namespace tidemark
