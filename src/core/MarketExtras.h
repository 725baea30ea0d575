#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/Date.h"

namespace tidemark {

// A US security's latest pre- or post-market trade: its price, its change against the regular
// session's close in percent, and when it traded.
struct ExtendedQuote {
  std::string symbol;
  double price = 0;
  double changePct = 0;
  Date at;
  friend bool operator==(const ExtendedQuote&, const ExtendedQuote&) = default;
};
using ExtendedCompletion =
    std::function<void(std::vector<ExtendedQuote> quotes, std::optional<std::string> error)>;

// Yuan per unit of a currency, by its code: {"USD": 7.1034, "HKD": 0.9123}.
using RateMap = std::map<std::string, double>;
using RatesCompletion = std::function<void(RateMap rates, std::optional<std::string> error)>;

}  // namespace tidemark
