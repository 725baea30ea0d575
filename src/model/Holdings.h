#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Date.h"
#include "core/Json.h"
#include "core/QuoteSnapshot.h"

namespace tidemark {

// How many shares of one watched security the user holds, at what average cost per share in the
// security's own currency. At most one per symbol.
struct Holding {
  std::string symbolID;
  double shares = 0;  // > 0; fractions allowed (fund units)
  double cost = 0;    // >= 0
  friend bool operator==(const Holding&, const Holding&) = default;
};

// The stored and exported record of the holdings.
struct HoldingsBackup {
  int64_t version = 1;
  Date savedAt;
  std::vector<Holding> holdings;
  bool showsDayProfitInTray = false;
  friend bool operator==(const HoldingsBackup&, const HoldingsBackup&) = default;
};

// Bounds far beyond any real position, so that no product of them overflows a card or a double.
inline constexpr double maxHoldingShares = 1e12;
inline constexpr double maxHoldingCost = 1e9;
// At most one holding per watched symbol, so no more than the watchlist holds.
inline constexpr size_t maxHoldingsCount = 5000;

// Why these numbers cannot be a holding, in the user's words; none when they can.
std::optional<std::string> holdingProblem(double shares, double cost);

// The position after buying `shares` more at `cost` each: the shares added, the cost their
// weighted average.
Holding mergedHolding(const Holding& held, double shares, double cost);

// Whether a quote's prices can be multiplied by a holding: finite and within the cost bound.
bool isHoldableQuote(const QuoteSnapshot& quote);

Json toJson(const Holding& holding);
// None unless `symbolID` is a non-empty string, `shares` a finite number > 0 and `cost` a finite
// number >= 0.
std::optional<Holding> holdingFromJson(const Json& object);
// Stored form: keys in field order, `savedAt` as seconds since 2001-01-01T00:00:00Z.
Json toJson(const HoldingsBackup& backup);
// A bad entry is dropped and counted in `dropped`; a later one for the same symbol replaces an
// earlier one; entries for new symbols past `maxHoldingsCount` are dropped and counted too.
// Anything else amiss (not JSON, no version, date or list) rejects the record.
std::optional<HoldingsBackup> holdingsBackupFromBytes(std::string_view bytes,
                                                      size_t* dropped = nullptr);

// What one holding is worth and made, from its security's quote.
struct HoldingFigures {
  double marketValue = 0;
  double dayProfit = 0;
  double dayProfitPct = 0;
  double totalProfit = 0;
  std::optional<double> totalProfitPct;  // none at a cost of 0
  friend bool operator==(const HoldingFigures&, const HoldingFigures&) = default;
};
HoldingFigures holdingFigures(const Holding& holding, const QuoteSnapshot& quote);

// The holdings of one currency added up; those without a quote are left out and counted.
struct HoldingsTotal {
  std::string currency;
  double marketValue = 0;
  double dayProfit = 0;
  std::optional<double> dayProfitPct;  // none when the holdings were worth nothing yesterday
  double totalProfit = 0;
  std::optional<double> totalProfitPct;  // none when they cost nothing
  size_t missing = 0;                    // holdings without a quote
  size_t counted = 0;                    // holdings with one, which the sums are of
  friend bool operator==(const HoldingsTotal&, const HoldingsTotal&) = default;
};

// One total per currency present, CNY, HKD, USD in that order: amounts in different currencies
// are never added, for no source publishes the rates to convert them. Each holding comes with
// its security's quote (none without); `currencyOf` names the currency of a symbol without one.
struct HeldQuote {
  const Holding* holding;
  const QuoteSnapshot* quote;
};
std::vector<HoldingsTotal> holdingsTotals(
    const std::vector<HeldQuote>& held,
    const std::function<std::string(const std::string&)>& currencyOf);
// The same with the quotes found by `quote`.
std::vector<HoldingsTotal> holdingsTotals(
    const std::vector<Holding>& holdings,
    const std::function<const QuoteSnapshot*(const std::string&)>& quote,
    const std::function<std::string(const std::string&)>& currencyOf);

// An amount rounded to the cent half away from zero, as money is: 1955.625 → 1955.63.
double centRounded(double value);
// An amount rounded so: "1,955.63".
std::string amountText(double value);
// An amount with its sign, rounded so: "+1,680.00", "-270.00", "0.00".
std::string signedAmountText(double value);
// A profit and its percentage, "+1,680.00 (+1.16%)", or the percentage's dash.
std::string profitText(double amount, const std::optional<double>& pct);
// Today's profit of each currency whose holdings have quotes, "CNY +1,410.00", in the totals'
// order; none when no holding has a quote.
std::vector<std::string> dayProfitTexts(const std::vector<HoldingsTotal>& totals);

// A number of shares as held: whole ones plain, fractions to at most four places, thousands
// separated: "100", "1,234.56", "0.5".
std::string sharesText(double shares);
// A number as a form offers it for editing: its own digits to at most four places, without
// separators: "5.1234", "1500.5", "1234.56".
std::string editableNumberText(double value);

}  // namespace tidemark
