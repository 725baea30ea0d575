// Requests to the feeds over a simulated day, under the fake clock: the model with its heartbeat,
// the Tencent source and the default refresh interval, every request answered at once.
// Usage: day_requests [HOURS]   (each day cut to its first HOURS hours; 24 by default)

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/KeyValueStore.h"
#include "core/ManualScheduler.h"
#include "model/AppModel.h"
#include "sources/UnavailableDataSource.h"

namespace tidemark {
namespace {

// Answers every request at once, for every symbol; nothing else is there.
class CountingSource final : public UnavailableDataSource {
 public:
  explicit CountingSource(const Clock& clock) : clock_(clock) {}
  void fetchQuotes(SourceMode, const DataSourceEndpoints&, const std::vector<std::string>& symbols,
                   const QuoteMap&, QuotesCompletion completion) override {
    ++requests;
    std::vector<QuoteSnapshot> quotes;
    for (const std::string& symbol : symbols)
      quotes.push_back({symbol, "A股", symbol, 10, 10, 10, 10, 1, clock_.now(), "tencent"});
    completion(std::move(quotes), std::nullopt);
  }

  long requests = 0;

 private:
  const Clock& clock_;
};

long requestsOver(const char* start, double seconds, const std::vector<std::string>& watchlist) {
  MemoryKeyValueStore store;
  ManualClock clock{*parseISO8601(start)};
  ManualScheduler scheduler{clock};
  CountingSource source{clock};
  NullNotifier notifier;
  AppModel model({store, clock, scheduler, source, notifier, std::nullopt}, std::nullopt, true,
                 Bundle{});
  model.setAutoRotate(false);
  if (!watchlist.empty()) model.setWatchlist(watchlist);
  model.setSourceMode(SourceMode::tencent);
  scheduler.advance(seconds);
  return source.requests;
}

}  // namespace
}  // namespace tidemark

int main(int argc, char** argv) {
  const double hours = argc > 1 ? std::atof(argv[1]) : 24;
  if (!(hours > 0 && hours <= 24)) {
    std::fprintf(stderr, "usage: day_requests [HOURS]   (0 < HOURS <= 24)\n");
    return 2;
  }
  struct Day {
    const char* what;
    const char* start;
    std::vector<std::string> watchlist;
  };
  const Day days[] = {
      {"Saturday in Beijing, default watchlist (A, HK, US)", "2026-11-28T00:00:00+08:00", {}},
      {"Saturday in Beijing, 600519 and 00700", "2026-11-28T00:00:00+08:00", {"600519", "00700"}},
      {"Saturday in New York, default watchlist", "2026-11-28T00:00:00-05:00", {}},
      {"Sunday in Beijing, default watchlist", "2026-11-29T00:00:00+08:00", {}},
      {"Wednesday in Beijing, default watchlist", "2026-11-25T00:00:00+08:00", {}},
      {"Wednesday in Beijing, 600519 and 00700", "2026-11-25T00:00:00+08:00", {"600519", "00700"}},
  };
  std::printf("%-52s %9s\n", "day (refresh interval 2.6 s)", "requests");
  for (const Day& day : days)
    std::printf("%-52s %9ld\n", day.what,
                tidemark::requestsOver(day.start, hours * 3600, day.watchlist));
  return 0;
}
