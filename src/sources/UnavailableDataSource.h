#pragma once

#include "core/MarketDataSource.h"

namespace tidemark {

// Stands in for the live feeds where they cannot be reached: every request ends at once
// without quotes, with a text that says so.
class UnavailableDataSource final : public MarketDataSource {
 public:
  void fetchQuotes(SourceMode source, const DataSourceEndpoints& endpoints,
                   const std::vector<std::string>& symbols, const QuoteMap& cached,
                   QuotesCompletion completion) override;
};

}  // namespace tidemark
