#pragma once

#include <filesystem>
#include <optional>

#include "core/Clock.h"
#include "core/DataSourceEndpoints.h"
#include "core/KeyValueStore.h"
#include "core/MarketDataSource.h"
#include "core/Notifier.h"
#include "core/Scheduler.h"

namespace tidemark {

// What the model works through: the store, the clock, the timers, the quotes' source and the
// notifications, all owned by the caller and outliving the model.
struct ModelDependencies {
  KeyValueStore& defaults;
  const Clock& clock;
  Scheduler& scheduler;
  MarketDataSource& dataSource;
  Notifier& notifier;
  // The user's application-support directory; the watchlist file defaults to
  // "<it>/Tidemark/watchlist.json". None: the watchlist lives in the store only.
  std::optional<std::filesystem::path> applicationSupportDirectory = std::nullopt;
  // An endpoint set for this run only: it replaces the restored one and is never stored.
  std::optional<DataSourceEndpoints> endpointsOverride = std::nullopt;
  // False where the alerts are only listed as stored (the command line's --alerts).
  bool evaluatesAlerts = true;
  // Where fetched candles are kept between runs ("<it>/kline"); none: in memory only.
  std::optional<std::filesystem::path> cacheDirectory = std::nullopt;
};

}  // namespace tidemark
