#include "model/MarketExtras.h"

#include <algorithm>

#include "core/ExchangeTime.h"
#include "core/NumberText.h"

namespace tidemark {

const RateMap& MarketExtras::demonstrationRates() {
  static const RateMap rates{{"USD", 7.12}, {"HKD", 0.915}};
  return rates;
}

void MarketExtras::takeRates(const RateMap& rates, Date at) {
  for (const auto& [currency, value] : rates) rates_[currency] = {value, at};
}

std::optional<std::pair<double, Date>> MarketExtras::rate(const std::string& currency, Date now,
                                                          bool demonstration) const {
  if (currency == "CNY") return std::pair(1.0, now);
  if (demonstration) {
    const auto fixed = demonstrationRates().find(currency);
    if (fixed == demonstrationRates().end()) return std::nullopt;
    return std::pair(fixed->second, now);
  }
  const auto kept = rates_.find(currency);
  if (kept == rates_.end() || !(now - kept->second.second < rateLifetime)) return std::nullopt;
  return kept->second;
}

std::optional<YuanTotal> MarketExtras::yuanTotal(const std::vector<HoldingsTotal>& totals, Date now,
                                                 bool demonstration) const {
  YuanTotal sum;
  sum.demonstration = demonstration;
  sum.ratesAt = now;
  double yesterday = 0, cost = 0;
  for (const HoldingsTotal& t : totals) {
    if (t.counted == 0) continue;
    const auto used = rate(t.currency, now, demonstration);
    if (!used) return std::nullopt;
    const auto [r, at] = *used;
    sum.marketValue += t.marketValue * r;
    sum.dayProfit += t.dayProfit * r;
    sum.totalProfit += t.totalProfit * r;
    yesterday += (t.marketValue - t.dayProfit) * r;
    cost += (t.marketValue - t.totalProfit) * r;
    if (t.currency == "CNY") continue;
    sum.rates.emplace_back(t.currency, r);
    sum.ratesAt = std::min(sum.ratesAt, at);
  }
  // USD first, then HKD, whatever the totals' order.
  std::sort(sum.rates.begin(), sum.rates.end(),
            [](const auto& a, const auto& b) { return a.first > b.first; });
  for (const char* currency : {"USD", "HKD"})
    if (const auto usable = rate(currency, now, demonstration)) sum.known[currency] = usable->first;
  if (yesterday > 0) sum.dayProfitPct = sum.dayProfit / yesterday * 100;
  if (cost > 0) sum.totalProfitPct = sum.totalProfit / cost * 100;
  return sum;
}

void MarketExtras::takeExtended(std::vector<ExtendedQuote> quotes, Date now) {
  std::erase_if(quotes, [now](const ExtendedQuote& q) { return !isCurrentSessionTrade(q, now); });
  extended_ = std::move(quotes);
}

const ExtendedQuote* MarketExtras::extended(const std::string& symbol) const {
  for (const ExtendedQuote& q : extended_)
    if (q.symbol == symbol) return &q;
  return nullptr;
}

bool isCurrentSessionTrade(const ExtendedQuote& quote, Date now) {
  const auto session = marketState(Exchange::newYork, now);
  if (session != MarketState::preMarket && session != MarketState::postMarket) return false;
  return quote.at <= now && marketState(Exchange::newYork, quote.at) == session &&
         exchangeDay(Exchange::newYork, quote.at) == exchangeDay(Exchange::newYork, now);
}

std::optional<std::string> extendedSessionLabel(std::optional<MarketState> newYork) {
  if (newYork == MarketState::preMarket || newYork == MarketState::postMarket)
    return std::string(stateText(*newYork));
  return std::nullopt;
}

std::string extendedDetailText(const std::string& label, const ExtendedQuote& quote,
                               const std::string& price) {
  std::string text = label + " " + price + " " + percentText(quote.changePct);
  if (const auto clock = exchangeTime(Exchange::newYork, quote.at)) {
    const auto two = [](int n) { return std::string(n < 10 ? "0" : "") + std::to_string(n); };
    text += "  " + two(clock->hour) + ":" + two(clock->minute) + " 美东";
  }
  return text;
}

std::string extendedTooltipText(const std::string& label, const ExtendedQuote& quote,
                                const std::string& price) {
  return " · " + label + " " + price + " (" + percentText(quote.changePct) + ")";
}

std::string extendedRowText(const std::string& label, const ExtendedQuote& quote) {
  return label + " " + percentText(quote.changePct);
}

std::string ratesText(const YuanTotal& total, const std::string& clock) {
  std::string text = total.demonstration ? "演示汇率 " : "汇率 ";
  for (size_t i = 0; i < total.rates.size(); ++i)
    text += (i ? " · " : "") + total.rates[i].first + " " + priceText(total.rates[i].second, 4);
  if (!total.demonstration) text += " · " + clock;
  return text;
}

}  // namespace tidemark
