// Beyond the quotes: the yuan rates the holdings need and the US securities' extended hours.

#include <algorithm>

#include "core/Market.h"
#include "model/AppModel.h"

namespace tidemark {

std::optional<YuanTotal> AppModel::yuanTotal(const std::vector<HoldingsTotal>& totals) const {
  return extras_.yuanTotal(totals, deps_.clock.now(), !isLive(prefs_.sourceMode));
}

void AppModel::fetchExtras() {
  const Date now = deps_.clock.now();
  const bool foreign = std::any_of(holdings().begin(), holdings().end(), [](const Holding& h) {
    const std::string_view currency = currencyOf(watchlistMarket(h.symbolID));
    return currency == "USD" || currency == "HKD";
  });
  const auto& asked = extras_.ratesAskedAt;
  if (foreign && (!asked || !(now - *asked < MarketExtras::rateInterval) || now < *asked)) {
    extras_.ratesAskedAt = now;
    ++extras_.inFlight;
    deps_.dataSource.fetchRates(
        sources_.endpoints, lifeline_.guard(RatesCompletion(
                                [this](const RateMap& rates, const std::optional<std::string>&) {
                                  --extras_.inFlight;
                                  // A failed request keeps the rates held; they lapse after a day.
                                  extras_.takeRates(rates, deps_.clock.now());
                                  changed_.notify();
                                })));
  }
  std::vector<std::string> us;
  if (extendedSessionLabel(marketState(Exchange::newYork, now)))
    for (const std::string& symbol : watchlist_) {
      const Market market = watchlistMarket(symbol);
      if (market == Market::usShare || market == Market::usFund) us.push_back(symbol);
    }
  if (us.empty()) {
    if (extras_.hasExtended()) {
      extras_.clearExtended();
      changed_.notify();
    }
    return;
  }
  deps_.dataSource.fetchExtendedHours(
      sources_.endpoints, us,
      lifeline_.guard(ExtendedCompletion(
          [this](std::vector<ExtendedQuote> quotes, const std::optional<std::string>& error) {
            if (error) return;  // the trades held stay until their session ends
            extras_.takeExtended(std::move(quotes), deps_.clock.now());
            changed_.notify();
          })));
}

}  // namespace tidemark
