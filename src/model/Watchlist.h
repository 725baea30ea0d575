#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Date.h"
#include "core/Json.h"
#include "model/AlertRules.h"
#include "model/Holdings.h"

namespace tidemark {

// The list rules every assignment of the watchlist goes through: an element is kept when its
// trimmed form is not empty, has at most 16 characters and has not occurred earlier. The kept
// element is the element as it stood; trimming only decides. At most `limit` are kept, the first.
std::vector<std::string> validSymbols(const std::vector<std::string>& symbols,
                                      size_t limit = std::numeric_limits<size_t>::max());

// White space and line breaks cut from both ends (ASCII and the Unicode spaces a paste brings).
std::string_view trimmedSymbol(std::string_view symbol);

// Whether a feed can serve the symbol, the extra test an imported file must pass:
//   six digits            A-shares and mainland funds: 600519, 000858, 510300, 159915
//   five digits           Hong Kong shares and funds: 00700, 03033, 02800
//   1–5 letters, then optionally "." or "-" and 1–2 letters
//                         US tickers and share classes: NVDA, AAPL, BRK.B, BF-B
//   an index symbol       sh000001, sz399001, hkHSI, usIXIC
// Letters may be either case. Longer words such as "UNKNOWN" are not tickers any feed serves.
bool isRecognizedSymbol(std::string_view trimmed);

// The backup and export record of the watchlist.
struct WatchlistBackup {
  int64_t version = 1;
  Date exportedAt;
  std::vector<std::string> symbols;
};

// What an import brought: the holdings travel with the watchlist, and an import that carries
// them replaces them, one without leaves them alone.
struct WatchlistImportResult {
  size_t symbols = 0;
  size_t skippedLines = 0;         // a plain list's lines that hold no code
  std::optional<size_t> holdings;  // none: the file carried no holdings
  size_t skippedHoldings = 0;      // entries that are no holding
  std::optional<size_t> alerts;    // the same for the alerts besides the primary one
  size_t skippedAlerts = 0;
};

// The codes of a plain list, one a line or in the first column of a CSV (commas, semicolons or
// tabs; quotes around a field taken off). Blank lines are passed over; a line whose first field
// is no code (a header, a note) is counted in `skipped`.
std::vector<std::string> codesFromText(std::string_view text, size_t& skipped);

// Stored form: keys in field order, the date as seconds since 2001-01-01T00:00:00Z.
Json toJson(const WatchlistBackup& backup);
// One bad entry does not cost the list: an entry that is not a string, or holds bytes that are
// not UTF-8, is dropped and counted in `dropped`. Anything else amiss rejects the record.
std::optional<WatchlistBackup> watchlistBackupFromBytes(std::string_view bytes,
                                                        size_t* dropped = nullptr);
// Export form: pretty-printed, keys sorted, the date as ISO 8601 text; the holdings and the
// alerts, when there are any, under "holdings" and "alerts" in their stored form.
std::string exportText(const WatchlistBackup& backup, const std::vector<Holding>& holdings = {},
                       const std::vector<AlertRule>& alerts = {});

}  // namespace tidemark
