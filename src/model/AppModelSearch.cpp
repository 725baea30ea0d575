// The watchlist manager's search: the live source's own search, or the local securities.

#include <algorithm>

#include "core/Text.h"
#include "model/AppModel.h"
#include "model/StaticSnapshot.h"

namespace tidemark {
namespace {

constexpr size_t searchLimit = 20;

// 0: the code itself, 1: the code begins with the text, 2: code or name contains it.
std::optional<int> matchRank(const QuoteSnapshot& quote, const std::string& folded) {
  const std::string id = toLowerAscii(quote.id);
  if (id == folded) return 0;
  if (id.starts_with(folded)) return 1;
  if (id.find(folded) != std::string::npos ||
      toLowerAscii(quote.name).find(folded) != std::string::npos)
    return 2;
  return std::nullopt;
}

}  // namespace

std::vector<QuoteSnapshot> AppModel::localSearch(std::string_view text) const {
  // The well-known indices are found too, by name or code.
  std::vector<QuoteSnapshot> pool;
  if (prefs_.sourceMode == SourceMode::mock) {
    std::vector<std::string> indices;
    for (const DemoSecurity& index : demoIndices()) indices.emplace_back(index.id);
    pool = mockMarket_.quotes(indices, deps_.clock.now());
  } else {
    try {
      pool = loadStaticSnapshot(bundle_).quotes;
    } catch (const ModelError&) {
      pool = embeddedQuotes(embeddedSnapshotDate(), "embedded_fallback");
    }
    for (const DemoSecurity& s : demoIndices())
      if (std::none_of(pool.begin(), pool.end(),
                       [&](const QuoteSnapshot& q) { return q.id == s.id; }))
        pool.push_back(QuoteSnapshot{s.id, std::string(marketLabel(s.market)), s.name, s.price,
                                     s.prevClose, s.high, s.low, s.volume, embeddedSnapshotDate(),
                                     "embedded_fallback"});
  }
  const std::string folded = toLowerAscii(text);
  std::vector<std::pair<int, QuoteSnapshot>> ranked;
  for (QuoteSnapshot& candidate : pool) {
    const auto rank = matchRank(candidate, folded);
    if (!rank) continue;
    // What the model shows is fresher than the opening or shipped values.
    const QuoteSnapshot* held = quote(candidate.id);
    ranked.emplace_back(*rank, held ? *held : std::move(candidate));
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<QuoteSnapshot> results;
  for (auto& [rank, candidate] : ranked) {
    if (results.size() == searchLimit) break;
    results.push_back(std::move(candidate));
  }
  return results;
}

void AppModel::searchSource(const std::string& text) {
  const uint64_t generation = ++searchGeneration_;
  const std::string query(trimmedSymbol(text));
  if (query.empty()) {
    setSourceSearchResults({});
    setSourceSearchMessage(std::nullopt);
    setIsSearchingSource(false);
    return;
  }
  setIsSearchingSource(true);
  if (prefs_.sourceMode == SourceMode::mock || prefs_.sourceMode == SourceMode::staticJSON)
    return endSearch(localSearch(query), false);

  deps_.dataSource.searchSecurities(
      dataSourceEndpoints_, query,
      guarded(QuotesCompletion([this, generation, query](std::vector<QuoteSnapshot> found,
                                                         std::optional<std::string> error) {
        if (generation != searchGeneration_) return;  // a newer search is under way or done
        if (!error) {
          if (found.size() > searchLimit) found.resize(searchLimit);
          return endSearch(std::move(found), false);
        }
        // The shipped securities still answer the common names when the source is down.
        endSearch(localSearch(query), true);
      })));
}

void AppModel::endSearch(std::vector<QuoteSnapshot> results, bool sourceFailed) {
  std::optional<std::string> message;
  if (results.empty()) message = sourceFailed ? "数据源搜索失败，请稍后重试" : "没有找到匹配的标的";
  setSourceSearchResults(std::move(results));
  setSourceSearchMessage(std::move(message));
  setIsSearchingSource(false);
}

void AppModel::addSearchResult(const QuoteSnapshot& candidate) {
  // A copy: the candidate may live in a list a subscriber replaces when the quotes change.
  const QuoteSnapshot found = candidate;
  if (const QuoteSnapshot* held = quote(found.id); held && found.updatedAt >= held->updatedAt) {
    // A refresh may have come in since the search answered; the newer quote stays.
    auto list = quotes_;
    for (QuoteSnapshot& q : list)
      if (q.id == found.id) q = found;
    setQuotes(std::move(list));
    if (ready_) {
      saveQuotes();
      evaluateAlert();
    }
  }
  add(found);
}

}  // namespace tidemark
