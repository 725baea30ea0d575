// Painting the orb into an image, at the three sizes, spread out with five satellites.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>

#include "core/KeyValueStore.h"
#include "core/ManualScheduler.h"
#include "shell/OrbContentView.h"
#include "sources/UnavailableDataSource.h"

namespace tidemark {
namespace {

void paintOrb(benchmark::State& state) {
  MemoryKeyValueStore store;
  ManualClock clock(Date{816'832'800});
  ManualScheduler scheduler(clock);
  UnavailableDataSource source;
  NullNotifier notifier;
  AppModel model({store, clock, scheduler, source, notifier, std::nullopt}, std::nullopt, false,
                 Bundle{});
  model.setReduceMotion(true);
  model.setOrbSize(static_cast<double>(state.range(0)));
  OrbWindowModel window;
  window.setExpanded(true);
  OrbContentView view(model, window, clock, {});
  view.setAttribute(Qt::WA_TranslucentBackground);
  QImage image(460, 460, QImage::Format_ARGB32_Premultiplied);
  for (auto _ : state) {
    image.fill(Qt::transparent);
    view.render(&image);
    benchmark::DoNotOptimize(image.constBits());
  }
}
BENCHMARK(paintOrb)->Arg(72)->Arg(96)->Arg(132)->Unit(benchmark::kMicrosecond);

// Every frame a different theme: nothing can come from the orb's picture cache.
void paintOrbAfresh(benchmark::State& state) {
  MemoryKeyValueStore store;
  ManualClock clock(Date{816'832'800});
  ManualScheduler scheduler(clock);
  UnavailableDataSource source;
  NullNotifier notifier;
  AppModel model({store, clock, scheduler, source, notifier, std::nullopt}, std::nullopt, false,
                 Bundle{});
  model.setReduceMotion(true);
  model.setOrbSize(static_cast<double>(state.range(0)));
  OrbWindowModel window;
  window.setExpanded(true);
  OrbContentView view(model, window, clock, {});
  view.setAttribute(Qt::WA_TranslucentBackground);
  QImage image(460, 460, QImage::Format_ARGB32_Premultiplied);
  bool aurora = false;
  for (auto _ : state) {
    model.setTheme((aurora = !aurora) ? AppTheme::aurora : AppTheme::dark);
    image.fill(Qt::transparent);
    view.render(&image);
    benchmark::DoNotOptimize(image.constBits());
  }
}
BENCHMARK(paintOrbAfresh)->Arg(72)->Arg(96)->Arg(132)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tidemark

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
