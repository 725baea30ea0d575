#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Enums.h"
#include "core/QuoteSnapshot.h"

namespace tidemark {

// Records for the requested symbols, in their order, stamped `parsedAt`; a symbol without a
// valid row is left out, and a symbol asked twice gives two records.
std::vector<QuoteSnapshot> parseTencent(std::string_view text,
                                        const std::vector<std::string>& symbols, Date parsedAt);
std::vector<QuoteSnapshot> parseSina(std::string_view text, const std::vector<std::string>& symbols,
                                     Date parsedAt);

}  // namespace tidemark
