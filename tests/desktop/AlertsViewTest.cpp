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

TEST(AlertsSection, AddRefuseSwitchDeletePauseAndMask) {
  test::Desktop d;
  d.delegate->openSettings(SettingsSection::alerts);
  auto* settings = d.inWindow<SettingsView>(AuxWindow::settings);
  ASSERT_TRUE(settings);
  AlertsView& view = settings->alerts();
  const auto settle = [] { QTest::qWait(1); };
  EXPECT_TRUE(view.shownTexts().contains(u"还没有提醒 · 为自选设置价格和涨跌幅提醒"_s));
  ASSERT_EQ(view.symbol().currentData().toString(), u"600519"_s);

  const auto enter = [&](int kind, const QString& value) {
    view.kind().setCurrentIndex(kind);
    view.value().setText(value);
    settle();
  };
  const std::tuple<int, QString, QString> refused[] = {
      {0, u"abc"_s, u"请输入大于 0 的价格"_s},
      {1, u"0"_s, u"请输入大于 0 的价格"_s},
      {2, u"100.5"_s, u"涨跌幅须在 0.01% 到 100% 之间"_s},
  };
  for (const auto& [kind, value, message] : refused) {
    enter(kind, value);
    view.submit();
    EXPECT_EQ(view.message(), message) << value.toStdString();
  }
  // The hint follows the form: 1,468.80 has passed 1,000 but not 2,000.
  enter(0, u"1000"_s);
  EXPECT_EQ(view.hint(), u"当前价已满足条件，保存后会立即提醒"_s);
  enter(0, u"2,000"_s);
  EXPECT_EQ(view.hint(), QString());
  view.submit();
  settle();
  EXPECT_EQ(view.message(), QString());
  enter(0, u"2000"_s);
  view.submit();
  EXPECT_EQ(view.message(), u"已有相同的提醒"_s);
  enter(1, u"1500"_s);
  view.repeat().setCurrentIndex(1);
  view.submit();
  settle();
  ASSERT_EQ(d.model->alertBook().rules().size(), 2u);
  EXPECT_EQ(d.model->alertBook().rules()[1].repeat, AlertRepeat::daily);
  QStringList shown = view.shownTexts();
  const QStringList rows[] = {
      {u"600519  贵州茅台"_s},
      {u"价格涨到 2,000.00"_s, u"仅一次"_s, u"待触发"_s},
      {u"价格跌到 1,500.00"_s, u"每日一次"_s}};  // fired at once: its time follows
  qsizetype at = 0;
  for (const QStringList& row : rows)
    for (const QString& text : row) {
      const qsizetype found = shown.indexOf(text, at);
      EXPECT_GE(found, at) << text.toStdString() << " in " << shown.join(u'|').toStdString();
      at = std::max(at, found);
    }
  EXPECT_TRUE(shown.filter(u"今日已触发 "_s).size() == 1) << shown.join(u'|').toStdString();

  named<QCheckBox>(view, u"启用 价格涨到 2,000.00"_s).click();
  settle();
  EXPECT_FALSE(d.model->alertBook().rules()[0].enabled);
  EXPECT_TRUE(view.shownTexts().contains(u"已关闭"_s));
  named<QPushButton>(view, u"删除 价格涨到 2,000.00"_s).click();
  settle();
  ASSERT_EQ(d.model->alertBook().rules().size(), 1u);
  named<QCheckBox>(view, u"暂停全部提醒"_s).click();
  settle();
  EXPECT_TRUE(d.model->alertBook().paused());

  d.model->setMasked(true);
  settle();
  shown = view.shownTexts();
  EXPECT_TRUE(shown.contains(u"价格跌到 ••••"_s)) << shown.join(u'|').toStdString();
  EXPECT_FALSE(shown.join(u'|').contains(u"1,500"_s));
}

// The editor shows the chosen symbol's other rules and leads to the section; the detail counts
// the active symbol's rules that are on.
TEST(AlertsSection, TheEditorListsTheOtherRulesAndTheDetailCountsThem) {
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
