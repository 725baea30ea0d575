// The orb's gestures and keys through Qt's own event delivery, and what the delegate shows.

#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>
#include <QTest>

#include "desktop/DesktopFixture.h"
#include "views/MiniOrb.h"

namespace tidemark {
namespace {

using test::Desktop;

// A mouse event delivered to the content view. Qt rounds global positions to whole pixels, so
// the 3-point threshold itself is checked with the geometry.
void send(QWidget& w, QEvent::Type type, QPointF local) {
  const bool release = type == QEvent::MouseButtonRelease;
  QMouseEvent event(type, local, local + QPointF(w.window()->pos()),
                    type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                    release ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&w, &event);
}

TEST(OrbGestures, ClicksDoubleClicksAndTheDragThreshold) {
  const QPointF c(230, 230);
  struct Case {
    const char* what;
    std::vector<std::pair<QEvent::Type, QPointF>> events;
    std::string gestures;
  };
  using enum QEvent::Type;
  const Case cases[] = {
      {"click", {{MouseButtonPress, c}, {MouseButtonRelease, c}}, "click "},
      {"double click",
       {{MouseButtonPress, c},
        {MouseButtonRelease, c},
        {MouseButtonDblClick, c},
        {MouseButtonRelease, c}},
       "click double "},
      {"3 points is still a click",
       {{MouseButtonPress, c},
        {MouseMove, c + QPointF(3, 0)},
        {MouseButtonRelease, c + QPointF(3, 0)}},
       "click "},
      {"3.16 points is a drag",
       {{MouseButtonPress, c},
        {MouseMove, c + QPointF(3, 1)},
        {MouseMove, c + QPointF(40, 10)},
        {MouseButtonRelease, c + QPointF(40, 10)}},
       "start move(3,1) move(40,10) end "},
      {"a move without a press", {{MouseMove, c + QPointF(50, 0)}}, ""},
  };
  for (const Case& k : cases) {
    Desktop d;
    std::string log;
    OrbContentView& view = d.content();
    const QPointF origin = d.delegate->panel().pos();
    view.onClick = [&] { log += "click "; };
    view.onDoubleClick = [&] { log += "double "; };
    view.onDragStart = [&] { log += "start "; };
    view.onDragEnd = [&] { log += "end "; };
    view.onDragMove = [&](QPointF p) {
      log += "move(" + QString::number(p.x() - origin.x()).toStdString() + "," +
             QString::number(p.y() - origin.y()).toStdString() + ") ";
    };
    for (const auto& [type, p] : k.events) send(view, type, p);
    EXPECT_EQ(log, k.gestures) << k.what;
  }
}

TEST(OrbGestures, ControlsAroundTheCoreGetTheirClicks) {
  Desktop d;
  d.delegate->toggleBloom();
  d.h.scheduler.runDue();
  // The third satellite (NVDA), spread out: selects its quote and starts no drag.
  const Point nvda = satelliteCenter(2, 5, 96, true);
  bool dragged = false;
  d.content().onDragStart = [&] { dragged = true; };
  QTest::mouseClick(d.window(), Qt::LeftButton, {}, QPoint(int(nvda.x), int(nvda.y + 3)));
  EXPECT_EQ(d.model->activeID(), "NVDA");
  EXPECT_FALSE(dragged);

  // A right click on the core opens the ring menu; its second button opens the alert editor.
  QTest::mouseClick(d.window(), Qt::RightButton, {}, QPoint(230, 230));
  ASSERT_TRUE(d.delegate->windowModel().radialOpen());
  const Point second = ringButtonCenter(1, 96);
  QTest::mouseClick(d.window(), Qt::LeftButton, {}, QPoint(int(second.x), int(second.y)));
  EXPECT_FALSE(d.delegate->windowModel().radialOpen());  // every command closes the menu
  EXPECT_NE(d.delegate->window("alert"), nullptr);
}

TEST(OrbKeys, EachKeyActs) {
  struct Case {
    int key;
    std::function<std::string(Desktop&)> observe;
    std::string expected;
  };
  const auto size = [](Desktop& d) { return std::to_string(int(d.model->orbSize())); };
  const auto active = [](Desktop& d) { return d.model->activeID(); };
  const Case cases[] = {
      {Qt::Key_1, size, "72"},
      {Qt::Key_3, size, "132"},
      {Qt::Key_Left, active, "00700"},
      {Qt::Key_Right, active, "00700"},
      {Qt::Key_M,
       [](Desktop& d) {
         return std::to_string(d.model->masked()) + *d.delegate->windowModel().hint();
       },
       "1行情数字已遮蔽"},
      {Qt::Key_R, [](Desktop& d) { return *d.delegate->windowModel().hint(); }, "正在刷新模拟源"},
      {Qt::Key_Space,
       [](Desktop& d) {
         d.h.scheduler.runDue();
         return std::to_string(d.delegate->windowModel().expanded());
       },
       "1"},
      {Qt::Key_Escape,
       [](Desktop& d) { return std::to_string(d.delegate->windowModel().expanded()); }, "0"},
      {Qt::Key_A, active, "600519"},
  };
  for (const Case& k : cases) {
    Desktop d;
    QTest::keyClick(&d.delegate->panel(), Qt::Key(k.key));
    EXPECT_EQ(k.observe(d), k.expected) << k.key;
  }
}

TEST(Delegate, PointerPassesThroughWhereNothingTakesIt) {
  Desktop d;
  const Point core{640, 400}, corner{420, 180};
  const std::tuple<const char*, Point, double, bool> steps[] = {
      {"over the core", core, 0, false},
      {"just left", corner, 0, false},
      {"0.4 s later: still the grace time", corner, 0.4, false},
      {"past it", corner, 0.01, true},
      {"back on the core", core, 0, false},
  };
  for (const auto& [what, at, wait, through] : steps) {
    d.mouse = at;
    d.h.clock.advance(wait);
    d.delegate->updatePointerMode();
    EXPECT_EQ(d.windows.region.isEmpty(), through) << what;
  }
  d.delegate->toggleObserve();  // forced: nothing takes a click, whatever the pointer does
  d.delegate->updatePointerMode();
  EXPECT_TRUE(d.windows.region.isEmpty());
  d.delegate->toggleObserve();
  d.delegate->updatePointerMode();
  EXPECT_TRUE(d.windows.region.contains(QPoint(230, 230)));
  EXPECT_FALSE(d.windows.region.contains(QPoint(10, 10)));
}

TEST(Delegate, WindowsAreReusedButTheAlertEditorStartsAfresh) {
  Desktop d;
  d.delegate->openSettings("外观");
  QWidget* settings = d.delegate->window("settings");
  d.delegate->openSettings("圆形详情");
  EXPECT_EQ(d.delegate->window("settings"), settings);
  EXPECT_EQ(settings->minimumSize(), QSize(840, 560));
  EXPECT_EQ(settings->windowTitle(), QStringLiteral("设置 · 使用偏好"));
  d.delegate->openWindow("alert");
  QPointer<QWidget> first = d.delegate->window("alert");
  d.delegate->openWindow("alert");
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(first.isNull());
  EXPECT_NE(d.delegate->window("alert"), nullptr);
}

TEST(Delegate, HintsReplaceEachOtherAndLastTheirFullTime) {
  Desktop d;
  d.delegate->showHint("一");
  d.h.scheduler.advance(2.0);
  d.delegate->showHint("二");
  d.h.scheduler.advance(2.0);
  EXPECT_EQ(d.delegate->windowModel().hint(), "二");
  d.h.scheduler.advance(0.4);
  EXPECT_EQ(d.delegate->windowModel().hint(), std::nullopt);
}

TEST(Delegate, TitleTooltipAndIconFollowTheModel) {
  const std::string head =
      "岚舟 · 模拟源\n左键显示/隐藏灵球 · 右键管理和设置\nCtrl+Alt+Space 显示/隐藏 · Ctrl+Alt+M "
      "遮蔽";
  struct Case {
    int64_t density;
    bool masked;
    std::string title, tooltipTail;
    bool ring;
  };
  const Case cases[] = {
      {0, false, "", "\n贵州茅台  CNY1,468.80", true},
      {1, false, " +1.16%", "\n贵州茅台  CNY1,468.80", false},
      {2, false, " 600519  1,468.80  +1.16%", "\n贵州茅台  CNY1,468.80", true},
      {2, true, "", "\n行情已遮蔽", false},
  };
  for (const Case& k : cases) {
    Desktop d;
    d.model->setMenuDensity(k.density);
    d.model->setMasked(k.masked);
    d.h.scheduler.runDue();
    EXPECT_EQ(d.delegate->statusItem().title(), k.title) << k.density << k.masked;
    EXPECT_EQ(d.delegate->statusItem().toolTip(), head + k.tooltipTail);
    EXPECT_EQ(d.windows.excluded, k.masked);
    // The arc of the mini orb passes the top of its ring at (11.5, 3); the bare dot has no ring.
    const QImage icon = d.delegate->statusItem().image();
    EXPECT_EQ(icon.pixelColor(11, 3).alpha() > 200, k.ring) << k.density << k.masked;
  }
}

TEST(Delegate, AThemeChangeRecoloursEveryWindow) {
  Desktop d;
  d.delegate->openSettings("外观");
  d.delegate->openWindow("guide");
  for (AppTheme theme : {AppTheme::light, AppTheme::amber}) {
    d.model->setTheme(theme);
    d.h.scheduler.runDue();
    for (const char* key : {"settings", "guide"})
      EXPECT_EQ(d.delegate->window(key)->palette().color(QPalette::Window),
                qt(OrbPalette{theme}.background()))
          << key;
  }
}

}  // namespace
}  // namespace tidemark
