// Painting the orb into an image, at the three sizes, spread out with five satellites.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>

#include "BenchModel.h"
#include "shell/OrbContentView.h"
#include "sources/UnavailableDataSource.h"

namespace tidemark {
namespace {

// A throw-away model and the orb over it, spread out, with its five satellites.
struct Orb : BenchModel<UnavailableDataSource> {
  explicit Orb(double size) {
    model.setReduceMotion(true);
    model.setOrbSize(size);
    window.setExpanded(true);
    view.setAttribute(Qt::WA_TranslucentBackground);
  }
  void paint() {
    image.fill(Qt::transparent);
    view.render(&image);
    benchmark::DoNotOptimize(image.constBits());
  }
  OrbWindowModel window;
  OrbContentView view{model, window, clock, {}};
  QImage image{460, 460, QImage::Format_ARGB32_Premultiplied};
};

void paintOrb(benchmark::State& state) {
  Orb orb(static_cast<double>(state.range(0)));
  for (auto _ : state) orb.paint();
}
BENCHMARK(paintOrb)->Arg(72)->Arg(96)->Arg(132)->Unit(benchmark::kMicrosecond);

// Every frame a different theme: nothing can come from the orb's picture cache.
void paintOrbAfresh(benchmark::State& state) {
  Orb orb(static_cast<double>(state.range(0)));
  bool aurora = false;
  for (auto _ : state) {
    orb.model.setTheme((aurora = !aurora) ? AppTheme::aurora : AppTheme::dark);
    orb.paint();
  }
}
BENCHMARK(paintOrbAfresh)->Arg(72)->Arg(96)->Arg(132)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tidemark
