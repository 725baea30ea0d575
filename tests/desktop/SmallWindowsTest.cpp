// The alert editor and the first-run guide.

#include <gtest/gtest.h>

#include <QPushButton>
#include <QTest>

#include "support/ModelHarness.h"
#include "views/SmallWindows.h"

namespace tidemark {
namespace {

TEST(AlertEditor, OnlyPlainPositiveNumbersAreTargets) {
  const std::pair<const char*, std::optional<double>> cases[] = {
      {"12.50", 12.5}, {"1,200", 1200}, {"1,234.5", 1234.5}, {"+3", 3}, {"0", {}},   {"-5", {}},
      {"abc", {}},     {" 12", {}},     {"12 ", {}},         {"", {}},  {"inf", {}}, {"1e999", {}},
  };
  for (const auto& [input, value] : cases) EXPECT_EQ(parseAlertPrice(input), value) << input;
}

TEST(AlertEditor, SavesWhatIsValidClearsAndHidesFiguresWhenMasked) {
  test::ModelHarness h;
  auto model = h.make();
  int closed = 0;
  {
    AlertEditorView editor(*model, [&] { ++closed; });
    EXPECT_EQ(editor.current().text(), QStringLiteral("当前价格 CNY 1,468.80"));
    QTest::keyClicks(&editor.price(), QStringLiteral("12x"));
    EXPECT_EQ(editor.message().text(), QStringLiteral("请输入有效且大于 0 的数字。"));
    editor.save();
    EXPECT_EQ(closed, 0);
    EXPECT_EQ(model->alertPrice(), std::nullopt);
    editor.price().setText(QStringLiteral("1,500"));
    EXPECT_EQ(editor.message().text(), QString());
    editor.setAbove(false);
    editor.save();
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(model->alertPrice(), 1500);
    EXPECT_EQ(model->alertSymbolID(), "600519");
    EXPECT_FALSE(model->alertAbove());
  }
  model->setMasked(true);
  AlertEditorView masked(*model, [&] { ++closed; });
  EXPECT_EQ(masked.current().text(), QStringLiteral("当前价格已遮蔽"));
  EXPECT_EQ(masked.price().text(), QString());
  EXPECT_EQ(masked.price().placeholderText(), QStringLiteral("目标价格已遮蔽"));
  masked.clear();
  EXPECT_EQ(closed, 2);
  EXPECT_EQ(model->alertPrice(), std::nullopt);
}

TEST(Onboarding, StartingRecordsThatTheGuideWasSeen) {
  test::ModelHarness h;
  auto model = h.make();
  bool closed = false;
  OnboardingView guide(*model, [&] { closed = true; });
  guide.findChild<QPushButton*>()->click();
  EXPECT_TRUE(closed);
  EXPECT_TRUE(h.make()->onboardingSeen());  // kept across a restart
}

}  // namespace
}  // namespace tidemark
