// The spring, the frame ticker and the symbols the views are drawn with.

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include "core/ManualScheduler.h"
#include "views/FrameTicker.h"
#include "views/Spring.h"
#include "views/Symbols.h"

namespace tidemark {
namespace {

// The overshoot its damping gives, a period set by its response, a turn without a jump in
// velocity, and a snap that stops it at once.
TEST(Spring, SettlesWithItsOvershootAndTurnsSmoothly) {
  // Damping fraction, largest value on the way from 0 to 1, frames to rest at most.
  const std::tuple<double, double, double, int> runs[] = {{1.0, 0.0, 1.0, 90},
                                                          {0.3, 1.3, 1.4, 400}};
  for (const auto& [damping, atLeast, atMost, frames] : runs) {
    Spring spring(0.5, damping);
    spring.setTarget(1);
    double peak = 0;
    int n = 0;
    for (; spring.isMoving() && n < 600; ++n) {
      spring.advance(1.0 / 60);
      peak = std::max(peak, spring.value());
    }
    EXPECT_GE(peak, atLeast) << damping;  // ζ = 0.3 overshoots by about 37 %
    EXPECT_LE(peak, atMost) << damping;
    EXPECT_LT(n, frames) << damping;
  }
  Spring quick(0.2, 1.0), slow(0.8, 1.0);
  for (Spring* s : {&quick, &slow}) {
    s->setTarget(1);
    s->advance(0.1);
  }
  EXPECT_GT(quick.value(), 0.5);
  EXPECT_LT(slow.value(), 0.2);
  const double speed = quick.velocity();
  quick.setTarget(-100);
  EXPECT_EQ(quick.velocity(), speed);  // no jump: it turns round smoothly
  quick.snap(7);
  EXPECT_FALSE(quick.isMoving());
  EXPECT_EQ(quick.value(), 7);
}

TEST(FrameTicker, RunsOnlyWhileTheStepAsksForMore) {
  ManualClock clock(Date{100});
  std::vector<double> steps;
  FrameTicker ticker(clock, [&](double seconds) {
    steps.push_back(seconds);
    return steps.size() < 2;
  });
  EXPECT_FALSE(ticker.isRunning());
  ticker.wake();
  EXPECT_TRUE(ticker.isRunning());
  clock.advance(0.25);
  ticker.tick();
  clock.advance(0.5);
  ticker.tick();
  EXPECT_EQ(steps, (std::vector<double>{0.25, 0.5}));
  EXPECT_FALSE(ticker.isRunning());
}

TEST(Symbols, EveryNameDrawsAndOthersDrawNothing) {
  for (std::string_view name : symbolNames()) {
    QImage image(24, 24, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    EXPECT_TRUE(drawSymbol(painter, name, QRectF(0, 0, 24, 24), Qt::black));
    painter.end();
    int inked = 0;
    for (int y = 0; y < 24; ++y)
      for (int x = 0; x < 24; ++x) inked += image.pixelColor(x, y).alpha() > 128;
    EXPECT_GT(inked, 12) << name;
  }
  QImage image(24, 24, QImage::Format_ARGB32_Premultiplied);
  QPainter painter(&image);
  EXPECT_FALSE(drawSymbol(painter, "star.fill", QRectF(0, 0, 24, 24), Qt::black));
}

}  // namespace
}  // namespace tidemark
