#include "sources/QuoteFeeds.h"

#include <charconv>
#include <cmath>
#include <unordered_map>

namespace tidemark {
namespace {

bool hasNonDigit(std::string_view s) {
  for (char c : s)
    if (c < '0' || c > '9') return true;
  return false;
}

size_t characterCount(std::string_view utf8) {
  size_t count = 0;
  for (unsigned char c : utf8)
    if ((c & 0xC0) != 0x80) ++count;
  return count;
}

std::string asciiCase(std::string_view s, bool upper) {
  std::string out(s);
  for (char& c : out) {
    if (upper && c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    if (!upper && c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return out;
}

// A finite decimal number in the C locale, the whole field; an optional leading "+".
std::optional<double> number(std::string_view field) {
  if (!field.empty() && field.front() == '+') field.remove_prefix(1);
  if (field.empty()) return std::nullopt;
  double value = 0;
  auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
  if (error != std::errc() || end != field.data() + field.size() || !std::isfinite(value))
    return std::nullopt;
  return value;
}

int64_t volume(std::string_view field) {
  auto value = number(field);
  if (!value) return 0;
  const double truncated = std::trunc(*value);
  if (truncated >= 9.2e18) return INT64_MAX;
  if (truncated <= -9.2e18) return INT64_MIN;
  return static_cast<int64_t>(truncated);
}

// The fields of a payload, empty ones kept, split no further than `limit` fields.
std::vector<std::string_view> split(std::string_view payload, char separator, size_t limit) {
  std::vector<std::string_view> fields;
  fields.reserve(std::min<size_t>(limit, 64));
  size_t start = 0;
  while (fields.size() + 1 < limit) {
    const size_t next = payload.find(separator, start);
    if (next == std::string_view::npos) break;
    fields.push_back(payload.substr(start, next - start));
    start = next + 1;
  }
  fields.push_back(payload.substr(start));
  return fields;
}

// Where each requested key `<prefix><code>="` first occurs in a body. One pass over the text
// instead of one search per symbol keeps large watchlists linear; it finds exactly what a plain
// substring search would, because a code without "=" must end at the first "=" after its start.
class KeyIndex {
 public:
  KeyIndex(std::string_view text, std::string_view prefix, const std::vector<std::string>& codes)
      : text_(text), prefix_(prefix) {
    size_t longest = 0;
    for (const std::string& code : codes) {
      if (code.find('=') != std::string::npos) continue;  // found by plain search instead
      wanted_.emplace(code, std::string_view::npos);
      longest = std::max(longest, code.size());
    }
    size_t equals = 0;
    for (size_t at = text.find(prefix); at != std::string_view::npos;
         at = text.find(prefix, at + 1)) {
      const size_t codeStart = at + prefix.size();
      if (equals < codeStart) equals = text.find('=', codeStart);
      if (equals == std::string_view::npos) break;
      if (equals - codeStart > longest || equals + 1 >= text.size() || text[equals + 1] != '"')
        continue;
      auto it = wanted_.find(text.substr(codeStart, equals - codeStart));
      if (it != wanted_.end() && it->second == std::string_view::npos) it->second = equals + 2;
    }
  }

  // The payload after `<prefix><code>="` up to the next quote; none when the key is missing,
  // ends the text, or its payload is unterminated or empty.
  std::optional<std::string_view> payload(const std::string& code) const {
    size_t start = std::string_view::npos;
    if (auto it = wanted_.find(code); it != wanted_.end()) {
      start = it->second;
    } else {
      const std::string key = std::string(prefix_) + code + "=\"";
      if (size_t at = text_.find(key); at != std::string_view::npos) start = at + key.size();
    }
    if (start == std::string_view::npos || start >= text_.size()) return std::nullopt;
    const size_t end = text_.find('"', start);
    if (end == std::string_view::npos || end == start) return std::nullopt;
    return text_.substr(start, end - start);
  }

 private:
  std::string_view text_;
  std::string_view prefix_;
  std::unordered_map<std::string_view, size_t> wanted_;
};

std::vector<std::string> codesFor(const std::vector<std::string>& symbols, SourceMode source,
                                  std::vector<std::optional<std::string>>& perSymbol) {
  std::vector<std::string> codes;
  perSymbol.reserve(symbols.size());
  for (const std::string& symbol : symbols) {
    perSymbol.push_back(marketCode(symbol, source));
    if (perSymbol.back()) codes.push_back(*perSymbol.back());
  }
  return codes;
}

// High and low are widened to include the price.
QuoteSnapshot record(const std::string& symbol, std::string_view name, double price,
                     double prevClose, double high, double low, int64_t volume, Date at,
                     const char* source) {
  if (!(high > price)) high = price;
  if (price < low) low = price;
  return QuoteSnapshot{
      symbol, feedMarketLabel(symbol), std::string(name), price, prevClose, high, low, volume, at,
      source};
}

}  // namespace

std::optional<std::string> marketCode(std::string_view symbol, SourceMode source) {
  if (source != SourceMode::tencent && source != SourceMode::sina) return std::nullopt;
  if (hasNonDigit(symbol)) {
    const bool five = characterCount(symbol) == 5;
    if (source == SourceMode::tencent)
      return five ? "hk" + std::string(symbol) : "us" + asciiCase(symbol, true);
    return five ? "rt_hk" + std::string(symbol) : "gb_" + asciiCase(symbol, false);
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

bool isFundStyleSymbol(std::string_view s) {
  if (s.size() != 6) return false;
  return s.starts_with("01") || s.starts_with("02") || s.starts_with("5") || s.starts_with("15") ||
         s.starts_with("16");
}

std::string feedMarketLabel(std::string_view symbol) {
  if (hasNonDigit(symbol)) return "美股";
  return characterCount(symbol) == 5 ? "港股" : "A股";
}

std::vector<QuoteSnapshot> parseTencent(std::string_view text,
                                        const std::vector<std::string>& symbols, Date parsedAt) {
  std::vector<std::optional<std::string>> codes;
  const std::vector<std::string> keys = codesFor(symbols, SourceMode::tencent, codes);
  const KeyIndex index(text, "v_", keys);  // keeps views into `keys`
  std::vector<QuoteSnapshot> records;
  for (size_t i = 0; i < symbols.size(); ++i) {
    if (!codes[i]) continue;
    auto payload = index.payload(*codes[i]);
    if (!payload) continue;
    // Fields past the low (34) are never read.
    const auto f = split(*payload, '~', 36);
    if (f.size() < 7) continue;
    const auto price = number(f[3]);
    const auto prevClose = number(f[4]);
    if (!price || !prevClose || !(*price > 0) || !(*prevClose > 0)) continue;
    const double high = f.size() >= 34 ? number(f[33]).value_or(*price) : *price;
    const double low = f.size() >= 35 ? number(f[34]).value_or(*price) : *price;
    records.push_back(
        record(symbols[i], f[1], *price, *prevClose, high, low, volume(f[6]), parsedAt, "tencent"));
  }
  return records;
}

std::vector<QuoteSnapshot> parseSina(std::string_view text, const std::vector<std::string>& symbols,
                                     Date parsedAt) {
  std::vector<std::optional<std::string>> codes;
  const std::vector<std::string> keys = codesFor(symbols, SourceMode::sina, codes);
  const KeyIndex index(text, "hq_str_", keys);  // keeps views into `keys`
  std::vector<QuoteSnapshot> records;
  for (size_t i = 0; i < symbols.size(); ++i) {
    if (!codes[i]) continue;
    auto payload = index.payload(*codes[i]);
    if (!payload) continue;
    const auto f = split(*payload, ',', 10);
    // Five-character symbols read this fixed layout, whatever the feed documents for them;
    // a row too short for it is skipped.
    const bool five = characterCount(symbols[i]) == 5;
    const size_t minimum = five ? 4 : 6;
    const size_t prevIndex = five ? 4 : 2, priceIndex = five ? 5 : 3;
    const size_t highIndex = five ? 2 : 4, lowIndex = five ? 3 : 5;
    if (f.size() < minimum || f.size() <= std::max(prevIndex, priceIndex)) continue;
    const auto prevClose = number(f[prevIndex]);
    const auto price = number(f[priceIndex]);
    const auto high = number(f[highIndex]);
    const auto low = number(f[lowIndex]);
    if (!prevClose || !price || !high || !low || !(*price > 0) || !(*prevClose > 0)) continue;
    const int64_t traded = f.size() >= 9 ? volume(f[8]) : 0;
    records.push_back(
        record(symbols[i], f[0], *price, *prevClose, *high, *low, traded, parsedAt, "sina"));
  }
  return records;
}

}  // namespace tidemark
