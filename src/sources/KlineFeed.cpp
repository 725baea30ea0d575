#include "sources/KlineFeed.h"

#include <charconv>

#include "core/Market.h"

namespace tidemark {
namespace {

// A number written as text ("1468.80", "32200.000") or as a JSON number.
std::optional<double> field(const Json& value) {
  if (value.is_number()) return value.get<double>();
  if (!value.is_string()) return std::nullopt;
  const auto& text = value.get_ref<const std::string&>();
  double number = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<KlineBar> bar(const Json& row) {
  if (!row.is_array() || row.size() < 6 || !row[0].is_string()) return std::nullopt;
  KlineBar b;
  b.date = row[0].get<std::string>();
  double* targets[] = {&b.open, &b.close, &b.high, &b.low, &b.volume};
  for (size_t i = 0; i < 5; ++i) {
    auto value = field(row[i + 1]);
    if (!value) return std::nullopt;
    *targets[i] = *value;
  }
  if (!isValidBar(b)) return std::nullopt;
  return b;
}

}  // namespace

std::optional<std::string> tencentKlineURL(const DataSourceEndpoints& endpoints,
                                           std::string_view symbol, KlinePeriod period) {
  auto code = marketCode(symbol, SourceMode::tencent);
  if (!code) return std::nullopt;
  return endpoints.tencentKline + *code + "," + std::string(rawValue(period)) + ",,," +
         std::to_string(klineRequestCount) + ",qfq";
}

std::optional<std::vector<KlineBar>> parseTencentKline(std::string_view body,
                                                       std::string_view feedCode,
                                                       KlinePeriod period) {
  auto document = json::parse(body);
  if (!document || !document->is_object()) return std::nullopt;
  auto data = document->find("data");
  if (data == document->end() || !data->is_object()) return std::nullopt;
  auto entry = data->find(std::string(feedCode));
  if (entry == data->end() || !entry->is_object()) return std::nullopt;
  const std::string plain(rawValue(period));
  for (const std::string& key : {"qfq" + plain, plain}) {
    auto rows = entry->find(key);
    if (rows == entry->end() || !rows->is_array()) continue;
    std::vector<KlineBar> bars;
    for (const Json& row : *rows)
      if (auto b = bar(row)) bars.push_back(std::move(*b));
    return bars;
  }
  return std::nullopt;
}

}  // namespace tidemark
