// The orb's gestures, keys, ring menu, tray menu and global keys through the delegate's own
// wiring, and what the delegate shows.

#include <gtest/gtest.h>

#include <QApplication>
#include <QGuiApplication>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollArea>
#include <QStyleHints>
#include <QTest>

#include "desktop/DesktopFixture.h"
#include "support/QtPrint.h"
#include "views/DetailView.h"
#include "views/SettingsView.h"

namespace tidemark {
namespace {

using test::Desktop;

// A mouse event delivered to the content view. Qt rounds global positions to whole pixels, so
// the 3-point threshold itself is checked with the geometry.
void send(QWidget& w, QEvent::Type type, QPointF local, Qt::MouseButton button = Qt::LeftButton) {
  const bool release = type == QEvent::MouseButtonRelease;
  QMouseEvent event(type, local, local + QPointF(w.window()->pos()),
                    type == QEvent::MouseMove ? Qt::NoButton : button,
                    release ? Qt::NoButton : button, Qt::NoModifier);
  QApplication::sendEvent(&w, &event);
}

double doubleClickSeconds() {
  return QGuiApplication::styleHints()->mouseDoubleClickInterval() / 1000.0;
}

// The tray tooltip's lines above the active quote.
const std::string tooltipHead =
    "岚舟 · 模拟源\n左键显示/隐藏灵球 · 右键管理和设置\nCtrl+Alt+Space 显示/隐藏 · Ctrl+Alt+M 遮蔽";

std::string hint(Desktop& d) {
  return d.delegate->windowModel().hint().value_or("");
}

std::string section(Desktop& d) {
  auto* view = d.inWindow<SettingsView>("settings");
  return view ? view->currentSection() : "";
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

// The delegate's own handlers behind the gestures: a click spreads the satellites once the
// double-click interval has passed, a double click only opens the detail, a satellite's click
// selects its quote.
TEST(OrbGestures, TheDelegateActsOnEachGesture) {
  {
    Desktop d;
    QTest::mouseClick(d.window(), Qt::LeftButton, {}, QPoint(230, 230));
    d.h.scheduler.advance(doubleClickSeconds() - 0.01);
    EXPECT_FALSE(d.delegate->windowModel().expanded()) << "before the interval";
    d.h.scheduler.advance(0.02);
    EXPECT_TRUE(d.delegate->windowModel().expanded()) << "after the interval";
  }
  {
    Desktop d;
    const QPointF c(230, 230);
    using enum QEvent::Type;
    for (auto type :
         {MouseButtonPress, MouseButtonRelease, MouseButtonDblClick, MouseButtonRelease})
      send(d.content(), type, c);
    d.h.scheduler.advance(1);
    EXPECT_FALSE(d.delegate->windowModel().expanded()) << "a double click also bloomed";
    EXPECT_EQ(section(d), "圆形详情");
  }
  {
    Desktop d;
    d.delegate->toggleBloom();
    // The third satellite (NVDA), spread out, 3 below its dot: selects and starts no drag.
    const Point nvda = satelliteCenter(2, 5, 96, true);
    bool dragged = false;
    d.content().onDragStart = [&] { dragged = true; };
    QTest::mouseClick(d.window(), Qt::LeftButton, {}, QPoint(int(nvda.x), int(nvda.y + 3)));
    EXPECT_EQ(d.model->activeID(), "NVDA");
    EXPECT_FALSE(dragged);
  }
}

// The tray menu's item with this text, in a submenu too.
QAction* trayItem(QMenu& menu, const QString& text) {
  for (QAction* item : menu.actions()) {
    if (item->text() == text) return item;
    if (QMenu* sub = item->menu())
      if (QAction* found = trayItem(*sub, text)) return found;
  }
  return nullptr;
}

// Each ring button, found by the name a screen reader reads, clicked where it is drawn, and each
// item of the tray menu as the menu is built when it opens.
TEST(Commands, EachRingButtonAndTrayItemDoesWhatItsLabelSays) {
  struct Case {
    bool ring;
    const char* name;
    std::function<std::string(Desktop&)> observe;
    std::string expected;
  };
  const auto windows = [](Desktop& d) {
    return std::string(d.delegate->window("settings") ? "settings " : "") +
           (d.delegate->window("alert") ? "alert " : "") +
           (d.delegate->window("guide") ? "guide " : "") + section(d);
  };
  const auto refreshing = [](Desktop& d) {
    return hint(d) + std::to_string(d.model->hasPendingRefresh());
  };
  const auto masking = [](Desktop& d) { return std::to_string(d.model->masked()) + hint(d); };
  const auto quits = [](Desktop& d) { return std::to_string(d.quits); };
  const Case cases[] = {
      {true, "刷新", refreshing, "正在刷新模拟源1"},
      {true, "预警", windows, "alert "},
      {true, "外观", windows, "settings 外观"},
      {true, "遮蔽", masking, "1行情数字已遮蔽"},
      {true, "退出", quits, "1"},
      {false, "隐藏灵球",
       [](Desktop& d) { return std::string(d.delegate->panel().isVisible() ? "shown" : "hidden"); },
       "hidden"},
      {false, "设置…", windows, "settings 外观"},
      {false, "价格预警…", windows, "alert "},
      {false, "屏幕共享遮蔽", masking, "1行情数字已遮蔽"},
      {false, "鼠标穿透（仅菜单栏可恢复）",
       [](Desktop& d) { return std::to_string(d.delegate->passesPointerThrough()); }, "1"},
      {false, "72 pt", [](Desktop& d) { return std::to_string(int(d.model->orbSize())); }, "72"},
      {false, "离线", [](Desktop& d) { return std::string(rawValue(d.model->phase())); },
       "offline"},
      {false, "使用引导", windows, "guide "},
      {false, "退出潮汐栏", quits, "1"},
  };
  for (const Case& k : cases) {
    Desktop d;
    const QString name = QString::fromUtf8(k.name);
    if (k.ring) {
      QTest::mouseClick(d.window(), Qt::RightButton, {}, QPoint(230, 230));
      ASSERT_TRUE(d.delegate->windowModel().radialOpen());
      QAbstractButton* button = d.ringButton(name);
      ASSERT_TRUE(button) << k.name;
      QTest::mouseClick(d.window(), Qt::LeftButton, {},
                        button->mapTo(&d.delegate->panel(), button->rect().center()));
    } else {
      QMenu& menu = d.delegate->statusItem().menu();
      emit menu.aboutToShow();
      QAction* item = trayItem(menu, name);
      ASSERT_TRUE(item) << k.name;
      item->trigger();
    }
    EXPECT_EQ(k.observe(d), k.expected) << k.name;
    EXPECT_FALSE(d.delegate->windowModel().radialOpen()) << k.name;
  }
}

TEST(OrbRing, APressAnywhereElseClosesIt) {
  struct Case {
    const char* what;
    std::function<void(Desktop&)> press;
    bool staysOpen;
  };
  // The panel stands at (410, 170): the orb's centre is (640, 400). The window system tells of
  // a press without its place; where the pointer is a moment later decides.
  const auto globalPress = [](Point at) {
    return [at](Desktop& d) {
      d.windows.pressed(900001);
      d.mouse = at;
      d.h.scheduler.advance(0.1);
    };
  };
  const Case cases[] = {
      {"on the desktop", globalPress({100, 100}), false},
      {"in the panel's transparent corner", globalPress({420, 180}), false},
      {"on the core", globalPress({640, 400}), true},
      {"on the ring button 刷新",
       [](Desktop& d) {
         QAbstractButton* b = d.ringButton(QStringLiteral("刷新"));
         const QPoint at = b->mapToGlobal(b->rect().center());
         d.windows.pressed(900001);
         d.mouse = {double(at.x()), double(at.y())};
         d.h.scheduler.advance(0.1);
       },
       true},
      // The window system's report of a press on the orb, late, after the pointer left for the
      // desktop: the orb's own event already judged that press.
      {"a press on the core, reported late",
       [](Desktop& d) {
         QMouseEvent press(QEvent::MouseButtonPress, QPointF(230, 230), QPointF(640, 400),
                           Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
         press.setTimestamp(4242);
         QApplication::sendEvent(&d.content(), &press);
         d.windows.pressed(4242);
         d.mouse = {100, 100};
         d.h.scheduler.advance(0.1);
       },
       true},
      {"in our settings window",
       [](Desktop& d) {
         d.delegate->openSettings("外观");
         QTest::mouseClick(d.delegate->window("settings"), Qt::LeftButton, {}, QPoint(5, 5));
       },
       false},
      {"a right click in our settings window",
       [](Desktop& d) {
         d.delegate->openSettings("外观");
         QTest::mouseClick(d.delegate->window("settings"), Qt::RightButton, {}, QPoint(5, 5));
       },
       false},
      {"a second right click on the core",
       [](Desktop& d) { QTest::mouseClick(d.window(), Qt::RightButton, {}, QPoint(230, 230)); },
       false},
  };
  for (const Case& k : cases) {
    Desktop d;
    QTest::mouseClick(d.window(), Qt::RightButton, {}, QPoint(230, 230));
    ASSERT_TRUE(d.delegate->windowModel().radialOpen());
    k.press(d);
    EXPECT_EQ(d.delegate->windowModel().radialOpen(), k.staysOpen) << k.what;
  }
}

// Every key starts from a state in which doing nothing, or the wrong thing, shows.
TEST(OrbKeys, EachKeyActs) {
  struct Case {
    const char* what;
    int key;
    std::function<void(Desktop&)> before;
    std::function<std::string(Desktop&)> observe;
    std::string expected;
  };
  const auto none = [](Desktop&) {};
  const auto size = [](Desktop& d) { return std::to_string(int(d.model->orbSize())); };
  const auto active = [](Desktop& d) { return d.model->activeID(); };
  const auto masking = [](Desktop& d) { return std::to_string(d.model->masked()) + hint(d); };
  const auto state = [](Desktop& d) {
    const OrbWindowModel& w = d.delegate->windowModel();
    return std::string(w.expanded() ? "spread " : "") + (w.radialOpen() ? "ring " : "") +
           (w.dockEdge() ? "docked " : "") + "at " + std::to_string(d.delegate->panel().x() + 230) +
           "," + std::to_string(d.delegate->panel().y() + 230);
  };
  const auto spread = [](Desktop& d) { d.delegate->toggleBloom(); };
  const auto ring = [](Desktop& d) {
    QTest::mouseClick(d.window(), Qt::RightButton, {}, QPoint(230, 230));
  };
  const auto docked = [](Desktop& d) {
    d.delegate->panel().move(-225, 170);
    d.delegate->settle(std::nullopt);
  };
  const Case cases[] = {
      {"1", Qt::Key_1, none, size, "72"},
      {"2", Qt::Key_2, [](Desktop& d) { d.model->setOrbSize(132); }, size, "96"},
      {"3", Qt::Key_3, none, size, "132"},
      {"←", Qt::Key_Left, none, active, "00700"},
      {"→ steps the same way", Qt::Key_Right, none, active, "00700"},
      {"M masks", Qt::Key_M, none, masking, "1行情数字已遮蔽"},
      {"M unmasks", Qt::Key_M, [](Desktop& d) { d.model->setMasked(true); }, masking,
       "0已恢复行情数字"},
      {"R", Qt::Key_R, none,
       [](Desktop& d) { return hint(d) + std::to_string(d.model->hasPendingRefresh()); },
       "正在刷新模拟源1"},
      {"Space spreads", Qt::Key_Space, none, state, "spread at 640,400"},
      {"Return spreads", Qt::Key_Return, none, state, "spread at 640,400"},
      {"Return collapses", Qt::Key_Return, spread, state, "at 640,400"},
      {"Esc collapses", Qt::Key_Escape, spread, state, "at 640,400"},
      {"Esc closes the ring", Qt::Key_Escape, ring, state, "at 640,400"},
      {"Esc undocks", Qt::Key_Escape, docked, state, "at 64,400"},
      {"A does nothing", Qt::Key_A, spread, state, "spread at 640,400"},
  };
  for (const Case& k : cases) {
    Desktop d;
    k.before(d);
    d.h.store.setData(AppDelegate::positionKey, "");
    QTest::keyClick(&d.delegate->panel(), Qt::Key(k.key));
    EXPECT_EQ(k.observe(d), k.expected) << k.what;
    if (k.key == Qt::Key_Escape && k.expected == "at 64,400") {  // the new place is kept
      EXPECT_EQ(d.h.store.data(AppDelegate::positionKey), R"({"x":64.0,"y":400.0,"edge":""})");
    }
  }
}

// Ctrl+Alt+Space is id 1, Ctrl+Alt+M id 2, as the platform's grab reports them.
TEST(HotKeys, OneShowsOrHidesTheOrbTwoMasksEveryFigure) {
  Desktop d;
  ASSERT_TRUE(d.keys.pressed);
  const auto seen = [&] {
    return std::string(d.delegate->panel().isVisible() ? "shown " : "hidden ") +
           (d.model->masked() ? "masked " : "") + hint(d);
  };
  const std::pair<int, std::string> steps[] = {
      {1, "hidden "},
      {1, "shown 单击展开卫星 · 双击详情 · 右键快捷操作"},
      {2, "shown masked 行情数字已遮蔽"},
      {2, "shown 已恢复行情数字"},
      {3, "shown 已恢复行情数字"},
  };
  for (const auto& [id, expected] : steps) {
    d.keys.pressed(id);
    EXPECT_EQ(seen(), expected) << id;
  }
}

// Another program held Ctrl+Alt+M at launch: the tooltip and the settings say so until it lets
// go, and then the key is the app's.
TEST(HotKeys, AKeyAnotherProgramHoldsIsNamedAndTakenOnceFree) {
  Desktop d({.keysTakenElsewhere = {2}});
  d.delegate->openSettings("外观");
  SettingsView* settings = d.inWindow<SettingsView>("settings");
  ASSERT_TRUE(settings);
  EXPECT_EQ(d.delegate->statusItem().toolTip(),
            tooltipHead + "\nCtrl+Alt+M 已被其他程序占用\n贵州茅台  CNY1,468.80");
  EXPECT_EQ(settings->shortcutNotice(),
            QStringLiteral("Ctrl+Alt+M 已被其他程序占用，释放后会自动启用。"));
  d.h.scheduler.advance(3);
  EXPECT_FALSE(d.keys.holds(2)) << "still held elsewhere";
  d.keys.takenElsewhere.clear();
  d.h.scheduler.advance(3);
  EXPECT_TRUE(d.keys.holds(2));
  EXPECT_EQ(d.delegate->statusItem().toolTip(), tooltipHead + "\n贵州茅台  CNY1,468.80");
  EXPECT_EQ(settings->shortcutNotice(), QString());
  d.keys.pressed(2);
  EXPECT_TRUE(d.model->masked());
}

TEST(Delegate, PointerPassesThroughWhereNothingTakesIt) {
  Desktop d;
  const Point core{640, 400}, corner{420, 180};
  // Where the pointer is, how long after the last look, dragging, passing through.
  const std::tuple<const char*, Point, double, bool, bool> steps[] = {
      {"over the core", core, 0, false, false},
      {"just left", corner, 0, false, false},
      {"0.4 s later: still the grace time", corner, 0.4, false, false},
      {"past it", corner, 0.01, false, true},
      {"back on the core", core, 0, false, false},
      {"dragged, the pointer ahead of the orb", corner, 0, true, false},
      {"still dragging, past the grace time", corner, 1, true, false},
  };
  for (const auto& [what, at, wait, dragging, through] : steps) {
    d.delegate->windowModel().setDragging(dragging);
    d.mouse = at;
    d.h.clock.advance(wait);
    d.delegate->updatePointerMode();
    EXPECT_EQ(d.windows.region.isEmpty(), through) << what;
  }
  d.delegate->windowModel().setDragging(false);
  d.delegate->toggleObserve();  // forced: nothing takes a click, whatever the pointer does
  d.delegate->updatePointerMode();
  EXPECT_TRUE(d.windows.region.isEmpty());
  d.delegate->toggleObserve();
  d.delegate->updatePointerMode();
  EXPECT_TRUE(d.windows.region.contains(QPoint(230, 230)));
  EXPECT_FALSE(d.windows.region.contains(QPoint(10, 10)));
}

TEST(Delegate, WindowsAreReusedCentredAndTheAlertEditorStartsAfresh) {
  Desktop d;
  d.delegate->openSettings("外观");
  QWidget* settings = d.delegate->window("settings");
  settings->move(5, 5);  // where the user put it
  d.delegate->openSettings("圆形详情");
  EXPECT_EQ(d.delegate->window("settings"), settings);
  EXPECT_EQ(section(d), "圆形详情");
  EXPECT_EQ(settings->pos(), QPoint(5, 5));
  EXPECT_EQ(settings->minimumSize(), QSize(840, 560));
  EXPECT_EQ(settings->windowTitle(), QStringLiteral("设置 · 使用偏好"));
  // The settings window's own buttons open the other windows.
  const auto click = [&](const QString& text) {
    for (auto* button : settings->findChildren<QPushButton*>())
      if (button->text() == text) return button->click();
    ADD_FAILURE() << text.toStdString();
  };
  click(QStringLiteral("编辑预警…"));
  QPointer<QWidget> first = d.delegate->window("alert");
  ASSERT_TRUE(first);
  // Centred on the 1280 × 800 screen, the frame's 8 × 36 included.
  EXPECT_EQ(QRect(first->pos(), first->size()), QRect(426, 112, 420, 540));
  click(QStringLiteral("编辑预警…"));
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(first.isNull());
  EXPECT_NE(d.delegate->window("alert"), nullptr);
  EXPECT_EQ(d.delegate->window("guide"), nullptr);
  click(QStringLiteral("重新查看引导"));
  EXPECT_NE(d.delegate->window("guide"), nullptr);
}

// Two 1920 × 1080 screens side by side, the orb docked on the border they share: on the left
// edge of the right screen, or on the right edge of the left one.
TEST(Delegate, AnOrbDockedOnASharedBorderStaysOnItsScreen) {
  const struct {
    const char* position;  // as stored
    QRect settings;
    QPoint guide;
    const char* undocked;  // by Esc
  } rows[] = {
      // The guide at 1920 + 0.8 × 132 + 12, rounded; 400 − 636 / 2.
      {R"({"x":1920.0,"y":400.0,"edge":"left"})", {2396, 152, 960, 740}, {2038, 82}, "1772,170"},
      // 1920 − 0.8 × 132 − 12 − 488, rounded.
      {R"({"x":1920.0,"y":400.0,"edge":"right"})", {476, 152, 960, 740}, {1314, 82}, "1608,170"},
  };
  for (const auto& row : rows) {
    Desktop d({.screens = {{{0, 0, 1920, 1080}, {0, 0, 1920, 1080}},
                           {{1920, 0, 1920, 1080}, {1920, 0, 1920, 1080}}},
               .position = row.position});
    const auto where = [&] {
      return std::to_string(d.delegate->panel().x()) + "," +
             std::to_string(d.delegate->panel().y()) +
             (d.delegate->windowModel().dockEdge() ? " docked" : "");
    };
    EXPECT_EQ(where(), "1690,170 docked") << "restored " << row.position;
    d.delegate->screenParametersDidChange();
    EXPECT_EQ(where(), "1690,170 docked") << "screens changed " << row.position;
    d.model->setOrbSize(132);
    d.h.scheduler.runDue();
    EXPECT_EQ(where(), "1690,170 docked") << "size changed " << row.position;
    EXPECT_EQ(d.h.store.data(AppDelegate::positionKey), row.position);
    // Windows open on the orb's screen; the guide beside the orb's visible half.
    d.delegate->openSettings("外观");
    QWidget* settings = d.delegate->window("settings");
    EXPECT_EQ(QRect(settings->pos(), settings->size()), row.settings) << row.position;
    d.delegate->openWindow("guide");
    EXPECT_EQ(d.delegate->window("guide")->pos(), row.guide) << row.position;
    // Esc leaves the edge onto the orb's own screen.
    QTest::keyClick(&d.delegate->panel(), Qt::Key_Escape);
    EXPECT_EQ(where(), row.undocked) << row.position;
  }
}

// On a 640 × 480 screen every window fits, title bar and borders included, and what does not fit
// in it scrolls into view: the guide's last button too.
TEST(Delegate, WindowsFitASmallScreenAndScroll) {
  Desktop d({.screens = {{{0, 0, 640, 480}, {0, 0, 640, 480}}}});
  for (const char* key : {"guide", "settings", "alert"}) {
    d.delegate->openWindow(key);
    QWidget* w = d.delegate->window(key);
    const QRect frame(w->pos(), w->size() + QSize(8, 36));
    EXPECT_TRUE(QRect(0, 0, 640, 480).contains(frame)) << key;
  }
  QWidget* guide = d.delegate->window("guide");
  auto* scroll = guide->findChild<QScrollArea*>();
  QAbstractButton* start = nullptr;
  for (auto* b : guide->findChildren<QAbstractButton*>())
    if (b->text() == QStringLiteral("开始探索")) start = b;
  ASSERT_TRUE(scroll && start);
  QApplication::processEvents();
  scroll->ensureWidgetVisible(start);
  const QRect shown(start->mapTo(scroll->viewport(), QPoint()), start->size());
  EXPECT_TRUE(scroll->viewport()->rect().contains(shown));
}

TEST(Delegate, ASizeChangeLaysADockedOrbOutAgain) {
  Desktop d;
  d.delegate->panel().move(-225, 20 - 230);
  d.delegate->settle(std::nullopt);
  ASSERT_EQ(d.delegate->panel().pos(), QPoint(-230, 49 - 230));  // kept whole along the edge
  d.model->setOrbSize(132);
  d.h.scheduler.runDue();
  EXPECT_EQ(d.delegate->panel().pos(), QPoint(-230, 67 - 230));
  EXPECT_EQ(d.h.store.data(AppDelegate::positionKey), R"({"x":0.0,"y":67.0,"edge":"left"})");
}

TEST(Delegate, TheDesktopsCalmReachesTheOrbAndTheDetail) {
  Desktop d({.reduceMotion = false, .systemCalm = true});
  d.delegate->openSettings("圆形详情");
  DetailOrb* detail = d.inWindow<DetailOrb>("settings");
  ASSERT_TRUE(detail && d.motion);
  EXPECT_FALSE(d.content().orbView().motionAllowed());
  EXPECT_TRUE(detail->systemReduceMotion());
  d.motion->changed(false);
  EXPECT_TRUE(d.content().orbView().motionAllowed());
  EXPECT_FALSE(detail->systemReduceMotion());
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

TEST(Delegate, ASettingThatCannotBeKeptIsToldOncePerStreak) {
  Desktop d;
  const StoreWriteFailure failure{"/home/u/.config/Tidemark/Tidemark.conf", "Permission denied"};
  const std::pair<std::optional<StoreWriteFailure>, std::string> steps[] = {
      {failure, "设置无法保存 · 重启后更改将丢失"},
      {failure, ""},  // still failing: said already
      {std::nullopt, ""},
      {failure, "设置无法保存 · 重启后更改将丢失"},
  };
  for (const auto& [report, told] : steps) {
    d.delegate->windowModel().setHint(std::nullopt);
    d.h.store.report(report);
    d.h.scheduler.runDue();
    EXPECT_EQ(hint(d), told) << (report ? "failed" : "saved");
  }
}

TEST(Delegate, TitleTooltipAndIconFollowTheModel) {
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
    EXPECT_EQ(d.delegate->statusItem().toolTip(), tooltipHead + k.tooltipTail);
    EXPECT_EQ(d.windows.excluded, k.masked);
    // The arc of the mini orb passes the top of its ring at (11.5, 3); the bare dot has no ring.
    const QImage icon = d.delegate->statusItem().image();
    EXPECT_EQ(icon.pixelColor(11, 3).alpha() > 200, k.ring) << k.density << k.masked;
    EXPECT_EQ(icon.pixelColor(11, 11), QColor(0x6E, 0xF2, 0xD8)) << "the dark theme's dot";
  }
}

TEST(Delegate, AThemeChangeRecoloursEveryWindow) {
  Desktop d;
  d.delegate->openSettings("外观");
  d.delegate->openWindow("guide");
  const std::pair<AppTheme, QColor> themes[] = {{AppTheme::light, QColor(0xEE, 0xF0, 0xF8)},
                                                {AppTheme::amber, QColor(0x20, 0x17, 0x0D)}};
  for (const auto& [theme, backdrop] : themes) {
    d.model->setTheme(theme);
    d.h.scheduler.runDue();
    for (const char* key : {"settings", "guide"})
      EXPECT_EQ(d.delegate->window(key)->palette().color(QPalette::Window), backdrop) << key;
  }
}

}  // namespace
}  // namespace tidemark
