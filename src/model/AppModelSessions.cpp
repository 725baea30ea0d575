// Market sessions in the model: whether the watched markets are awake, and their states.

#include "model/AppModel.h"

namespace tidemark {

std::optional<MarketState> AppModel::marketStateOf(std::string_view market) const {
  const auto exchange = exchangeOfLabel(market);
  if (!exchange) return std::nullopt;
  return marketState(*exchange, deps_.clock.now());
}

bool AppModel::watchedMarketAwake(Date at) const {
  const std::vector<std::string>& symbols = watchlist_.empty() ? defaultWatchlist() : watchlist_;
  std::array<bool, exchangeCount> asked{};
  size_t left = exchangeCount;
  for (const std::string& symbol : symbols) {
    const Exchange exchange = exchangeOf(feedMarket(symbol));
    bool& seen = asked[static_cast<size_t>(exchange)];
    if (seen) continue;
    if (isAwake(exchange, at)) return true;
    seen = true;
    if (--left == 0) break;
  }
  return false;
}

void AppModel::followSessions(Date now) {
  const bool quiet = isLive(prefs_.sourceMode) && !watchedMarketAwake(now);
  if (quiet != quietRefresh_) assign(quietRefresh_, quiet);
  std::array<std::optional<MarketState>, exchangeCount> states;
  for (size_t i = 0; i < exchangeCount; ++i) states[i] = marketState(Exchange(i), now);
  if (states != marketStates_) {
    // A change of New York's session ends its extended-hours trades.
    if (states[size_t(Exchange::newYork)] != marketStates_[size_t(Exchange::newYork)])
      extras_.clearExtended();
    assign(marketStates_, states);
  }
}

}  // namespace tidemark
