#include "sources/QuoteFeeds.h"

#include <array>
#include <bit>
#include <cassert>
#include <charconv>
#include <cmath>
#include <cstring>

#include "core/ExchangeTime.h"
#include "core/Market.h"
#include "core/Text.h"

namespace tidemark {
namespace {

// Plain decimal text in the C locale, the whole field: one optional sign, then digits with at
// most one point among them. No blanks, exponents, second signs or words such as "inf".
std::optional<double> number(std::string_view field) {
  const bool negative = !field.empty() && field.front() == '-';
  if (!field.empty() && (negative || field.front() == '+')) field.remove_prefix(1);
  size_t digits = 0, fraction = 0;
  bool point = false;
  uint64_t mantissa = 0;
  for (const char c : field) {
    if (c >= '0' && c <= '9') {
      if (digits < 19) mantissa = mantissa * 10 + static_cast<uint64_t>(c - '0');
      ++digits;
      fraction += point;
    } else if (c == '.' && !point) {
      point = true;
    } else {
      return std::nullopt;
    }
  }
  if (digits == 0) return std::nullopt;
  // Feed prices are short ("1468.80"). With at most 15 digits the digits form an exact integer,
  // and dividing it by an exact power of ten rounds correctly, as a full parse would.
  static constexpr double powers[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8};
  double value = 0;
  if (digits <= 15 && fraction <= 8) {
    value = static_cast<double>(mantissa) / powers[fraction];
  } else {
    auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
    if (error != std::errc() || end != field.data() + field.size() || !std::isfinite(value))
      return std::nullopt;
  }
  return negative ? -value : value;
}

int64_t volume(std::string_view field) {
  auto value = number(field);
  if (!value) return 0;
  const double truncated = std::trunc(*value);
  if (truncated >= 9.2e18) return INT64_MAX;
  if (truncated <= -9.2e18) return INT64_MIN;
  return static_cast<int64_t>(truncated);
}

// 0x80 in exactly the bytes of `word` that equal the byte repeated in `pattern`.
uint64_t bytesEqual(uint64_t word, uint64_t pattern) {
  constexpr uint64_t low7 = 0x7F7F7F7F7F7F7F7Full;
  const uint64_t x = word ^ pattern;
  return ~(((x & low7) + low7) | x | low7);
}

// The first N fields of a payload, empty ones kept; the last slot takes the rest unsplit. Only
// the fields whose bit is set in `Wanted` are kept; size() counts them all. Rows are long and
// splitting is most of a parse, so separators are found eight bytes at a time, and a word
// whose separators end only unwanted fields is passed over with a population count.
template <size_t N, uint64_t Wanted = ~0ull>
struct Fields {
  static_assert(N <= 64);
  // Left uninitialised: zeroing every slot for each row cost more than the split. Only wanted
  // fields below size() are ever filled and read.
  struct Span {
    const char* data;
    size_t size;
  };
  Span field[N];
  size_t count = 0;

  Fields(std::string_view payload, char separator) {
    const char* data = payload.data();
    const size_t size = payload.size();
    size_t start = 0, i = 0, index = 0;  // `index` is the field that begins at `start`
    const auto cut = [&](size_t at) {
      if (Wanted >> index & 1) field[index] = {data + start, at - start};
      ++index;
      start = at + 1;
    };
    if constexpr (std::endian::native == std::endian::little) {
      const uint64_t pattern = 0x0101010101010101ull * static_cast<unsigned char>(separator);
      for (; i + 8 <= size && index + 1 < N; i += 8) {
        uint64_t word;
        std::memcpy(&word, data + i, 8);
        uint64_t hits = bytesEqual(word, pattern);
        if (!hits) continue;
        // Bits only at the top of bytes: one multiply sums them (no popcount call on baseline
        // x86-64).
        const auto ends = static_cast<size_t>(((hits >> 7) * 0x0101010101010101ull) >> 56);
        // Fields index … index+ends-1 end in this word; without a wanted one among them and
        // below the cap, only where the next field starts matters.
        const uint64_t ending = ends >= 64 ? ~0ull : ((1ull << ends) - 1) << index;
        if (index + ends < N - 1 && !(Wanted & ending)) {
          index += ends;
          start = i + static_cast<size_t>((63 - std::countl_zero(hits)) >> 3) + 1;
          continue;
        }
        for (; hits && index + 1 < N; hits &= hits - 1)
          cut(i + static_cast<size_t>(std::countr_zero(hits) >> 3));
      }
    }
    for (; i < size && index + 1 < N; ++i)
      if (data[i] == separator) cut(i);
    if (Wanted >> index & 1) field[index] = {data + start, size - start};
    count = index + 1;
  }
  size_t size() const { return count; }
  std::string_view operator[](size_t i) const {
    assert(i < count && (Wanted >> i & 1));
    return {field[i].data, field[i].size};
  }
};

// The payload after an opening quote at `start`, up to the next quote; none when it is empty or
// never closed.
std::optional<std::string_view> payloadAt(std::string_view text, size_t start) {
  const size_t end = text.find('"', start);
  if (end == std::string_view::npos || end == start) return std::nullopt;
  return text.substr(start, end - start);
}

// A small open-addressing table from code to its first symbol: no prime modulo per lookup, as
// std::unordered_map has, and no allocation per entry.
class CodeTable {
 public:
  explicit CodeTable(size_t entries) {
    size_t capacity = 16;
    while (capacity < entries * 2) capacity *= 2;
    slots_.assign(capacity, {{}, SIZE_MAX});
    mask_ = capacity - 1;
  }
  // The symbol stored for `code`, after storing `symbol` for it if it was not there yet.
  size_t insert(std::string_view code, size_t symbol) {
    Slot& slot = find(code);
    if (slot.symbol == SIZE_MAX) slot = {code, symbol};
    return slot.symbol;
  }
  size_t lookup(std::string_view code) const {
    return const_cast<CodeTable*>(this)->find(code).symbol;
  }

 private:
  struct Slot {
    std::string_view code;
    size_t symbol;
  };
  Slot& find(std::string_view code) {
    for (size_t at = stableHash(code) & mask_;; at = (at + 1) & mask_) {
      Slot& slot = slots_[at];
      if (slot.symbol == SIZE_MAX || slot.code == code) return slot;
    }
  }
  std::vector<Slot> slots_;
  size_t mask_ = 0;
};

// Where each symbol's key `<prefix><code>="` first occurs in a body. One pass over the text
// instead of one search per symbol keeps large watchlists linear; it finds exactly what a plain
// substring search would, because a code without "=" must end at the first "=" after its start.
class KeyIndex {
 public:
  static constexpr size_t missing = std::string_view::npos;

  KeyIndex(std::string_view text, std::string_view prefix,
           const std::vector<std::optional<std::string>>& codes)
      : payloadStart_(codes.size(), missing) {
    CodeTable table(codes.size());
    std::vector<size_t> first(codes.size(), missing);  // the symbol that shares this code
    size_t longest = 0;
    for (size_t i = 0; i < codes.size(); ++i) {
      if (!codes[i] || codes[i]->find('=') != std::string::npos) continue;
      first[i] = table.insert(*codes[i], i);
      longest = std::max(longest, codes[i]->size());
    }
    size_t equals = 0;
    for (size_t at = text.find(prefix); at != std::string_view::npos;
         at = text.find(prefix, at + 1)) {
      const size_t codeStart = at + prefix.size();
      if (equals < codeStart) equals = text.find('=', codeStart);
      if (equals == std::string_view::npos) break;
      if (equals - codeStart > longest || equals + 1 >= text.size() || text[equals + 1] != '"')
        continue;
      const size_t symbol = table.lookup(text.substr(codeStart, equals - codeStart));
      if (symbol != SIZE_MAX && payloadStart_[symbol] == missing)
        payloadStart_[symbol] = equals + 2;
    }
    for (size_t i = 0; i < codes.size(); ++i) {
      if (!codes[i]) continue;
      if (first[i] != missing) {
        payloadStart_[i] = payloadStart_[first[i]];  // a symbol asked twice
      } else {
        const std::string key = std::string(prefix) + *codes[i] + "=\"";
        if (size_t at = text.find(key); at != std::string_view::npos)
          payloadStart_[i] = at + key.size();
      }
    }
  }

  // Just after the opening quote of the i-th symbol's payload; `missing` when the key is not in
  // the text or ends it.
  size_t payloadStart(size_t i, size_t textSize) const {
    return payloadStart_[i] < textSize ? payloadStart_[i] : missing;
  }

 private:
  std::vector<size_t> payloadStart_;
};

std::vector<std::optional<std::string>> codesFor(const std::vector<std::string>& symbols,
                                                 SourceMode source) {
  std::vector<std::optional<std::string>> codes;
  codes.reserve(symbols.size());
  for (const std::string& symbol : symbols) codes.push_back(marketCode(symbol, source));
  return codes;
}

// Built in place at the end of `records`; high and low are widened to include the price.
void append(std::vector<QuoteSnapshot>& records, const std::string& symbol, std::string_view name,
            double price, double prevClose, double high, double low, int64_t volume, Date at,
            const char* source) {
  QuoteSnapshot& q = records.emplace_back();
  q.id = symbol;
  q.market = marketLabel(feedMarket(symbol));
  q.name = name;
  q.price = price;
  q.prevClose = prevClose;
  q.high = high > price ? high : price;
  q.low = price < low ? price : low;
  q.volume = volume;
  q.updatedAt = at;
  q.source = source;
}

// A figure only where the field holds a positive number (a P/E below zero too: a loss).
std::optional<double> figure(std::string_view field, bool negativeToo = false) {
  const auto value = number(field);
  if (!value || !(*value > 0 || (negativeToo && *value < 0))) return std::nullopt;
  return value;
}

// The `k`-th field of a row's unsplit rest, or empty.
std::string_view restField(std::string_view rest, size_t k) {
  for (; k > 0; --k) {
    const size_t next = rest.find('~');
    if (next == std::string_view::npos) return {};
    rest.remove_prefix(next + 1);
  }
  return rest.substr(0, rest.find('~'));
}

// The fuller figures of a Tencent row, by its exchange's layout: open 5 and the exchange's time
// 30 in every row; the amount 37, in ten thousands of yuan for the mainland; turnover 38 and
// P/E 39 for mainland and US shares; the limits 47 and 48 for A-shares; the 52-week high and low
// at 67 and 68 on the mainland and 48 and 49 in New York. `rest` holds fields 49 onwards.
template <class Row>
void addTencentFigures(QuoteSnapshot& q, const Row& f, std::string_view rest) {
  const Market market = feedMarket(q.id);
  const Exchange exchange = exchangeOf(market);
  const bool shares = !isIndex(market), mainland = exchange == Exchange::shanghai;
  const auto at = [&](size_t i) { return i < f.size() ? f[i] : std::string_view(); };
  const auto atRest = [&](size_t i) {
    return i == 49 ? restField(rest, 0) : f.size() > 49 ? restField(rest, i - 49) : "";
  };
  q.open = figure(at(5));
  q.quoteTime = parseExchangeTime(at(30), exchange);
  if (auto amount = figure(at(37))) q.amount = mainland ? *amount * 10000 : *amount;
  if (shares && exchange != Exchange::hongKong) {
    q.turnoverPct = figure(at(38));
    q.pe = figure(at(39), true);
  }
  if (shares && mainland) {
    q.limitUp = figure(at(47));
    q.limitDown = figure(at(48));
  }
  if (exchange != Exchange::hongKong) {
    q.high52w = figure(mainland ? atRest(67) : at(48));
    q.low52w = figure(mainland ? atRest(68) : atRest(49));
  }
}

// Each requested symbol's payload, in request order, handed to `parseRow`, which appends a
// record when the row is valid; symbols without a code, a key or a closed, non-empty payload
// are left out.
template <class ParseRow>
std::vector<QuoteSnapshot> parseRows(std::string_view text, const std::vector<std::string>& symbols,
                                     SourceMode source, std::string_view prefix,
                                     ParseRow parseRow) {
  const auto codes = codesFor(symbols, source);
  const KeyIndex index(text, prefix, codes);
  std::vector<QuoteSnapshot> records;
  records.reserve(symbols.size());
  for (size_t i = 0; i < symbols.size(); ++i) {
    const size_t start = index.payloadStart(i, text.size());
    if (start == KeyIndex::missing) continue;
    const auto payload = payloadAt(text, start);
    if (!payload) continue;
    parseRow(symbols[i], *payload, records);
  }
  return records;
}

}  // namespace

std::vector<QuoteSnapshot> parseTencent(std::string_view text,
                                        const std::vector<std::string>& symbols, Date parsedAt) {
  return parseRows(text, symbols, SourceMode::tencent, "v_",
                   [&](const std::string& symbol, std::string_view payload,
                       std::vector<QuoteSnapshot>& records) -> void {
                     // Name 1, price 3, previous close 4, volume 6, high 33, low 34, and the
                     // fuller figures' fields.
                     constexpr uint64_t wanted = 1ull << 1 | 1ull << 3 | 1ull << 4 | 1ull << 5 |
                                                 1ull << 6 | 1ull << 30 | 1ull << 33 | 1ull << 34 |
                                                 1ull << 37 | 1ull << 38 | 1ull << 39 | 1ull << 47 |
                                                 1ull << 48 | 1ull << 49;
                     const Fields<50, wanted> f(payload, '~');
                     if (f.size() < 7) return;
                     const auto price = number(f[3]);
                     const auto prevClose = number(f[4]);
                     if (!price || !prevClose || !(*price > 0) || !(*prevClose > 0)) return;
                     const double high = f.size() >= 34 ? number(f[33]).value_or(*price) : *price;
                     const double low = f.size() >= 35 ? number(f[34]).value_or(*price) : *price;
                     append(records, symbol, f[1], *price, *prevClose, high, low, volume(f[6]),
                            parsedAt, "tencent");
                     addTencentFigures(records.back(), f, f.size() >= 50 ? f[49] : "");
                   });
}

std::vector<QuoteSnapshot> parseSina(std::string_view text, const std::vector<std::string>& symbols,
                                     Date parsedAt) {
  return parseRows(
      text, symbols, SourceMode::sina, "hq_str_",
      [&](const std::string& symbol, std::string_view payload,
          std::vector<QuoteSnapshot>& records) -> void {
        // Name, the prices and volume in 0 to 8, the mainland's date and time in 30 and 31.
        constexpr uint64_t wanted = 0x1FFull | 1ull << 30 | 1ull << 31;
        const Fields<33, wanted> f(payload, ',');
        // Five-character symbols read this fixed layout, whatever the feed documents for them;
        // a row too short for it is skipped.
        const bool five = characterCount(symbol) == 5;
        const size_t minimum = five ? 4 : 6;
        const size_t prevIndex = five ? 4 : 2, priceIndex = five ? 5 : 3;
        const size_t highIndex = five ? 2 : 4, lowIndex = five ? 3 : 5;
        if (f.size() < minimum || f.size() <= std::max(prevIndex, priceIndex)) return;
        const auto prevClose = number(f[prevIndex]);
        const auto price = number(f[priceIndex]);
        const auto high = number(f[highIndex]);
        const auto low = number(f[lowIndex]);
        if (!prevClose || !price || !high || !low || !(*price > 0) || !(*prevClose > 0)) return;
        const int64_t traded = f.size() >= 9 ? volume(f[8]) : 0;
        append(records, symbol, f[0], *price, *prevClose, *high, *low, traded, parsedAt, "sina");
        // A mainland row also carries the open (1) and the exchange's date and time (30, 31).
        if (!five && exchangeOf(feedMarket(symbol)) == Exchange::shanghai) {
          records.back().open = figure(f[1]);
          if (f.size() > 31)
            records.back().quoteTime = parseExchangeTime(
                std::string(f[30]) + " " + std::string(f[31]), Exchange::shanghai);
        }
      });
}

}  // namespace tidemark
