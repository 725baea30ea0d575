#include <gtest/gtest.h>

#include <ostream>

#include "shell/DockGeometry.h"
#include "shell/HitShape.h"
#include "shell/OrbFrame.h"
#include "shell/WindowKind.h"
#include "shell/WindowPlacement.h"

namespace tidemark {

static void PrintTo(Point p, std::ostream* os) {
  *os << "(" << p.x << ", " << p.y << ")";
}

namespace {

using Edge = std::optional<DockEdge>;
constexpr Edge none = std::nullopt;
constexpr auto left = DockEdge::left, right = DockEdge::right, top = DockEdge::top,
               bottom = DockEdge::bottom;

// Orb of 96 (R = 48) centred at (230, 230); y grows downwards.
TEST(OrbHitShape, CoreControlsAndTransparentParts) {
  const auto state = [](Edge dock, bool expanded = false, bool radial = false, size_t n = 0) {
    return OrbHitState{96, dock, expanded, radial, n};
  };
  const OrbHitState free = state(none), fourOut = state(none, true, false, 4),
                    fourIn = state(none, false, false, 4), ring = state(none, true, true, 1);
  const struct {
    const char* what;
    OrbHitState state;
    Point p;
    bool interactive, core;
  } rows[] = {
      {"core rim R+5", free, {283, 230}, true, true},
      {"just past the rim", free, {283.01, 230}, false, false},
      {"ring 0 open", ring, ringButtonCenter(0, 96), true, false},
      {"ring 0 corner", ring, ringButtonCenter(0, 96) + Vector{24, 31}, true, false},
      {"past ring 0", ring, ringButtonCenter(0, 96) + Vector{24.5, 0}, false, false},
      {"ring 0 closed", free, ringButtonCenter(0, 96), false, false},
      {"open ring hides satellites", ring, {230, 160}, false, false},
      {"expanded, 12 below the orbit point", fourOut, {230, 160}, true, false},
      {"expanded, above the target", fourOut, {230, 110}, false, false},
      {"collapsed pearl", fourIn, {175, 200}, true, false},
      {"collapsed misses expanded spot", fourIn, {230, 160}, false, false},
      {"docked satellites", state(left, true, false, 4), {230, 160}, false, false},
  };
  for (const auto& r : rows) {
    EXPECT_EQ(isInteractive(r.p, r.state), r.interactive) << r.what;
    EXPECT_EQ(isCore(r.p, r.state.orbSize, r.state.dock), r.core) << r.what;
  }
  // Docked: the visible half and its 24-point band are core, the hidden half is nothing.
  const std::pair<DockEdge, Vector> outward[] = {
      {left, {1, 0}}, {right, {-1, 0}}, {top, {0, 1}}, {bottom, {0, -1}}};
  for (const auto& [edge, d] : outward) {
    const auto at = [&](double k) { return Point{230 + d.dx * k, 230 + d.dy * k}; };
    EXPECT_TRUE(isCore(at(72), 96, edge)) << rawValue(edge);
    EXPECT_FALSE(isCore(at(72.5), 96, edge)) << rawValue(edge);
    EXPECT_FALSE(isInteractive(at(-40), state(edge))) << rawValue(edge);
  }
}

TEST(OrbLayout, SatellitesRingAndClip) {
  EXPECT_EQ(satelliteCenter(0, 0, 96, true), (Point{230, 128.24}));  // alone: straight above
  EXPECT_EQ(satelliteCenter(1, 4, 100, false), (Point{290, 230}));   // clockwise: then right
  EXPECT_EQ(satelliteHitRect(2, 4, 100, true), (Rect{170, 326, 120, 44}));
  EXPECT_NEAR(ringButtonCenter(0, 96).x, 142.6086, 1e-4);
  EXPECT_NEAR(ringButtonCenter(0, 96).y, 207.1921, 1e-4);
  EXPECT_NEAR(ringButtonCenter(4, 96).x, 292.2291, 1e-4);
  EXPECT_NEAR(ringButtonCenter(4, 96).y, 308.1125, 1e-4);
  const Rect f{10, 20, 100, 60};
  const std::pair<Edge, Rect> clips[] = {{left, {60, 20, 50, 60}},
                                         {right, {10, 20, 50, 60}},
                                         {top, {10, 50, 100, 30}},
                                         {bottom, {10, 20, 100, 30}},
                                         {none, f}};
  for (const auto& [edge, clip] : clips) EXPECT_EQ(dockClip(edge, f), clip);
  const double progress[][5] = {{4.5, 4, 6, 1, 0.25},
                                {3, 4, 6, 1, 0},
                                {7, 4, 6, 1, 1},
                                {0.005, 0, 0, 1, 0.5},
                                {3, 4, 6, 0, 0.5}};
  for (const auto& p : progress) EXPECT_DOUBLE_EQ(rangeProgress(p[0], p[1], p[2], p[3]), p[4]);
  EXPECT_DOUBLE_EQ(satelliteDotDiameter(-7.5), 13.2);
  EXPECT_DOUBLE_EQ(satelliteDotDiameter(2.5), 10.5);
}

// The orb's window on the canvas: an orb of 96 reaches 104 from the centre (230, 230).
TEST(OrbFrame, TheWindowCoversWhatIsDrawn) {
  const Rect below = hintCapsule(96, none, 200), beside = hintCapsule(96, left, 200);
  ASSERT_EQ(below, (Rect{118, 347.6, 224, 24}));
  ASSERT_EQ(beside, (Rect{290, 218, 224, 24}));
  const Rect bare{169.5, 166, 121, 126};  // the sphere and its folded satellites
  const struct {
    const char* what;
    FrameState state;
    Rect frame;
  } rows[] = {
      {"collapsed", {96, none, false, {}, {}}, {126, 126, 208, 208}},
      {"satellites or ring out", {96, none, true, {}, {}}, {0, 0, 460, 460}},
      {"docked left: the half on the screen", {96, left, false, {}, {}}, {230, 126, 104, 208}},
      {"docked top", {96, top, false, {}, {}}, {126, 230, 208, 104}},
      {"docked, controls settling", {96, left, true, {}, {}}, {230, 126, 104, 208}},
      {"a hint below, 2 more round it", {96, none, false, below, {}}, {116, 126, 228, 248}},
      {"a hint beside the docked half", {96, left, false, beside, {}}, {230, 126, 230, 208}},
      {"growing to 132.4: whole points", {132.4, none, false, {}, {}}, {89, 89, 282, 282}},
      {"bare: the drawing, 2 round it", {96, none, false, {}, bare}, {167, 164, 126, 130}},
      {"bare, docked left", {96, left, false, {}, bare}, {230, 164, 63, 130}},
      {"bare, satellites out", {96, none, true, {}, bare}, {0, 0, 460, 460}},
      {"bare, held", {96, none, false, {}, bare, true}, {0, 0, 460, 460}},
      {"held where the shape holds", {96, none, false, {}, {}, true}, {126, 126, 208, 208}},
  };
  for (const auto& r : rows) EXPECT_EQ(windowFrame(r.state), r.frame) << r.what;
}

// The orb's window per desktop: X11 honours the input shape; Wayland's X servers do not, and
// wlroots desktops move only windows they do not manage; tiling ones float dialogs.
TEST(OrbWindowKind, ManagedWhereTheDesktopNeedsItAndKeptToTheOrbUnderWayland) {
  const struct {
    bool wayland;
    OrbWindowKind kind;
    std::vector<const char*> desktops;
  } rows[] = {
      {false, {false, true, true, true}, {"i3", "sway"}},
      {false, {false, true, true}, {""}},
      {true, {true, false, true}, {"KDE", "ubuntu:GNOME", "", "swaylike"}},
      {true, {false, false, false, true}, {"sway", "Hyprland", "swayfx-like:River"}},
      {true, {false, false, false}, {"X-Generic:wlroots"}},
  };
  for (const auto& r : rows)
    for (const char* desktops : r.desktops)
      EXPECT_EQ(orbWindowKind(r.wayland, desktops), r.kind) << r.wayland << desktops;
}

// Text beside the tray icon everywhere but on MATE, whose panel would show it instead of the icon.
TEST(TrayLabels, ShownEverywhereButMate) {
  for (const char* desktops : {"MATE", "X-Debian:mate"})
    EXPECT_FALSE(trayLabelsShown(desktops)) << desktops;
  for (const char* desktops : {"GNOME", "", "MATEish", "XFCE"})
    EXPECT_TRUE(trayLabelsShown(desktops)) << desktops;
}

const Screen mainScreen{{0, 0, 1920, 1080}, {0, 25, 1920, 1055}};
const Screen sideScreen{{1920, 0, 1280, 800}, {1920, 0, 1280, 800}};
const Screen tinyScreen{{0, 0, 100, 60}, {0, 0, 100, 60}};
const std::vector<Screen> two{mainScreen, sideScreen}, noScreens;

TEST(DockGeometry, NearestScreen) {
  const Screen a{{200, 0, 100, 100}, {200, 0, 100, 100}}, b{{0, 0, 100, 100}, {0, 0, 100, 100}};
  EXPECT_EQ(nearestScreen(two, {1919.9, 500}), 0u);
  EXPECT_EQ(nearestScreen(two, {1920, 500}), 1u);   // a shared border belongs to the right one
  EXPECT_EQ(nearestScreen(two, {2500, 900}), 1u);   // below the side screen
  EXPECT_EQ(nearestScreen({a, b}, {150, 50}), 0u);  // equally far: the earlier
  const Screen barred{{0, 0, 100, 100}, {0, 0, 100, 10}};
  EXPECT_EQ(nearestScreen({barred, a}, {160, -40}), 0u);  // by the visible centre, not the frame's
  EXPECT_EQ(nearestScreen(noScreens, {0, 0}), std::nullopt);
}

// Two 1920 × 1080 screens side by side or stacked: an orb docked on the border they share stays
// on its own screen when it is settled again, and leaves the dock onto that screen.
TEST(DockGeometry, ADockedOrbKeepsItsScreenAcrossASharedBorder) {
  const Screen l{{0, 0, 1920, 1080}, {0, 0, 1920, 1080}},
      r{{1920, 0, 1920, 1080}, {1920, 0, 1920, 1080}};
  const Screen b{{0, 1080, 1920, 1080}, {0, 1080, 1920, 1080}};
  const std::vector<Screen> sideBySide{l, r}, stacked{l, b};
  const struct {
    const std::vector<Screen>& screens;
    Point c;
    DockEdge edge;
    std::size_t screen;
    Point settled, undocked;  // undocked with a margin of 64
  } rows[] = {
      {sideBySide, {1930, 0}, top, 1, {1969, 0}, {1984, 64}},
      {sideBySide, {1910, 1080}, bottom, 0, {1871, 1080}, {1856, 1016}},
      {sideBySide, {1920, 2000}, left, 1, {1920, 1031}, {1984, 1016}},  // kept on its screen
      {stacked, {500, 1080}, top, 1, {500, 1080}, {500, 1144}},
      {stacked, {500, 1080}, bottom, 0, {500, 1080}, {500, 1016}},
  };
  for (const auto& row : rows) {
    const std::string what = std::string(rawValue(row.edge)) + " at " + std::to_string(row.c.x) +
                             "," + std::to_string(row.c.y);
    EXPECT_EQ(dockedScreen(row.screens, row.c, row.edge), row.screen) << what;
    const Point settled = settle(row.screens, row.c, 96, row.edge).center;
    EXPECT_EQ(settled, row.settled) << what;
    EXPECT_EQ(clampedOrigin(row.screens, originOfCenter(settled), 64, row.edge),
              originOfCenter(row.undocked))
        << what;
  }
  // The right screen unplugged: the orb docks on the same edge of the one that is left.
  EXPECT_EQ(settle({l}, {1920, 500}, 96, left).center, (Point{0, 500}));
}

TEST(WindowPlacement, CentredOrBesideTheOrbAndNeverLargerThanTheScreen) {
  const Rect screen{0, 0, 1280, 800}, small{0, 0, 640, 480};
  const struct {
    const char* what;
    Rect placed, expected;
  } rows[] = {
      // Frames add 8 × 36 around the window's own size.
      {"shrunk to a small screen", centredWindow(small, {960, 740}), {0, 0, 632, 444}},
      {"guide right of a centred orb",
       windowBesideOrb(screen, {640, 400}, 96, {480, 600}),
       {728.8, 82, 480, 600}},
      {"left where the right has no room",
       windowBesideOrb(screen, {1100, 100}, 96, {480, 600}),
       {523.2, 0, 480, 600}},
      {"kept inside at the bottom",
       windowBesideOrb(screen, {200, 790}, 132, {480, 600}),
       {317.6, 164, 480, 600}},
      {"centred where neither side has room",
       windowBesideOrb(small, {320, 240}, 96, {480, 600}),
       {76, 0, 480, 444}},
  };
  for (const auto& row : rows) {
    EXPECT_NEAR(row.placed.x, row.expected.x, 1e-9) << row.what;
    EXPECT_NEAR(row.placed.y, row.expected.y, 1e-9) << row.what;
    EXPECT_EQ(row.placed.width, row.expected.width) << row.what;
    EXPECT_EQ(row.placed.height, row.expected.height) << row.what;
  }
}

TEST(DockGeometry, NearestEdgeTiesAndReach) {
  const struct {
    Point c;
    double orbSize;
    Edge edge;
  } rows[] = {
      {{57.99, 500}, 96, left},  {{58, 500}, 96, none}, {{75.9, 500}, 132, left},
      {{76, 500}, 132, none},    {{40, 40}, 96, left},  {{1900, 1060}, 96, right},
      {{2000, 790}, 96, bottom},
  };
  for (const auto& r : rows) EXPECT_EQ(nearestEdge(two, r.c, r.orbSize), r.edge) << r.c.x;
  EXPECT_EQ(nearestEdge(noScreens, {0, 0}, 96), none);
}

TEST(DockGeometry, ClampedOrigin) {
  EXPECT_EQ(clampedOrigin(noScreens, {-999, 7}, 10), (Point{-999, 7}));
  EXPECT_EQ(clampedOrigin(two, originOfCenter({-10, 500}), 0), originOfCenter({0, 500}));
  EXPECT_EQ(clampedOrigin(two, originOfCenter({3300, 900}), 10), originOfCenter({3190, 790}));
  // The margin shrinks to half the short side, so the orb stays on a tiny screen.
  EXPECT_EQ(clampedOrigin({tinyScreen}, originOfCenter({500, -500}), 170),
            originOfCenter({70, 30}));
}

TEST(DockGeometry, SettleDocksOnTheEdgeLineOrStaysInside) {
  const struct {
    std::vector<Screen> screens;
    Point c;
    Edge forced, edge;
    Point settled;
  } rows[] = {
      {two, {20, 500}, none, left, {0, 500}},
      {two, {1900, 20}, none, right, {1920, 49}},  // right before top; kept 49 along the edge
      {two, {500, 30}, none, top, {500, 0}},
      {two, {1000, 1060}, none, bottom, {1000, 1080}},
      {two, {900, 500}, top, top, {900, 0}},
      {two, {-100, 500}, none, none, {54, 500}},
      {{tinyScreen}, {50, 0}, left, left, {0, 11}},  // margin too big: the upper bound wins
      {noScreens, {-5, -5}, left, none, {-5, -5}},
  };
  for (const auto& r : rows) {
    const Settlement s = settle(r.screens, r.c, 96, r.forced);
    EXPECT_EQ(s.edge, r.edge) << r.c.x;
    EXPECT_EQ(s.center, r.settled) << r.c.x;
  }
}

TEST(DockGeometry, DragAndThrow) {
  EXPECT_FALSE(startsDrag({3, 0}));
  EXPECT_TRUE(startsDrag({3.01, 0}));
  EXPECT_EQ(dragVelocity({0, 0}, {12, -6}, 0.1), (Vector{2, -1}));
  EXPECT_EQ(dragVelocity({0, 0}, {12, -6}, 0.001), (Vector{25, -12.5}));  // floored at 8 ms
  EXPECT_DOUBLE_EQ(dragStretch({3, 4}, false), 0.06);
  EXPECT_DOUBLE_EQ(dragStretch({30, 40}, false), 0.16);
  EXPECT_EQ(dragStretch({3, 4}, true), 0);
  const double angles[][3] = {{1, -1, -45}, {0, 1, 90}, {-1, 0, -180}, {1, 0, 0}};
  for (const auto& a : angles) EXPECT_DOUBLE_EQ(dragAngle({a[0], a[1]}), a[2]) << a[0] << a[1];
  // Reduce motion, seconds since the last move, within docking reach: throws.
  const double throws[][4] = {{0, 0.1, 0, 1}, {0, 0.1001, 0, 0}, {1, 0, 0, 0}, {0, 0, 1, 0}};
  for (const auto& t : throws) EXPECT_EQ(startsThrow(t[0], t[1], t[2]), t[3] == 1) << t[1];
  EXPECT_EQ(throwVelocity({30, -40}), (Vector{25, -25}));
  EXPECT_EQ(throwVelocity({3, -4}), (Vector{3, -4}));
}

TEST(DockGeometry, Glide) {
  const std::vector<Screen> one{mainScreen};
  const GlideStep slow = glideStep(one, {1, 2}, {0.3, 0.4});
  EXPECT_TRUE(slow.finished && slow.origin == (Point{1, 2}) && slow.velocity == (Vector{0.3, 0.4}));
  EXPECT_FALSE(glideStep(one, {1, 2}, {0.6, 0}).finished);

  // Centre before, velocity, centre after, velocity after: a held-back axis bounces at -0.4.
  const double ticks[][8] = {{1910, 1070, 20, 15, 1920, 1080, -7.44, -5.58},  // corner
                             {1910, 500, 20, 5, 1920, 505, -7.44, 4.65},      // side only
                             {1909.95, 500, 10.1, 0, 1920, 500, 9.393, 0}};   // 0.05 short: none
  for (const auto& t : ticks) {
    const GlideStep step = glideStep(one, originOfCenter({t[0], t[1]}), {t[2], t[3]});
    EXPECT_FALSE(step.finished);
    EXPECT_EQ(step.origin, originOfCenter({t[4], t[5]})) << t[0];
    EXPECT_DOUBLE_EQ(step.velocity.dx, t[6]) << t[0];
    EXPECT_DOUBLE_EQ(step.velocity.dy, t[7]) << t[0];
  }
}

TEST(DockGeometry, RestoreNeedsTheCentreOnAScreen) {
  const std::pair<Point, bool> rows[] = {
      {{960, 540}, true}, {{-1, -1}, true}, {{3201, 801}, true}, {{3201.5, 500}, false}};
  for (const auto& [c, ok] : rows) EXPECT_EQ(isRestorable(two, c), ok) << c.x;
  EXPECT_FALSE(isRestorable(noScreens, {0, 0}));
}

}  // namespace
}  // namespace tidemark
