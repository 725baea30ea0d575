// The alerts section through the real delegate, on the demonstration's 600519 at 1,468.80 after
// 1,452.00: refusals in words, the "fires at once" hint, the grouped rows with their states, the
// switch, delete, pause and masking; the alert editor's list of the symbol's other rules.

#include <gtest/gtest.h>

#include <QPushButton>
#include <QTest>

#include "desktop/DesktopFixture.h"
#include "views/AlertsView.h"
#include "views/DetailView.h"
#include "views/SettingsView.h"
#include "views/SmallWindows.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;

// A button by its text or, where it has none, its accessible name; ends the test when none is.
template <class W>
W& named(QWidget& root, const QString& name) {
  for (auto* w : root.findChildren<W*>())
    if ((w->text() == name || w->accessibleName() == name) && w->isVisibleTo(&root)) return *w;
  throw std::runtime_error("no control " + name.toStdString());
}

// The section open in the settings window, its form on 600519.
struct AlertsSection : ::testing::Test {
  test::Desktop d;
  AlertsView* view = nullptr;

  void SetUp() override {
    d.delegate->openSettings(SettingsSection::alerts);
    auto* settings = d.inWindow<SettingsView>(AuxWindow::settings);
    ASSERT_TRUE(settings);
    view = &settings->alerts();
    ASSERT_EQ(view->symbol().currentData().toString(), u"600519"_s);
  }
  void enter(int kind, const QString& value) {
    view->kind().setCurrentIndex(kind);
    view->value().setText(value);
    QTest::qWait(1);
  }
  void add(int kind, const QString& value, int repeat = 0) {
    enter(kind, value);
    view->repeat().setCurrentIndex(repeat);
    view->submit();
    QTest::qWait(1);
  }
  std::string shown() { return view->shownTexts().join(u'|').toStdString(); }
};

// The hint follows the form: 1,468.80 has passed 1,000 but not 2,000.
TEST_F(AlertsSection, RefusesInWordsAndHintsAtAnAlertThatFiresAtOnce) {
  EXPECT_TRUE(view->shownTexts().contains(u"还没有提醒 · 为自选设置价格和涨跌幅提醒"_s));
  const std::tuple<int, QString, QString> refused[] = {
      {0, u"abc"_s, u"请输入大于 0 的价格"_s},
      {2, u"100.5"_s, u"涨跌幅须在 0.01% 到 100% 之间"_s},
  };
  for (const auto& [kind, value, message] : refused) {
    enter(kind, value);
    view->submit();
    EXPECT_EQ(view->message(), message) << value.toStdString();
  }
  enter(0, u"1000"_s);
  EXPECT_EQ(view->hint(), u"当前价已满足条件，保存后会立即提醒"_s);
  enter(0, u"2,000"_s);
  EXPECT_EQ(view->hint(), QString());
  view->submit();
  EXPECT_EQ(view->message(), QString());
  add(0, u"2000"_s);
  EXPECT_EQ(view->message(), u"已有相同的提醒"_s);
}

// Under their symbol's heading, each rule with its repeat and state; one fired at once shows its
// time.
TEST_F(AlertsSection, RowsAreGroupedWithTheirStates) {
  add(0, u"2,000"_s);
  add(1, u"1500"_s, 1);
  ASSERT_EQ(d.model->alertBook().rules().size(), 2u);
  const QStringList shown = view->shownTexts();
  qsizetype at = 0;
  for (const char* text : {"600519  贵州茅台", "价格涨到 2,000.00", "仅一次", "待触发",
                           "价格跌到 1,500.00", "每日一次"}) {
    const qsizetype found = shown.indexOf(QString::fromUtf8(text), at);
    EXPECT_GE(found, at) << text << " in " << this->shown();
    at = std::max(at, found);
  }
  EXPECT_EQ(shown.filter(u"今日已触发 "_s).size(), 1) << this->shown();
}

TEST_F(AlertsSection, SwitchDeletePauseAndMask) {
  add(0, u"2,000"_s);
  add(1, u"1500"_s);
  named<QCheckBox>(*view, u"启用 价格涨到 2,000.00"_s).click();
  QTest::qWait(1);
  EXPECT_FALSE(d.model->alertBook().rules()[0].enabled);
  EXPECT_TRUE(view->shownTexts().contains(u"已关闭"_s));
  named<QPushButton>(*view, u"删除 价格涨到 2,000.00"_s).click();
  QTest::qWait(1);
  ASSERT_EQ(d.model->alertBook().rules().size(), 1u);
  named<QCheckBox>(*view, u"暂停全部提醒"_s).click();
  QTest::qWait(1);
  EXPECT_TRUE(d.model->alertBook().paused());
  d.model->setMasked(true);
  QTest::qWait(1);
  EXPECT_TRUE(view->shownTexts().contains(u"价格跌到 ••••"_s)) << shown();
  EXPECT_EQ(shown().find("1,500"), std::string::npos);
}

// The editor shows the chosen symbol's other rules and leads to the section; the detail counts
// the active symbol's rules that are on.
TEST(AlertsAcrossWindows, TheEditorListsTheOtherRulesAndTheDetailCountsThem) {
  test::Desktop d;
  for (const auto& [symbol, kind, threshold] :
       {std::tuple{"600519", AlertKind::changeDown, 5.0}, {"00700", AlertKind::changeUp, 3.0}})
    ASSERT_EQ(d.model->addAlert({"", symbol, kind, threshold, AlertRepeat::daily, true, {}}),
              std::nullopt);
  d.delegate->windows().open(AuxWindow::alert);
  auto* editor = d.inWindow<AlertEditorView>(AuxWindow::alert);
  ASSERT_TRUE(editor);
  ASSERT_EQ(editor->symbol().currentData().toString(), u"600519"_s);
  EXPECT_EQ(editor->others().text(), u"此标的的其他提醒\n跌幅达到 5.00% · 每日一次 · 待触发"_s);
  d.model->setMasked(true);
  QTest::qWait(1);
  EXPECT_EQ(editor->others().text(), u"此标的的其他提醒\n跌幅达到 •••• · 每日一次 · 待触发"_s);
  named<QPushButton>(*editor, u"管理全部提醒"_s).click();
  auto* settings = d.inWindow<SettingsView>(AuxWindow::settings);
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->currentSection(), SettingsSection::alerts);

  d.model->setMasked(false);
  settings->showSection(SettingsSection::detail);
  QTest::qWait(1);
  EXPECT_TRUE(settings->detail().figureTexts().contains(u"1 条"_s));
  d.model->setAlert("600519", 2000, true);
  d.model->removeAlert(d.model->alertBook().rules()[0].id);
  QTest::qWait(1);
  EXPECT_TRUE(settings->detail().figureTexts().contains(u"1 条"_s)) << "the primary one";
  d.model->clearAlert();
  QTest::qWait(1);
  EXPECT_FALSE(settings->detail().figureTexts().join(u'|').contains(u"条"_s));
}

}  // namespace
}  // namespace tidemark
