#include "core/QuoteSnapshot.h"

#include <cmath>
#include <numbers>

#include "core/Market.h"

namespace tidemark {

double QuoteSnapshot::changePct() const {
  if (!(prevClose > 0)) return 0;
  return (price - prevClose) / prevClose * 100;
}

bool QuoteSnapshot::isIndex() const {
  const auto kind = marketOfLabel(market);
  return kind && tidemark::isIndex(*kind);
}

std::string QuoteSnapshot::currency() const {
  // A feed's own label, or none, counts as the mainland's.
  return std::string(currencyOf(marketOfLabel(market).value_or(Market::aShare)));
}

std::vector<double> QuoteSnapshot::trend() const {
  return syntheticTrend(id, price, prevClose);
}

std::vector<double> syntheticTrend(const std::string& id, double price, double prevClose) {
  double seed = 0;
  for (unsigned char byte : id) seed += byte;
  const double amplitude = std::max(std::abs(price - prevClose) * 0.16, prevClose * 0.0015);
  std::vector<double> values;
  values.reserve(60);
  for (int i = 0; i < 60; ++i) {
    const double t = i / 59.0;
    const double w = 0.55 * std::sin(22 * t + seed) + 0.25 * std::sin(0.3 * seed + 53 * t) +
                     0.15 * std::sin(0.7 * seed + 97 * t);
    values.push_back(prevClose + t * (price - prevClose) +
                     std::sin(std::numbers::pi * t) * w * amplitude);
  }
  return values;
}

Json toJson(const QuoteSnapshot& q) {
  // Member by member: an initializer list copies every value twice, and the snapshot cache
  // encodes every quote on every refresh.
  Json object(Json::value_t::object);
  auto& members = object.get_ref<Json::object_t&>();
  members.reserve(10);
  members.emplace_back("id", q.id);
  members.emplace_back("market", q.market);
  members.emplace_back("name", q.name);
  members.emplace_back("price", q.price);
  members.emplace_back("prevClose", q.prevClose);
  members.emplace_back("high", q.high);
  members.emplace_back("low", q.low);
  members.emplace_back("volume", q.volume);
  members.emplace_back("updatedAt", q.updatedAt.sinceReference);
  members.emplace_back("source", q.source);
  for (const auto& [key, member] : quoteFigures)
    if (const auto& value = q.*member) members.emplace_back(key, *value);
  if (q.quoteTime) members.emplace_back("quoteTime", q.quoteTime->sinceReference);
  return object;
}

std::optional<QuoteSnapshot> quoteFromJson(const Json& object) {
  auto id = json::string(object, "id");
  auto market = json::string(object, "market");
  auto name = json::string(object, "name");
  auto price = json::number(object, "price");
  auto prevClose = json::number(object, "prevClose");
  auto high = json::number(object, "high");
  auto low = json::number(object, "low");
  auto volume = json::integer(object, "volume");
  auto updatedAt = json::date(object, "updatedAt");
  auto source = json::string(object, "source");
  if (!id || !market || !name || !price || !prevClose || !high || !low || !volume || !updatedAt ||
      !source)
    return std::nullopt;
  QuoteSnapshot quote{*id,   *market, *name,   *price,     *prevClose,
                      *high, *low,    *volume, *updatedAt, *source};
  for (const auto& [key, member] : quoteFigures) quote.*member = json::number(object, key);
  quote.quoteTime = json::date(object, "quoteTime");
  return quote;
}

}  // namespace tidemark
