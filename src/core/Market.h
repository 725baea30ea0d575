#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "core/Enums.h"

namespace tidemark {

// The markets a quote belongs to. A quote carries its market as the label text the feeds and the
// stored records use; code reads it back with `marketOfLabel` and switches on this instead.
enum class Market {
  aShare,   // A股
  hkShare,  // 港股
  usShare,  // 美股
  aFund,    // A股基金
  hkFund,   // 港股基金
  usFund,   // 美股基金
  aIndex,   // A股指数
  hkIndex,  // 港股指数
  usIndex,  // 美股指数
};
inline constexpr std::array allMarkets{Market::aShare, Market::hkShare, Market::usShare,
                                       Market::aFund,  Market::hkFund,  Market::usFund,
                                       Market::aIndex, Market::hkIndex, Market::usIndex};

// The three exchanges whose hours the markets keep: a fund or an index trades on its shares'.
enum class Exchange { shanghai, hongKong, newYork };
inline constexpr size_t exchangeCount = 3;

// The label shown and stored ("A股", "港股基金", ...), a null-terminated literal.
std::string_view marketLabel(Market market);
// The market of one of the nine labels, exactly; none for any other text (a feed's own label).
std::optional<Market> marketOfLabel(std::string_view label);
// The exchange of one of the nine labels; none for any other text.
std::optional<Exchange> exchangeOfLabel(std::string_view label);

Exchange exchangeOf(Market market);
bool isIndex(Market market);
// "CNY", "HKD" or "USD"; empty for an index, which is counted in points.
std::string_view currencyOf(Market market);

// Where a chart's time axis takes its hours from: a label beginning with an exchange's shares
// label ("A股…", "港股…") is that exchange's, any other label New York's.
Exchange axisExchangeOfLabel(std::string_view label);

// Market indices are written with their exchange's prefix, so that "000001" stays 平安银行 and
// "sh000001" is 上证指数: "sh", "sz" or "bj" and six digits, or "hk" or "us" and two to eight
// upper-case letters ("hkHSI", "usIXIC"). No other symbol is an index.
bool isIndexSymbol(std::string_view symbol);
// Six-character codes starting "01", "02", "5", "15" or "16": funds, which the two text feeds
// are not asked for.
bool isFundStyleSymbol(std::string_view symbol);
// Six-character codes starting "01" or "02": funds sold off the exchange, which have a daily net
// value but no candles.
bool isOffExchangeFundSymbol(std::string_view symbol);

// The market a feed's record of a symbol is labelled with: an index's; else US shares for a
// symbol with a non-digit, Hong Kong shares for five characters, otherwise A-shares. A fund's
// code reads as shares here: the feeds tell funds by their rows, not by the code.
Market feedMarket(std::string_view symbol);
// The market a watchlist row of an unquoted symbol shows: an index's; for six digits A-share
// funds by the fund-code rule or A-shares, for five digits Hong Kong shares, otherwise US shares.
Market watchlistMarket(std::string_view symbol);

// The feed's code of a watchlist symbol ("600519" → "sh600519" for both feeds, "NVDA" →
// "usNVDA" for Tencent and "gb_nvda" for Sina), or none for a symbol or source without one. An
// index is its own code; Sina is asked for A-share indices only.
std::optional<std::string> marketCode(std::string_view symbol, SourceMode source);

}  // namespace tidemark
