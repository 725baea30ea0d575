// What the orb and the tray icon look like, checked at a few pixels, how the orb moves, and the
// springs, frame ticker and symbols it is drawn with.

#include <gtest/gtest.h>

#include <numbers>

#include <QImage>
#include <QPainter>
#include <QSemaphore>
#include <QTest>
#include <QThreadPool>

#include "core/ManualScheduler.h"
#include "shell/OrbContentView.h"
#include "support/ModelHarness.h"
#include "views/FrameTicker.h"
#include "views/MiniOrb.h"
#include "views/Spring.h"
#include "views/Symbols.h"
#include "views/TextStyle.h"
#include "views/Theme.h"
#include "views/UnsplitFills.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;

const QColor red(0xFF, 0x45, 0x3A), green(0x32, 0xD7, 0x4B), grey(0x8E, 0x8E, 0x93);

bool near(QColor a, QColor b, int tolerance = 40) {
  return std::abs(a.red() - b.red()) < tolerance && std::abs(a.green() - b.green()) < tolerance &&
         std::abs(a.blue() - b.blue()) < tolerance && a.alpha() > 200;
}

// Pixels of `area` that have the colour.
int count(const QImage& image, QRect area, QColor colour, int tolerance = 40) {
  int n = 0;
  for (int y = area.top(); y <= area.bottom(); ++y)
    for (int x = area.left(); x <= area.right(); ++x)
      n += near(image.pixelColor(x, y), colour, tolerance);
  return n;
}

std::string hex(const Color& c) {
  char text[16];
  std::snprintf(text, sizeof text, "#%02X%02X%02X", int(std::lround(c.red * 255)),
                int(std::lround(c.green * 255)), int(std::lround(c.blue * 255)));
  return c.opacity == 1 ? text : std::string(text) + "@" + QString::number(c.opacity).toStdString();
}

TEST(OrbPalette, EveryRoleInEveryTheme) {
  using Roles = std::array<const char*, 10>;
  // orbLit, orbMid, orbShade, orbDeep, orbText, auroraA, auroraB, auroraC, halo, background
  const std::pair<AppTheme, Roles> themes[] = {
      {AppTheme::dark,
       {"#F7F8FF", "#C8CFEE", "#8189BD", "#39406B", "#232842", "#6EF2D8", "#7AA8FF", "#B18CFF",
        "#7AA8FF@0.3", "#0B0D1C"}},
      {AppTheme::light,
       {"#FFFFFF", "#F0F2FB", "#C3C9E4", "#98A0C8", "#2A2F4D", "#0FB898", "#2F6BFF", "#7B4DFF",
        "#2F6BFF@0.3", "#EEF0F8"}},
      {AppTheme::aurora,
       {"#EAFFF8", "#B9F3DF", "#66C9AD", "#2B806F", "#17483F", "#71F0C5", "#52B8F2", "#8C91FF",
        "#52B8F2@0.3", "#081A1A"}},
      {AppTheme::amber,
       {"#FFF8E7", "#F7D99C", "#D59A4E", "#936027", "#513512", "#FFD36B", "#FF995C", "#F17A9B",
        "#FF995C@0.3", "#20170D"}},
      {AppTheme::rose,
       {"#FFF1F8", "#F6C5DF", "#D989B5", "#995677", "#52213F", "#FFA1D0", "#D08CFF", "#FF7D9E",
        "#D08CFF@0.3", "#1E101C"}},
      {AppTheme::ocean,
       {"#F0F8FF", "#C0DDF7", "#77AFE0", "#416F9F", "#1C3E61", "#6FE2ED", "#65AAFF", "#9A91FF",
        "#65AAFF@0.3", "#0A1422"}},
  };
  for (const auto& [theme, roles] : themes) {
    const OrbPalette p{theme};
    const std::string got[] = {hex(p.orbLit()),    hex(p.orbMid()),  hex(p.orbShade()),
                               hex(p.orbDeep()),   hex(p.orbText()), hex(p.auroraA()),
                               hex(p.auroraB()),   hex(p.auroraC()), hex(p.halo()),
                               hex(p.background())};
    for (size_t i = 0; i < roles.size(); ++i) EXPECT_EQ(got[i], roles[i]) << rawValue(theme) << i;
    // ink, secondary, muted, surface, elevated, line: one set for the dark themes, one for light.
    const std::string text[] = {hex(p.ink()),     hex(p.secondary()), hex(p.muted()),
                                hex(p.surface()), hex(p.elevated()),  hex(p.line())};
    const std::string dark[] = {"#F2F4FC",      "#B9C0DC", "#929BBC",
                                "#141628@0.88", "#1D2036", "#FFFFFF@0.13"};
    const std::string light[] = {"#1A1D2E",      "#4A4F6B", "#666E8C",
                                 "#FFFFFF@0.88", "#FFFFFF", "#14183C@0.14"};
    for (size_t i = 0; i < 6; ++i)
      EXPECT_EQ(text[i], (theme == AppTheme::light ? light : dark)[i]) << rawValue(theme) << i;
  }
}

// The windows' cards are the palette's surface and their raised parts its elevated colour, in a
// dark theme with a tint of its own as much as in the others.
TEST(OrbPalette, WindowsTakeSurfaceAndElevated) {
  const QString sheet = themeStyleSheet(OrbPalette{AppTheme::amber});
  EXPECT_TRUE(sheet.contains(u"QFrame[card=\"true\"] { background: rgba(20, 22, 40, 0.880);"_s));
  EXPECT_TRUE(sheet.contains(u"QFrame[rowcard=\"true\"] { background: rgba(29, 32, 54, 1.000);"_s));
}

// Figures come from the built-in cut of the CJK font's Latin glyphs, Chinese from the CJK font:
// a mixed line measures exactly as it does in the CJK font alone, at every weight in use.
TEST(TextStyle, FiguresFromTheBuiltInCutChineseFromTheCjkFont) {
  const QString line = u"贵州茅台 1,688.00 +1.16% ••••"_s;
  for (const QFont::Weight weight : {QFont::Normal, QFont::DemiBold, QFont::Black}) {
    const QFont font = uiFont(14, weight);
    EXPECT_EQ(QFontInfo(font).family(), u"Tidemark Figures"_s) << weight;
    QFont cjk(u"Noto Sans CJK SC"_s);
    cjk.setPixelSize(14);
    cjk.setWeight(weight);
    EXPECT_EQ(QFontMetricsF(font).horizontalAdvance(line),
              QFontMetricsF(cjk).horizontalAdvance(line))
        << weight;
    EXPECT_EQ(QFontMetricsF(font).height(), QFontMetricsF(cjk).height()) << weight;
  }
}

// Windows take the theme's sheet before they show, and again on a change of theme; the orb's
// panel keeps the plain style, and nothing is set application-wide.
TEST(OrbPalette, WindowsTakeTheSheetTheOrbPanelDoesNot) {
  QWidget window, panel, later;
  panel.setProperty(plainStyle, true);
  applyTheme(AppTheme::rose);
  window.ensurePolished();
  panel.ensurePolished();
  EXPECT_EQ(window.styleSheet(), themeStyleSheet(OrbPalette{AppTheme::rose}));
  applyTheme(AppTheme::ocean);
  later.ensurePolished();
  for (const QWidget* styled : {&window, &later})
    EXPECT_EQ(styled->styleSheet(), themeStyleSheet(OrbPalette{AppTheme::ocean}));
  EXPECT_EQ(panel.styleSheet(), QString());
  EXPECT_EQ(qApp->styleSheet(), QString());
  applyTheme(AppTheme::dark);
}

TEST(MiniOrb, ArcDotAndBareDot) {
  const QColor dot(0x6E, 0xF2, 0xD8);  // the dark theme's auroraA
  // Price, low, high, prev close; then which of top, right, bottom, left the arc reaches.
  const struct {
    double price, low, high, prevClose;
    bool bare;
    QColor colour;
    std::array<bool, 4> reaches;
    RiseColors colors = RiseColors::redRises;
  } cases[] = {
      {11, 9, 11, 10, false, red, {true, true, true, true}},       // at the high: a full ring
      {9.5, 9, 11, 10, false, green, {true, true, false, false}},  // a quarter, clockwise
      {8, 9, 11, 10, false, green, {false, false, false, false}},  // below the low: nothing
      {11, 9, 11, 10, true, red, {false, false, false, false}},    // masked: the dot alone
      // Green rises: the same rise in green, the fall in red.
      {11, 9, 11, 10, false, green, {true, true, true, true}, RiseColors::greenRises},
      {9.5, 9, 11, 10, false, red, {true, true, false, false}, RiseColors::greenRises},
  };
  for (const auto& c : cases) {
    QuoteSnapshot q{"600519", "A股", "n", c.price, c.prevClose, c.high, c.low, 1, {}, "mock"};
    const QImage image = miniOrb(miniOrbFace(&q, c.bare, c.colors), OrbPalette{AppTheme::dark}, 2);
    ASSERT_EQ(image.size(), QSize(46, 46));
    const QPoint ends[] = {{23, 6}, {40, 23}, {23, 40}, {6, 23}};  // on the ring, device pixels
    for (int i = 0; i < 4; ++i)
      EXPECT_EQ(near(image.pixelColor(ends[i]), c.colour), c.reaches[i]) << c.price << " " << i;
    EXPECT_TRUE(near(image.pixelColor(23, 23), dot, 3));
    EXPECT_EQ(image.pixelColor(1, 1).alpha(), 0);
  }
  // The arc moves in steps of a twenty-fourth (2 / 24 here): within one, the icon stays the same.
  const auto icon = [](double price, AppTheme theme = AppTheme::dark) {
    QuoteSnapshot q{"600519", "A股", "n", price, 9.5, 11, 9, 1, {}, "mock"};
    return miniOrb(miniOrbFace(&q, false, RiseColors::redRises), OrbPalette{theme}, 1, 22);
  };
  EXPECT_EQ(icon(10.0), icon(10.04));
  EXPECT_NE(icon(10.04), icon(10.05));
  // The shaded disc is kept from face to face, each theme its own.
  EXPECT_EQ(icon(10.0, AppTheme::light).pixelColor(17, 11), QColor(0xCA, 0xCF, 0xE7));
  EXPECT_EQ(icon(10.0).pixelColor(17, 11), QColor(0x8E, 0x95, 0xC4));
}

struct Orb {
  explicit Orb(bool motion = false) {
    model = h.make();
    model->setReduceMotion(!motion);
    view = std::make_unique<OrbContentView>(*model, window, h.clock, nullptr);
  }
  QImage paint() {
    QCoreApplication::processEvents();  // the view's queued refresh after a model change
    view->setAttribute(Qt::WA_TranslucentBackground);  // as in the panel
    return view->grab().toImage();
  }
  OrbView& orb() { return view->orbView(); }
  // Advances the clock in frames, as the view's ticker would.
  void run(double seconds) {
    for (double t = 0; t < seconds - 1e-9; t += 1.0 / 60) {
      h.clock.advance(1.0 / 60);
      orb().ticker().tick();
    }
  }
  double radius(size_t i) {
    const QPointF d = orb().satelliteDot(i) - QPointF(230, 230);
    return std::hypot(d.x(), d.y()) / 96;
  }
  test::ModelHarness h;
  std::unique_ptr<AppModel> model;
  OrbWindowModel window;
  std::unique_ptr<OrbContentView> view;
};

// The core's texts exactly, and the pixels that show them: bullets in the sphere's text colour
// while masked, the change keeping its direction's colour; without a quote "—" and a grey 0.00%.
TEST(OrbPaint, FiguresMaskedAndMissing) {
  const QRect price(195, 215, 70, 22), percent(208, 243, 44, 10);
  const QColor orbText(0x23, 0x28, 0x42);
  const auto none = [](AppModel&) {};
  const auto byName = [](AppModel& m) { m.setOrbShowsName(true); };
  const auto mask = [](AppModel& m) { m.setMasked(true); };
  const auto empty = [](AppModel& m) { m.setWatchlist({}); };
  const struct {
    const char* what;
    std::function<void(AppModel&)> setup;
    OrbView::CoreTexts texts;
    int redPrice, textPrice;  // at least so many pixels; 0 means none
    QColor percentColour;     // none: the pixels are not looked at
  } cases[] = {
      {"shown", none, {u"600519"_s, u"1,468.80"_s, u"+1.16%"_s}, 40, 0, red},
      {"by name", byName, {u"贵州茅台"_s, u"1,468.80"_s, u"+1.16%"_s}, 0, 0, {}},
      {"masked", mask, {u"600519"_s, u"••••"_s, u"••••"_s}, 0, 15, red},
      {"no quote", empty, {QString(), u"—"_s, u"0.00%"_s}, 0, 8, grey},
  };
  for (const auto& k : cases) {
    Orb orb;
    k.setup(*orb.model);
    const QImage image = orb.paint();
    EXPECT_EQ(orb.orb().coreTexts(), k.texts) << k.what;
    if (!k.percentColour.isValid()) continue;
    const int redPrice = count(image, price, red), textPrice = count(image, price, orbText);
    EXPECT_EQ(redPrice > 0, k.redPrice > 0) << k.what << " " << redPrice;
    EXPECT_GE(redPrice, k.redPrice) << k.what;
    EXPECT_TRUE(k.textPrice ? textPrice >= k.textPrice : textPrice < 5)
        << k.what << " " << textPrice;
    EXPECT_GT(count(image, percent, k.percentColour, 30), 5) << k.what;
    if (k.texts.price == u"—"_s) {
      EXPECT_EQ(orb.orb().accessibilityText(), "暂无自选股，请打开自选管理添加");
      EXPECT_TRUE(orb.orb().satelliteIDs().empty());
    }
  }
  // Masked, nothing shown stands for a figure: a new price leaves the core's price and change and
  // the caption of the spread satellite 00700, right of the top, as they were; unmasked they move.
  for (bool masked : {false, true}) {
    Orb orb;
    orb.model->setMasked(masked);
    orb.window.setExpanded(true);
    const QImage before = orb.paint();
    orb.model->refresh();
    orb.h.scheduler.advance(1);
    const QImage after = orb.paint();
    for (QRect area : {price, percent, QRect(300, 214, 60, 10)})
      EXPECT_EQ(after.copy(area) == before.copy(area), masked) << masked << " " << area.x();
  }
}

// Another active security takes its own direction's glow; the sphere between the glow and the
// texts is the same.
TEST(OrbPaint, TheGlowFollowsTheActiveSecuritysDirection) {
  Orb orb;
  const QImage rising = orb.paint();
  orb.model->setActiveID("000858");
  const QImage falling = orb.paint();
  const QColor before = rising.pixelColor(290, 230), after = falling.pixelColor(290, 230);
  EXPECT_GT(before.red(), before.green() + 10) << before.name(QColor::HexArgb).toStdString();
  EXPECT_GT(after.green(), after.red() + 40) << after.name(QColor::HexArgb).toStdString();
  EXPECT_EQ(falling.copy(226, 254, 8, 14), rising.copy(226, 254, 8, 14));
}

// Collapsed, the satellites sit behind the sphere whether the orb is free or docked; docked, only
// the visible half shows. 00700 (rising) stands right of the top, 000858 (falling) left.
TEST(OrbPaint, DockedHalfAndTheSatellitesBehindIt) {
  const QPoint right(285, 212), left(175, 212);
  Orb orb;
  const QImage free = orb.paint();
  EXPECT_TRUE(near(free.pixelColor(right), red)) << "free, right pearl";
  EXPECT_TRUE(near(free.pixelColor(left), green)) << "free, left pearl";
  orb.window.setDockEdge(DockEdge::left);
  const QImage docked = orb.paint();
  EXPECT_TRUE(near(docked.pixelColor(right), red)) << "docked, right pearl";
  EXPECT_EQ(docked.pixelColor(left).alpha(), 0) << "docked, hidden half";
  EXPECT_EQ(docked.pixelColor(200, 230).alpha(), 0);
  EXPECT_GT(docked.pixelColor(260, 230).alpha(), 200);
  orb.window.setDockEdge(DockEdge::top);
  EXPECT_EQ(orb.paint().pixelColor(230, 200).alpha(), 0);
}

// Every load moves the demonstration's prices and so the pearls' sizes, and each new active
// security enlarges another: each size is a sprite. Past 64 the cache starts again, the pearls
// still drawn.
TEST(OrbPaint, ThePearlsOutlastAFullSpriteCache) {
  Orb orb;
  std::vector<std::string> watched;
  for (int code = 600000; code < 600030; ++code) watched.push_back(std::to_string(code));
  orb.model->setWatchlist(watched);
  QImage image;
  for (int load = 0; load < 80; ++load) {
    orb.model->cycleActive();
    orb.model->loadSource(false);
    image = orb.paint();
  }
  EXPECT_GT(image.pixelColor(285, 212).alpha(), 200);
  EXPECT_GT(image.pixelColor(175, 212).alpha(), 200);
}

// Dashes 4 on, 3 off: 4/7 of the circle, a little less measured for the antialiased ends (6 on,
// 1 off reads 0.69).
TEST(OrbPaint, TheDockPreviewCircleIsDashedFourOnThreeOff) {
  Orb orb;
  orb.model->setWatchlist({"600519"});
  orb.window.setPreviewEdge(DockEdge::left);
  const QImage image = orb.paint();
  const QColor auroraA(0x6E, 0xF2, 0xD8);
  int lit = 0;
  const int samples = 3600;
  for (int i = 0; i < samples; ++i) {
    const double a = 2 * std::numbers::pi * i / samples;
    lit += near(image.pixelColor(QPointF(230 + 54 * std::cos(a), 230 + 54 * std::sin(a)).toPoint()),
                auroraA, 60);
  }
  EXPECT_NEAR(double(lit) / samples, 0.47, 0.1);
}

// With motion: the satellites unfold one by one on their springs, their captions fading in with
// them; a fresh quote pulses and flashes, a new symbol springs the core's texts back. Without
// motion everything stands still.
TEST(OrbMotion, SatellitesUnfoldAndFreshQuotesPulseOnlyWithMotion) {
  for (bool motion : {true, false}) {
    Orb orb(motion);
    orb.paint();
    orb.window.setExpanded(true);
    orb.run(2.0 / 60);
    if (motion) {
      EXPECT_GT(orb.radius(0), 0.6) << "the first has left";
      EXPECT_DOUBLE_EQ(orb.radius(1), 0.6) << "the second waits 0.045 s";
      EXPECT_DOUBLE_EQ(orb.orb().satelliteCaptionOpacity(1), 0);
    } else {
      EXPECT_DOUBLE_EQ(orb.radius(1), 1.06);
    }
    orb.run(1.5);
    for (size_t i = 0; i < 5; ++i) {
      EXPECT_NEAR(orb.radius(i), 1.06, 1e-3) << i;
      EXPECT_NEAR(orb.orb().satelliteCaptionOpacity(i), 1, 1e-2) << i;
    }

    orb.model->refresh();
    orb.h.scheduler.advance(0.2);  // the load lands: a new updatedAt
    orb.paint();
    EXPECT_EQ(orb.orb().pulseCount(), motion ? 1 : 0);
    // Seconds after the quote, pulse and flash.
    const std::tuple<double, double, double> curve[] = {
        {0.09, 0.6846, 0.3465}, {0.11, 0.7954, 0.5}, {0.4, 0, 1}, {0.65, 0, 0.3154}, {0.8, 0, 0}};
    double elapsed = 0;
    for (const auto& [at, pulse, flash] : curve) {
      orb.h.clock.advance(at - elapsed);
      elapsed = at;
      EXPECT_NEAR(orb.orb().pulse(), motion ? pulse : 0, 1e-3) << at;
      EXPECT_NEAR(orb.orb().flash(), motion ? flash : 0, 1e-3) << at;
    }

    orb.model->select("00700");
    orb.paint();
    EXPECT_EQ(orb.orb().swapOffset(), motion ? 1 : 0);
    orb.run(0.1);
    if (motion) {
      EXPECT_LT(orb.orb().swapOffset(), 1);
    }
    orb.run(2);
    EXPECT_NEAR(orb.orb().swapOffset(), 0, 1e-3);
    // At rest only the slow drift asks for frames; without motion nothing does.
    EXPECT_EQ(orb.orb().ticker().isRunning(), motion);
  }
}

// The frames a fresh quote costs, as the ticker's own intervals run them on a shown orb: the
// pulse and the rising and falling flash are painted, the held flash is not, one frame clears
// the flash's trace, and then the orb rests (no compositor: no idle motion).
TEST(OrbMotion, AFreshQuotePaintsItsEffectsAndNotTheHeldFlash) {
  Orb orb(true);
  orb.orb().setCompositing(false);
  orb.view->show();
  orb.paint();
  struct Paints final : QObject {
    std::vector<double> at;
    const Clock* clock = nullptr;
    bool eventFilter(QObject*, QEvent* event) override {
      if (event->type() == QEvent::Paint) at.push_back(clock->now().sinceReference);
      return false;
    }
  } paints;
  paints.clock = &orb.h.clock;
  orb.orb().installEventFilter(&paints);
  orb.model->refresh();
  orb.h.scheduler.advance(0.2);
  QCoreApplication::processEvents();
  ASSERT_EQ(orb.orb().pulseCount(), 1);
  paints.at.clear();
  const double start = orb.h.clock.now().sinceReference;
  for (int frame = 0; frame < 60 && orb.orb().ticker().isRunning(); ++frame) {
    orb.h.clock.advance(orb.orb().ticker().interval() / 1000.0);
    orb.orb().ticker().tick();
    QCoreApplication::processEvents();
  }
  int rising = 0, held = 0, falling = 0, after = 0;
  for (double t : paints.at) {
    const double since = t - start;
    ++(since < 0.22 ? rising : since < 0.55 ? held : since < 0.75 ? falling : after);
  }
  // Every 50 ms while the pulse spreads and the flash rises or falls (the frames on the bounds go
  // either way with the clock's rounding); none while it is held; one at 0.75 s.
  EXPECT_EQ(std::tuple(held, after), std::tuple(0, 1));
  for (int frames : {rising, falling}) EXPECT_TRUE(frames >= 3 && frames <= 5) << frames;
  EXPECT_FALSE(orb.orb().ticker().isRunning());
}

// A ring handed to Qt's pool comes out as stroked in place, from the interface's thread and from
// a thread of the pool itself, where handing it over again would wait for ever on a pool of one.
TEST(UnsplitFills, TheRingIsDrawnAsInPlaceAlsoFromThePool) {
  const auto ring = [](bool unsplit) {
    QImage image(160, 160, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(220, 60, 60), 2));
    const auto draw = [&] { painter.drawEllipse(QPointF(80.3, 79.7), 65, 65); };
    unsplit ? paintUnsplit(draw) : draw();
    painter.end();
    return image;
  };
  const QImage inPlace = ring(false);
  ASSERT_GT(count(inPlace, inPlace.rect(), QColor(220, 60, 60)), 300);
  EXPECT_EQ(ring(true), inPlace);
  QThreadPool* pool = QThreadPool::globalInstance();
  const int threads = pool->maxThreadCount();
  pool->setMaxThreadCount(1);
  QImage fromPool;
  QSemaphore done;
  pool->start([&] {
    fromPool = ring(true);
    done.release();
  });
  const bool finished = done.tryAcquire(1, 10000);
  pool->setMaxThreadCount(threads);
  ASSERT_TRUE(finished);
  EXPECT_EQ(fromPool, inPlace);
}

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

TEST(Symbols, EveryNameDrawsAndOthersDrawNothing) {
  for (std::string_view name : symbolNames()) {
    QImage image(24, 24, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    EXPECT_TRUE(drawSymbol(painter, name, QRectF(0, 0, 24, 24), Qt::black));
    painter.end();
    EXPECT_GT(count(image, image.rect(), Qt::black), 12) << name;
  }
  QImage image(24, 24, QImage::Format_ARGB32_Premultiplied);
  QPainter painter(&image);
  EXPECT_FALSE(drawSymbol(painter, "star.fill", QRectF(0, 0, 24, 24), Qt::black));
}

}  // namespace
}  // namespace tidemark
