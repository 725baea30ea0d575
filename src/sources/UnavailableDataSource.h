#pragma once

#include "core/MarketDataSource.h"

namespace tidemark {

// Stands in for the live feeds where none may be asked (the self-test): every request ends at
// once without an answer.
class UnavailableDataSource : public MarketDataSource {
 public:
  void fetchQuotes(SourceMode source, const DataSourceEndpoints& endpoints,
                   const std::vector<std::string>& symbols, const QuoteMap& cached,
                   QuotesCompletion completion) override;
  void probeQuoteEndpoints(const DataSourceEndpoints&, std::function<void(bool)> done) override {
    done(false);
  }
  void fetchManifest(const std::string&,
                     std::function<void(std::optional<std::string>)> done) override {
    done(std::nullopt);
  }
  bool canFetchIntraday() const override { return false; }
  void fetchIntraday(const DataSourceEndpoints&, const std::string&, const std::string&,
                     std::function<void(Intraday)> done) override {
    done({});
  }
  void searchSecurities(const DataSourceEndpoints&, const std::string&,
                        QuotesCompletion done) override {
    done({}, "数据源搜索暂不可用");
  }
};

}  // namespace tidemark
