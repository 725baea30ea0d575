// Costs of the model's refresh path against the watchlist size.

#include <benchmark/benchmark.h>

#include <filesystem>

#include "Symbols.h"
#include "core/ManualScheduler.h"
#include "model/AppModel.h"
#include "model/SnapshotCache.h"
#include "model/StoreKeys.h"
#include "sources/UnavailableDataSource.h"

namespace tidemark {
namespace {

struct Fixture {
  explicit Fixture(size_t count, std::optional<std::filesystem::path> file = std::nullopt)
      : model({store, clock, scheduler, source, notifier, std::nullopt}, file, false, Bundle{}) {
    model.setWatchlist(bench::symbols(count));
    model.loadSource(true);
    // An armed alert on the last symbol, so every evaluation searches the whole list.
    const QuoteSnapshot& last = *model.quote(model.watchlist().back());
    model.setAlert(last.id, last.price * 10, true);
  }
  MemoryKeyValueStore store;
  ManualClock clock{Date{815'000'000}};
  ManualScheduler scheduler{clock};
  UnavailableDataSource source;
  NullNotifier notifier;
  AppModel model;
};

// One mock refresh as the heartbeat runs it: load, cache save, preference saves, alert.
void MockRefresh(benchmark::State& state) {
  Fixture f(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    f.clock.advance(2.6);
    f.model.loadSource(false);
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(MockRefresh)->Arg(5)->Arg(50)->Arg(500)->Arg(5000)->Complexity();

void SnapshotCacheRestore(benchmark::State& state) {
  Fixture f(static_cast<size_t>(state.range(0)));
  const std::string bytes = *f.store.data(storeKeys::snapshots);
  for (auto _ : state) benchmark::DoNotOptimize(decodeSnapshotCache(bytes));
  state.SetComplexityN(state.range(0));
}
BENCHMARK(SnapshotCacheRestore)->Arg(5)->Arg(50)->Arg(500)->Arg(5000)->Complexity();

// The store, the backup record and the file, written atomically.
void WatchlistSave(benchmark::State& state) {
  const auto folder = std::filesystem::temp_directory_path() / "tidemark-bench";
  std::filesystem::create_directories(folder);
  Fixture f(static_cast<size_t>(state.range(0)), folder / "watchlist.json");
  for (auto _ : state) f.model.saveWatchlist();
  state.SetComplexityN(state.range(0));
  std::filesystem::remove_all(folder);
}
BENCHMARK(WatchlistSave)->Arg(5)->Arg(50)->Arg(500)->Arg(5000)->Complexity();

// The figures of every holding and the totals per currency, as the holdings section and the
// tooltip take them after each refresh: one holding per watched symbol.
void HoldingsFiguresAndTotals(benchmark::State& state) {
  Fixture f(static_cast<size_t>(state.range(0)));
  for (const std::string& symbol : f.model.watchlist())
    f.model.setHolding(symbol, 100, f.model.quote(symbol)->price * 0.9);
  for (auto _ : state) {
    double sum = 0;
    const auto lines = f.model.holdingLines();
    for (const HoldingLine& line : lines)
      if (line.quote) sum += holdingFigures(*line.holding, *line.quote).totalProfit;
    benchmark::DoNotOptimize(sum);
    benchmark::DoNotOptimize(f.model.holdingsTotals(lines));
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(HoldingsFiguresAndTotals)->Arg(5)->Arg(50)->Arg(500)->Arg(5000)->Complexity();

}  // namespace
}  // namespace tidemark

BENCHMARK_MAIN();
