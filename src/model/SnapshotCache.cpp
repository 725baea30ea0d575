#include "model/SnapshotCache.h"

namespace tidemark {

std::optional<std::string> encodeSnapshotCache(const std::vector<QuoteSnapshot>& quotes) {
  Json array(Json::value_t::array);
  auto& elements = array.get_ref<Json::array_t&>();
  elements.reserve(quotes.size());
  for (const QuoteSnapshot& q : quotes) elements.push_back(toJson(q));
  return json::encode(array);
}

std::optional<std::vector<QuoteSnapshot>> decodeSnapshotCache(std::string_view bytes) {
  auto document = json::parse(bytes);
  if (!document || !document->is_array()) return std::nullopt;
  std::vector<QuoteSnapshot> quotes;
  quotes.reserve(document->size());
  for (const Json& entry : *document) {
    auto quote = quoteFromJson(entry);
    if (!quote) return std::nullopt;
    quotes.push_back(std::move(*quote));
  }
  return quotes;
}

}  // namespace tidemark
