// The holdings: what the user holds of the watched securities, kept like the watchlist (in the
// store and in "holdings.json" beside the watchlist file, the newer one read), and their totals.

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

#include "core/FileIO.h"
#include "core/Market.h"
#include "model/AppModel.h"
#include "model/StoreKeys.h"

namespace tidemark {

bool AppModel::isWatched(const std::string& symbol) const {
  return std::find(watchlist_.begin(), watchlist_.end(), symbol) != watchlist_.end();
}

std::optional<std::string> AppModel::setHolding(const std::string& symbol, double shares,
                                                double cost) {
  if (isIndexSymbol(symbol)) return std::string("指数不能录入持仓");
  if (!isWatched(symbol)) return std::string("只能为自选中的标的录入持仓");
  if (auto refused = holdings_.set(symbol, shares, cost)) return refused;
  changed_.notify();
  saveHoldings();
  return std::nullopt;
}

void AppModel::removeHolding(const std::string& symbol) {
  if (!holdings_.remove(symbol)) return;
  changed_.notify();
  saveHoldings();
}

void AppModel::setShowsDayProfitInTray(bool on) {
  if (!holdings_.setShowsDayProfitInTray(on)) return;
  changed_.notify();
  saveHoldings();
}

std::vector<HoldingLine> AppModel::holdingLines() const {
  std::unordered_set<std::string_view> watched(watchlist_.begin(), watchlist_.end());
  std::unordered_map<std::string_view, const QuoteSnapshot*> quotes;
  quotes.reserve(quotes_.size());
  for (const QuoteSnapshot& q : quotes_) quotes.emplace(q.id, &q);
  std::vector<HoldingLine> lines;
  lines.reserve(holdings_.list().size());
  for (const Holding& h : holdings_.list()) {
    const bool isWatched = watched.contains(h.symbolID);
    const auto q = isWatched ? quotes.find(h.symbolID) : quotes.end();
    // A price no holding can be multiplied by is no quote for it.
    const bool priced = q != quotes.end() && isHoldableQuote(*q->second);
    lines.push_back({&h, priced ? q->second : nullptr, isWatched});
  }
  return lines;
}

std::vector<HoldingsTotal> AppModel::holdingsTotals() const {
  return holdingsTotals(holdingLines());
}

std::vector<HoldingsTotal> AppModel::holdingsTotals(const std::vector<HoldingLine>& lines) const {
  // A holding whose security left the watchlist is kept, but counts nowhere.
  std::vector<HeldQuote> held;
  held.reserve(lines.size());
  for (const HoldingLine& line : lines)
    if (line.watched) held.push_back({line.holding, line.quote});
  return tidemark::holdingsTotals(held, [](const std::string& symbol) {
    QuoteSnapshot unquoted;
    unquoted.market = marketLabel(feedMarket(symbol));
    return unquoted.currency();
  });
}

void AppModel::saveHoldings() {
  if (ready_) holdingsRecords_.write(holdings_, deps_.clock.now());
}

}  // namespace tidemark
