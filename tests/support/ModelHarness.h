#pragma once

#include <memory>
#include <ostream>

#include "core/KeyValueStore.h"
#include "model/AppModel.h"
#include "model/StoreKeys.h"
#include "support/Fakes.h"

namespace tidemark {

inline void PrintTo(const SetAsideRecord& r, std::ostream* out) {
  *out << "{" << r.record << " | " << r.problem << " | " << r.keptAs << " | " << r.failure << "}";
}

}  // namespace tidemark

namespace tidemark::test {

// Everything a model needs, faked, with the real resource folder of the build.
struct ModelHarness {
  ModelHarness();

  std::unique_ptr<AppModel> make(bool startTimers = false);

  ReportingStore store;
  ManualClock clock;
  ManualScheduler scheduler{clock};
  FakeMarketDataSource source;
  RecordingNotifier notifier;
  TemporaryFolder folder;
  Bundle bundle;
};

// 2026-11-20T02:00:00Z, a month after the shipped snapshot.
Date testStart();

}  // namespace tidemark::test
