#include "model/IntradaySeries.h"

namespace tidemark {

bool IntradaySeries::mayAsk(const std::string& id, Date now) const {
  auto last = requestedAt_.find(id);
  return last == requestedAt_.end() || now - last->second >= throttle || now < last->second;
}

void IntradaySeries::skipped(const std::string& id, Date at) {
  if (auto it = requestedAt_.find(id); it != requestedAt_.end() && it->second == at)
    requestedAt_.erase(it);
}

bool IntradaySeries::keep(const std::string& id, std::vector<double> values) {
  if (values.size() < 2) return false;
  series_[id] = std::move(values);
  return true;
}

std::vector<double> IntradaySeries::prices(const QuoteSnapshot& quote) const {
  if (auto it = series_.find(quote.id); it != series_.end()) return it->second;
  return quote.trend();
}

bool IntradaySeries::hasReal(const QuoteSnapshot& quote) const {
  auto it = series_.find(quote.id);
  return it != series_.end() && it->second.size() > 1;
}

}  // namespace tidemark
