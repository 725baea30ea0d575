// Opening each window (create, lay out, first paint) and repainting the detail view with a full
// day's 240-point series.

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include <QApplication>
#include <QImage>

#include "BenchModel.h"
#include "Symbols.h"
#include "model/DemoMarket.h"
#include "views/DetailView.h"
#include "views/SettingsView.h"
#include "views/SmallWindows.h"
#include "views/Theme.h"
#include "views/WatchlistView.h"

namespace tidemark {
namespace {

// Answers at once: the embedded quotes, and a 240-minute series for any symbol.
class InstantSource final : public MarketDataSource {
 public:
  void fetchQuotes(SourceMode, const DataSourceEndpoints&, const std::vector<std::string>&,
                   const QuoteMap&, QuotesCompletion completion) override {
    completion(embeddedQuotes(Date{816'832'800}, "tencent"), std::nullopt);
  }
  void probeQuoteEndpoints(const DataSourceEndpoints&, std::function<void(bool)> done) override {
    done(true);
  }
  void fetchManifest(const std::string&,
                     std::function<void(std::optional<std::string>)> done) override {
    done(std::nullopt);
  }
  bool canFetchIntraday() const override { return true; }
  void fetchIntraday(const DataSourceEndpoints&, const std::string&, const std::string&,
                     std::function<void(Intraday)> done) override {
    std::vector<double> values;
    for (int i = 0; i < 240; ++i) values.push_back(1450 + 20 * std::sin(i / 17.0) + i * 0.05);
    done({values});
  }
};

struct Windows : BenchModel<InstantSource> {
  Windows() {
    model.setSourceMode(SourceMode::tencent);
    applyTheme(AppTheme::dark);
  }
  // Creates the view, lays it out at its window size and paints it once.
  template <class Make>
  void open(QSize size, Make make) {
    std::unique_ptr<QWidget> view(make());
    view->setAttribute(Qt::WA_DontShowOnScreen);
    view->resize(size);
    view->show();
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    view->render(&image);
    benchmark::DoNotOptimize(image.constBits());
  }
};

void openWindow(benchmark::State& state) {
  Windows w;
  const auto which = state.range(0);
  state.SetLabel(std::array{"settings", "detail", "watchlist", "alert", "guide"}[size_t(which)]);
  for (auto _ : state) {
    switch (which) {
      case 0:
        w.open({960, 740}, [&] { return new SettingsView(w.model, w.clock, {}); });
        break;
      case 1:
        w.open({980, 680}, [&] { return new DetailView(w.model, {}, {}); });
        break;
      case 2:
        w.open({940, 650}, [&] { return new WatchlistView(w.model, w.clock); });
        break;
      case 3:
        w.open({420, 540}, [&] { return new AlertEditorView(w.model, {}); });
        break;
      default:
        w.open({480, 600}, [&] { return new OnboardingView(w.model, {}); });
        break;
    }
  }
}
BENCHMARK(openWindow)->DenseRange(0, 4)->Unit(benchmark::kMillisecond);

// The settings window with 500 and 5,000 holdings (one per watched symbol, with demonstration
// quotes): opened on the holdings section or on the first one, and one refresh of every quote
// while the holdings section is shown.
struct Held : Windows {
  explicit Held(size_t count) {
    model.setSourceMode(SourceMode::mock);
    // Imported in one go, as a user's file would be: one save, not one per holding.
    Json symbols = Json::array(), holdings = Json::array();
    for (const std::string& symbol : bench::symbols(count)) {
      symbols.push_back(symbol);
      holdings.push_back({{"symbolID", symbol}, {"shares", 100}, {"cost", 10.5}});
    }
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("tidemark-bench-" + std::to_string(::getpid()));
    std::ofstream(file) << Json{{"symbols", symbols}, {"holdings", holdings}}.dump();
    model.importWatchlist(file);
    std::filesystem::remove(file);
    model.refresh();
    scheduler.advance(1);
  }
};

void openSettingsWithHoldings(benchmark::State& state) {
  Held w(size_t(state.range(0)));
  const SettingsSection section =
      state.range(1) ? SettingsSection::holdings : SettingsSection::appearance;
  state.SetLabel(std::string(sectionTitle(section)));
  for (auto _ : state)
    w.open({960, 740}, [&] { return new SettingsView(w.model, w.clock, {}, section); });
}
BENCHMARK(openSettingsWithHoldings)
    ->ArgsProduct({{500, 5000}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

void refreshWithHoldingsShown(benchmark::State& state) {
  Held w(size_t(state.range(0)));
  SettingsView view(w.model, w.clock, {}, SettingsSection::holdings);
  view.setAttribute(Qt::WA_DontShowOnScreen);
  view.resize(960, 740);
  view.show();
  QApplication::processEvents();
  for (auto _ : state) {
    w.model.refresh();
    w.scheduler.advance(3);
    QApplication::processEvents();
  }
}
BENCHMARK(refreshWithHoldingsShown)->Arg(500)->Arg(5000)->Unit(benchmark::kMillisecond);

void repaintDetail(benchmark::State& state) {
  Windows w;
  DetailView view(w.model, {}, {});
  view.setAttribute(Qt::WA_DontShowOnScreen);
  view.resize(980, 680);
  view.show();
  QApplication::processEvents();
  if (!w.model.intraday().hasReal(*w.model.activeQuote())) state.SkipWithError("no real series");
  QImage image(980, 680, QImage::Format_ARGB32_Premultiplied);
  for (auto _ : state) {
    view.render(&image);
    benchmark::DoNotOptimize(image.constBits());
  }
}
BENCHMARK(repaintDetail)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tidemark
