#include "model/LiveQuoteLoad.h"

#include <algorithm>
#include <utility>

namespace tidemark {
namespace {

// Tried first to last; a hand-picked live mode is only a first preference.
std::vector<SourceMode> sourceOrder(SourceMode mode) {
  switch (mode) {
    case SourceMode::tencent:
      return {SourceMode::tencent, SourceMode::stockSDK, SourceMode::sina};
    case SourceMode::sina:
      return {SourceMode::sina, SourceMode::stockSDK, SourceMode::tencent};
    default:
      return {SourceMode::stockSDK, SourceMode::tencent, SourceMode::sina};
  }
}

bool sameSymbols(std::vector<std::string> a, std::vector<std::string> b) {
  if (a.size() != b.size()) return false;
  std::sort(a.begin(), a.end());
  std::sort(b.begin(), b.end());
  return a == b;
}

}  // namespace

LiveQuoteLoad::LiveQuoteLoad(SourceMode mode, std::vector<std::string> symbols,
                             const std::vector<QuoteSnapshot>& cached, Date start)
    : mode_(mode), symbols_(std::move(symbols)), order_(sourceOrder(mode)) {
  cached_.reserve(cached.size());
  for (const QuoteSnapshot& q : cached) cached_.emplace(q.id, q);
  result_.missing = symbols_;
  result_.start = start;
}

bool LiveQuoteLoad::asksFor(SourceMode mode, const std::vector<std::string>& symbols) const {
  return mode_ == mode && sameSymbols(symbols_, symbols);
}

void LiveQuoteLoad::run(MarketDataSource& source, const DataSourceEndpoints& endpoints,
                        std::function<void(Result)> done) {
  const auto keep = shared_from_this();  // `done` may drop the last other owner
  source_ = &source;
  endpoints_ = &endpoints;
  done_ = std::move(done);
  attempt();
}

void LiveQuoteLoad::attempt() {
  if (result_.missing.empty() || index_ >= order_.size()) {
    if (auto done = std::exchange(done_, nullptr)) done(std::move(result_));
    return;
  }
  std::weak_ptr<LiveQuoteLoad> weak = weak_from_this();
  // A copy: a completion that runs inside the call shrinks `missing` while the source still
  // reads its argument.
  const std::vector<std::string> wanted = result_.missing;
  source_->fetchQuotes(order_[index_], *endpoints_, wanted, cached_,
                       [weak](std::vector<QuoteSnapshot> quotes, std::optional<std::string> error) {
                         auto self = weak.lock();
                         if (!self) return;  // dropped for a newer load
                         for (QuoteSnapshot& q : quotes) {
                           // A later source never replaces what an earlier one gave.
                           if (self->collectedIDs_.insert(q.id).second)
                             self->result_.collected.push_back(std::move(q));
                         }
                         if (error) self->result_.errors.push_back(std::move(*error));
                         std::erase_if(self->result_.missing, [&](const std::string& s) {
                           return self->collectedIDs_.contains(s);
                         });
                         ++self->index_;
                         self->attempt();
                       });
}

}  // namespace tidemark
