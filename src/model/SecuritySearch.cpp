#include "model/SecuritySearch.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <utility>

#include "core/Market.h"
#include "core/Text.h"
#include "model/PinyinInitials.h"
#include "model/Watchlist.h"

namespace tidemark {
namespace {

// Whether the letters and digits typed spell a run of the name's characters: a Han character by
// an initial of its readings, anything else by itself in either case ("gzmt" 贵州茅台, "hs300"
// 沪深300ETF).
bool spellsInitials(std::string_view name, const std::string& folded) {
  if (folded.empty() || std::any_of(folded.begin(), folded.end(),
                                    [](char c) { return static_cast<unsigned char>(c) >= 0x80; }))
    return false;
  const std::u32string characters = codePoints(name);
  const auto matches = [](char32_t c, char typed) {
    if (c < 0x80) return std::tolower(static_cast<int>(c)) == typed;
    return pinyinInitials(c).find(typed) != std::string_view::npos;
  };
  for (size_t start = 0; start + folded.size() <= characters.size(); ++start) {
    size_t k = 0;
    while (k < folded.size() && matches(characters[start + k], folded[k])) ++k;
    if (k == folded.size()) return true;
  }
  return false;
}

// 0: the code itself, 1: the code begins with the text, 2: code or name contains it.
std::optional<int> matchRank(const QuoteSnapshot& quote, const std::string& folded) {
  const std::string id = toLowerAscii(quote.id);
  if (id == folded) return 0;
  if (id.starts_with(folded)) return 1;
  if (id.find(folded) != std::string::npos ||
      toLowerAscii(quote.name).find(folded) != std::string::npos ||
      spellsInitials(quote.name, folded))
    return 2;
  return std::nullopt;
}

}  // namespace

uint64_t SecuritySearch::begin(std::string text) {
  text_ = std::move(text);
  searching_ = true;
  return ++generation_;
}

void SecuritySearch::clear() {
  ++generation_;
  text_.clear();
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

std::optional<std::string> codeToAdd(const SecuritySearch& search,
                                     const std::vector<std::string>& watchlist) {
  const std::string& typed = search.text();
  if (search.isSearching() || !isRecognizedSymbol(typed)) return std::nullopt;
  // Index symbols are spelled exactly; a ticker is written in capitals, as the feeds list it.
  std::string code = isIndexSymbol(typed) ? std::string(typed) : toUpperAscii(typed);
  const auto same = [&](const std::string& id) { return toUpperAscii(id) == toUpperAscii(code); };
  if (std::any_of(watchlist.begin(), watchlist.end(), same) ||
      std::any_of(search.results().begin(), search.results().end(),
                  [&](const QuoteSnapshot& q) { return same(q.id); }))
    return std::nullopt;
  return code;
}

}  // namespace tidemark
