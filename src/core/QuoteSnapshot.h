#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/Date.h"
#include "core/Json.h"

namespace tidemark {

// One quote of one symbol at one moment. `id` is the bare code the user stores ("600519",
// "00700", "NVDA") and the record's identity.
struct QuoteSnapshot {
  std::string id;
  std::string market;
  std::string name;
  double price = 0;
  double prevClose = 0;
  double high = 0;
  double low = 0;
  int64_t volume = 0;
  Date updatedAt;
  std::string source;
  // Figures only some feeds give, none where unknown: the day's open, the amount traded (in the
  // currency), turnover and P/E, the day's limits (A-shares), the 52-week range, and the time
  // the exchange stamped the quote with.
  std::optional<double> open{}, amount{}, turnoverPct{}, pe{}, limitUp{}, limitDown{}, high52w{},
      low52w{};
  std::optional<Date> quoteTime{};

  double change() const { return price - prevClose; }
  // 0 unless the previous close is positive (also for NaN), never infinite.
  double changePct() const;
  // "HKD", "USD" or "CNY", by the exact market label; nothing for an index, which is points.
  std::string currency() const;
  // The market label says index ("A股指数", "港股指数", "美股指数").
  bool isIndex() const;
  // A deterministic 60-point path from prevClose to price, drawn when no real series exists.
  std::vector<double> trend() const;

  // Doubles compare numerically, so a NaN price makes a record unequal to itself.
  friend bool operator==(const QuoteSnapshot&, const QuoteSnapshot&) = default;
};

using QuoteMap = std::unordered_map<std::string, QuoteSnapshot>;

// The synthetic path behind `trend`, also used for the illustrative intraday curve.
std::vector<double> syntheticTrend(const std::string& id, double price, double prevClose);

// Keys in field order, the optional figures only where known; `updatedAt` and `quoteTime` as
// seconds since 2001-01-01T00:00:00Z.
Json toJson(const QuoteSnapshot& quote);
// The ten keys of the record are required with their types, or no value; an optional figure of
// the wrong type is left out, the record kept.
std::optional<QuoteSnapshot> quoteFromJson(const Json& object);

// The optional figures by their stored and printed names, in order.
struct QuoteFigure {
  const char* key;
  std::optional<double> QuoteSnapshot::*member;
};
inline constexpr QuoteFigure quoteFigures[] = {
    {"open", &QuoteSnapshot::open},
    {"amount", &QuoteSnapshot::amount},
    {"turnoverPct", &QuoteSnapshot::turnoverPct},
    {"pe", &QuoteSnapshot::pe},
    {"limitUp", &QuoteSnapshot::limitUp},
    {"limitDown", &QuoteSnapshot::limitDown},
    {"high52w", &QuoteSnapshot::high52w},
    {"low52w", &QuoteSnapshot::low52w},
};

}  // namespace tidemark
