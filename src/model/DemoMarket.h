#pragma once

#include <string>
#include <vector>

#include "core/Market.h"
#include "core/QuoteSnapshot.h"

namespace tidemark {

// A well-known security of the demonstration set, at its opening values.
struct DemoSecurity {
  const char* id;
  Market market;
  const char* name;
  double price;
  double prevClose;
  double high;
  double low;
  int64_t volume;
};

// The default watchlist and well-known names across all six markets of shares and funds.
const std::vector<DemoSecurity>& demoSecurities();

// The indices of the demonstration, served when watched: the well-known ones, at their opening
// values in points.
const std::vector<DemoSecurity>& demoIndices();

// The built-in offline snapshot: the demonstration set at its opening values, stamped with the
// given instant and source tag.
std::vector<QuoteSnapshot> embeddedQuotes(Date at, const std::string& source);
// The instant the static and embedded snapshots fall back to: 2026-10-16T09:30:00+08:00.
Date embeddedSnapshotDate();

// Demonstration data for the mock source. Every load moves prices a little, deterministically,
// so tests and screenshots repeat; restart() returns to the opening values. Recognised symbols
// outside the set get a generated quote, so any watchlist shows something in this mode.
class MockMarket {
 public:
  void restart() { tick_ = 0; }
  void step() { ++tick_; }
  int tick() const { return tick_; }

  // The whole demonstration set, then the watched indices and generated quotes for the other
  // watched symbols it lacks.
  std::vector<QuoteSnapshot> quotes(const std::vector<std::string>& watchlist, Date at) const;

 private:
  int tick_ = 0;
};

}  // namespace tidemark
