#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Enums.h"
#include "core/QuoteSnapshot.h"

namespace tidemark {

// The feed's code of a watchlist symbol ("600519" → "sh600519" for both feeds, "NVDA" →
// "usNVDA" for Tencent and "gb_nvda" for Sina), or none for a symbol or source without one. An
// index is its own code; Sina is asked for A-share indices only.
std::optional<std::string> marketCode(std::string_view symbol, SourceMode source);

// Six-character codes starting "01", "02", "5", "15" or "16": funds, which the two text feeds
// are not asked for.
bool isFundStyleSymbol(std::string_view symbol);

// An index's label ("A股指数", "港股指数", "美股指数"); else "美股" for a symbol with a non-digit,
// "港股" for five digits, otherwise "A股".
std::string_view feedMarketLabel(std::string_view symbol);

// Records for the requested symbols, in their order, stamped `parsedAt`; a symbol without a
// valid row is left out, and a symbol asked twice gives two records.
std::vector<QuoteSnapshot> parseTencent(std::string_view text,
                                        const std::vector<std::string>& symbols, Date parsedAt);
std::vector<QuoteSnapshot> parseSina(std::string_view text, const std::vector<std::string>& symbols,
                                     Date parsedAt);

}  // namespace tidemark
