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

// Runs a spring from 0 to 1 in 1/60 s frames; answers the largest value and the frames to rest.
std::pair<double, int> run(Spring spring, int limit = 600) {
  spring.setTarget(1);
  double peak = 0;
  int frames = 0;
  while (spring.isMoving() && frames < limit) {
    spring.advance(1.0 / 60);
    peak = std::max(peak, spring.value());
    ++frames;
  }
  return {peak, frames};
}

TEST(Spring, SettlesOnItsTargetWithTheOvershootItsDampingGives) {
  const auto [criticalPeak, criticalFrames] = run(Spring(0.5, 1.0));
  EXPECT_LE(criticalPeak, 1.0);
  EXPECT_LT(criticalFrames, 90);
  const auto [bouncyPeak, bouncyFrames] = run(Spring(0.5, 0.3));
  EXPECT_GT(bouncyPeak, 1.3);  // ζ = 0.3 overshoots by about 37 %
  EXPECT_LT(bouncyFrames, 400);
  // The response is the period: a quicker spring is past the middle sooner.
  Spring quick(0.2, 1.0), slow(0.8, 1.0);
  quick.setTarget(1);
  slow.setTarget(1);
  quick.advance(0.1);
  slow.advance(0.1);
  EXPECT_GT(quick.value(), 0.5);
  EXPECT_LT(slow.value(), 0.2);
}

TEST(Spring, ARetargetKeepsTheVelocityAndSnapStopsAtOnce) {
  Spring spring(0.5, 0.8);
  spring.setTarget(100);
  spring.advance(0.1);
  const double speed = spring.velocity();
  ASSERT_GT(speed, 0);
  spring.setTarget(-100);
  EXPECT_EQ(spring.velocity(), speed);  // no jump: it turns round smoothly
  spring.advance(1.0 / 60);
  EXPECT_GT(spring.velocity(), 0);
  spring.snap(7);
  EXPECT_FALSE(spring.isMoving());
  EXPECT_EQ(spring.value(), 7);
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
