#include "model/StaticSnapshot.h"

#include <array>
#include <cmath>
#include <unordered_set>

#include "core/FileIO.h"
#include "core/Market.h"
#include "model/ModelError.h"

namespace tidemark {

std::string staticMarketLabel(std::string_view value) {
  // The file may name the markets of shares and funds by code instead of by label.
  static constexpr std::array<std::pair<std::string_view, Market>, 6> codes{{
      {"CN", Market::aShare},
      {"HK", Market::hkShare},
      {"US", Market::usShare},
      {"CN_FUND", Market::aFund},
      {"HK_FUND", Market::hkFund},
      {"US_FUND", Market::usFund},
  }};
  for (const auto& [code, market] : codes)
    if (value == code || value == marketLabel(market)) return std::string(marketLabel(market));
  return std::string(value);
}

StaticSnapshot loadStaticSnapshot(const Bundle& bundle) {
  auto path = bundle.resource("tidemark-quotes", "json");
  if (!path) throw ModelError::invalidSnapshot("应用中未找到 tidemark-quotes.json");
  std::error_code error;
  auto bytes = readFile(*path, error);
  if (!bytes) throw ModelError::invalidSnapshot("无法读取 tidemark-quotes.json");
  return decodeStaticSnapshot(*bytes);
}

StaticSnapshot decodeStaticSnapshot(std::string_view bytes) {
  const auto malformed = [] { return ModelError::invalidSnapshot("静态快照格式无效"); };
  auto document = json::parse(bytes);
  if (!document || !document->is_object()) throw malformed();
  auto updatedAtText = json::string(*document, "updatedAt");
  auto quotes = document->find("quotes");
  if (!updatedAtText || quotes == document->end() || !quotes->is_array()) throw malformed();

  StaticSnapshot snapshot;
  for (const Json& entry : *quotes) {
    auto symbol = json::string(entry, "symbol");
    auto market = json::string(entry, "market");
    auto name = json::string(entry, "name");
    auto price = json::number(entry, "price");
    auto prevClose = json::number(entry, "prevClose");
    auto high = json::number(entry, "high");
    auto low = json::number(entry, "low");
    auto volume = json::integer(entry, "volume");
    if (!symbol || !market || !name || !price || !prevClose || !high || !low || !volume)
      throw malformed();
    snapshot.quotes.push_back(QuoteSnapshot{*symbol, staticMarketLabel(*market), *name, *price,
                                            *prevClose, *high, *low, *volume, Date{},
                                            "static_json"});
  }

  auto updatedAt = parseISO8601(*updatedAtText);
  if (!updatedAt || snapshot.quotes.empty())
    throw ModelError::invalidSnapshot("静态快照缺少有效的更新时间或行情");

  std::unordered_set<std::string> seen;
  for (QuoteSnapshot& quote : snapshot.quotes) {
    if (!seen.insert(quote.id).second || !std::isfinite(quote.price) || !(quote.price > 0))
      throw ModelError::invalidSnapshot("静态快照包含重复代码或无效价格");
    quote.updatedAt = *updatedAt;
  }
  snapshot.updatedAt = *updatedAt;
  return snapshot;
}

}  // namespace tidemark
