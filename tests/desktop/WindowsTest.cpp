// The settings, detail and watchlist windows: their rules, their controls and masking.

#include <gtest/gtest.h>

#include <QDir>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

#include "core/FileIO.h"
#include "desktop/DesktopFixture.h"
#include "support/ModelHarness.h"
#include "support/QtPrint.h"
#include "views/ChartGeometry.h"
#include "views/DetailView.h"
#include "views/OrbView.h"
#include "views/SettingsView.h"
#include "views/WatchlistView.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;

using Strings = std::vector<std::string>;
const Date now{800000000};

QuoteSnapshot quoteAt(std::string id, std::string market, std::string name, double price,
                      double prevClose, double age = 0) {
  return {std::move(id), std::move(market), std::move(name), price, prevClose, price, price, 1,
          now + (-age),  "tencent"};
}

TEST(WatchlistRules, StatusChangeAndSearchOfOneEntry) {
  const QuoteSnapshot fund = quoteAt("161725", "A股基金", "白酒基金", 1, 1, 30 * 3600);
  struct Case {
    std::optional<QuoteSnapshot> quote;
    const char* status;
    const char* category;  // the one change filter besides 全部 that matches, if any
  } cases[] = {
      {quoteAt("161725", "A股基金", "f", 1, 1, 129600), "正常", "平盘"},
      {quoteAt("161725", "A股基金", "f", 1, 1, 129601), "已过期", "平盘"},
      {quoteAt("600519", "A股", "a", 100.0002, 100, 300), "正常", "上涨"},
      {quoteAt("600519", "A股", "a", 99.9998, 100, 301), "已过期", "下跌"},
      {quoteAt("600519", "A股", "a", 100.00005, 100), "正常", "平盘"},
      {std::nullopt, "暂无行情", nullptr},
  };
  // The grace while the source is asked every five minutes.
  EXPECT_EQ(label(quoteStatus(&*cases[3].quote, now, 15)), "正常");
  const QuoteSnapshot late = quoteAt("600519", "A股", "a", 100, 100, 316);
  EXPECT_EQ(label(quoteStatus(&late, now, 15)), "已过期");
  for (const auto& c : cases) {
    const QuoteSnapshot* q = c.quote ? &*c.quote : nullptr;
    EXPECT_EQ(label(quoteStatus(q, now)), c.status);
    // The pickers' change options after 全部, in their order.
    for (size_t i = 1; i < watchlistChanges().size(); ++i)
      EXPECT_EQ(matchesChange(ChangeFilter(i), q),
                c.category && c.category == watchlistChanges()[i])
          << c.status << " " << watchlistChanges()[i];
  }
  const std::pair<const char*, bool> searches[] = {
      {"  \n ", true}, {" 白酒 ", true}, {"1617", true}, {"a股基", true}, {"茅台", false}};
  for (const auto& [text, matches] : searches)
    EXPECT_EQ(matchesSearch(text, fund.id, fund.market, &fund), matches) << text;
  EXPECT_FALSE(matchesSearch("白酒", "161725", "A股基金", nullptr));
}

// The sorts are stable: ties keep the watchlist's order, also past 16 entries, where std::sort
// is only stable by accident.
TEST(WatchlistRules, FiltersThenStableSorts) {
  std::vector<QuoteSnapshot> quotes{
      quoteAt("A1", "美股", "ETF10", 11, 10),  // +10 %
      quoteAt("A2", "美股", "ETF9", 11, 10),   // +10 %
      quoteAt("A3", "美股", "ETF100", 9, 10),  // -10 %
      quoteAt("00700", "港股", "腾讯", 10, 10, 600),
  };
  const Strings watchlist{"A1", "ETF50", "A2", "A3", "00700"};
  const auto order = [&](WatchlistFilters f, const Strings& symbols) {
    Strings ids;
    for (const WatchlistEntry& e : visibleEntries(symbols, quotes, f, now)) ids.push_back(e.symbol);
    return ids;
  };
  // A filter as the pickers set it: each picker's option by its text.
  const auto picked = [](std::vector<const char*> options) {
    WatchlistFilters f;
    const std::vector<std::string>* lists[] = {&watchlistMarkets(), &watchlistStatuses(),
                                               &watchlistChanges(), &watchlistSortOrders()};
    for (size_t p = 0; p < options.size(); ++p)
      choose(f, p,
             size_t(std::find(lists[p]->begin(), lists[p]->end(), options[p]) - lists[p]->begin()));
    return f;
  };
  const auto sorted = [&](const char* s) { return picked({"全部", "全部", "全部", s}); };
  const std::pair<WatchlistFilters, Strings> cases[] = {
      {{}, watchlist},
      {sorted("名称"), {"A2", "A1", "ETF50", "A3", "00700"}},
      {sorted("涨幅从高到低"), {"A1", "A2", "00700", "A3", "ETF50"}},
      {sorted("涨幅从低到高"), {"A3", "00700", "A1", "A2", "ETF50"}},
      {picked({"美股"}), {"A1", "ETF50", "A2", "A3"}},  // no quote: by its symbol
      {picked({"全部", "已过期"}), {"00700"}},
      {picked({"全部", "暂无行情"}), {"ETF50"}},
      {picked({"全部", "全部", "上涨"}), {"A1", "A2"}},
      {{std::nullopt, std::nullopt, ChangeFilter::all, SortOrder::watchlist, " etf1 "},
       {"A1", "A3"}},
  };
  for (const auto& [filters, expected] : cases)
    EXPECT_EQ(order(filters, watchlist), expected) << int(filters.sortOrder);
  Strings ties;
  for (int i = 100; i > 60; --i) {
    ties.push_back("T" + std::to_string(i));
    quotes.push_back(quoteAt(ties.back(), "美股", "同名", 11, 10));
  }
  for (const char* sort : {"名称", "涨幅从高到低", "涨幅从低到高"})
    EXPECT_EQ(order(sorted(sort), ties), ties) << sort;
}

TEST(Charts, PolarGeometryAndAxisLabels) {
  const auto small = polarChartGeometry({1, 2, 3, 4}, 240, 240);
  EXPECT_EQ(small.ringRadii, (std::array<double, 3>{44, 66, 88}));
  EXPECT_EQ(polarChartGeometry({}, 480, 300).ringRadii, (std::array<double, 3>{88, 132, 176}));
  const auto near = [](Point a, Point b) { return std::hypot(a.x - b.x, a.y - b.y) < 1e-9; };
  EXPECT_TRUE(near(small.ticks[0].inner, {120, 28}));  // a quarter mark, from 92
  EXPECT_TRUE(near(small.ticks[6].outer, {220, 120}));
  const Point expected[] = {
      {120, 74}, {120 + 46 + 44.0 / 3, 120}, {120, 120 + 46 + 88.0 / 3}, {30, 120}};
  ASSERT_EQ(small.points.size(), 4u);
  for (size_t i = 0; i < 4; ++i) EXPECT_TRUE(near(small.points[i], expected[i])) << i;
  EXPECT_TRUE(polarChartGeometry({7}, 240, 240).points.empty());
  for (Point p : polarChartGeometry({5, 5, 5}, 480, 480).points)
    EXPECT_NEAR(std::hypot(p.x - 240, p.y - 240), 92, 1e-9);

  const std::pair<const char*, std::array<std::string_view, 3>> axes[] = {
      {"A股", {"09:30", "11:30 / 13:00", "15:00"}},
      {"A股指数", {"09:30", "11:30 / 13:00", "15:00"}},  // funds and indices by their exchange
      {"港股", {"09:30", "12:00 / 13:00", "16:00"}},
      {"港股基金", {"09:30", "12:00 / 13:00", "16:00"}},
      {"美股", {"09:30", "12:45", "16:00 ET"}},
  };
  for (const auto& [market, labels] : axes) EXPECT_EQ(marketTimes(market), labels) << market;
}

// Queued refreshes, then the showing and deleting of widgets they caused, as the event loop would.
void settle() {
  for (int i = 0; i < 3; ++i) {
    QApplication::sendPostedEvents();
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
}

// A move of the pointer delivered straight to the widget: the test cursor may already stand there.
void hover(QWidget& widget, QPointF at) {
  QMouseEvent move(QEvent::MouseMove, at, widget.mapToGlobal(at), Qt::NoButton, Qt::NoButton,
                   Qt::NoModifier);
  QApplication::sendEvent(&widget, &move);
}

struct Windows : ::testing::Test {
  test::ModelHarness h;
  std::unique_ptr<AppModel> model = h.make();
  QString chosen;
  bool confirm = false;
  bool autostart = false;
  std::optional<std::string> autostartFailure;

  std::unique_ptr<SettingsView> settings(SettingsSection section = SettingsSection::appearance) {
    SettingsView::Actions a;
    a.confirmReset = [this] { return confirm; };
    a.chooseFile = [this](bool) { return chosen; };
    a.autostartEnabled = [this] { return autostart; };
    a.setAutostart = [this](bool on) {
      if (!autostartFailure) autostart = on;
      return autostartFailure;
    };
    return std::make_unique<SettingsView>(*model, h.clock, std::move(a), section);
  }
  std::unique_ptr<DetailView> shownDetail(std::function<void()> onClose = {},
                                          std::function<void()> onAlert = {}) {
    auto detail = std::make_unique<DetailView>(*model, std::move(onClose), std::move(onAlert));
    detail->resize(980, 680);
    detail->show();
    return detail;
  }
  template <class W>
  static W* named(QWidget& root, const QString& text) {
    for (W* w : root.findChildren<W*>())
      if (w->text() == text || w->accessibleName() == text) return w;
    ADD_FAILURE() << text.toStdString();
    return nullptr;
  }
};

TEST_F(Windows, EachSettingsSectionShowsItsPageAndEachSourceSaysWhatItIs) {
  auto view = settings(SettingsSection::detail);
  const std::pair<SettingsSection, const char*> headings[] = {
      {SettingsSection::appearance, "外观"},
      {SettingsSection::detail, "圆形详情 · 螺旋分时"},
      {SettingsSection::watchlist, "自选管理 · 本地保存"},
      {SettingsSection::alerts, "价格提醒 · 本地保存"},
      {SettingsSection::source, "数据源"},
      {SettingsSection::alertsAndPrivacy, "预警与隐私"}};
  for (const auto& [section, heading] : headings) {
    view->showSection(section);
    QStringList shown;
    for (const QLabel* label : view->findChildren<QLabel*>())
      if (label->isVisibleTo(view.get())) shown << label->text();
    EXPECT_TRUE(shown.contains(QString::fromUtf8(heading))) << sectionTitle(section);
  }
  // Each data source says in a line what it is; the demonstration says it is not the market.
  for (const auto& [mode, line] :
       {std::pair{SourceMode::mock,
                  "演示用的模拟价格，会自己跳动，不是真实行情。\n当前来源：模拟源"},
        {SourceMode::staticJSON,
         "读取一份固定的行情快照文件，价格不会变化。\n当前来源：静态 JSON"}}) {
    model->setSourceMode(mode);
    QTest::qWait(1);
    EXPECT_TRUE(named<QLabel>(*view, QString::fromUtf8(line))) << line;
  }
}

// Every control changes its own preference and no other, as a restart reads them; a pill or
// swatch clicked is the one marked.
TEST_F(Windows, EachSettingsControlChangesItsOwnPreferenceAndNoOther) {
  auto view = settings(SettingsSection::appearance);
  // The pages are built as they are first shown: the masking switch and the intervals too.
  for (SettingsSection section : {SettingsSection::source, SettingsSection::alertsAndPrivacy})
    view->showSection(section);
  const auto kept = [&] {
    const auto m = h.make();
    return std::string(rawValue(m->theme())) + " " + std::to_string(int(m->orbSize())) +
           (m->orbShowsName() ? " name" : " code") + (m->reduceMotion() ? " calm" : "") +
           (m->autoRotate() ? " rotating" : "") + (m->masked() ? " masked" : "") + " every " +
           QString::number(m->refreshInterval()).toStdString() + " tray " +
           std::to_string(int(m->menuDensity())) + " " +
           std::string(rawValue(m->quoteStyle().colors)) + " " +
           std::string(rawValue(m->quoteStyle().precision));
  };
  const std::pair<const char*, std::string> clicks[] = {
      {"极光", "aurora 96 code rotating every 2.6 tray 0 redRises two"},
      {"大 132", "aurora 132 code rotating every 2.6 tray 0 redRises two"},
      {"中 96", "aurora 96 code rotating every 2.6 tray 0 redRises two"},
      {"名称", "aurora 96 name rotating every 2.6 tray 0 redRises two"},
      {"减少动态效果", "aurora 96 name calm rotating every 2.6 tray 0 redRises two"},
      {"自动轮播自选标的", "aurora 96 name calm every 2.6 tray 0 redRises two"},
      {"遮蔽所有行情数字", "aurora 96 name calm masked every 2.6 tray 0 redRises two"},
      {"5 秒", "aurora 96 name calm masked every 5 tray 0 redRises two"},
      {"2.6 秒", "aurora 96 name calm masked every 2.6 tray 0 redRises two"},
      // Switched off again, and the tray's examples once the figures show.
      {"遮蔽所有行情数字", "aurora 96 name calm every 2.6 tray 0 redRises two"},
      {"减少动态效果", "aurora 96 name every 2.6 tray 0 redRises two"},
      {"600519  1,468.80  +1.16%", "aurora 96 name every 2.6 tray 2 redRises two"},
      {"+1.16%", "aurora 96 name every 2.6 tray 1 redRises two"},
      {"绿涨红跌", "aurora 96 name every 2.6 tray 1 greenRises two"},
      {"自动", "aurora 96 name every 2.6 tray 1 greenRises automatic"},
  };
  for (const auto& [control, expected] : clicks) {
    QAbstractButton* button = named<QAbstractButton>(*view, QString::fromUtf8(control));
    ASSERT_TRUE(button);
    button->click();
    QTest::qWait(1);
    EXPECT_EQ(kept(), expected) << control;
    if (auto* pill = dynamic_cast<ProductPill*>(button)) {
      EXPECT_TRUE(pill->isSelected()) << control;
    } else if (!dynamic_cast<QCheckBox*>(button)) {
      EXPECT_TRUE(button->isChecked()) << control;
    }
  }
  // The tray examples follow the model: nothing to show while masked.
  model->setMasked(true);
  QTest::qWait(1);
  EXPECT_TRUE(named<QPushButton>(*view, u"仅图标"_s));
}

TEST_F(Windows, TheLoginSwitchShowsTheEntryAlsoAfterARefusal) {
  auto view = settings(SettingsSection::appearance);
  auto* login = named<QCheckBox>(*view, u"登录时启动"_s);
  login->click();
  EXPECT_TRUE(autostart);
  autostartFailure = "无法删除自启动项 /x";
  login->click();
  EXPECT_TRUE(login->isChecked());
  EXPECT_FALSE(named<QLabel>(*view, u"无法删除自启动项 /x"_s)->isHidden());
  autostartFailure.reset();
  login->click();
  EXPECT_FALSE(autostart);
}

TEST_F(Windows, ResettingTheSettingsAsksFirstAndKeepsTheWatchlist) {
  auto view = settings(SettingsSection::appearance);
  model->setTheme(AppTheme::aurora);
  auto* reset = named<QPushButton>(*view, u"恢复默认设置"_s);
  reset->click();  // declined
  EXPECT_EQ(model->theme(), AppTheme::aurora);
  confirm = true;
  reset->click();
  EXPECT_EQ(model->theme(), AppTheme::dark);
  EXPECT_EQ(model->watchlist().size(), 5u);
}

TEST_F(Windows, TheSourceIsChosenFromTheListAndRefreshedAtOnce) {
  auto view = settings(SettingsSection::source);
  QComboBox* sources = nullptr;
  for (auto* box : view->findChildren<QComboBox*>())
    if (box->findText(u"静态 JSON"_s) >= 0) sources = box;
  ASSERT_TRUE(sources);
  emit sources->activated(sources->findText(u"静态 JSON"_s));
  EXPECT_EQ(model->sourceMode(), SourceMode::staticJSON);
  model->setSourceMode(SourceMode::mock);
  EXPECT_FALSE(model->hasPendingRefresh());
  named<QPushButton>(*view, u"立即刷新"_s)->click();
  EXPECT_TRUE(model->hasPendingRefresh());
}

TEST_F(Windows, ImportAndExportReportInWords) {
  auto view = settings(SettingsSection::source);
  const auto path = h.folder.path() / "list.json";
  // The dialogs start in the home folder, then where the last file was chosen.
  EXPECT_EQ(view->fileDialogStart(true), QDir::homePath() + u"/tidemark-watchlist.json"_s);
  EXPECT_EQ(view->fileDialogStart(false), QDir::homePath());
  chosen = QString();
  view->importWatchlist();  // cancelled
  EXPECT_EQ(view->transferMessage(), QString());
  chosen = QString::fromStdString(path.string());
  named<QPushButton>(*view, u"导入自选…"_s)->click();
  EXPECT_EQ(view->transferMessage(), u"导入失败：无法读取 "_s + chosen);
  named<QPushButton>(*view, u"导出自选…"_s)->click();
  EXPECT_EQ(view->transferMessage(), u"已导出到 "_s + chosen);
  EXPECT_EQ(view->fileDialogStart(false), QString::fromStdString(h.folder.path().string()));
  model->remove("NVDA");
  view->importWatchlist();
  EXPECT_EQ(view->transferMessage(), u"已导入 5 个标的"_s);
  ASSERT_FALSE(writeFileAtomically(
      path, R"({"symbols":["NVDA"],"holdings":[{"symbolID":"NVDA","shares":1,"cost":0},{}],)"
            R"("alerts":[{"id":"a","symbolID":"NVDA","kind":"priceBelow","threshold":100,)"
            R"("repeat":"once","enabled":true,"triggeredAt":null},{"id":"a"}]})"));
  view->importWatchlist();
  EXPECT_EQ(view->transferMessage(),
            u"已导入 1 个标的、1 项持仓（跳过 1 项无效持仓）、1 条提醒（跳过 1 条无效提醒）"_s);
  ASSERT_FALSE(writeFileAtomically(path, "{"));
  view->importWatchlist();
  EXPECT_EQ(view->transferMessage(), u"导入失败：文件不是有效的 JSON"_s);
  chosen = u"/proc/no/such/folder/list.json"_s;
  view->exportWatchlist();
  EXPECT_EQ(view->transferMessage(), u"导出失败：无法写入 "_s + chosen);
  // What is not a regular file is never replaced, a device least of all.
  chosen = u"/dev/null"_s;
  view->exportWatchlist();
  EXPECT_EQ(view->transferMessage(), u"导出失败：无法写入 /dev/null：不是普通文件"_s);
}

// Five minutes and ten seconds after a load from a live source: current while no market is
// awake (the next load is on its way), out of date in trading hours.
TEST_F(Windows, WatchlistRowsStayCurrentBetweenQuietRefreshes) {
  for (const auto& [instant, stale] :
       {std::pair{"2026-11-28T04:00:00Z", false}, {"2026-11-25T02:00:00Z", true}}) {
    test::ModelHarness home;
    home.clock.set(*parseISO8601(instant));
    std::vector<QuoteSnapshot> quotes;
    for (const std::string& symbol : AppModel::defaultWatchlist())
      quotes.push_back(test::quote(symbol, 100));
    home.source.answers[SourceMode::tencent] = {quotes, std::nullopt};
    home.source.stampWith = &home.clock;
    auto m = home.make();
    m->setRefreshInterval(0);
    m->setSourceMode(SourceMode::tencent);
    home.scheduler.advance(310);
    m->heartbeat();
    WatchlistView view(*m, home.clock);
    view.choose("status", "已过期");
    view.show();
    QTest::qWait(1);
    EXPECT_EQ(view.rows().size(), stale ? 5u : 0u) << instant;
    // The data-source section says why the refresh slowed down.
    SettingsView settings(*m, home.clock, {}, SettingsSection::source);
    const QString quiet = u"\n自选的市场都未开市，每 5 分钟刷新一次。"_s;
    EXPECT_TRUE(named<QLabel>(
        settings,
        u"腾讯的实时行情为先，失败时换 stock-sdk 和新浪；港股请用自动容错或 stock-sdk。\n当前来源：腾讯行情"_s +
            (stale ? QString() : quiet)))
        << instant;
  }
}

// No open known: no 今开. The market's state follows the clock: Friday's lunch break, the weekend.
TEST_F(Windows, TheDetailShowsTheQuoteAndTheMarketsState) {
  auto detail = shownDetail();
  QTest::qWait(20);
  EXPECT_EQ(detail->orb().changeDisplay(), u"+1.16%"_s);
  EXPECT_EQ(detail->orb().chartLabel(), u"贵州茅台极坐标分时图"_s);
  EXPECT_EQ(detail->chart().captionText(), u"示意走势 · 1 日"_s);
  EXPECT_EQ(detail->figureTexts(),
            (QStringList{"贵州茅台  600519 · A股", "1,452.00", "1,475.00", "1,448.10", "3.2万",
                         "11-20 02:00:00", "模拟源", "交易中"}));
  model->setAutoRotate(false);
  for (const auto& [instant, state] :
       {std::pair{"2026-11-20T03:30:00Z", u"午间休市"_s}, {"2026-11-21T02:00:00Z", u"休市"_s}}) {
    h.clock.set(*parseISO8601(instant));
    model->heartbeat();
    QTest::qWait(1);
    EXPECT_EQ(detail->figureTexts().at(7), state) << instant;
  }
}

// Live sources are asked for the day's series; a real one replaces the sketch, and the pointer
// reads its points.
TEST_F(Windows, TheDetailTakesTheDaysSeriesFromALiveSource) {
  model->setAutoRotate(false);
  auto detail = shownDetail();
  QTest::qWait(20);
  model->setSourceMode(SourceMode::tencent);
  QTest::qWait(1);
  ASSERT_EQ(h.source.intradayRequests.size(), 1u);
  EXPECT_EQ(h.source.intradayRequests[0].first, "600519");
  h.source.intradayRequests[0].second({std::vector<double>{1460, 1470.5, 1468.8}});
  QTest::qWait(1);
  EXPECT_EQ(detail->chart().captionText(), u"实时分时 · 1 日"_s);
  EXPECT_EQ(detail->figureTexts()[1], u"1,460.00"_s);
  LinearQuoteChart& chart = detail->chart();
  const auto series = model->intraday().prices(*model->activeQuote());
  hover(chart, QPointF(chart.plotRect().right() - 1, chart.plotRect().center().y()));
  ASSERT_EQ(chart.hoveredIndex(), series.size() - 1);
  EXPECT_EQ(chart.readoutText(), QString::fromStdString(priceText(series.back())));
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(&chart, &leave);
  EXPECT_EQ(chart.hoveredIndex(), std::nullopt);
}

// With motion the orb shrinks away before the window is told to close, all the way; without, at
// once.
TEST_F(Windows, TheDetailAsksForAnAlertAndClosesOnceItsOrbHasShrunk) {
  int closed = 0, alerted = 0;
  double presenceAtClose = -1;
  DetailView* shown = nullptr;
  auto detail = shownDetail(
      [&] {
        ++closed;
        presenceAtClose = shown->orb().presence();
      },
      [&] { ++alerted; });
  shown = detail.get();
  named<QPushButton>(*detail, u"设置价格预警"_s)->click();
  EXPECT_EQ(alerted, 1);
  // Grown in first, so that the shrink has a way to go.
  ASSERT_TRUE(QTest::qWaitFor([&] { return detail->orb().presence() == 1; }, 3000))
      << detail->orb().presence();
  named<QPushButton>(*detail, u"关闭"_s)->click();
  EXPECT_TRUE(detail->orb().closing());
  EXPECT_EQ(closed, 0);
  EXPECT_TRUE(QTest::qWaitFor([&] { return closed == 1; }, 5000));
  EXPECT_EQ(presenceAtClose, 0) << "told to close before the shrink ended";
  model->setReduceMotion(true);
  detail->orb().animateClose();
  EXPECT_EQ(closed, 2);
}

// At the section's default width (792) and its minimum (672) the orb keeps its 480 frame, its
// figures beside it or below it, and its glow fades out before an edge.
TEST_F(Windows, TheDetailOrbKeepsItsFrameAndItsGlowFadesInside) {
  model->setReduceMotion(true);  // the orb stands in place at once
  const std::pair<int, bool> widths[] = {{792, true}, {672, false}};
  for (const auto& [width, beside] : widths) {
    QWidget host;
    host.setAutoFillBackground(true);
    QPalette backdrop = host.palette();
    backdrop.setColor(QPalette::Window, QColor(0x0B, 0x0D, 0x1C));
    host.setPalette(backdrop);
    auto* detail = new DetailView(*model, {}, {}, &host);
    host.resize(width, 1100);
    detail->resize(width, 1100);
    host.show();
    settle();
    EXPECT_EQ(detail->orb().size(), QSize(480, 480)) << width;
    EXPECT_EQ(detail->figuresBeside(), beside) << width;
    const QImage image = host.grab().toImage();
    const QPoint c = detail->orb().geometry().center();
    const int rim = 480 * 43 / 100;  // the sphere fills 0.86 of the frame
    EXPECT_NE(image.pixelColor(c.x() - rim - 20, c.y()), QColor(0x0B, 0x0D, 0x1C)) << "glow";
    for (QPoint edge : {QPoint(0, c.y()), QPoint(c.x(), 0)})
      EXPECT_EQ(image.pixelColor(edge), QColor(0x0B, 0x0D, 0x1C)) << width << " faded at the edge";
    // No straight edge where the orb's frame ends: the glow runs on across it.
    const QRect frame = detail->orb().geometry();
    for (auto [in, out] :
         {std::pair{QPoint(frame.left() + 2, c.y()), QPoint(frame.left() - 3, c.y())},
          {QPoint(c.x(), frame.bottom() - 2), QPoint(c.x(), frame.bottom() + 3)}}) {
      const QColor a = image.pixelColor(in), b = image.pixelColor(out);
      EXPECT_LT(std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) +
                    std::abs(a.blue() - b.blue()),
                30)
          << width << " at the frame's edge";
    }
  }
}

TEST_F(Windows, MaskingHidesEveryFigure) {
  model->setAlert("600519", 1500, true);
  // Open before masking starts: a shown list follows the switch.
  WatchlistView list(*model, h.clock);
  list.show();
  settle();
  model->setMasked(true);
  settle();
  auto detail = shownDetail();
  hover(detail->chart(), detail->chart().plotRect().center());
  EXPECT_EQ(detail->figureTexts().mid(1, 5), (QStringList{"••••", "••••", "••••", "••••", "••••"}));
  EXPECT_EQ(detail->orb().priceDisplay(), u"••••••"_s);
  EXPECT_EQ(detail->orb().changeDisplay(), u"••••%"_s);
  EXPECT_EQ(detail->chart().captionText(), u"••••"_s);
  EXPECT_EQ(detail->chart().readoutText(), u"••••"_s);
  EXPECT_EQ(detail->chart().volumeReadout(), u"成交量 ••••"_s);

  auto view = settings(SettingsSection::alertsAndPrivacy);
  QStringList texts = list.shownTexts();
  for (const QLabel* label : view->findChildren<QLabel*>()) texts << label->text();
  EXPECT_TRUE(texts.contains(u"600519  贵州茅台\n价格达到或高于 目标价格已遮蔽"_s));
  const QRegularExpression figure(u"[0-9][,.][0-9]|%"_s);
  for (const QString& text : texts) EXPECT_FALSE(text.contains(figure)) << text.toStdString();
  EXPECT_EQ(list.shownTexts().count(u"••••"_s), 10);
}

TEST_F(Windows, PricesAndColoursFollowTheChoicesWhereverTheyAreShown) {
  model->add("510300");  // an ETF: three decimals when automatic
  model->select("510300");
  WatchlistView list(*model, h.clock);
  list.show();
  auto detail = shownDetail();
  OrbWindowModel window;
  OrbView orb(*model, window, h.clock, {});
  settle();
  const auto rowInk = [&] {
    for (const QLabel* label : list.findChildren<QLabel*>())
      if (label->text() == QString::fromStdString(percentText(model->activeQuote()->changePct())))
        return label->palette().color(QPalette::WindowText).name();
    return QString();
  };
  const struct {
    QuoteStyle style;
    const char *price, *prevClose, *ink;
  } cases[] = {
      {{RiseColors::redRises, PricePrecision::two}, "4.04", "4.01", "#ff453a"},
      {{RiseColors::greenRises, PricePrecision::automatic}, "4.035", "4.012", "#32d74b"},
  };
  for (const auto& c : cases) {
    model->setQuoteStyle(c.style);
    settle();
    EXPECT_TRUE(list.shownTexts().contains(QString::fromUtf8(c.price))) << c.price;
    EXPECT_EQ(rowInk(), QString::fromUtf8(c.ink)) << c.price;
    EXPECT_EQ(detail->orb().priceDisplay(), QString::fromUtf8(c.price));
    EXPECT_EQ(detail->figureTexts().at(1), QString::fromUtf8(c.prevClose));
    EXPECT_EQ(orb.coreTexts().price, QString::fromUtf8(c.price));
  }
}

// The figures only some feeds give, each one known; bullets while masked.
TEST_F(Windows, TheDetailShowsTheFullerFiguresItKnows) {
  QuoteSnapshot quote{"688981", "A股", "中芯国际", 97.3,          96,
                      98,       95.5,  1000,       h.clock.now(), "tencent"};
  quote.open = 96.5;
  quote.amount = 4.724e9;
  quote.turnoverPct = 1.26;
  quote.pe = -3.5;
  quote.limitUp = 115.2;
  quote.limitDown = 76.8;
  quote.high52w = 120.5;
  quote.quoteTime = *parseISO8601("2026-11-25T06:59:58Z");
  model->add(quote);
  model->select("688981");
  auto detail = shownDetail();
  settle();
  const QStringList fuller{"成交额", "47.24亿", "换手率",   "1.26%",         "市盈率",
                           "-3.50",  "涨停",    "115.20",   "跌停",          "76.80",
                           "52周高", "120.50",  "行情时间", "11-25 14:59:58"};
  EXPECT_EQ(detail->figureTexts().at(1), u"96.50"_s);
  EXPECT_EQ(detail->figureTexts().mid(detail->figureTexts().size() - 14), fuller);
  model->setMasked(true);
  settle();
  const QStringList masked = detail->figureTexts();
  for (qsizetype i = masked.size() - 13; i < masked.size(); i += 2)
    EXPECT_EQ(masked[i], u"••••"_s) << masked[i - 1].toStdString();
}

// Each row's buttons, found by their texts in the row of their symbol.
TEST_F(Windows, WatchlistRowButtonsActOnTheirOwnRow) {
  const struct {
    const char* symbol;
    const char* button;
    Strings watchlist;
    const char* active;
  } cases[] = {
      {"00700", "↑", {"00700", "600519", "NVDA", "03033", "000858"}, "600519"},
      {"00700", "↓", {"600519", "NVDA", "00700", "03033", "000858"}, "600519"},
      {"NVDA", "移除", {"600519", "00700", "03033", "000858"}, "600519"},
      {"03033", "设为当前标的", {"600519", "00700", "NVDA", "03033", "000858"}, "03033"},
  };
  for (const auto& k : cases) {
    auto fresh = h.make();
    fresh->setWatchlist(AppModel::defaultWatchlist());
    fresh->select("600519");
    WatchlistView view(*fresh, h.clock);
    view.show();
    QTest::qWait(1);
    QPushButton* target = nullptr;
    for (QFrame* row : view.findChildren<QFrame*>()) {
      if (!row->property("rowcard").toBool()) continue;
      bool mine = false;
      for (QLabel* label : row->findChildren<QLabel*>())
        mine = mine || label->text().startsWith(QString::fromUtf8(k.symbol) + u' ');
      if (mine) target = named<QPushButton>(*row, QString::fromUtf8(k.button));
    }
    ASSERT_TRUE(target) << k.symbol << k.button;
    target->click();
    EXPECT_EQ(fresh->watchlist(), k.watchlist) << k.symbol << k.button;
    EXPECT_EQ(fresh->activeID(), k.active) << k.symbol << k.button;
  }
}

// The watchlist window's rows, as its pickers and its search field leave them.
struct WatchlistWindow : Windows {
  WatchlistView view{*model, h.clock};
  void SetUp() override { view.show(); }
  Strings rows() {
    Strings ids;
    for (const auto& e : view.rows()) ids.push_back(e.symbol);
    return ids;
  }
  bool shows(const char* text) { return view.shownTexts().contains(QString::fromUtf8(text)); }
};

TEST_F(WatchlistWindow, HeadingsSortsAndTheEmptyStatesOfAFilter) {
  EXPECT_TRUE(shows("添加、删除和排序会自动保存，卫星环同步更新。"));
  EXPECT_TRUE(shows("我的自选 · 5"));
  view.choose("sort", "涨幅从低到高");
  EXPECT_EQ(rows(), (Strings{"000858", "03033", "600519", "00700", "NVDA"}));
  view.choose("sort", "自选顺序");
  view.choose("market", "美股基金");
  EXPECT_TRUE(shows("当前市场还没有自选股"));
  view.choose("market", "全部");
  view.setSearch("zzz");
  EXPECT_TRUE(shows("没有匹配的标的"));
  view.setSearch("五粮");
  EXPECT_EQ(rows(), (Strings{"000858"}));
}

// The source is searched on Return and by its button; a result watched already is not offered
// again, and an index is added from the results and filed under its own market.
TEST_F(WatchlistWindow, TheSourceIsSearchedAndAnIndexAddedFromItsResults) {
  view.setSearch("五粮");
  view.submitSearch();
  ASSERT_EQ(model->search().results().size(), 1u);
  settle();
  EXPECT_TRUE(shows("已在自选")) << "found again, and told it is watched";
  view.setSearch("AAPL");
  named<QPushButton>(view, u"从当前数据源搜索"_s)->click();
  settle();
  ASSERT_EQ(model->search().results().size(), 1u);
  EXPECT_EQ(model->search().results()[0].id, "AAPL");
  EXPECT_EQ(view.shownTexts().count(u"AAPL  苹果"_s), 1) << "found, and not offered a second time";
  view.setSearch("上证");
  view.submitSearch();
  settle();
  ASSERT_EQ(model->search().results().size(), 1u);
  named<QPushButton>(view, u"加入"_s)->click();
  EXPECT_EQ(model->watchlist().back(), "sh000001");
  settle();
  const auto found = view.shownTexts().count(u"sh000001  上证指数"_s);
  view.setSearch("");  // a cleared search leaves no result behind
  settle();
  EXPECT_EQ(model->search().results().size(), 0u);
  EXPECT_EQ(view.shownTexts().count(u"sh000001  上证指数"_s), found - 1);
  view.choose("market", "A股指数");
  EXPECT_EQ(rows(), (Strings{"sh000001"}));
}

// 加入 takes the first quote not yet watched, 设为当前标的 the first row not active; an empty
// list says so in the list's place, not under it, and 恢复默认自选 fills it again.
TEST_F(WatchlistWindow, AddSelectAndTheEmptyList) {
  settle();
  const int firstRow = named<QLabel>(view, u"600519  贵州茅台"_s)->mapTo(&view, QPoint()).y();
  named<QPushButton>(view, u"加入"_s)->click();
  EXPECT_EQ(model->watchlist().size(), 6u);
  QTest::qWait(1);
  named<QPushButton>(view, u"设为当前标的"_s)->click();
  EXPECT_EQ(model->activeID(), "00700");
  model->setWatchlist({});
  QTest::qWait(1);
  EXPECT_TRUE(shows("当前没有自选股"));
  EXPECT_TRUE(shows("从右侧添加，开始构建你的星系。"));
  settle();
  auto* empty = named<QLabel>(view, u"当前没有自选股"_s);
  EXPECT_LT(std::abs(empty->mapTo(&view, QPoint()).y() - firstRow), 60);
  named<QPushButton>(view, u"恢复默认自选"_s)->click();
  EXPECT_EQ(model->watchlist().size(), 5u);
}

TEST_F(Windows, ALongWatchlistShowsItsFirstRowsAndAFullOneAddsNothing) {
  for (int count : {500, 5000}) {
    std::vector<std::string> symbols;
    for (int i = 0; i < count; ++i) symbols.push_back(std::to_string(600000 + i));
    model->setWatchlist(symbols);
    WatchlistView view(*model, h.clock);
    view.show();
    settle();
    int built = 0;  // one select button a row
    for (const QPushButton* b : view.findChildren<QPushButton*>())
      built += b->toolTip() == u"设为当前标的"_s;
    EXPECT_EQ(built, 200) << count;
    const QStringList texts = view.shownTexts();
    EXPECT_TRUE(texts.contains(u"显示前 200 个，共 %1 个 · 用搜索或筛选找到其余的"_s.arg(count)));
    EXPECT_EQ(texts.contains(u"自选最多 5000 个标的"_s), count == 5000);
    int adds = 0;  // the quotes on offer, none of which a full list takes
    for (const QPushButton* b : view.findChildren<QPushButton*>())
      if (b->text() == u"加入"_s) adds += b->isEnabled() ? 1 : -1;
    EXPECT_EQ(adds > 0, count < 5000) << count << " " << adds;
    EXPECT_NE(adds, 0);
    view.setSearch(std::to_string(600000 + count - 1));
    settle();
    EXPECT_EQ(view.rows().size(), 1u);
  }
}

// Every shown text that needs more room than its widget has; labels that elide are left out.
QStringList cutTexts(QWidget& window) {
  QStringList cut;
  const auto report = [&](const QWidget* w, const QString& text, int needs, int has) {
    cut << u"%1 \"%2\" needs %3, has %4"_s
               .arg(QString::fromLatin1(w->metaObject()->className()), text)
               .arg(needs)
               .arg(has);
  };
  for (QWidget* w : window.findChildren<QWidget*>()) {
    if (!w->isVisible()) continue;
    const QFontMetrics m = w->fontMetrics();
    if (auto* label = qobject_cast<QLabel*>(w)) {
      const QString text = label->text();
      if (text.isEmpty() || label->property("elides").toBool() ||
          label->textFormat() == Qt::RichText)
        continue;
      const QRect room = label->contentsRect();
      if (!label->wordWrap() || text.size() <= 12) {
        int widest = 0;
        for (const QString& line : text.split(u'\n'))
          widest = std::max(widest, m.horizontalAdvance(line));
        if (widest > room.width()) report(label, text, widest, room.width());
      }
      if (label->wordWrap() && label->heightForWidth(label->width()) > label->height())
        report(label, text, label->heightForWidth(label->width()), label->height());
    } else if (auto* button = qobject_cast<QAbstractButton*>(w)) {
      if (!button->text().isEmpty() && button->sizeHint().width() > button->width())
        report(button, button->text(), button->sizeHint().width(), button->width());
    } else if (auto* box = qobject_cast<QComboBox*>(w)) {
      const int needs = m.horizontalAdvance(box->currentText()) + 28;
      if (needs > box->width()) report(box, box->currentText(), needs, box->width());
    } else if (auto* edit = qobject_cast<QLineEdit*>(w)) {
      const int needs = m.horizontalAdvance(edit->placeholderText()) + 16 +
                        (edit->isClearButtonEnabled() ? 20 : 0);
      if (edit->text().isEmpty() && needs > edit->width())
        report(edit, edit->placeholderText(), needs, edit->width());
    } else if (auto* area = qobject_cast<QScrollArea*>(w)) {
      if (area->widget() && area->horizontalScrollBar()->isVisible())
        report(area, u"(scrolls sideways)"_s, area->widget()->width(), area->viewport()->width());
      if (area->widget() && area->horizontalScrollBarPolicy() == Qt::ScrollBarAlwaysOff &&
          area->widget()->width() > area->viewport()->width())
        report(area, u"(content cut at the right)"_s, area->widget()->width(),
               area->viewport()->width());
    }
  }
  return cut;
}

// The windows as they open from the orb and the tray, at their default and minimum sizes, on
// every section, in every theme, masked and not.
TEST(WindowText, NothingIsCutAtTheRealSizes) {
  test::Desktop d;
  // Holdings with the longest figures a row shows, one without a quote, one no longer watched.
  ASSERT_EQ(d.model->setHolding("600519", 123456.789, 1500.5), std::nullopt);
  ASSERT_EQ(d.model->setHolding("00700", 20000, 380), std::nullopt);
  ASSERT_EQ(d.model->setHolding("NVDA", 10, 0), std::nullopt);
  d.model->remove("NVDA");
  d.delegate->openSettings(SettingsSection::appearance);
  d.delegate->windows().open(AuxWindow::guide);
  d.delegate->windows().open(AuxWindow::alert);
  QWidget* settings = d.delegate->windows().window(AuxWindow::settings);
  SettingsView* view = d.inWindow<SettingsView>(AuxWindow::settings);
  ASSERT_TRUE(view);
  // A theme recolours every open window at once, with its backdrop.
  const std::pair<AppTheme, QColor> themes[] = {
      {AppTheme::dark, 0x0B0D1C},  {AppTheme::light, 0xEEF0F8}, {AppTheme::aurora, 0x081A1A},
      {AppTheme::amber, 0x20170D}, {AppTheme::rose, 0x1E101C},  {AppTheme::ocean, 0x0A1422}};
  for (const auto& [theme, backdrop] : themes) {
    d.model->setTheme(theme);
    for (bool masked : {false, true}) {
      d.model->setMasked(masked);
      d.h.scheduler.runDue();
      const std::string when = std::string(rawValue(theme)) + (masked ? " masked" : "");
      for (AuxWindow key : {AuxWindow::guide, AuxWindow::alert, AuxWindow::settings})
        EXPECT_EQ(d.delegate->windows().window(key)->palette().color(QPalette::Window), backdrop)
            << test::nameOf(key);
      for (AuxWindow key : {AuxWindow::guide, AuxWindow::alert}) {
        settle();
        EXPECT_EQ(cutTexts(*d.delegate->windows().window(key)), QStringList())
            << test::nameOf(key) << " " << when;
      }
      for (QSize size : {QSize(960, 740), QSize(840, 560)}) {
        settings->resize(size);
        for (SettingsSection section : SettingsView::sections()) {
          view->showSection(section);
          settle();
          EXPECT_EQ(cutTexts(*settings), QStringList())
              << sectionTitle(section) << " at " << size.width() << "×" << size.height() << " "
              << when;
        }
      }
    }
  }
  // The longest index name in the detail's heading line.
  d.model->setMasked(false);
  d.model->add(QuoteSnapshot{"hkHSTECH", "港股指数", "恒生科技指数", 5812.77, 5846.19, 5870.45,
                             5790.36, 0, d.h.clock.now(), "mock"});
  d.model->select("hkHSTECH");
  for (QSize size : {QSize(960, 740), QSize(840, 560)}) {
    settings->resize(size);
    view->showSection(SettingsSection::detail);
    settle();
    EXPECT_EQ(cutTexts(*settings), QStringList()) << size.width();
  }
}

}  // namespace
}  // namespace tidemark
