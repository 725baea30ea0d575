// The watchlist manager's search: the live source's own search, or the local securities.

#include <algorithm>

#include "model/AppModel.h"
#include "model/StaticSnapshot.h"

namespace tidemark {

std::vector<QuoteSnapshot> AppModel::localSearch(std::string_view text) const {
  // The well-known indices are found too, by name or code.
  std::vector<QuoteSnapshot> pool;
  if (prefs_.sourceMode == SourceMode::mock) {
    std::vector<std::string> indices;
    for (const DemoSecurity& index : demoIndices()) indices.emplace_back(index.id);
    pool = cycle_.mock.quotes(indices, deps_.clock.now());
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
  // What the model shows is fresher than the opening or shipped values.
  return rankedMatches(std::move(pool), text, [this](const std::string& id) { return quote(id); });
}

void AppModel::searchSource(const std::string& text) {
  const std::string query(trimmedSymbol(text));
  if (query.empty()) {
    search_.clear();
    return changed_.notify();
  }
  const uint64_t generation = search_.begin(query);
  changed_.notify();
  if (prefs_.sourceMode == SourceMode::mock || prefs_.sourceMode == SourceMode::staticJSON)
    return endSearch(localSearch(query), false);

  deps_.dataSource.searchSecurities(
      sources_.endpoints, query,
      lifeline_.guard(
          QuotesCompletion([this, generation, query](std::vector<QuoteSnapshot> found,
                                                     const std::optional<std::string>& error) {
            if (!search_.isCurrent(generation)) return;  // a newer search is under way or done
            if (!error) return endSearch(std::move(found), false);
            // The shipped securities still answer the common names when the source is down.
            endSearch(localSearch(query), true);
          })));
}

void AppModel::endSearch(std::vector<QuoteSnapshot> results, bool sourceFailed) {
  search_.finish(std::move(results), sourceFailed);
  changed_.notify();
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

void AppModel::addCode() {
  const auto code = codeToAdd(search_, watchlist_);
  if (!code || watchlist_.size() >= maxWatchlistLength) return;
  auto list = watchlist_;
  list.push_back(*code);
  setWatchlist(std::move(list));
  refresh();
}

}  // namespace tidemark
