#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/QuoteSnapshot.h"

namespace tidemark {

// The watchlist manager's search: the answer to the newest text asked, and whether one is under
// way. Each search gets a generation; an answer for an older one is not taken.
class SecuritySearch {
 public:
  static constexpr size_t limit = 20;

  const std::vector<QuoteSnapshot>& results() const { return results_; }
  const std::optional<std::string>& message() const { return message_; }
  bool isSearching() const { return searching_; }

  // The text of the newest search, trimmed; empty when nothing is asked.
  const std::string& text() const { return text_; }

  // A new search under way; what it returns identifies its answer.
  uint64_t begin(std::string text);
  bool isCurrent(uint64_t generation) const { return generation == generation_; }
  // Nothing asked (an empty box): no results, no message, and any search under way dropped.
  void clear();
  // Takes the results, at most `limit`; nothing found gets a message, worded by whether the
  // source failed.
  void finish(std::vector<QuoteSnapshot> results, bool sourceFailed);

 private:
  std::vector<QuoteSnapshot> results_;
  std::optional<std::string> message_;
  std::string text_;
  bool searching_ = false;
  uint64_t generation_ = 0;
};

// The securities of `pool` whose code equals, begins with or contains the text, or whose name
// contains it or spells its pinyin initials (ASCII letters in either case), in that order of rank
// and otherwise in the pool's order, at most SecuritySearch::limit. `fresher` may replace a
// candidate with the quote shown.
std::vector<QuoteSnapshot> rankedMatches(
    std::vector<QuoteSnapshot> pool, std::string_view text,
    const std::function<const QuoteSnapshot*(const std::string& id)>& fresher);

// The newest search's text when it is a full code ("600519", "00700", "aapl" as AAPL,
// "sh000300") that the search, finished, did not find and the watchlist does not hold: a code to
// offer for adding as it stands. None otherwise.
std::optional<std::string> codeToAdd(const SecuritySearch& search,
                                     const std::vector<std::string>& watchlist);

}  // namespace tidemark
