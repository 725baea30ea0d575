#include "sources/Indices.h"

namespace tidemark {
namespace {

bool allOf(std::string_view s, char low, char high) {
  for (char c : s)
    if (c < low || c > high) return false;
  return true;
}

constexpr std::array<KnownIndex, 12> known{{
    {"sh000001", "上证指数"},
    {"sh000300", "沪深300"},
    {"sh000688", "科创50"},
    {"sz399001", "深证成指"},
    {"sz399006", "创业板指"},
    {"bj899050", "北证50"},
    {"hkHSI", "恒生指数"},
    {"hkHSCEI", "国企指数"},
    {"hkHSTECH", "恒生科技指数"},
    {"usDJI", "道琼斯"},
    {"usIXIC", "纳斯达克"},
    {"usINX", "标普500"},
}};

}  // namespace

bool isIndexSymbol(std::string_view s) {
  if (s.size() < 2) return false;
  const std::string_view prefix = s.substr(0, 2), rest = s.substr(2);
  if (prefix == "sh" || prefix == "sz" || prefix == "bj")
    return rest.size() == 6 && allOf(rest, '0', '9');
  if (prefix == "hk" || prefix == "us")
    return rest.size() >= 2 && rest.size() <= 8 && allOf(rest, 'A', 'Z');
  return false;
}

std::optional<std::string_view> indexMarketLabel(std::string_view symbol) {
  if (!isIndexSymbol(symbol)) return std::nullopt;
  if (symbol.starts_with("hk")) return "港股指数";
  if (symbol.starts_with("us")) return "美股指数";
  return "A股指数";
}

const std::array<KnownIndex, 12>& knownIndices() {
  return known;
}

std::optional<std::string_view> knownIndexName(std::string_view symbol) {
  for (const KnownIndex& index : known)
    if (index.symbol == symbol) return index.name;
  return std::nullopt;
}

}  // namespace tidemark
