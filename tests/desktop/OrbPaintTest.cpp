// What the orb and the tray icon look like, checked at a few pixels.

#include <gtest/gtest.h>

#include "core/ManualScheduler.h"
#include "shell/OrbContentView.h"
#include "support/ModelHarness.h"
#include "views/MiniOrb.h"

namespace tidemark {
namespace {

bool near(QColor a, QColor b) {
  return std::abs(a.red() - b.red()) < 40 && std::abs(a.green() - b.green()) < 40 &&
         std::abs(a.blue() - b.blue()) < 40 && a.alpha() > 200;
}

// Pixels of `area` that have the colour.
int count(const QImage& image, QRect area, QColor colour) {
  int n = 0;
  for (int y = area.top(); y <= area.bottom(); ++y)
    for (int x = area.left(); x <= area.right(); ++x) n += near(image.pixelColor(x, y), colour);
  return n;
}

TEST(MiniOrb, ArcDotAndBareDot) {
  const QColor red = qt(Color::hex(0xFF453A)), green = qt(Color::hex(0x32D74B));
  const QColor dot = qt(OrbPalette{AppTheme::dark}.auroraA());
  // Price, low, high, prev close; then which of top, right, bottom, left the arc reaches.
  struct Case {
    double price, low, high, prevClose;
    bool bare;
    QColor colour;
    std::array<bool, 4> reaches;
  };
  const Case cases[] = {
      {11, 9, 11, 10, false, red, {true, true, true, true}},       // at the high: a full ring
      {9.5, 9, 11, 10, false, green, {true, true, false, false}},  // a quarter, clockwise
      {8, 9, 11, 10, false, green, {false, false, false, false}},  // below the low: nothing
      {11, 9, 11, 10, true, red, {false, false, false, false}},    // masked: the dot alone
  };
  for (const Case& c : cases) {
    QuoteSnapshot q{"600519", "A股", "n", c.price, c.prevClose, c.high, c.low, 1, {}, "mock"};
    const QImage image = miniOrb(&q, OrbPalette{AppTheme::dark}, c.bare, 2);
    ASSERT_EQ(image.size(), QSize(46, 46));
    const QPoint ends[] = {{23, 6}, {40, 23}, {23, 40}, {6, 23}};  // on the ring, device pixels
    for (int i = 0; i < 4; ++i)
      EXPECT_EQ(near(image.pixelColor(ends[i]), c.colour), c.reaches[i]) << c.price << " " << i;
    EXPECT_TRUE(near(image.pixelColor(23, 23), dot));
    EXPECT_EQ(image.pixelColor(1, 1).alpha(), 0);
  }
}

struct Orb {
  Orb() {
    model = h.make();
    model->setReduceMotion(true);
  }
  QImage paint() {
    OrbContentView view(*model, window, h.clock, {});
    view.setAttribute(Qt::WA_TranslucentBackground);  // as in the panel
    return view.grab().toImage();
  }
  test::ModelHarness h;
  std::unique_ptr<AppModel> model;
  OrbWindowModel window;
};

TEST(OrbPaint, DockedHalfMaskedFiguresAndNoQuote) {
  const QColor red = qt(Color::hex(0xFF453A));  // 600519 rose in the demonstration data
  const QRect price(195, 215, 70, 22);
  {
    Orb orb;
    const QImage image = orb.paint();
    EXPECT_GT(count(image, price, red), 40);
    orb.window.setDockEdge(DockEdge::left);
    const QImage docked = orb.paint();
    EXPECT_EQ(docked.pixelColor(200, 230).alpha(), 0);  // the hidden half
    EXPECT_GT(docked.pixelColor(260, 230).alpha(), 200);
    orb.window.setDockEdge(DockEdge::top);
    EXPECT_EQ(orb.paint().pixelColor(230, 200).alpha(), 0);
  }
  {
    Orb orb;
    orb.model->setMasked(true);
    EXPECT_EQ(count(orb.paint(), price, red), 0);
  }
  {
    Orb orb;
    orb.model->setWatchlist({});
    OrbContentView view(*orb.model, orb.window, orb.h.clock, {});
    EXPECT_EQ(view.orbView().accessibilityText(), "暂无自选股，请打开自选管理添加");
    EXPECT_TRUE(view.orbView().satellites().empty());
  }
}

}  // namespace
}  // namespace tidemark
