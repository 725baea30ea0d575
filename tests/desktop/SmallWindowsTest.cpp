// The alert editor and the first-run guide.

#include <gtest/gtest.h>

#include <functional>

#include <QPushButton>
#include <QTest>

#include "support/ModelHarness.h"
#include "support/QtPrint.h"
#include "views/SmallWindows.h"
#include "views/Theme.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;

TEST(AlertEditor, OnlyPlainPositiveNumbersAreTargets) {
  const std::pair<const char*, std::optional<double>> cases[] = {
      {"12.50", 12.5}, {"1,200", 1200}, {"1,234.5", 1234.5}, {"+3", 3}, {"0", {}},   {"-5", {}},
      {"abc", {}},     {" 12", {}},     {"12 ", {}},         {"", {}},  {"inf", {}}, {"1e999", {}},
  };
  for (const auto& [input, value] : cases) EXPECT_EQ(parseAlertPrice(input), value) << input;
}

// Every text of a widget and its children that shows, in order.
QStringList texts(const QWidget& root) {
  QStringList out;
  for (const QObject* child : root.children()) {
    const auto* w = qobject_cast<const QWidget*>(child);
    if (!w || w->isHidden()) continue;
    if (const auto* label = qobject_cast<const QLabel*>(w); label && !label->text().isEmpty())
      out << label->text();
    if (const auto* button = qobject_cast<const QAbstractButton*>(w)) out << button->text();
    out << texts(*w);
  }
  return out;
}

// The pills shown selected; they are buttons marked so, with no meta-object of their own to cast
// to.
QStringList selected(QWidget& editor) {
  QStringList on;
  for (auto* pill : editor.findChildren<QPushButton*>())
    if (pill->property("pill").toBool() && pill->property("selected").toBool()) on << pill->text();
  return on;
}

TEST(AlertEditor, SavesWhatIsValidClearsAndHidesFiguresWhenMasked) {
  test::ModelHarness h;
  auto model = h.make();
  int closed = 0;
  {
    AlertEditorView editor(*model, [&] { ++closed; });
    editor.show();
    EXPECT_EQ(editor.focusWidget(), &editor.price()) << "typing goes to the price at once";
    EXPECT_EQ(texts(editor),
              (QStringList{"价格预警", "行情达到条件时，灵球会显示提醒脉冲并发送桌面通知。",
                           "当前价格", "1,468.80", "价格达到或高于", "价格达到或低于", "清除提醒",
                           "保存提醒", "管理全部提醒"}));
    QTest::keyClicks(&editor.price(), u"12x"_s);
    EXPECT_EQ(editor.message().text(), u"请输入有效且大于 0 的数字。"_s);
    editor.save();
    EXPECT_EQ(closed, 0);
    EXPECT_EQ(model->alertRule().price, std::nullopt);
    editor.price().setText(u"1,500"_s);
    EXPECT_EQ(editor.message().text(), QString());
    // The chosen direction is the selected pill, whichever was chosen before.
    EXPECT_EQ(selected(editor), QStringList{u"价格达到或高于"_s});
    editor.setAbove(false);
    EXPECT_EQ(selected(editor), QStringList{u"价格达到或低于"_s});
    QTest::keyClick(&editor.price(), Qt::Key_Return);  // Return saves
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(model->alertRule().price, 1500);
    EXPECT_EQ(model->alertRule().symbolID, "600519");
    EXPECT_FALSE(model->alertRule().above);
  }
  const auto click = [](QWidget& window, const QString& text) {
    for (auto* b : window.findChildren<QPushButton*>())
      if (b->text() == text) b->click();
  };
  {
    AlertEditorView editor(*model, [&] { ++closed; });
    editor.price().setText(u"1600"_s);
    click(editor, u"保存提醒"_s);
    EXPECT_EQ(model->alertRule().price, 1600);
  }
  // The editor opens on the security the orb shows, with the alert's target and direction only
  // when the alert watches that security.
  const std::tuple<const char*, const char*, const char*> starts[] = {
      {"NVDA", "", "价格达到或高于"}, {"600519", "1600.00", "价格达到或低于"}};
  for (const auto& [active, target, direction] : starts) {
    model->select(active);
    AlertEditorView editor(*model, {});
    EXPECT_EQ(editor.symbol().currentData().toString(), QString::fromUtf8(active));
    EXPECT_EQ(editor.price().text(), QString::fromUtf8(target));
    EXPECT_EQ(selected(editor), QStringList{QString::fromUtf8(direction)});
  }
  model->setMasked(true);
  AlertEditorView masked(*model, [&] { ++closed; });
  EXPECT_EQ(masked.current().text(), u"当前价格已遮蔽"_s);
  EXPECT_EQ(masked.price().text(), QString());
  EXPECT_EQ(masked.price().placeholderText(), u"目标价格已遮蔽"_s);
  click(masked, u"清除提醒"_s);
  EXPECT_EQ(closed, 3);
  EXPECT_EQ(model->alertRule().price, std::nullopt);
}

TEST(Onboarding, StartingRecordsThatTheGuideWasSeen) {
  test::ModelHarness h;
  auto model = h.make();
  bool closed = false;
  OnboardingView guide(*model, [&] { closed = true; });
  EXPECT_EQ(texts(guide),
            (QStringList{"欢迎来到岚舟", "让行情安静地浮在桌面，\n需要时，轻触一颗灵球。",
                         "单击灵球", "展开自选股卫星", "双击灵球", "查看圆形详情和标准分时",
                         "右键 · 外观 · 自选管理", "打开自选管理", "添加、排序并保存自选股",
                         "拖动灵球", "拖到屏幕边缘", "磁吸为安静的半圆舷窗",
                         "当前可使用本地快照，或在设置中切换腾讯 / 新浪公开行情。", "开始探索"}));
  guide.findChild<QPushButton*>()->click();
  EXPECT_TRUE(closed);
  EXPECT_TRUE(h.make()->onboardingSeen());  // kept across a restart
}

}  // namespace
}  // namespace tidemark
