#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/DataSourceEndpoints.h"
#include "core/Enums.h"
#include "core/QuoteSnapshot.h"

namespace tidemark {

// The quotes one source could read (possibly fewer than asked) and its error text, if any.
using QuotesCompletion =
    std::function<void(std::vector<QuoteSnapshot> quotes, std::optional<std::string> error)>;

// What the market model asks of the live data sources. Completions run on the main thread,
// exactly once; they may run before the call returns.
class MarketDataSource {
 public:
  virtual ~MarketDataSource() = default;

  // One batch from one live source (`tencent`, `sina` or `stockSDK`), built from `endpoints`.
  virtual void fetchQuotes(SourceMode source, const DataSourceEndpoints& endpoints,
                           const std::vector<std::string>& symbols, const QuoteMap& cached,
                           QuotesCompletion completion) = 0;
};

}  // namespace tidemark
