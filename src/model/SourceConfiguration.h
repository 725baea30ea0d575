#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/Bundle.h"
#include "core/DataSourceEndpoints.h"
#include "core/KeyValueStore.h"
#include "core/QuoteSnapshot.h"

namespace tidemark {

// The endpoint set the live sources use, where it came from (in words, for the settings) and
// its revision: the stored manifest, else the one shipped with the app, else the compiled-in set.
struct SourceConfiguration {
  DataSourceEndpoints endpoints = DataSourceEndpoints::bundled();
  int64_t revision = 0;
  std::string status = "使用内置地址";
  // The start-up check of the endpoints (and the manifest fetch it may need) is under way.
  bool bootstrapInFlight = false;

  // From the store's manifest, else the shipped one.
  static SourceConfiguration restored(const KeyValueStore& store, const Bundle& bundle);
  // A fetched manifest replaces the set unless it is unreadable or older (an equal revision is
  // adopted again); an adopted one is stored. Whether it was adopted.
  bool adopt(const std::optional<std::string>& body, KeyValueStore& store);
};

// Where the shown quotes come from, in words: the first tag found in the order offline snapshot,
// stock-sdk, Tencent, Sina, stock-api; otherwise the source mode's label.
std::string sourceLabel(const std::vector<QuoteSnapshot>& quotes, SourceMode mode);

}  // namespace tidemark
