#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/Bundle.h"
#include "core/QuoteSnapshot.h"

namespace tidemark {

// The quote snapshot shipped with the application: one instant for every quote.
struct StaticSnapshot {
  Date updatedAt;
  std::vector<QuoteSnapshot> quotes;
};

// The market label stored for a file's market value ("CN" → "A股", ...); other values are kept.
std::string staticMarketLabel(std::string_view fileValue);

// Reads the "tidemark-quotes.json" resource. Throws ModelError::invalidSnapshot with the text
// the user sees when the file is missing, unreadable, malformed, undated, empty, holds a symbol
// twice or a price that is not a finite number above zero.
StaticSnapshot loadStaticSnapshot(const Bundle& bundle);
StaticSnapshot decodeStaticSnapshot(std::string_view bytes);

}  // namespace tidemark
