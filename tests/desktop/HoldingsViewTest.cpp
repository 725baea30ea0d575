// The holdings section through the real delegate: add, refuse, edit, delete, masked; the detail's
// figures, the tooltip and the tray label with the switch on and off. Figures worked out by hand
// from the demonstration's 600519 at 1,468.80 after 1,452.00.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDateTime>
#include <QListView>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

#include "desktop/DesktopFixture.h"
#include "views/DetailView.h"
#include "views/HoldingsView.h"
#include "views/SettingsView.h"
#include "views/WatchlistView.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;

const QString noHoldings = u"还没有持仓 · 在这里录入持有数量和成本价"_s;

QPushButton* button(QWidget& root, const QString& text) {
  for (auto* b : root.findChildren<QPushButton*>())
    if (b->text() == text && b->isVisibleTo(&root)) return b;
  return nullptr;
}

void settle() {
  QTest::qWait(1);
}

// The section open in the settings window; the form's button pressed as a user would.
struct HoldingsSection : ::testing::Test {
  test::Desktop d;
  HoldingsView* view = nullptr;

  void SetUp() override {
    d.delegate->openSettings(SettingsSection::holdings);
    auto* settings = d.inWindow<SettingsView>(AuxWindow::settings);
    ASSERT_TRUE(settings);
    ASSERT_EQ(settings->currentSection(), SettingsSection::holdings);
    view = &settings->holdings();
  }
  void pick(const char* symbol) {
    view->symbol().setCurrentIndex(view->symbol().findData(QString::fromUtf8(symbol)));
  }
  // The button reads 添加持仓, or 保存持仓 while a holding is edited.
  void enter(const QString& shares, const QString& cost) {
    view->shares().setText(shares);
    view->cost().setText(cost);
    QPushButton* submit = button(*view, u"保存持仓"_s);
    (submit ? submit : button(*view, u"添加持仓"_s))->click();
    settle();
  }
  void clickRow(int row, bool twice = false) {
    QListView& list = view->list();
    const QPoint at = list.visualRect(list.model()->index(row, 0)).center();
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, at);
    if (twice) QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, at);
  }
  std::pair<QString, QString> form() { return {view->shares().text(), view->cost().text()}; }
  Holding held(const char* symbol) { return *d.model->holding(symbol); }
};

// Text that is no number reaches the model as a refused value (the model's own bounds are tested
// with the model); an add then clears the message and shows its figures, the profits in the rise
// and fall colours, swapped for green rises.
TEST_F(HoldingsSection, RefusesInWordsThenAddsWithTheFiguresInTheRiseColours) {
  EXPECT_TRUE(view->shownTexts().contains(noHoldings));
  const std::tuple<QString, QString, QString> refused[] = {
      {u"abc"_s, u"1500"_s, u"持有数量须大于 0"_s},
      {u"100"_s, u""_s, u"成本价须为不小于 0 的数字"_s},
  };
  for (const auto& [shares, cost, message] : refused) {
    enter(shares, cost);
    EXPECT_EQ(view->message(), message) << shares.toStdString() << " " << cost.toStdString();
  }
  EXPECT_TRUE(d.model->holdings().empty());
  ASSERT_EQ(view->symbol().currentData().toString(), u"600519"_s);
  enter(u"1,00"_s, u"1500.5"_s);  // typed with a separator
  EXPECT_EQ(d.model->holdings(), (std::vector<Holding>{{"600519", 100, 1500.5}}));
  EXPECT_EQ(view->message(), QString());
  const QStringList texts = view->shownTexts();
  for (const char* shown : {"CNY", "600519  贵州茅台", "100", "1,500.50", "1,468.80", "146,880.00",
                            "+1,680.00 (+1.16%)", "-3,170.00 (-2.11%)"})
    EXPECT_TRUE(texts.contains(QString::fromUtf8(shown))) << shown;
  EXPECT_FALSE(texts.contains(noHoldings));
  const auto inks = [&] {
    QStringList out;
    for (const char* text : {"+1,680.00 (+1.16%)", "-3,170.00 (-2.11%)"})
      for (const QLabel* label : view->findChildren<QLabel*>())
        if (label->text() == QString::fromUtf8(text)) out << label->styleSheet();
    return out;
  };
  EXPECT_EQ(inks(), (QStringList{u"color: #ff453a"_s, u"color: #32d74b"_s}));
  d.model->setQuoteStyle({RiseColors::greenRises, PricePrecision::two});
  settle();
  EXPECT_EQ(inks(), (QStringList{u"color: #32d74b"_s, u"color: #ff453a"_s}));
}

// 编辑, a double click and 删除 act on the row clicked, not the first; none is chosen at first,
// nor once the holdings change.
TEST_F(HoldingsSection, EditAndDeleteActOnTheChosenRow) {
  ASSERT_EQ(d.model->setHolding("600519", 100, 1500.5), std::nullopt);
  ASSERT_EQ(d.model->setHolding("00700", 2, 0), std::nullopt);
  settle();
  EXPECT_FALSE(button(*view, u"编辑"_s)->isEnabled());
  EXPECT_FALSE(button(*view, u"删除"_s)->isEnabled());
  for (const bool twice : {false, true}) {
    view->shares().clear();
    clickRow(1, twice);
    if (!twice) button(*view, u"编辑"_s)->click();
    EXPECT_EQ(view->shares().text(), u"2"_s) << twice;
  }
  clickRow(0);
  button(*view, u"编辑"_s)->click();
  EXPECT_EQ(form(), std::pair(u"100"_s, u"1500.5"_s));
  enter(u"200"_s, u"1500.5"_s);
  EXPECT_EQ(held("600519"), (Holding{"600519", 200, 1500.5}));
  EXPECT_TRUE(view->shownTexts().contains(u"+3,360.00 (+1.16%)"_s));
  clickRow(1);
  button(*view, u"删除"_s)->click();
  settle();
  EXPECT_EQ(d.model->holdings(), (std::vector<Holding>{{"600519", 200, 1500.5}}));
  clickRow(0);
  button(*view, u"删除"_s)->click();
  settle();
  EXPECT_TRUE(d.model->holdings().empty());
  EXPECT_FALSE(button(*view, u"删除"_s)->isEnabled());
  EXPECT_FALSE(button(*view, u"编辑"_s)->isEnabled());
  EXPECT_TRUE(view->shownTexts().contains(noHoldings));
}

TEST_F(HoldingsSection, TheTraySwitchTurnsTheDayProfitOnAndOff) {
  for (const bool on : {true, false}) {
    for (auto* box : view->findChildren<QAbstractButton*>())
      if (box->text() == u"托盘显示今日盈亏"_s) box->click();
    EXPECT_EQ(d.model->showsDayProfitInTray(), on);
  }
}

// Four decimals and a fraction of a unit come back in the form as stored, and are stored again
// as they were when saved untouched; a fifth decimal typed is kept though the form shows four.
// After an add the form moves on to a security not held yet.
TEST_F(HoldingsSection, TheFormKeepsTheDigitsItWasNotToldToChange) {
  pick("000858");
  enter(u"1234.56"_s, u"5.1234"_s);
  EXPECT_NE(view->symbol().currentData().toString(), u"000858"_s);
  view->edit("000858");
  EXPECT_EQ(form(), std::pair(u"1234.56"_s, u"5.1234"_s));
  view->submit();
  EXPECT_EQ(held("000858"), (Holding{"000858", 1234.56, 5.1234}));
  view->edit("000858");
  enter(u"1234.56"_s, u"5.12345"_s);
  EXPECT_EQ(held("000858").cost, 5.12345);
  view->edit("000858");
  EXPECT_EQ(view->cost().text(), u"5.1235"_s);
  enter(u"10"_s, view->cost().text());  // the cost untouched keeps its fifth decimal
  EXPECT_EQ(held("000858"), (Holding{"000858", 10, 5.12345}));
}

// Adding a held security asks; each answer does what it says, and a merge is bounded like a
// typed holding.
TEST_F(HoldingsSection, AddingAHeldSecurityAsksFirst) {
  const Holding before{"000858", 10, 5.12345};
  const struct {
    HoldingsView::Conflict answer;
    Holding after;
  } answers[] = {
      {HoldingsView::Conflict::cancel, before},
      {HoldingsView::Conflict::merge, {"000858", 40, (10 * 5.12345 + 30 * 6) / 40}},
      {HoldingsView::Conflict::replace, {"000858", 30, 6}},
  };
  for (const auto& [answer, after] : answers) {
    ASSERT_EQ(d.model->setHolding("000858", 10, 5.12345), std::nullopt);
    pick("000858");
    enter(u"30"_s, u"6"_s);
    ASSERT_TRUE(view->question().isVisibleTo(view));
    EXPECT_TRUE(view->shownTexts().contains(u"已持有 000858 ·"_s));
    EXPECT_EQ(held("000858"), before) << "asked, not yet saved";
    view->resolve(answer);
    EXPECT_EQ(held("000858"), after);
    EXPECT_FALSE(view->question().isVisibleTo(view));
  }
  pick("000858");
  enter(u"999999999999.5"_s, u"1"_s);
  view->resolve(HoldingsView::Conflict::merge);
  EXPECT_EQ(view->message(), u"持有数量不能超过 1 万亿"_s);
}

// Masked, every figure is bullets, the form too, and it saves nothing; unmasked the form's
// figures come back.
TEST_F(HoldingsSection, MaskedEveryFigureIsBulletsAndTheFormSavesNothing) {
  ASSERT_EQ(d.model->setHolding("600519", 100, 1500.5), std::nullopt);
  d.model->setMasked(true);
  settle();
  const QStringList texts = view->shownTexts();
  const QRegularExpression figure(u"[0-9][,.][0-9]|%"_s);
  for (const QString& text : texts) EXPECT_FALSE(text.contains(figure)) << text.toStdString();
  EXPECT_GE(texts.count(u"••••"_s), 9);
  view->edit("600519");
  EXPECT_EQ(form(), std::pair(u"••••"_s, u"••••"_s));
  enter(u"1"_s, u"1"_s);
  EXPECT_EQ(view->message(), u"遮蔽时不能编辑持仓"_s);
  EXPECT_EQ(held("600519"), (Holding{"600519", 100, 1500.5}));
  d.model->setMasked(false);
  settle();
  EXPECT_EQ(form(), std::pair(u"100"_s, u"1500.5"_s));
}

TEST(HoldingsFigures, DetailTooltipAndTrayLabel) {
  test::Desktop d;  // the densest tray title: code, price and percentage
  ASSERT_EQ(d.model->setHolding("600519", 100, 1500.5), std::nullopt);
  ASSERT_EQ(d.model->setHolding("00700", 2, 0), std::nullopt);  // HKD: 485.20 after 478.60
  d.h.scheduler.runDue();
  const std::string head =
      "岚舟 · 模拟源\n左键显示/隐藏灵球 · 右键管理和设置\nCtrl+Alt+Space 显示/隐藏 · Ctrl+Alt+M "
      "遮蔽\n贵州茅台  CNY1,468.80 · 交易中";
  EXPECT_EQ(d.delegate->statusItem().toolTip(), head + "\n今日盈亏 CNY +1,680.00 · HKD +13.20");
  const struct {
    bool on, masked;
    const char* title;
  } titles[] = {
      {false, false, " 600519  1,468.80  +1.16%"},
      {true, false, " 今日 CNY +1,680.00"},
      {true, true, ""},
  };
  for (const auto& t : titles) {
    d.model->setShowsDayProfitInTray(t.on);
    d.model->setMasked(t.masked);
    d.h.scheduler.runDue();
    EXPECT_EQ(d.delegate->statusItem().title(), t.title) << t.on << t.masked;
  }
  EXPECT_EQ(d.delegate->statusItem().toolTip(), head.substr(0, head.rfind('\n')) + "\n行情已遮蔽");
  d.model->setMasked(false);

  d.delegate->openSettings(SettingsSection::detail);
  auto* detail = d.inWindow<DetailView>(AuxWindow::settings);
  ASSERT_TRUE(detail);
  settle();
  EXPECT_EQ(detail->figureTexts().mid(8),
            (QStringList{"100", "1,500.50", "+1,680.00\n+1.16%", "-3,170.00\n-2.11%"}));
  // A typed cost keeps its digits past the price's two decimals.
  ASSERT_EQ(d.model->setHolding("600519", 100, 1500.1234), std::nullopt);
  settle();
  EXPECT_EQ(detail->figureTexts().at(9), u"1,500.1234"_s);
  d.model->select("NVDA");  // not held: the holding's figures go
  QTest::qWait(1);
  EXPECT_EQ(detail->figureTexts().size(), 8);

  // An index is in points: no currency in the tooltip, never a holding.
  d.model->add(QuoteSnapshot{"sh000001", "A股指数", "上证指数", 3882.78, 3870.6, 3890.12, 3862.45,
                             485327116, d.h.clock.now(), "mock"});
  d.model->select("sh000001");
  d.h.scheduler.runDue();
  QTest::qWait(1);
  EXPECT_EQ(d.delegate->statusItem().toolTip(),
            head.substr(0, head.rfind('\n')) +
                "\n上证指数  3,882.78 · 交易中\n今日盈亏 CNY +1,680.00 · HKD +13.20");
  d.delegate->openSettings(SettingsSection::holdings);
  auto* settings = d.inWindow<SettingsView>(AuxWindow::settings);
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->holdings().symbol().findData(u"sh000001"_s), -1);
  EXPECT_NE(settings->holdings().symbol().findData(u"000858"_s), -1);
}

// New York's pre-market: the extended trade beside the regular price in the detail, the tooltip
// and the watchlist row, coloured by its change; the holdings in yuan at the fetched rate.
TEST(HoldingsFigures, ExtendedHoursAndTheYuanCard) {
  test::Desktop d;
  // 2026-11-25 04:40 in New York (09:40 UTC), a Wednesday's pre-market.
  const Date preMarket{817'257'600 + 9 * 3600 + 40 * 60};
  d.h.clock.set(preMarket);
  QuoteSnapshot nvidia{"NVDA", "美股", "英伟达",  186.25,    182.40,
                       187.90, 181.75, 168420310, preMarket, "tencent"};
  d.h.source.answers[SourceMode::tencent] = {{nvidia}, {}};
  d.h.source.extendedAnswer = {{{"NVDA", 187.12, 0.47, preMarket + -13 * 60}}, std::nullopt};
  d.h.source.ratesAnswer = {{{"USD", 7.1034}, {"HKD", 0.9123}}, std::nullopt};
  d.model->setSourceMode(SourceMode::tencent);
  d.model->select("NVDA");
  ASSERT_EQ(d.model->setHolding("NVDA", 10.5, 190), std::nullopt);
  d.model->heartbeat();
  // The watchlist is open when the trade comes in.
  d.delegate->openSettings(SettingsSection::watchlist);
  auto* settings = d.inWindow<SettingsView>(AuxWindow::settings);
  ASSERT_TRUE(settings);
  QTest::qWait(1);
  EXPECT_FALSE(settings->watchlist().shownTexts().contains(u"盘前 +0.47%"_s));
  d.model->loadSource(false);
  d.h.scheduler.runDue();
  // New rows are shown on a later turn.
  EXPECT_TRUE(QTest::qWaitFor(
      [&] { return settings->watchlist().shownTexts().contains(u"盘前 +0.47%"_s); }, 1000));
  EXPECT_THAT(d.delegate->statusItem().toolTip(),
              testing::EndsWith("\n英伟达  USD186.25 · 盘前 187.12 (+0.47%)\n今日盈亏 USD +40.43"));

  d.delegate->openSettings(SettingsSection::detail);
  auto* detail = d.inWindow<DetailView>(AuxWindow::settings);
  ASSERT_TRUE(detail);
  QTest::qWait(1);
  EXPECT_EQ(detail->figureTexts().mid(0, 2),
            (QStringList{u"英伟达  NVDA · 美股"_s, u"盘前 187.12 +0.47%  04:27 美东"_s}));
  d.delegate->openSettings(SettingsSection::holdings);
  QTest::qWait(1);
  const QStringList shown = settings->holdings().shownTexts();
  const qsizetype card = shown.indexOf(u"折合人民币"_s);
  ASSERT_GE(card, 0) << shown.join(u'|').toStdString();
  // 1,955.625 × 7.1034 = 13,891.5866; 40.425 × 7.1034 = 287.15; -39.375 × 7.1034 = -279.70.
  EXPECT_EQ(shown.mid(card, 8),
            (QStringList{u"折合人民币"_s, u"今日盈亏"_s, u"+287.15 (+2.11%)"_s, u"持有盈亏"_s,
                         u"-279.70 (-1.97%)"_s, u"持仓市值"_s, u"13,891.59"_s,
                         u"汇率 USD 7.1034 · "_s +
                             QDateTime::fromSecsSinceEpoch(int64_t(preMarket.unixSeconds()))
                                 .toString(u"HH:mm"_s)}));
  // A day later the rate has lapsed and the card goes; masked, the extended price goes too.
  d.h.clock.advance(86400);
  d.h.source.ratesAnswer = {{}, "汇率请求失败"};
  d.model->loadSource(false);
  d.h.scheduler.runDue();
  QTest::qWait(1);
  EXPECT_FALSE(settings->holdings().shownTexts().contains(u"折合人民币"_s));
}

}  // namespace
}  // namespace tidemark
