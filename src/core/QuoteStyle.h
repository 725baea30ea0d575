#pragma once

#include <string>
#include <string_view>

#include "core/Enums.h"
#include "core/NumberText.h"
#include "core/QuoteSnapshot.h"

namespace tidemark {

// The decimals a price of `symbol` shows. Two, unless automatic: ETF and LOF codes ("5", "15",
// "16") and Hong Kong prices below 1 take three, funds sold off the exchange ("01", "02") four.
// An index is points and keeps two. `market` is the quote's label; empty reads it off the code.
int priceDigits(std::string_view symbol, std::string_view market, double price,
                PricePrecision precision);

// The decimals of the shortest text that reads back as `value` ("5.1234" → 4, "1500.5" → 1), at
// most eight: how many the user typed.
int typedDigits(double value);

// How quotes are coloured and their prices written, as the user chose.
struct QuoteStyle {
  RiseColors colors = RiseColors::redRises;
  PricePrecision precision = PricePrecision::two;

  // The rise, fall and unchanged colour of a change, rise and fall swapped for green rises.
  Color color(double changePct) const;
  // A figure of the quote (its price, open, high, low) at the quote's decimals.
  std::string price(const QuoteSnapshot& quote, double value) const;
  std::string price(const QuoteSnapshot& quote) const { return price(quote, quote.price); }
  // A price the user typed for `symbol` (a cost, a threshold): the symbol's decimals, or more
  // when more were typed, so that 5.1234 reads 5.1234 in either precision.
  std::string typed(std::string_view symbol, double value) const;

  friend bool operator==(const QuoteStyle&, const QuoteStyle&) = default;
};

}  // namespace tidemark
