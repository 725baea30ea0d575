#pragma once

#include "app/Environment.h"
#include "core/Bundle.h"
#include "core/Clock.h"
#include "core/Notifier.h"
#include "platform/ModuleHttpClient.h"
#include "platform/QtProcessRunner.h"
#include "platform/QtScheduler.h"
#include "sources/LiveMarketData.h"

namespace tidemark {

// The bridge script among the resources: "bridge/stock-sdk-bridge.mjs", with node_modules
// beside it.
std::optional<std::filesystem::path> bridgeScript(const Bundle& bundle);

// The live data sources on the real network and real child processes. Declared in the order
// they must be built; destroyed in reverse, so nothing answers into a dead source.
struct LiveSources {
  LiveSources(const Bundle& bundle, const Clock& clock);

  ModuleHttpClient http;
  QtProcessRunner processes;  // bridge children only, so the bridge's memory bound holds for all
  StockSDKBridge bridge;
  LiveMarketData data;
};

// What a command-line run's model stands on: the real clock and timers, no notifications, the
// resources and the live sources.
struct CommandRuntime {
  SystemClock clock;
  QtScheduler scheduler;
  NullNotifier notifier;
  Bundle bundle = applicationBundle();
  LiveSources live{bundle, clock};
};

}  // namespace tidemark
