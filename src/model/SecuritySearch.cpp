#include "model/SecuritySearch.h"

#include <algorithm>

#include "core/Text.h"

namespace tidemark {
namespace {

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

uint64_t SecuritySearch::begin() {
  searching_ = true;
  return ++generation_;
}

void SecuritySearch::clear() {
  ++generation_;
  results_.clear();
  message_.reset();
  searching_ = false;
}

void SecuritySearch::finish(std::vector<QuoteSnapshot> results, bool sourceFailed) {
  if (results.size() > limit) results.resize(limit);
  message_.reset();
  if (results.empty())
    message_ = sourceFailed ? "数据源搜索失败，请稍后重试" : "没有找到匹配的标的";
  results_ = std::move(results);
  searching_ = false;
}

std::vector<QuoteSnapshot> rankedMatches(
    std::vector<QuoteSnapshot> pool, std::string_view text,
    const std::function<const QuoteSnapshot*(const std::string& id)>& fresher) {
  const std::string folded = toLowerAscii(text);
  std::vector<std::pair<int, QuoteSnapshot>> ranked;
  for (QuoteSnapshot& candidate : pool) {
    const auto rank = matchRank(candidate, folded);
    if (!rank) continue;
    const QuoteSnapshot* held = fresher(candidate.id);
    if (held)
      ranked.emplace_back(*rank, *held);
    else
      ranked.emplace_back(*rank, std::move(candidate));
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<QuoteSnapshot> results;
  for (auto& [rank, candidate] : ranked) {
    if (results.size() == SecuritySearch::limit) break;
    results.push_back(std::move(candidate));
  }
  return results;
}

}  // namespace tidemark
