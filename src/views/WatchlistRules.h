#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/Date.h"
#include "core/Market.h"
#include "core/QuoteSnapshot.h"

namespace tidemark {

// One row of the watchlist manager.
struct WatchlistEntry {
  std::string symbol;
  std::string market;
  std::optional<QuoteSnapshot> quote;
};

// Whether a row's data is current: "正常", "已过期", "暂无行情".
enum class QuoteStatus { normal, expired, noQuote };
// The day's direction a row must have: "全部", "上涨", "下跌", "平盘".
enum class ChangeFilter { all, rising, falling, flat };
// "自选顺序", "涨幅从高到低", "涨幅从低到高", "名称".
enum class SortOrder { watchlist, changeDescending, changeAscending, name };

std::string_view label(QuoteStatus status);

// The manager's pickers and search box; none is "全部".
struct WatchlistFilters {
  std::optional<Market> market;
  std::optional<QuoteStatus> status;
  ChangeFilter change = ChangeFilter::all;
  SortOrder sortOrder = SortOrder::watchlist;
  std::string search;
};

// The pickers' options in their order, "全部" first where it is one; the chosen index is the
// filter's value (after "全部": the market, status, change or order at that place).
const std::vector<std::string>& watchlistMarkets();
const std::vector<std::string>& watchlistStatuses();
const std::vector<std::string>& watchlistChanges();
const std::vector<std::string>& watchlistSortOrders();
// Sets the filter of picker `picker` (0 market, 1 status, 2 change, 3 order) to its option `index`.
void choose(WatchlistFilters& filters, size_t picker, size_t index);

// The market a bare symbol belongs to when no quote says so: six digits are mainland shares or
// funds by their prefix, five digits Hong Kong, anything else US.
std::string marketOfSymbol(const std::string& symbol);

// Current, expired (older than 36 hours for mainland funds, 5 minutes otherwise, each plus
// `grace`) or no quote. The grace covers a refresh on its way while the source is asked only
// every five minutes.
QuoteStatus quoteStatus(const QuoteSnapshot* quote, Date statusClock, double grace = 0);
bool matchesChange(ChangeFilter filter, const QuoteSnapshot* quote);
bool matchesSearch(const std::string& search, const std::string& symbol, const std::string& market,
                   const QuoteSnapshot* quote);

// The rows to show, filtered and stably sorted; entries without a quote stay together at the end
// of the change sorts.
std::vector<WatchlistEntry> visibleEntries(const std::vector<std::string>& watchlist,
                                           const std::vector<QuoteSnapshot>& quotes,
                                           const WatchlistFilters& filters, Date statusClock,
                                           double grace = 0);

}  // namespace tidemark
