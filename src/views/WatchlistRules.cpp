#include "views/WatchlistRules.h"

#include <algorithm>
#include <unordered_map>

#include <QCollator>
#include <QString>

#include "core/Market.h"

namespace tidemark {
namespace {

QString trimmed(const std::string& text) {
  return QString::fromStdString(text).trimmed();
}

bool contains(const std::string& haystack, const QString& needle) {
  return QString::fromStdString(haystack).contains(needle, Qt::CaseInsensitive);
}

// Two runs of digits by their value, however many leading zeros they carry.
int compareNumbers(QStringView a, QStringView b) {
  const auto significant = [](QStringView digits) {
    qsizetype k = 0;
    while (k + 1 < digits.size() && digits[k] == u'0') ++k;
    return digits.mid(k);
  };
  const QStringView x = significant(a), y = significant(b);
  return x.size() != y.size() ? (x.size() < y.size() ? -1 : 1) : x.compare(y);
}

// Orders embedded numbers by value ("ETF9" before "ETF10") and the rest by the locale's
// collation, ignoring case: the system's standard comparison of names shown to people.
int standardCompare(const QCollator& collator, const QString& a, const QString& b) {
  qsizetype i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    const bool digitA = a[i].isDigit(), digitB = b[j].isDigit();
    qsizetype endA = i, endB = j;
    while (endA < a.size() && a[endA].isDigit() == digitA) ++endA;
    while (endB < b.size() && b[endB].isDigit() == digitB) ++endB;
    const QStringView chunkA = QStringView(a).mid(i, endA - i);
    const QStringView chunkB = QStringView(b).mid(j, endB - j);
    const int order =
        digitA && digitB ? compareNumbers(chunkA, chunkB) : collator.compare(chunkA, chunkB);
    if (order != 0) return order;
    i = endA;
    j = endB;
  }
  return (a.size() - i > 0) - (b.size() - j > 0);
}

}  // namespace

const std::vector<std::string>& watchlistMarkets() {
  static const std::vector<std::string> v = [] {
    std::vector<std::string> all{"全部"};
    for (Market market : allMarkets) all.emplace_back(marketLabel(market));
    return all;
  }();
  return v;
}
std::string_view label(QuoteStatus status) {
  static constexpr std::array<std::string_view, 3> labels{"正常", "已过期", "暂无行情"};
  return labels[static_cast<size_t>(status)];
}

void choose(WatchlistFilters& filters, size_t picker, size_t index) {
  switch (picker) {
    case 0:
      filters.market = index == 0 ? std::nullopt : std::optional(allMarkets[index - 1]);
      break;
    case 1:
      filters.status = index == 0 ? std::nullopt : std::optional(QuoteStatus(index - 1));
      break;
    case 2:
      filters.change = ChangeFilter(index);
      break;
    default:
      filters.sortOrder = SortOrder(index);
      break;
  }
}

const std::vector<std::string>& watchlistStatuses() {
  static const std::vector<std::string> v{"全部", "正常", "已过期", "暂无行情"};
  return v;
}
const std::vector<std::string>& watchlistChanges() {
  static const std::vector<std::string> v{"全部", "上涨", "下跌", "平盘"};
  return v;
}
const std::vector<std::string>& watchlistSortOrders() {
  static const std::vector<std::string> v{"自选顺序", "涨幅从高到低", "涨幅从低到高", "名称"};
  return v;
}

std::string marketOfSymbol(const std::string& symbol) {
  return std::string(marketLabel(watchlistMarket(symbol)));
}

QuoteStatus quoteStatus(const QuoteSnapshot* quote, Date statusClock, double grace) {
  if (!quote) return QuoteStatus::noQuote;
  // Fund net values are published once a day.
  const double allowed = marketOfLabel(quote->market) == Market::aFund ? 129600 : 300;
  return statusClock - quote->updatedAt > allowed + grace ? QuoteStatus::expired
                                                          : QuoteStatus::normal;
}

bool matchesChange(ChangeFilter filter, const QuoteSnapshot* quote) {
  if (filter == ChangeFilter::all) return true;
  if (!quote) return false;
  const double pct = quote->changePct();
  return filter == (pct > 0.0001    ? ChangeFilter::rising
                    : pct < -0.0001 ? ChangeFilter::falling
                                    : ChangeFilter::flat);
}

bool matchesSearch(const std::string& search, const std::string& symbol, const std::string& market,
                   const QuoteSnapshot* quote) {
  const QString text = trimmed(search);
  if (text.isEmpty()) return true;
  return contains(symbol, text) || contains(market, text) || (quote && contains(quote->name, text));
}

namespace {

// Stable: "自选顺序" keeps the watchlist's order, and rows that compare equal keep theirs.
void sortEntries(std::vector<WatchlistEntry>& rows, SortOrder sortOrder) {
  if (sortOrder == SortOrder::name) {
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    const auto key = [](const WatchlistEntry& e) {
      return QString::fromStdString(e.quote ? e.quote->name : e.symbol);
    };
    std::stable_sort(rows.begin(), rows.end(), [&](const auto& a, const auto& b) {
      return standardCompare(collator, key(a), key(b)) < 0;
    });
  } else if (sortOrder != SortOrder::watchlist) {
    const bool descending = sortOrder == SortOrder::changeDescending;
    std::stable_sort(rows.begin(), rows.end(), [&](const auto& a, const auto& b) {
      if (!a.quote || !b.quote) return a.quote && !b.quote;
      const double x = a.quote->changePct(), y = b.quote->changePct();
      return descending ? x > y : x < y;
    });
  }
}

}  // namespace

std::vector<WatchlistEntry> visibleEntries(const std::vector<std::string>& watchlist,
                                           const std::vector<QuoteSnapshot>& quotes,
                                           const WatchlistFilters& filters, Date statusClock,
                                           double grace) {
  std::unordered_map<std::string, const QuoteSnapshot*> byID;
  for (const QuoteSnapshot& q : quotes) byID.try_emplace(q.id, &q);
  const auto shown = [&](const WatchlistEntry& entry, const QuoteSnapshot* quote) {
    return (!filters.market || filters.market == marketOfLabel(entry.market)) &&
           (!filters.status || filters.status == quoteStatus(quote, statusClock, grace)) &&
           matchesSearch(filters.search, entry.symbol, entry.market, quote) &&
           matchesChange(filters.change, quote);
  };
  std::vector<WatchlistEntry> rows;
  for (const std::string& symbol : watchlist) {
    auto it = byID.find(symbol);
    const QuoteSnapshot* quote = it == byID.end() ? nullptr : it->second;
    WatchlistEntry entry{symbol, quote ? quote->market : marketOfSymbol(symbol),
                         quote ? std::optional(*quote) : std::nullopt};
    if (shown(entry, quote)) rows.push_back(std::move(entry));
  }
  sortEntries(rows, filters.sortOrder);
  return rows;
}

}  // namespace tidemark
