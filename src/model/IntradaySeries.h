#pragma once

#include <map>
#include <string>
#include <vector>

#include "core/Date.h"
#include "core/QuoteSnapshot.h"

namespace tidemark {

// Today's price series of the quotes looked at, and when each was last asked for: one symbol's
// series is asked at most once a minute.
class IntradaySeries {
 public:
  // The shortest time between two requests of one symbol's series.
  static constexpr double throttle = 60;

  const std::map<std::string, std::vector<double>>& all() const { return series_; }
  // Whether the symbol's series may be asked for at `now`; a request from the clock's future
  // (it was set back) holds nothing up.
  bool mayAsk(const std::string& id, Date now) const;
  // Written before the request starts, so a second look within the minute waits for this one.
  void asked(const std::string& id, Date at) { requestedAt_[id] = at; }
  // The request asked at `at` never ran, because a newer one took its place: the next look may
  // ask.
  void skipped(const std::string& id, Date at);
  // Keeps an answer of two prices or more; whether it was kept.
  bool keep(const std::string& id, std::vector<double> values);
  // The symbol's series, or the quote's own trend while none came.
  std::vector<double> prices(const QuoteSnapshot& quote) const;
  bool hasReal(const QuoteSnapshot& quote) const;

 private:
  std::map<std::string, std::vector<double>> series_;
  std::map<std::string, Date> requestedAt_;
};

}  // namespace tidemark
