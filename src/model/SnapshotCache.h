#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/QuoteSnapshot.h"

namespace tidemark {

// The last quotes, kept across launches: one JSON array of records, dates as seconds since
// 2001-01-01T00:00:00Z. No value when a number cannot be encoded.
std::optional<std::string> encodeSnapshotCache(const std::vector<QuoteSnapshot>& quotes);
// All or nothing: one unreadable entry makes the whole cache unreadable.
std::optional<std::vector<QuoteSnapshot>> decodeSnapshotCache(std::string_view bytes);

}  // namespace tidemark
