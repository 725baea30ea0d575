#include "core/QuoteStyle.h"

#include <algorithm>
#include <charconv>

#include "core/Market.h"

namespace tidemark {

int priceDigits(std::string_view symbol, std::string_view market, double price,
                PricePrecision precision) {
  if (precision == PricePrecision::two) return 2;
  const Market m = market.empty() ? watchlistMarket(symbol)
                                  : marketOfLabel(market).value_or(watchlistMarket(symbol));
  if (isIndex(m)) return 2;
  if (isOffExchangeFundSymbol(symbol)) return 4;
  if (exchangeOf(m) == Exchange::shanghai && isFundStyleSymbol(symbol)) return 3;
  if (exchangeOf(m) == Exchange::hongKong && price < 1) return 3;
  return 2;
}

int typedDigits(double value) {
  char buf[64];
  const auto result = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed);
  const std::string_view text(buf, result.ec == std::errc() ? result.ptr - buf : 0);
  const size_t point = text.find('.');
  if (point == std::string_view::npos) return 0;
  return static_cast<int>(std::min<size_t>(text.size() - point - 1, 8));
}

Color QuoteStyle::color(double changePct) const {
  return quoteColor(colors == RiseColors::greenRises ? -changePct : changePct);
}

std::string QuoteStyle::price(const QuoteSnapshot& quote, double value) const {
  return priceText(value, priceDigits(quote.id, quote.market, quote.price, precision));
}

std::string QuoteStyle::typed(std::string_view symbol, double value) const {
  return priceText(value, std::max(priceDigits(symbol, "", value, precision), typedDigits(value)));
}

}  // namespace tidemark
