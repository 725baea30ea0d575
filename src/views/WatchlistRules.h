#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/Date.h"
#include "core/QuoteSnapshot.h"

namespace tidemark {

// One row of the watchlist manager.
struct WatchlistEntry {
  std::string symbol;
  std::string market;
  std::optional<QuoteSnapshot> quote;
};

// The manager's pickers and search box; each picker holds the text of its chosen option.
struct WatchlistFilters {
  std::string market = "全部";
  std::string status = "全部";
  std::string change = "全部";
  std::string sortOrder = "自选顺序";
  std::string search;
};

const std::vector<std::string>& watchlistMarkets();
const std::vector<std::string>& watchlistStatuses();
const std::vector<std::string>& watchlistChanges();
const std::vector<std::string>& watchlistSortOrders();

// The market a bare symbol belongs to when no quote says so: six digits are mainland shares or
// funds by their prefix, five digits Hong Kong, anything else US.
std::string marketOfSymbol(const std::string& symbol);

// "正常", "已过期" (older than 36 hours for mainland funds, 5 minutes otherwise, each plus
// `grace`) or "暂无行情". The grace covers a refresh on its way while the source is asked only
// every five minutes.
std::string quoteStatus(const QuoteSnapshot* quote, Date statusClock, double grace = 0);
bool matchesChange(const std::string& changeFilter, const QuoteSnapshot* quote);
bool matchesSearch(const std::string& search, const std::string& symbol, const std::string& market,
                   const QuoteSnapshot* quote);

// The rows to show, filtered and stably sorted; entries without a quote stay together at the end
// of the change sorts.
std::vector<WatchlistEntry> visibleEntries(const std::vector<std::string>& watchlist,
                                           const std::vector<QuoteSnapshot>& quotes,
                                           const WatchlistFilters& filters, Date statusClock,
                                           double grace = 0);

}  // namespace tidemark
