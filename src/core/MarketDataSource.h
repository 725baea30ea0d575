#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/DataSourceEndpoints.h"
#include "core/Enums.h"
#include "core/Kline.h"
#include "core/MarketExtras.h"
#include "core/QuoteSnapshot.h"

namespace tidemark {

// The quotes one source could read (possibly fewer than asked) and its error text, if any.
using QuotesCompletion =
    std::function<void(std::vector<QuoteSnapshot> quotes, std::optional<std::string> error)>;

// The candles one source could read, oldest first, or its error text.
struct KlineAnswer {
  std::vector<KlineBar> bars;
  std::optional<std::string> error;
};
using KlineCompletion = std::function<void(KlineAnswer)>;

// What the market model asks of the live data sources. Every request is built from the
// endpoint set passed with it. Completions run on the main thread, exactly once; they may run
// before the call returns.
class MarketDataSource {
 public:
  virtual ~MarketDataSource() = default;

  // One batch from one live source (`tencent`, `sina` or `stockSDK`).
  virtual void fetchQuotes(SourceMode source, const DataSourceEndpoints& endpoints,
                           const std::vector<std::string>& symbols, const QuoteMap& cached,
                           QuotesCompletion completion) = 0;

  // Whether the quote feeds and the bridge work with this endpoint set.
  virtual void probeQuoteEndpoints(const DataSourceEndpoints& endpoints,
                                   std::function<void(bool)> completion) = 0;

  // The body of a remote manifest answered with a 2xx status; none on any failure.
  virtual void fetchManifest(const std::string& url,
                             std::function<void(std::optional<std::string>)> completion) = 0;

  // Whether intraday series can be asked for at all (the bridge and Node.js are installed).
  virtual bool canFetchIntraday() const = 0;
  // Today's prices of one quote, oldest first; none when the series could not be read, and
  // `skipped` besides when the request never ran because a newer one took its place.
  struct Intraday {
    std::optional<std::vector<double>> values;
    bool skipped = false;
  };
  virtual void fetchIntraday(const DataSourceEndpoints& endpoints, const std::string& id,
                             const std::string& market,
                             std::function<void(Intraday)> completion) = 0;

  // The day, week or month candles of one security from the source a mode reads them from.
  virtual void fetchKline(
      SourceMode /*source*/, const DataSourceEndpoints& /*endpoints*/,
      const std::string& /*symbol*/, KlinePeriod /*period*/,
      KlineCompletion completion) {  // NOLINT(performance-unnecessary-value-param)
    completion({{}, "数据源不提供K线"});
  }

  // Securities whose code or name matches the text, with their quotes, best match first. No
  // quotes and no error: nothing matched. An error: the search itself failed, which is all a
  // source without a search can say.
  virtual void searchSecurities(
      const DataSourceEndpoints& /*endpoints*/, const std::string& /*text*/,
      QuotesCompletion completion) {  // NOLINT(performance-unnecessary-value-param): a sink for the
                                      // sources that search
    completion({}, "数据源不支持搜索");
  }

  // The yuan rates of the US dollar and the Hong Kong dollar.
  virtual void fetchRates(
      const DataSourceEndpoints& /*endpoints*/,
      RatesCompletion completion) {  // NOLINT(performance-unnecessary-value-param)
    completion({}, "数据源不提供汇率");
  }

  // The latest pre- or post-market trade of each US security asked, where the feed has one.
  virtual void fetchExtendedHours(
      const DataSourceEndpoints& /*endpoints*/, const std::vector<std::string>& /*symbols*/,
      ExtendedCompletion completion) {  // NOLINT(performance-unnecessary-value-param)
    completion({}, "数据源不提供盘前盘后");
  }
};

}  // namespace tidemark
