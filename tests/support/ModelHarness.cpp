#include "support/ModelHarness.h"

namespace tidemark::test {

Date testStart() {
  return *parseISO8601("2026-11-20T02:00:00Z");
}

ModelHarness::ModelHarness() : clock(testStart()) {
  bundle.resourceDirectory = TIDEMARK_TEST_RESOURCE_DIR;
}

std::unique_ptr<AppModel> ModelHarness::make(bool startTimers) {
  return std::make_unique<AppModel>(
      ModelDependencies{store, clock, scheduler, source, notifier, folder.path()},
      folder.path() / "watchlist.json", startTimers, bundle);
}

}  // namespace tidemark::test
