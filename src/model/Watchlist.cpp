#include "model/Watchlist.h"

#include <algorithm>
#include <unordered_set>

#include "core/Market.h"
#include "core/Text.h"
#include "sources/TextDecoding.h"

namespace tidemark {
namespace {

// Length in bytes of a white-space or line-break character starting at `s`, or 0.
size_t spaceAt(std::string_view s, size_t i) {
  unsigned char c = static_cast<unsigned char>(s[i]);
  if (c == ' ' || (c >= '\t' && c <= '\r')) return 1;
  auto rest = s.substr(i);
  if (rest.starts_with("\xC2\x85") || rest.starts_with("\xC2\xA0")) return 2;  // NEL, NBSP
  if (rest.starts_with("\xE3\x80\x80")) return 3;                              // ideographic
  if (rest.starts_with("\xE2\x80") && rest.size() >= 3) {
    unsigned char d = static_cast<unsigned char>(rest[2]);
    // U+2000–U+200A spaces, U+2028/U+2029 separators, U+202F narrow NBSP
    if ((d >= 0x80 && d <= 0x8A) || d == 0xA8 || d == 0xA9 || d == 0xAF) return 3;
  }
  if (rest.starts_with("\xE2\x81\x9F")) return 3;  // U+205F
  if (rest.starts_with("\xE1\x9A\x80")) return 3;  // U+1680
  return 0;
}

// Size in bytes of the space-like character that ends at `end`, or 0.
size_t spaceBefore(std::string_view s, size_t end) {
  for (size_t length = 1; length <= 3 && length <= end; ++length)
    if (spaceAt(s, end - length) == length) return length;
  return 0;
}

bool isAsciiLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
bool isAsciiDigit(char c) {
  return c >= '0' && c <= '9';
}

}  // namespace

std::string_view trimmedSymbol(std::string_view symbol) {
  size_t begin = 0, end = symbol.size();
  while (begin < end) {
    size_t n = spaceAt(symbol, begin);
    if (n == 0) break;
    begin += n;
  }
  while (end > begin) {
    size_t n = spaceBefore(symbol, end);
    if (n == 0) break;
    end -= n;
  }
  return symbol.substr(begin, end - begin);
}

std::vector<std::string> validSymbols(const std::vector<std::string>& symbols, size_t limit) {
  std::vector<std::string> kept;
  kept.reserve(std::min(symbols.size(), limit));
  std::unordered_set<std::string_view> seen;
  seen.reserve(std::min(symbols.size(), limit));
  for (const std::string& symbol : symbols) {
    if (kept.size() == limit) break;
    std::string_view trimmed = trimmedSymbol(symbol);
    if (trimmed.empty() || characterCount(trimmed) > 16) continue;
    if (!seen.insert(trimmed).second) continue;
    kept.push_back(symbol);
  }
  return kept;
}

bool isRecognizedSymbol(std::string_view s) {
  if (isIndexSymbol(s)) return true;
  auto allDigits = [](std::string_view t) {
    for (char c : t)
      if (!isAsciiDigit(c)) return false;
    return true;
  };
  if ((s.size() == 6 || s.size() == 5) && allDigits(s)) return true;
  size_t letters = 0;
  while (letters < s.size() && isAsciiLetter(s[letters])) ++letters;
  if (letters < 1 || letters > 5) return false;
  if (letters == s.size()) return true;
  if (s[letters] != '.' && s[letters] != '-') return false;
  std::string_view suffix = s.substr(letters + 1);
  if (suffix.empty() || suffix.size() > 2) return false;
  for (char c : suffix)
    if (!isAsciiLetter(c)) return false;
  return true;
}

std::vector<std::string> codesFromText(std::string_view text, size_t& skipped) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);  // a spreadsheet's byte-order mark
  std::vector<std::string> codes;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (trimmedSymbol(line).empty()) continue;
    std::string_view field = trimmedSymbol(line.substr(0, line.find_first_of(",;\t")));
    if (field.size() >= 2 && field.front() == '"' && field.back() == '"')
      field = trimmedSymbol(field.substr(1, field.size() - 2));
    if (isRecognizedSymbol(field))
      codes.emplace_back(field);
    else
      ++skipped;
  }
  return codes;
}

Json toJson(const WatchlistBackup& backup) {
  return Json{{"version", backup.version},
              {"exportedAt", backup.exportedAt.sinceReference},
              {"symbols", backup.symbols}};
}

std::optional<WatchlistBackup> watchlistBackupFromBytes(std::string_view bytes, size_t* dropped) {
  // The JSON parser refuses a document with a single stray byte. Marking each invalid sequence
  // with U+FFFD lets the document parse; a byte outside a string still fails it.
  const bool repaired = !isValidUTF8(bytes);
  auto document = repaired ? json::parse(repairUTF8(bytes)) : json::parse(bytes);
  if (!document || !document->is_object()) return std::nullopt;
  auto version = json::integer(*document, "version");
  auto exportedAt = json::date(*document, "exportedAt");
  auto symbols = document->find("symbols");
  if (!version || !exportedAt || symbols == document->end() || !symbols->is_array())
    return std::nullopt;
  WatchlistBackup backup{*version, *exportedAt, {}};
  constexpr std::string_view marker = "\xEF\xBF\xBD";  // U+FFFD
  size_t bad = 0;
  for (const Json& symbol : *symbols) {
    const std::string* text = symbol.is_string() ? &symbol.get_ref<const std::string&>() : nullptr;
    // A repaired document cannot tell a marked byte from a stored U+FFFD; no symbol holds one.
    if (!text || (repaired && text->find(marker) != std::string::npos)) {
      ++bad;
      continue;
    }
    backup.symbols.push_back(*text);
  }
  if (dropped) *dropped = bad;
  return backup;
}

std::string exportText(const WatchlistBackup& backup, const std::vector<Holding>& holdings,
                       const std::vector<AlertRule>& alerts) {
  // nlohmann::json (not ordered) keeps its keys sorted.
  nlohmann::json object{{"version", backup.version},
                        {"exportedAt", formatISO8601(backup.exportedAt)},
                        {"symbols", backup.symbols}};
  for (const Holding& holding : holdings)
    object["holdings"].push_back(
        {{"symbolID", holding.symbolID}, {"shares", holding.shares}, {"cost", holding.cost}});
  for (const AlertRule& rule : alerts) object["alerts"].push_back(nlohmann::json(toJson(rule)));
  return object.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace tidemark
