#pragma once

#include <functional>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "core/Date.h"
#include "core/MarketDataSource.h"

namespace tidemark {

// One live load of the watched quotes: the sources of a mode asked in turn, each for what the
// earlier ones did not give. Owned by whoever may drop it: the answers of a dropped load are
// never collected.
class LiveQuoteLoad : public std::enable_shared_from_this<LiveQuoteLoad> {
 public:
  struct Result {
    std::vector<QuoteSnapshot> collected;  // in the order the sources gave them
    std::vector<std::string> missing;      // asked for and given by no source
    std::vector<std::string> errors;       // each failing source's words, in order
    Date start;
  };

  LiveQuoteLoad(SourceMode mode, std::vector<std::string> symbols,
                const std::vector<QuoteSnapshot>& cached, Date start);

  // Whether this load asks the same feeds for the same symbols, whatever their order.
  bool asksFor(SourceMode mode, const std::vector<std::string>& symbols) const;
  // Asks the sources in turn, each with the endpoint set as it is then; `done` runs once, when
  // every symbol is given or every source asked, unless the load was dropped before.
  void run(MarketDataSource& source, const DataSourceEndpoints& endpoints,
           std::function<void(Result)> done);

 private:
  void attempt();

  SourceMode mode_;
  std::vector<std::string> symbols_;
  QuoteMap cached_;
  std::vector<SourceMode> order_;
  size_t index_ = 0;
  Result result_;
  std::unordered_set<std::string> collectedIDs_;
  MarketDataSource* source_ = nullptr;
  const DataSourceEndpoints* endpoints_ = nullptr;
  std::function<void(Result)> done_;
};

}  // namespace tidemark
