#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace tidemark {

// Market indices are written with their exchange's prefix, so that "000001" stays 平安银行 and
// "sh000001" is 上证指数: "sh", "sz" or "bj" and six digits, or "hk" or "us" and two to eight
// upper-case letters ("hkHSI", "usIXIC"). No other symbol is an index.
bool isIndexSymbol(std::string_view symbol);

// "A股指数", "港股指数" or "美股指数" for an index symbol (a literal, so null-terminated); none
// for any other.
std::optional<std::string_view> indexMarketLabel(std::string_view symbol);

// The indices people watch most, found by name or code even without a source's search.
struct KnownIndex {
  std::string_view symbol, name;
};
const std::array<KnownIndex, 12>& knownIndices();
std::optional<std::string_view> knownIndexName(std::string_view symbol);

}  // namespace tidemark
