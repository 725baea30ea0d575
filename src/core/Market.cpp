#include "core/Market.h"

#include "core/Text.h"

namespace tidemark {
namespace {

struct MarketRow {
  Market market;
  std::string_view label;
  Exchange exchange;
  std::string_view currency;
};

// The one table of the markets' texts, in the enumeration's order.
constexpr std::array<MarketRow, allMarkets.size()> rows{{
    {Market::aShare, "A股", Exchange::shanghai, "CNY"},
    {Market::hkShare, "港股", Exchange::hongKong, "HKD"},
    {Market::usShare, "美股", Exchange::newYork, "USD"},
    {Market::aFund, "A股基金", Exchange::shanghai, "CNY"},
    {Market::hkFund, "港股基金", Exchange::hongKong, "HKD"},
    {Market::usFund, "美股基金", Exchange::newYork, "USD"},
    {Market::aIndex, "A股指数", Exchange::shanghai, ""},
    {Market::hkIndex, "港股指数", Exchange::hongKong, ""},
    {Market::usIndex, "美股指数", Exchange::newYork, ""},
}};

const MarketRow& row(Market market) {
  return rows[static_cast<size_t>(market)];
}

bool allOf(std::string_view s, char low, char high) {
  for (char c : s)
    if (c < low || c > high) return false;
  return true;
}

bool allDigits(std::string_view s) {
  return allOf(s, '0', '9');
}

}  // namespace

std::string_view marketLabel(Market market) {
  return row(market).label;
}

std::optional<Market> marketOfLabel(std::string_view label) {
  for (const MarketRow& r : rows)
    if (r.label == label) return r.market;
  return std::nullopt;
}

std::optional<Exchange> exchangeOfLabel(std::string_view label) {
  if (auto market = marketOfLabel(label)) return exchangeOf(*market);
  return std::nullopt;
}

Exchange exchangeOf(Market market) {
  return row(market).exchange;
}

bool isIndex(Market market) {
  return market == Market::aIndex || market == Market::hkIndex || market == Market::usIndex;
}

std::string_view currencyOf(Market market) {
  return row(market).currency;
}

Exchange axisExchangeOfLabel(std::string_view label) {
  if (label.starts_with(marketLabel(Market::aShare))) return Exchange::shanghai;
  if (label.starts_with(marketLabel(Market::hkShare))) return Exchange::hongKong;
  return Exchange::newYork;
}

bool isIndexSymbol(std::string_view s) {
  if (s.size() < 2) return false;
  const std::string_view prefix = s.substr(0, 2), rest = s.substr(2);
  if (prefix == "sh" || prefix == "sz" || prefix == "bj")
    return rest.size() == 6 && allDigits(rest);
  if (prefix == "hk" || prefix == "us")
    return rest.size() >= 2 && rest.size() <= 8 && allOf(rest, 'A', 'Z');
  return false;
}

bool isFundStyleSymbol(std::string_view s) {
  if (s.size() != 6) return false;
  return s.starts_with("01") || s.starts_with("02") || s.starts_with("5") || s.starts_with("15") ||
         s.starts_with("16");
}

bool isOffExchangeFundSymbol(std::string_view s) {
  return s.size() == 6 && (s.starts_with("01") || s.starts_with("02"));
}

namespace {

std::optional<Market> indexMarket(std::string_view symbol) {
  if (!isIndexSymbol(symbol)) return std::nullopt;
  if (symbol.starts_with("hk")) return Market::hkIndex;
  if (symbol.starts_with("us")) return Market::usIndex;
  return Market::aIndex;
}

}  // namespace

Market feedMarket(std::string_view symbol) {
  if (auto index = indexMarket(symbol)) return *index;
  if (!allDigits(symbol)) return Market::usShare;
  return symbol.size() == 5 ? Market::hkShare : Market::aShare;
}

Market watchlistMarket(std::string_view symbol) {
  if (auto index = indexMarket(symbol)) return *index;
  const bool digits = !symbol.empty() && allDigits(symbol);
  // The fund-code rule only reads six-character codes.
  if (digits && symbol.size() == 6)
    return isFundStyleSymbol(symbol) ? Market::aFund : Market::aShare;
  if (digits && symbol.size() == 5) return Market::hkShare;
  return Market::usShare;
}

std::optional<std::string> marketCode(std::string_view symbol, SourceMode source) {
  if (source != SourceMode::tencent && source != SourceMode::sina) return std::nullopt;
  // Indices first: their prefix would read as a US ticker below.
  if (auto index = indexMarket(symbol)) {
    if (source == SourceMode::sina && *index != Market::aIndex) return std::nullopt;
    return std::string(symbol);
  }
  if (!allDigits(symbol)) {
    const bool five = characterCount(symbol) == 5;
    if (source == SourceMode::tencent)
      return five ? "hk" + std::string(symbol) : "us" + toUpperAscii(symbol);
    return five ? "rt_hk" + std::string(symbol) : "gb_" + toLowerAscii(symbol);
  }
  if (symbol.empty()) return std::nullopt;
  switch (symbol.front()) {
    case '6':
    case '5':
      return "sh" + std::string(symbol);
    case '0':
    case '1':
    case '2':
    case '3':
      return "sz" + std::string(symbol);
    case '4':
    case '8':
    case '9':
      return "bj" + std::string(symbol);
    default:
      return std::nullopt;
  }
}

}  // namespace tidemark
