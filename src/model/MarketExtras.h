#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/MarketExtras.h"
#include "core/QuoteStyle.h"
#include "model/Holdings.h"
#include "model/MarketSessions.h"

namespace tidemark {

// The holdings of every currency added up in yuan, each at its rate.
struct YuanTotal {
  double marketValue = 0;
  double dayProfit = 0;
  std::optional<double> dayProfitPct;  // none when the holdings were worth nothing yesterday
  double totalProfit = 0;
  std::optional<double> totalProfitPct;  // none when they cost nothing
  // The rates used, USD before HKD, the oldest one's time, and whether they are the
  // demonstration's fixed ones.
  std::vector<std::pair<std::string, double>> rates;
  Date ratesAt;
  RateMap known;  // every usable rate of the two, held or not
  bool demonstration = false;
  friend bool operator==(const YuanTotal&, const YuanTotal&) = default;
};

// What the live modes know beyond the quotes: the yuan rates of the two foreign currencies and
// the US securities' pre- and post-market trades.
class MarketExtras {
 public:
  // A rate counts for a day after it was fetched; the demonstration has fixed rates.
  static constexpr double rateLifetime = 86400;
  static const RateMap& demonstrationRates();

  // Each rate given replaces the currency's, stamped `at`.
  void takeRates(const RateMap& rates, Date at);
  // The yuan rate of a currency usable at `now`, with its time: 1 for CNY; the fixed one in the
  // demonstration; otherwise one fetched less than `rateLifetime` ago.
  std::optional<std::pair<double, Date>> rate(const std::string& currency, Date now,
                                              bool demonstration) const;
  // Every total converted; none when a currency with quoted holdings has no usable rate.
  std::optional<YuanTotal> yuanTotal(const std::vector<HoldingsTotal>& totals, Date now,
                                     bool demonstration) const;

  // The trades of the session New York is in at `now` replace those held; any other is dropped.
  void takeExtended(std::vector<ExtendedQuote> quotes, Date now);
  void clearExtended() { extended_.clear(); }
  const ExtendedQuote* extended(const std::string& symbol) const;
  bool hasExtended() const { return !extended_.empty(); }

  // A request under way, which the command line waits for.
  int inFlight = 0;
  // Rates move slowly: asked at most once a minute, however fast the quotes refresh.
  static constexpr double rateInterval = 60;
  std::optional<Date> ratesAskedAt;

 private:
  std::map<std::string, std::pair<double, Date>> rates_;
  std::vector<ExtendedQuote> extended_;
};

// Whether a trade was made in the pre- or post-market session New York is in at `now` (the same
// day and the same session); a trade of an earlier session is stale.
bool isCurrentSessionTrade(const ExtendedQuote& quote, Date now);

// "盘前" or "盘后" while New York's state is one of them; none otherwise.
std::optional<std::string> extendedSessionLabel(std::optional<MarketState> newYork);

// The texts of an extended trade, its price written as `price`: the detail's "盘前 187.12
// +0.47%  04:27 美东", the tooltip's " · 盘前 187.12 (+0.47%)" and the watchlist row's
// "盘前 +0.47%".
std::string extendedDetailText(const std::string& label, const ExtendedQuote& quote,
                               const std::string& price);
std::string extendedTooltipText(const std::string& label, const ExtendedQuote& quote,
                                const std::string& price);
std::string extendedRowText(const std::string& label, const ExtendedQuote& quote);

// "汇率 USD 7.1034 · HKD 0.9123 · 14:59", or "演示汇率 USD 7.1200 · HKD 0.9150"; `clock` is the
// rates' time as the user's clock shows it.
std::string ratesText(const YuanTotal& total, const std::string& clock);

}  // namespace tidemark
