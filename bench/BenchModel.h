#pragma once

#include "core/KeyValueStore.h"
#include "core/ManualScheduler.h"
#include "model/AppModel.h"

namespace tidemark {

// A throw-away model over an in-memory store and a fixed clock, with the given data source.
template <class Source>
struct BenchModel {
  MemoryKeyValueStore store;
  ManualClock clock{Date{816'832'800}};
  ManualScheduler scheduler{clock};
  Source source;
  NullNotifier notifier;
  AppModel model{
      {store, clock, scheduler, source, notifier, std::nullopt}, std::nullopt, false, Bundle{}};
};

}  // namespace tidemark
