#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/Clock.h"
#include "core/Kline.h"
#include "core/Lifeline.h"
#include "core/MarketDataSource.h"

namespace tidemark {

// Candles by symbol and period. Each series is asked of the source at most once per exchange
// day (a failed one again after a minute) and kept in memory and in the cache folder, so
// opening the detail again, or the app again the same day, asks nothing.
class KlineBook {
 public:
  struct Series {
    std::vector<KlineBar> bars;
    std::optional<std::string> error;
    bool loading = false;
  };
  struct Request {
    SourceMode mode;
    DataSourceEndpoints endpoints;
    std::string symbol;
    KlinePeriod period;
    int64_t day;  // the exchange's date, days since 1970-01-01
    // In the demonstration and static modes the series is made up, ending at this price.
    double demoPrice = 0;
  };

  // Series kept in memory and files kept in the folder; older ones make way.
  static constexpr size_t memoryLimit = 24;
  static constexpr size_t fileLimit = 64;
  static constexpr double retryAfter = 60;

  KlineBook(MarketDataSource& source, const Clock& clock,
            std::optional<std::filesystem::path> folder);

  // What is known of the series now. Asks the source when the day's answer is neither in memory
  // nor in the folder, and runs `changed` once the answer is in. Offline modes ask nothing.
  const Series& series(const Request& request, const std::function<void()>& changed);

  // "kline-600519-day.json" in the folder; "kline-a_2Fb-week.json" for "a/b".
  static std::string fileName(const std::string& symbol, KlinePeriod period);

 private:
  struct Entry {
    Series series;
    int64_t day = 0;
    double failedAt = 0;
  };
  using Key = std::pair<std::string, KlinePeriod>;

  Entry& entry(const Key& key);
  bool readFile(const Key& key, int64_t day, Entry& into) const;
  void writeFile(const Key& key, const Entry& entry);

  MarketDataSource& source_;
  const Clock& clock_;
  std::optional<std::filesystem::path> folder_;
  std::map<Key, Entry> entries_;
  std::deque<Key> order_;  // oldest first
  Lifeline lifeline_;
};

// A deterministic demonstration series of `count` periods ending on `day` at `lastPrice`: the same
// symbol, period and day give the same bars.
std::vector<KlineBar> demoKline(const std::string& symbol, double lastPrice, KlinePeriod period,
                                int64_t day, size_t count = 160);

}  // namespace tidemark
