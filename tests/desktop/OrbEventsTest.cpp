// The orb's gestures, keys, ring menu, tray menu and global keys through the delegate's own
// wiring, and what the delegate shows.

#include <gtest/gtest.h>

#include <QApplication>
#include <QGuiApplication>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyleHints>
#include <QTest>

#include "desktop/DesktopFixture.h"
#include "support/QtPrint.h"
#include "views/DetailView.h"
#include "views/SettingsView.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;

using test::Desktop;

// A mouse event at `local` in a panel that stood at `origin` when the gesture began (a drag moves
// the panel); HoverMove stands for a move with no button held.
void send(QWidget& w, QEvent::Type type, QPointF local, QPointF origin,
          Qt::MouseButton button = Qt::LeftButton) {
  const bool held = type != QEvent::MouseButtonRelease && type != QEvent::HoverMove;
  if (type == QEvent::HoverMove) type = QEvent::MouseMove;
  QMouseEvent event(type, local, local + origin, type == QEvent::MouseMove ? Qt::NoButton : button,
                    held ? button : Qt::NoButton, Qt::NoModifier);
  QApplication::sendEvent(&w, &event);
}

QPointF origin(Desktop& d) {
  return {d.delegate->surface().origin().x, d.delegate->surface().origin().y};
}

// The tray tooltip's lines above the active quote.
const std::string tooltipHead =
    "岚舟 · 模拟源\n左键显示/隐藏灵球 · 右键管理和设置\nCtrl+Alt+Space 显示/隐藏 · Ctrl+Alt+M 遮蔽";

std::string hint(Desktop& d) {
  return d.delegate->windowModel().hint().value_or("");
}

std::string section(Desktop& d) {
  auto* view = d.inWindow<SettingsView>(AuxWindow::settings);
  return view ? std::string(sectionTitle(view->currentSection())) : "";
}

// The orb's state, where its centre stands and the settings' section, if they are open.
std::string state(Desktop& d) {
  const OrbWindowModel& w = d.delegate->windowModel();
  return std::string(w.expanded() ? "spread " : "") + (w.radialOpen() ? "ring " : "") +
         (w.dockEdge() ? "docked " : "") + (w.dragging() ? "dragging " : "") + "at " +
         std::to_string(int(d.delegate->surface().origin().x) + 230) + "," +
         std::to_string(int(d.delegate->surface().origin().y) + 230) +
         (section(d).empty() ? "" : " " + section(d));
}

// A right click on the core: it opens the ring menu, or closes it when it is open.
void rightClickCore(Desktop& d) {
  QTest::mouseClick(d.window(), Qt::RightButton, {}, d.at({230, 230}));
}

// Docks the orb on the screen's left edge, its centre at the height y.
void dockLeft(Desktop& d, int y = 400) {
  d.moveCanvas(-225, y - 230);
  d.delegate->motion().settle(std::nullopt);
}

// A click spreads the satellites once the double-click interval has passed, a double click only
// opens the detail, a press that moves more than 3 points drags the orb.
TEST(OrbGestures, TheDelegateActsOnEachGesture) {
  const QPointF c(230, 230), far = c + QPointF(40, 10);
  // Press, release, double click, move with the button held, and without it.
  constexpr auto P = QEvent::MouseButtonPress, R = QEvent::MouseButtonRelease,
                 D = QEvent::MouseButtonDblClick, M = QEvent::MouseMove, H = QEvent::HoverMove;
  const std::pair<std::vector<std::pair<QEvent::Type, QPointF>>, std::string> cases[] = {
      {{{P, c}, {R, c}}, "spread at 640,400"},
      {{{P, c}, {R, c}, {D, c}, {R, c}}, "at 640,400 圆形详情"},
      {{{P, c}, {M, c + QPointF(3, 1)}, {M, far}, {R, far}}, "at 680,410"},
      // The release went elsewhere: the next move without the button ends the drag there.
      {{{P, c}, {M, far}, {H, far + QPointF(20, 0)}, {H, far + QPointF(90, 0)}}, "at 700,410"},
      {{{P, c}, {H, c + QPointF(1, 0)}, {R, c}}, "at 640,400"},
      {{{P, c}, {M, far}}, "dragging at 680,410"},
      {{{M, c + QPointF(50, 0)}}, "at 640,400"},
  };
  for (const auto& [events, expected] : cases) {
    Desktop d;
    const QPointF start = origin(d);
    for (const auto& [type, p] : events) send(d.content(), type, p, start);
    d.h.scheduler.advance(QGuiApplication::styleHints()->mouseDoubleClickInterval() / 1000.0 -
                          0.01);
    EXPECT_FALSE(d.delegate->windowModel().expanded()) << "within the interval: " << expected;
    d.h.scheduler.advance(0.02);
    EXPECT_EQ(state(d), expected) << "after " << events.size() << " events";
  }
  // Through the window: the core spreads the satellites; the third (NVDA), 3 below its dot,
  // selects and starts no drag.
  Desktop d;
  QTest::mouseClick(d.window(), Qt::LeftButton, {}, d.at({230, 230}));
  d.h.scheduler.advance(1);
  ASSERT_EQ(state(d), "spread at 640,400");
  const Point nvda = satelliteCenter(2, 5, 96, true);
  QTest::mouseClick(d.window(), Qt::LeftButton, {}, d.at({nvda.x, nvda.y + 3}));
  EXPECT_EQ(d.model->activeID(), "NVDA");
  EXPECT_EQ(state(d), "spread at 640,400");
  // A press on the empty canvas (where the desktop ignores input shapes) folds them, drags nothing.
  QTest::mousePress(d.window(), Qt::LeftButton, {}, d.at({20, 20}));
  QTest::mouseMove(d.window(), d.at({120, 20}));
  QTest::mouseRelease(d.window(), Qt::LeftButton, {}, d.at({120, 20}));
  d.h.scheduler.advance(1);
  EXPECT_EQ(state(d), "at 640,400");
}

// Where input shapes are ignored the window is the orb without its glow; spread, or held down
// when unmanaged (wlroots), so that a quick drag stays on it, it is the canvas.
TEST(OrbGestures, WhereInputShapesAreIgnoredTheWindowIsTheOrbItself) {
  const QRect bare(168, 159, 125, 126), canvas(0, 0, 460, 460);
  for (const bool managed : {true, false}) {
    Desktop d({.windowKind = {managed, false}});
    EXPECT_EQ(d.delegate->panel().frame(), bare);
    QTest::mousePress(d.window(), Qt::LeftButton, {}, d.at({230, 230}));
    EXPECT_EQ(d.delegate->panel().frame(), managed ? bare : canvas) << managed;
    QTest::mouseRelease(d.window(), Qt::LeftButton, {}, d.at({230, 230}));
    EXPECT_EQ(d.delegate->panel().frame(), bare) << managed;
    d.h.scheduler.advance(1);
    EXPECT_EQ(d.delegate->panel().frame(), canvas) << "spread, managed " << managed;
    // A managed window is put on every desktop after each show.
    d.delegate->toggleOrb();
    d.delegate->toggleOrb();
    EXPECT_EQ(d.windows.shownManaged, managed ? 2 : 0) << managed;
  }
}

// A quick drag let go in the open glides on in its direction with motion on, and stays where it
// was released with reduced motion; the release repeats the pointer's last place.
TEST(OrbGestures, AThrownOrbGlidesOnUnlessMotionIsReduced) {
  for (const bool reduced : {false, true}) {
    Desktop d({.reduceMotion = reduced});
    const QPointF start = origin(d), c(230, 230);
    send(d.content(), QEvent::MouseButtonPress, c, start);
    for (int step = 1; step <= 5; ++step) {
      d.h.clock.advance(0.024);
      d.mouse = {640.0 + 30 * step, 400};
      send(d.content(), QEvent::MouseMove, c + QPointF(30 * step, 0), start);
    }
    send(d.content(), QEvent::MouseButtonRelease, c + QPointF(150, 0), start);
    ASSERT_EQ(origin(d) + c, QPointF(790, 400)) << "reduced " << reduced;
    if (!reduced) {
      EXPECT_TRUE(QTest::qWaitFor([&] { return origin(d).x() + 230 > 850; }, 20000))
          << "stopped at " << origin(d).x() + 230;
      EXPECT_EQ(origin(d).y() + 230, 400);
    } else {
      d.h.scheduler.advance(1);
      QCoreApplication::processEvents();
      EXPECT_EQ(origin(d) + c, QPointF(790, 400));
    }
  }
}

// A release docks within the reach of a screen edge, which grows with the orb (the exact reach is
// DockGeometry's); a drag that starts docked leaves the edge. Motion reduced: no throw.
TEST(OrbGestures, AReleaseDocksWithinReachAndADragFromTheEdgeUndocks) {
  const auto drag = [](Desktop& d, QPointF from, QPointF to) {
    const QPointF start = origin(d);
    send(d.content(), QEvent::MouseButtonPress, from, start);
    send(d.content(), QEvent::MouseMove, from + (to - from) / 2, start);
    EXPECT_FALSE(d.delegate->windowModel().dockEdge().has_value()) << "mid-drag the orb is whole";
    send(d.content(), QEvent::MouseButtonRelease, to, start);
  };
  const struct {
    double size, fromEdge;
    const char* after;
  } releases[] = {
      {96, 59, "at 59,400"}, {132, 75, "docked at 0,400"},  // beyond a small orb's reach
  };
  for (const auto& r : releases) {
    Desktop d;
    d.model->setOrbSize(r.size);
    d.h.scheduler.runDue();
    const QPointF c(230, 230);
    drag(d, c, c - QPointF(640 - r.fromEdge, 0));
    EXPECT_EQ(state(d), r.after) << r.size << " " << r.fromEdge;
    if (!d.delegate->windowModel().dockEdge()) continue;
    // From the edge to the middle of the screen: no longer docked.
    drag(d, c + QPointF(10, 0), c + QPointF(650, 0));
    EXPECT_EQ(state(d), "at 640,400") << r.size;
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

// What a command changes, each read so that doing nothing, or the wrong thing, shows.
std::string openWindows(Desktop& d) {
  auto& w = d.delegate->windows();
  return std::string(w.window(AuxWindow::settings) ? "settings " : "") +
         (w.window(AuxWindow::alert) ? "alert " : "") +
         (w.window(AuxWindow::guide) ? "guide " : "") + section(d);
}
std::string refreshing(Desktop& d) {
  return hint(d) + std::to_string(d.model->hasPendingRefresh());
}
const auto masking = [](Desktop& d) { return std::to_string(d.model->masked()) + hint(d); };
const auto quits = [](Desktop& d) { return std::to_string(d.quits); };
const auto sizeShown = [](Desktop& d) { return std::to_string(int(d.model->orbSize())); };

struct Command {
  const char* name;  // the ring button's accessible name, the tray item's text, the key's sequence
  std::function<void(Desktop&)> before;
  std::function<std::string(Desktop&)> observe;
  std::string expected;
};

// Each command on a fresh desktop through `act`; none leaves the ring open.
void expectCommands(std::initializer_list<Command> commands,
                    const std::function<void(Desktop&, const QString&)>& act) {
  for (const Command& k : commands) {
    Desktop d;
    if (k.before) k.before(d);
    act(d, QString::fromUtf8(k.name));
    EXPECT_EQ(k.observe(d), k.expected) << k.name;
    EXPECT_FALSE(d.delegate->windowModel().radialOpen()) << k.name;
  }
}

// Each ring button, found by the name a screen reader reads, clicked where it is drawn.
TEST(Commands, EachRingButtonDoesWhatItSays) {
  expectCommands({{"刷新", {}, refreshing, "正在刷新模拟源1"},
                  {"预警", {}, openWindows, "alert "},
                  {"外观", {}, openWindows, "settings 外观"},
                  {"遮蔽", {}, masking, "1行情数字已遮蔽"},
                  {"退出", {}, quits, "1"}},
                 [](Desktop& d, const QString& name) {
                   rightClickCore(d);
                   ASSERT_TRUE(d.delegate->windowModel().radialOpen());
                   QAbstractButton* button = d.ringButton(name);
                   ASSERT_TRUE(button) << name.toStdString();
                   QTest::mouseClick(d.window(), Qt::LeftButton, {},
                                     button->mapTo(&d.delegate->panel(), button->rect().center()));
                 });
}

// Each item of the tray menu as the menu is built when it opens.
TEST(Commands, EachTrayItemDoesWhatItSays) {
  const auto shown = [](Desktop& d) { return std::to_string(d.delegate->panel().isVisible()); };
  expectCommands(
      {{"隐藏灵球", {}, shown, "0"},
       {"设置…", {}, openWindows, "settings 外观"},
       {"价格预警…", {}, openWindows, "alert "},
       {"屏幕共享遮蔽", {}, masking, "1行情数字已遮蔽"},
       {"鼠标穿透（仅托盘菜单可恢复）",
        {},
        [](Desktop& d) { return std::to_string(d.delegate->surface().passesPointerThrough()); },
        "1"},
       {"72 pt", {}, sizeShown, "72"},
       {"离线", {}, [](Desktop& d) { return std::string(rawValue(d.model->phase())); }, "offline"},
       {"使用引导", {}, openWindows, "guide "},
       {"重新居中 / 解除贴边", [](Desktop& d) { dockLeft(d); }, state, "at 640,400"},
       {"退出潮汐栏", {}, quits, "1"}},
      [](Desktop& d, const QString& name) {
        QMenu& menu = d.delegate->statusItem().menu();
        emit menu.aboutToShow();
        QAction* item = trayItem(menu, name);
        ASSERT_TRUE(item) << name.toStdString();
        EXPECT_EQ(item->shortcut(), QKeySequence()) << "the orb's keys do nothing in the menu";
        item->trigger();
      });
}

// Each key the orb takes.
TEST(Commands, EachKeyDoesWhatItSays) {
  const auto spread = [](Desktop& d) { d.delegate->toggleBloom(); };
  const auto docked = [](Desktop& d) {
    dockLeft(d);
    d.h.store.setData(OrbMotion::positionKey, "");
  };
  const auto active = [](Desktop& d) { return d.model->activeID(); };
  expectCommands({{"1", {}, sizeShown, "72"},
                  {"2", [](Desktop& d) { d.model->setOrbSize(132); }, sizeShown, "96"},
                  {"3", {}, sizeShown, "132"},
                  {"Left", {}, active, "00700"},
                  {"Right", {}, active, "00700"},  // the same way
                  {"M", {}, masking, "1行情数字已遮蔽"},
                  {"R", {}, refreshing, "正在刷新模拟源1"},
                  {"Space", {}, state, "spread at 640,400"},
                  {"Return", spread, state, "at 640,400"},
                  {"Esc", spread, state, "at 640,400"},
                  {"Esc", rightClickCore, state, "at 640,400"},
                  // Undocked, and the place it leaves is kept.
                  {"Esc", docked,
                   [](Desktop& d) {
                     return state(d) + " " +
                            d.h.store.data(OrbMotion::positionKey).value_or("none");
                   },
                   R"(at 64,400 {"x":64.0,"y":400.0,"edge":""})"},
                  {"A", spread, state, "spread at 640,400"}},
                 [](Desktop& d, const QString& name) {
                   QTest::keyClick(&d.delegate->panel(), QKeySequence(name)[0].key());
                 });
}

TEST(OrbRing, APressAnywhereElseClosesIt) {
  // The window system tells of a press without its place: where the pointer is a moment later
  // decides. The panel stands at (410, 170).
  const auto globalPress = [](Point at) {
    return [at](Desktop& d) {
      d.windows.pressed(900001);
      d.mouse = at;
      d.h.scheduler.advance(0.1);
    };
  };
  // The alert editor, beside the orb, is opened before the ring: opening it closes the ring.
  const auto inEditor = [](Qt::MouseButton button) {
    return [button](Desktop& d) {
      QTest::mouseClick(d.delegate->windows().window(AuxWindow::alert), button, {}, QPoint(5, 5));
    };
  };
  const struct {
    const char* what;
    std::function<void(Desktop&)> press;
    bool staysOpen;
  } cases[] = {
      {"on the desktop", globalPress({100, 100}), false},
      {"in the panel's transparent corner", globalPress({420, 180}), false},
      {"on the core", globalPress({640, 400}), true},
      {"on the ring button 刷新", globalPress(ringButtonCenter(0, 96) + Vector{410, 170}), true},
      // Reported after the pointer left for the desktop: the orb's own event judged it already.
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
      {"in our alert editor", inEditor(Qt::LeftButton), false},
      {"a right click in our alert editor", inEditor(Qt::RightButton), false},
      {"a second right click on the core", rightClickCore, false},
  };
  for (const auto& k : cases) {
    Desktop d;
    if (std::string(k.what).ends_with("alert editor")) {
      d.delegate->windows().open(AuxWindow::alert);
      QTest::qWait(1);  // its activation, which would close the ring, comes first
    }
    rightClickCore(d);
    ASSERT_TRUE(d.delegate->windowModel().radialOpen()) << k.what;
    k.press(d);
    EXPECT_EQ(d.delegate->windowModel().radialOpen(), k.staysOpen) << k.what;
  }
}

// Another window taking the focus closes the ring, except where the orb's window keeps none
// (wlroots): there it loses the focus as the click that opened the ring ends.
TEST(OrbRing, FocusTakenElsewhereClosesItWhereTheWindowKeepsFocus) {
  for (const bool kept : {true, false}) {
    Desktop d({.windowKind = {false, true, kept}});
    rightClickCore(d);
    ASSERT_TRUE(d.delegate->windowModel().radialOpen());
    d.delegate->windows().open(AuxWindow::alert);
    QTest::qWait(1);
    EXPECT_EQ(d.delegate->windowModel().radialOpen(), !kept) << kept;
  }
}

// The pointer away from the orb for more than 0.4 s: on X11 the panel lets it through; under
// Wayland never, or the X server would not hear of it coming back. Back on the orb, it takes it.
TEST(OrbPointer, AwayFromTheOrbThePanelLetsItThroughExceptUnderWayland) {
  for (const bool wayland : {false, true}) {
    Desktop d({.wayland = wayland});
    d.mouse = {100, 100};
    for (int look = 0; look < 3; ++look) {
      d.delegate->surface().updatePointerMode();
      d.h.clock.advance(0.3);
    }
    EXPECT_EQ(d.delegate->surface().passesPointerThrough(), !wayland) << wayland;
    d.mouse = {640, 400};
    d.delegate->surface().updatePointerMode();
    EXPECT_FALSE(d.delegate->surface().passesPointerThrough()) << wayland;
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

// Another program held Ctrl+Alt+M at launch: the tooltip and the settings say so until it lets go.
TEST(HotKeys, AKeyAnotherProgramHoldsIsNamedAndTakenOnceFree) {
  Desktop d({.keysTakenElsewhere = {2}});
  d.delegate->openSettings(SettingsSection::appearance);
  SettingsView* settings = d.inWindow<SettingsView>(AuxWindow::settings);
  ASSERT_TRUE(settings);
  EXPECT_EQ(d.delegate->statusItem().toolTip(),
            tooltipHead + "\nCtrl+Alt+M 已被其他程序占用\n贵州茅台  CNY1,468.80 · 交易中");
  EXPECT_EQ(settings->shortcutNotice(), u"Ctrl+Alt+M 已被其他程序占用，释放后会自动启用。"_s);
  d.h.scheduler.advance(3);  // a retry while it is still held elsewhere
  d.keys.takenElsewhere.clear();
  d.h.scheduler.advance(3);
  EXPECT_TRUE(d.keys.holds(2));
  EXPECT_EQ(d.delegate->statusItem().toolTip(), tooltipHead + "\n贵州茅台  CNY1,468.80 · 交易中");
  EXPECT_EQ(settings->shortcutNotice(), QString());
}

// Under Wayland the keys are the desktop's: the settings name the commands to bind and, on GNOME,
// add them with a button; the tooltip says whether they are bound.
TEST(HotKeys, AWaylandSessionTellsHowToBindThemAndAddsGnomesOnRequest) {
  bool bound = false;
  int adds = 0;
  SettingsView::DesktopKeys keys{true, u"/opt/tm/tidemark"_s, [&] { return bound; },
                                 [&] {
                                   ++adds;
                                   bound = true;
                                   return std::optional<std::string>{};
                                 }};
  Desktop d({.wayland = true,
             .keys = keys,
             .desktopKeysBound = [&] { return bound; },
             .windowKind = {true, false}});
  EXPECT_EQ(
      d.delegate->statusItem().toolTip(),
      "岚舟 · 模拟源\n左键显示/隐藏灵球 · 右键管理和设置\n全局快捷键未绑定 · 见设置 › 外观 › 快捷键"
      "\n贵州茅台  CNY1,468.80 · 交易中");
  EXPECT_TRUE(d.delegate->panel().isManaged());
  d.delegate->openSettings(SettingsSection::appearance);
  QWidget* settings = d.delegate->windows().window(AuxWindow::settings);
  const auto labels = [&] {
    QStringList texts;
    for (auto* label : settings->findChildren<QLabel*>()) texts << label->text();
    return texts;
  };
  const QStringList texts = labels();
  EXPECT_TRUE(texts.contains(u"/opt/tm/tidemark --toggle-orb  显示或隐藏灵球"_s));
  EXPECT_TRUE(texts.contains(u"/opt/tm/tidemark --toggle-mask  遮蔽所有行情数字"_s));
  EXPECT_FALSE(texts.contains(u"Ctrl+Alt+Space  显示或隐藏灵球"_s));
  QPushButton* add = nullptr;
  for (auto* button : settings->findChildren<QPushButton*>())
    if (button->text() == u"添加 GNOME 快捷键"_s) add = button;
  ASSERT_TRUE(add);
  EXPECT_EQ(adds, 0) << "nothing is written before the button is pressed";
  add->click();
  EXPECT_EQ(adds, 1);
  EXPECT_EQ(d.delegate->statusItem().toolTip(), tooltipHead + "\n贵州茅台  CNY1,468.80 · 交易中");
  EXPECT_TRUE(labels().contains(u"GNOME 快捷键已添加：Ctrl+Alt+Space、Ctrl+Alt+M"_s));
}

// A window or dialog of ours over the orb hides it and lets the pointer through until it moves
// off or closes. Without a compositor the orb's window shows only what is drawn, without the glow.
TEST(Delegate, TheOrbStandsAsideForAWindowOfOursAndFollowsTheCompositor) {
  for (const bool composited : {true, false}) {
    Desktop d;
    OrbPanel& panel = d.delegate->panel();
    ASSERT_TRUE(d.windows.compositingChanged);
    d.windows.compositingChanged(composited);
    EXPECT_EQ(d.windows.visible.has_value(), !composited) << composited;
    if (!composited) {  // the sphere shows, the glow beside it does not
      EXPECT_TRUE(d.windows.visible->contains(d.at({230, 230})));
      EXPECT_FALSE(d.windows.visible->contains(d.at({230 + 48 + 4, 230})));
    }
    const QImage drawn = panel.content().orbView().grab().toImage();
    EXPECT_EQ(drawn.pixel(230 + 48 + 4, 230) != drawn.pixel(20, 230), composited) << composited;
    d.delegate->openSettings(SettingsSection::appearance);  // 960 wide: over the orb, centred
    QWidget* settings = d.delegate->windows().window(AuxWindow::settings);
    QApplication::setActiveWindow(settings);
    ASSERT_TRUE(QTest::qWaitFor([&] { return d.delegate->surface().yielding(); }, 2000))
        << composited;
    EXPECT_FALSE(panel.isVisible()) << "no ghost over the controls, composited " << composited;
    EXPECT_EQ(panel.windowOpacity(), 1.0);
    EXPECT_TRUE(d.windows.region.isEmpty()) << "the pointer goes through";
    EXPECT_TRUE(d.delegate->surface().shown()) << "standing aside is not hiding";
    QApplication::setActiveWindow(nullptr);  // the focus elsewhere: still over the orb
    QApplication::processEvents();
    EXPECT_TRUE(d.delegate->surface().yielding());
    settings->move(900, 0);  // off the orb
    EXPECT_FALSE(d.delegate->surface().yielding());
    EXPECT_TRUE(panel.isVisible());
    QWidget dialog(settings, Qt::Dialog);
    dialog.setGeometry(560, 320, 160, 160);
    dialog.show();
    EXPECT_TRUE(d.delegate->surface().yielding());
    dialog.hide();
    EXPECT_FALSE(d.delegate->surface().yielding());
    settings->move(100, 100);
    EXPECT_TRUE(d.delegate->surface().yielding());
    d.delegate->windows().close(AuxWindow::settings);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !d.delegate->surface().yielding(); }, 2000));
    EXPECT_TRUE(panel.isVisible());
    EXPECT_TRUE(d.windows.region.contains(d.at({230, 230})));
  }
}

TEST(Delegate, PointerPassesThroughWhereNothingTakesIt) {
  Desktop d;
  const Point core{640, 400}, corner{420, 180};
  // The orb takes the pointer in every state but the forced one, so that its arrival is heard.
  const QRegion taking = d.windows.region;
  ASSERT_TRUE(taking.contains(d.at({230, 230})));
  // Where the pointer is, how long after the last look, dragging, passing through, looked for.
  const std::tuple<const char*, Point, double, bool, bool, bool> steps[] = {
      {"over the core: the window reports its leaving", core, 0, false, false, false},
      {"just left", corner, 0, false, false, true},
      {"0.4 s later: still the grace time", corner, 0.4, false, false, true},
      {"past it: the window reports its coming back", corner, 0.01, false, true, false},
      {"back on the core", core, 0, false, false, false},
      {"dragged, the pointer ahead of the orb", corner, 0, true, false, true},
      {"still dragging, past the grace time", corner, 1, true, false, true},
  };
  d.delegate->panel().onPointerEntered();  // shown under the pointer
  for (const auto& [what, at, wait, dragging, through, looking] : steps) {
    d.delegate->windowModel().setDragging(dragging);
    const bool entered = at.x == core.x && d.mouse.x != core.x;
    const bool left = at.x != core.x && d.mouse.x == core.x;
    d.mouse = at;
    d.h.clock.advance(wait);
    if (entered) d.delegate->panel().onPointerEntered();
    if (left) d.delegate->panel().onPointerLeft();
    if (d.delegate->surface().watchesPointer()) d.delegate->surface().updatePointerMode();
    EXPECT_EQ(d.delegate->surface().passesPointerThrough(), through) << what;
    EXPECT_EQ(d.delegate->surface().watchesPointer(), looking) << what;
    EXPECT_EQ(d.windows.region, taking) << what;
  }
  d.delegate->windowModel().setDragging(false);
  d.delegate->toggleObserve();  // forced: nothing takes a click, whatever the pointer does
  d.delegate->panel().onPointerEntered();
  d.delegate->surface().updatePointerMode();
  EXPECT_TRUE(d.windows.region.isEmpty());
  EXPECT_FALSE(d.delegate->surface().watchesPointer());
  d.delegate->toggleObserve();
  EXPECT_TRUE(d.delegate->surface().watchesPointer());
  d.delegate->surface().updatePointerMode();
  EXPECT_EQ(d.windows.region, taking);
  // The disc that takes it follows the orb's size: its radius is the orb's and 5 more (one
  // security, so that no satellite lies beside it).
  d.model->setWatchlist({"600519"});
  for (const auto& [size, within] : {std::pair{96.0, 52.0}, {132.0, 70.0}, {72.0, 40.0}}) {
    d.model->setOrbSize(size);
    QApplication::processEvents();
    for (const QPointF step : {QPointF(1, 0), QPointF(0, 1), QPointF(-1, 0)}) {
      EXPECT_TRUE(d.windows.region.contains(d.at(QPointF(230, 230) + step * within))) << size;
      EXPECT_FALSE(d.windows.region.contains(d.at(QPointF(230, 230) + step * (within + 2))))
          << size;
    }
  }
}

// The window opened under `key`, once active.
QWidget* openActive(Desktop& d, AuxWindow key) {
  d.delegate->windows().open(key);
  QWidget* window = d.delegate->windows().window(key);
  if (window) window->activateWindow();
  return window && QTest::qWaitForWindowActive(window) ? window : nullptr;
}

// Esc closes each window of ours from wherever the focus is in it.
TEST(Delegate, EscClosesEachWindow) {
  for (AuxWindow key : {AuxWindow::settings, AuxWindow::alert, AuxWindow::guide}) {
    Desktop d;
    QWidget* window = openActive(d, key);
    ASSERT_TRUE(window) << test::nameOf(key);
    QWidget* focus = QApplication::focusWidget() ? QApplication::focusWidget() : window;
    QTest::keyClick(focus, Qt::Key_A);
    EXPECT_TRUE(window->isVisible()) << test::nameOf(key) << ": only Esc closes it";
    QTest::keyClick(focus, Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible()) << test::nameOf(key);
  }
}

// Every control the Tab key reaches looks different with the focus, in a dark and a light
// theme, in each window.
TEST(Delegate, KeyboardFocusShowsOnEveryControl) {
  for (const AppTheme theme : {AppTheme::dark, AppTheme::light}) {
    for (AuxWindow key : {AuxWindow::settings, AuxWindow::alert, AuxWindow::guide}) {
      Desktop d;
      d.model->setTheme(theme);
      QWidget* window = openActive(d, key);
      ASSERT_TRUE(window) << test::nameOf(key);
      int checked = 0;
      for (QWidget* control : window->findChildren<QWidget*>()) {
        if (!control->isVisible() || !(control->focusPolicy() & Qt::TabFocus) ||
            qobject_cast<QScrollArea*>(control) || control->inherits("QAbstractItemView"))
          continue;
        window->setFocus();
        QApplication::processEvents();
        const QImage before = control->grab().toImage();
        control->setFocus(Qt::TabFocusReason);
        QApplication::processEvents();
        EXPECT_NE(control->grab().toImage(), before)
            << test::nameOf(key) << " " << rawValue(theme) << ": "
            << control->metaObject()->className() << " " << control->accessibleName().toStdString();
        ++checked;
      }
      EXPECT_GE(checked, 1) << test::nameOf(key);
    }
  }
}

// On a tiling desktop the resizable settings window is a dialog, which it floats at its own size;
// the fixed-size windows float there anyway.
TEST(Delegate, OnATilingDesktopTheSettingsWindowIsADialog) {
  for (const bool tiling : {false, true}) {
    Desktop d({.windowKind = {.tiling = tiling}});
    d.delegate->openSettings(SettingsSection::appearance);
    d.delegate->windows().open(AuxWindow::alert);
    EXPECT_EQ(d.delegate->windows().window(AuxWindow::settings)->windowType(),
              tiling ? Qt::Dialog : Qt::Window);
    EXPECT_EQ(d.delegate->windows().window(AuxWindow::alert)->windowType(), Qt::Window);
  }
}

TEST(Delegate, WindowsAreReusedOpenBesideTheOrbAndTheAlertEditorStartsAfresh) {
  Desktop d;
  d.delegate->openSettings(SettingsSection::appearance);
  QWidget* settings = d.delegate->windows().window(AuxWindow::settings);
  settings->move(5, 5);  // where the user put it
  d.delegate->openSettings(SettingsSection::detail);
  EXPECT_EQ(d.delegate->windows().window(AuxWindow::settings), settings);
  EXPECT_EQ(section(d), "圆形详情");
  EXPECT_EQ(settings->pos(), QPoint(5, 5));
  EXPECT_EQ(settings->minimumSize(), QSize(840, 560));
  EXPECT_EQ(settings->windowTitle(), u"设置 · 使用偏好"_s);
  // No section scrolls the window as a whole; the side bar's last button is in view in each.
  for (SettingsSection section : SettingsView::sections()) {
    const std::string name(sectionTitle(section));
    d.delegate->openSettings(section);
    QApplication::processEvents();
    EXPECT_EQ(settings->findChild<QScrollArea*>()->verticalScrollBar()->maximum(), 0) << name;
    for (auto* button : settings->findChildren<QPushButton*>()) {
      if (button->text() != u"恢复默认设置"_s) continue;
      const QRect at(button->mapTo(settings, QPoint()), button->size());
      EXPECT_TRUE(settings->rect().contains(at)) << name;
    }
  }
  // The settings window's own buttons open the other windows.
  const auto click = [&](const QString& text) {
    for (auto* button : settings->findChildren<QPushButton*>())
      if (button->text() == text) return button->click();
    ADD_FAILURE() << text.toStdString();
  };
  click(u"编辑预警…"_s);
  QPointer<QWidget> first = d.delegate->windows().window(AuxWindow::alert);
  ASSERT_TRUE(first);
  // Right of the orb at 640 + 0.8 × 96 + 12, centred on it with the frame's 36 included.
  EXPECT_EQ(QRect(first->pos(), first->size()), QRect(729, 112, 420, 540));
  click(u"编辑预警…"_s);
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(first.isNull());
  EXPECT_NE(d.delegate->windows().window(AuxWindow::alert), nullptr);
  EXPECT_EQ(d.delegate->windows().window(AuxWindow::guide), nullptr);
  click(u"重新查看引导"_s);
  EXPECT_NE(d.delegate->windows().window(AuxWindow::guide), nullptr);
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
      // Right of 1920 + 0.8 × 132 + 12, rounded; the guide at 400 − 636 / 2.
      {R"({"x":1920.0,"y":400.0,"edge":"left"})", {2038, 12, 960, 740}, {2038, 82}, "1772,170"},
      // Left of 1920 − 0.8 × 132 − 12: the settings 968 wide with their frame, the guide 488.
      {R"({"x":1920.0,"y":400.0,"edge":"right"})", {834, 12, 960, 740}, {1314, 82}, "1608,170"},
  };
  for (const auto& row : rows) {
    Desktop d({.screens = {{{0, 0, 1920, 1080}, {0, 0, 1920, 1080}},
                           {{1920, 0, 1920, 1080}, {1920, 0, 1920, 1080}}},
               .position = row.position});
    const auto where = [&] {
      return std::to_string(int(d.delegate->surface().origin().x)) + "," +
             std::to_string(int(d.delegate->surface().origin().y)) +
             (d.delegate->windowModel().dockEdge() ? " docked" : "");
    };
    EXPECT_EQ(where(), "1690,170 docked") << "restored " << row.position;
    d.delegate->motion().screensChanged();
    EXPECT_EQ(where(), "1690,170 docked") << "screens changed " << row.position;
    d.model->setOrbSize(132);
    d.h.scheduler.runDue();
    EXPECT_EQ(where(), "1690,170 docked") << "size changed " << row.position;
    EXPECT_EQ(d.h.store.data(OrbMotion::positionKey), row.position);
    // Windows open on the orb's screen, beside the orb's visible half.
    d.delegate->openSettings(SettingsSection::appearance);
    QWidget* settings = d.delegate->windows().window(AuxWindow::settings);
    EXPECT_EQ(QRect(settings->pos(), settings->size()), row.settings) << row.position;
    d.delegate->windows().open(AuxWindow::guide);
    EXPECT_EQ(d.delegate->windows().window(AuxWindow::guide)->pos(), row.guide) << row.position;
    // Esc leaves the edge onto the orb's own screen.
    QTest::keyClick(&d.delegate->panel(), Qt::Key_Escape);
    EXPECT_EQ(where(), row.undocked) << row.position;
  }
}

// On a 640 × 480 screen every window fits, title bar and borders included, and what does not fit
// in it scrolls into view: the guide's last button too.
TEST(Delegate, WindowsFitASmallScreenAndScroll) {
  Desktop d({.screens = {{{0, 0, 640, 480}, {0, 0, 640, 480}}}});
  for (AuxWindow key : {AuxWindow::guide, AuxWindow::settings, AuxWindow::alert}) {
    d.delegate->windows().open(key);
    QWidget* w = d.delegate->windows().window(key);
    const QRect frame(w->pos(), w->size() + QSize(8, 36));
    EXPECT_TRUE(QRect(0, 0, 640, 480).contains(frame)) << test::nameOf(key);
  }
  QWidget* guide = d.delegate->windows().window(AuxWindow::guide);
  auto* scroll = guide->findChild<QScrollArea*>();
  QAbstractButton* start = nullptr;
  for (auto* b : guide->findChildren<QAbstractButton*>())
    if (b->text() == u"开始探索"_s) start = b;
  ASSERT_TRUE(scroll && start);
  QApplication::processEvents();
  scroll->ensureWidgetVisible(start);
  const QRect shown(start->mapTo(scroll->viewport(), QPoint()), start->size());
  EXPECT_TRUE(scroll->viewport()->rect().contains(shown));
}

TEST(Delegate, ASizeChangeLaysADockedOrbOutAgain) {
  Desktop d;
  dockLeft(d, 20);
  ASSERT_EQ(d.delegate->surface().origin(), (Point{-230, 49 - 230}));  // kept whole along the edge
  d.model->setOrbSize(132);
  d.h.scheduler.runDue();
  EXPECT_EQ(d.delegate->surface().origin(), (Point{-230, 67 - 230}));
  EXPECT_EQ(d.h.store.data(OrbMotion::positionKey), R"({"x":0.0,"y":67.0,"edge":"left"})");
}

TEST(Delegate, TheDesktopsCalmReachesTheOrbAndTheDetail) {
  Desktop d({.reduceMotion = false, .systemCalm = true});
  // Opened on another section: the detail, built when it is first shown, is told too.
  d.delegate->openSettings(SettingsSection::appearance);
  EXPECT_EQ(d.inWindow<DetailOrb>(AuxWindow::settings), nullptr);
  d.delegate->openSettings(SettingsSection::detail);
  DetailOrb* detail = d.inWindow<DetailOrb>(AuxWindow::settings);
  ASSERT_TRUE(detail && d.motion);
  EXPECT_FALSE(d.content().orbView().motionAllowed());
  EXPECT_TRUE(detail->systemReduceMotion());
  d.motion->changed(false);
  EXPECT_TRUE(d.content().orbView().motionAllowed());
  EXPECT_FALSE(detail->systemReduceMotion());
}

// A hint lasts its full time from when it was shown; a setting that cannot be kept is told once
// per streak of failed saves.
TEST(Delegate, HintsLastTheirFullTimeAndAFailedSaveIsToldOncePerStreak) {
  Desktop d;
  d.delegate->showHint("一");
  d.h.scheduler.advance(2.0);
  d.delegate->showHint("二");
  d.h.scheduler.advance(2.0);
  EXPECT_EQ(hint(d), "二");
  d.h.scheduler.advance(0.4);
  EXPECT_EQ(hint(d), "");
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
  const struct {
    MenuDensity density;
    bool masked;
    std::string title, tooltipTail;
    bool ring;
  } cases[] = {
      {MenuDensity::iconOnly, false, "", "\n贵州茅台  CNY1,468.80 · 交易中", true},
      {MenuDensity::percent, false, " +1.16%", "\n贵州茅台  CNY1,468.80 · 交易中", false},
      {MenuDensity::full, false, " 600519  1,468.80  +1.16%", "\n贵州茅台  CNY1,468.80 · 交易中",
       true},
      {MenuDensity::full, true, "", "\n行情已遮蔽", false},
  };
  for (const auto& k : cases) {
    Desktop d;
    d.model->setMenuDensity(k.density);
    d.model->setMasked(k.masked);
    d.h.scheduler.runDue();
    EXPECT_EQ(d.delegate->statusItem().title(), k.title) << int(k.density) << k.masked;
    EXPECT_EQ(d.delegate->statusItem().toolTip(), tooltipHead + k.tooltipTail);
    EXPECT_EQ(d.windows.excluded, k.masked);
    // The arc of the mini orb passes the top of its ring at (11.5, 3); the bare dot has no ring.
    const QImage icon = d.delegate->statusItem().image();
    EXPECT_EQ(icon.pixelColor(11, 3).alpha() > 200, k.ring) << int(k.density) << k.masked;
    EXPECT_EQ(icon.pixelColor(11, 11), QColor(0x6E, 0xF2, 0xD8)) << "the dark theme's dot";
  }
  // The market's state follows the clock at the next beat, without a new quote.
  Desktop d;
  for (const auto& [instant, tail] : {std::pair{"2026-11-25T03:45:00Z", " · 午间休市"},
                                      {"2026-11-28T04:00:00Z", " · 休市"},
                                      {"2026-11-30T00:00:00Z", " · 盘前"}}) {
    d.h.clock.set(*parseISO8601(instant));
    d.model->heartbeat();
    d.h.scheduler.runDue();
    EXPECT_EQ(d.delegate->statusItem().toolTip(), tooltipHead + "\n贵州茅台  CNY1,468.80" + tail)
        << instant;
  }
  // Within one run the icon follows what it shows: masked the ring goes, a theme recolours it.
  const QColor dark = d.delegate->statusItem().image().pixelColor(11, 11);
  d.model->setTheme(AppTheme::light);
  d.h.scheduler.runDue();
  EXPECT_NE(d.delegate->statusItem().image().pixelColor(11, 11), dark);
  d.model->setMasked(true);
  d.h.scheduler.runDue();
  EXPECT_LT(d.delegate->statusItem().image().pixelColor(11, 3).alpha(), 200);
}

}  // namespace
}  // namespace tidemark
