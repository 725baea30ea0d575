// The detail's candles: the book asked with the run's source and the security's exchange date,
// and the remembered choice of chart.

#include "model/AppModel.h"

#include <cmath>

namespace tidemark {

const KlineBook::Series& AppModel::kline(const std::string& symbol, KlinePeriod period) {
  const QuoteSnapshot* q = quote(symbol);
  const Market market =
      (q ? marketOfLabel(q->market) : std::nullopt).value_or(watchlistMarket(symbol));
  const Date now = deps_.clock.now();
  const int64_t day = exchangeDay(exchangeOf(market), now)
                          .value_or(static_cast<int64_t>(std::floor(now.unixSeconds() / 86400)));
  KlineBook::Request request{prefs_.sourceMode, sources_.endpoints, symbol, period, day,
                             q ? q->price : 0};
  return klines_.series(request, lifeline_.guard([this] { changed_.notify(); }));
}

void AppModel::setDetailChart(std::optional<KlinePeriod> period) {
  assign(prefs_.detailChart, period);
  savePreferences();
}

}  // namespace tidemark
