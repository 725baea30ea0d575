#pragma once

#include "core/Clock.h"
#include "core/HttpClient.h"
#include "core/MarketDataSource.h"
#include "sources/StockSDKBridge.h"

namespace tidemark {

// The live sources: the Tencent and Sina text feeds over HTTP and the stock-sdk bridge.
class LiveMarketData final : public MarketDataSource {
 public:
  LiveMarketData(HttpClient& http, StockSDKBridge& bridge, const Clock& clock)
      : http_(http), bridge_(bridge), clock_(clock) {}

  void fetchQuotes(SourceMode source, const DataSourceEndpoints& endpoints,
                   const std::vector<std::string>& symbols, const QuoteMap& cached,
                   QuotesCompletion completion) override;
  // Tencent and Sina must each give a record for 600519; the bridge must not fail its health
  // check (no verdict is fine). The three probes run at once.
  void probeQuoteEndpoints(const DataSourceEndpoints& endpoints,
                           std::function<void(bool)> completion) override;
  // The manifest is a small JSON document; anything longer than this is not one.
  static constexpr size_t manifestMaxBytes = 256 << 10;
  void fetchManifest(const std::string& url,
                     std::function<void(std::optional<std::string>)> completion) override;
  bool canFetchIntraday() const override { return bridge_.isAvailable(); }
  void fetchIntraday(const DataSourceEndpoints& endpoints, const std::string& id,
                     const std::string& market, std::function<void(Intraday)> completion) override;
  // Tencent's candles in the text-feed modes, the bridge's in the stockSDK mode and when Tencent
  // fails; none for an off-exchange fund.
  static constexpr size_t klineMaxBytes = 1 << 20;
  void fetchKline(SourceMode source, const DataSourceEndpoints& endpoints,
                  const std::string& symbol, KlinePeriod period,
                  KlineCompletion completion) override;
  // The text feeds have no search; the bridge asks the package's own.
  void searchSecurities(const DataSourceEndpoints& endpoints, const std::string& text,
                        QuotesCompletion completion) override;

  // Tencent's two rate rows, and Sina's US rows for the extended-hours trades.
  void fetchRates(const DataSourceEndpoints& endpoints, RatesCompletion completion) override;
  void fetchExtendedHours(const DataSourceEndpoints& endpoints,
                          const std::vector<std::string>& symbols,
                          ExtendedCompletion completion) override;

  // One web probe: the source's quote base followed by "sh600519", 3 s.
  void probeQuoteEndpoint(SourceMode source, const DataSourceEndpoints& endpoints,
                          std::function<void(bool)> completion);

 private:
  HttpClient& http_;
  StockSDKBridge& bridge_;
  const Clock& clock_;
};

// The request headers of both text feeds: the portal's home page as Referer, a browser agent.
std::vector<std::pair<std::string, std::string>> feedHeaders(SourceMode source);

}  // namespace tidemark
