// The candle chart's texts, its masking and empty states, and its cached picture.

#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>

#include <QPushButton>
#include <QTest>

#include "model/KlineBook.h"
#include "support/ModelHarness.h"
#include "support/QtPrint.h"
#include "views/DetailView.h"
#include "views/KlineChart.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;

void hover(KlineChart& chart, size_t i) {
  const QPointF at(candleX(chart.frame(), i), 100);
  QMouseEvent move(QEvent::MouseMove, at, chart.mapToGlobal(at), Qt::NoButton, Qt::NoButton,
                   Qt::NoModifier);
  QApplication::sendEvent(&chart, &move);
}

TEST(KlineChart, TextsMaskingEmptyStatesAndOneDrawingPerChange) {
  // 25 periods closing 1 … 25: MA5 of the last is 23, MA10 20.5, MA20 15.5.
  std::vector<KlineBar> bars;
  for (int i = 1; i <= 25; ++i)
    bars.push_back({"2026-10-" + std::string(i < 10 ? "0" : "") + std::to_string(i), i - 0.5,
                    i + 1.0, i - 1.0, double(i), 32200});
  KlineChart chart;
  chart.resize(400, 240);
  chart.show({bars, KlinePeriod::day, 20.0}, OrbPalette{AppTheme::dark});
  EXPECT_EQ(chart.legendText(), u"MA5 23.00  MA10 20.50  MA20 15.50"_s);
  EXPECT_EQ(chart.costText(), u"成本 20.00"_s);
  hover(chart, 24);
  EXPECT_EQ(chart.readoutText(),
            u"2026-10-25  开 24.50  高 26.00  低 24.00  收 25.00  涨跌 +4.17%  量 3.2万"_s);
  hover(chart, 4);
  EXPECT_EQ(chart.legendText(), u"MA5 3.00  MA10 —  MA20 —"_s) << "the hovered period's averages";

  // The picture is drawn once per change of data, size or theme, not per paint.
  chart.show({bars, KlinePeriod::day, 20.0}, OrbPalette{AppTheme::dark});
  chart.grab();
  const size_t drawn = chart.redraws();
  chart.grab();
  chart.show({bars, KlinePeriod::day, 20.0}, OrbPalette{AppTheme::dark});
  chart.grab();
  EXPECT_EQ(chart.redraws(), drawn);
  chart.show({bars, KlinePeriod::day, 20.0}, OrbPalette{AppTheme::light});
  chart.grab();
  EXPECT_EQ(chart.redraws(), drawn + 1);

  chart.show({bars, KlinePeriod::day, 20.0, true}, OrbPalette{AppTheme::dark});
  EXPECT_EQ(chart.legendText(), u"MA5 ••••  MA10 ••••  MA20 ••••"_s);
  EXPECT_EQ(chart.readoutText(), u"2026-10-05  ••••"_s);
  EXPECT_EQ(chart.costText(), QString());
  chart.show({{}, KlinePeriod::week, std::nullopt, false, true}, OrbPalette{AppTheme::dark});
  EXPECT_EQ(chart.emptyText(), u"正在载入K线…"_s);
  chart.show({{}, KlinePeriod::week}, OrbPalette{AppTheme::dark});
  EXPECT_EQ(chart.emptyText(), u"K线数据暂不可用"_s);
  EXPECT_EQ(chart.hoveredIndex(), std::nullopt);
  // More than 120 periods: the latest 120 are drawn, the averages reaching back before them.
  chart.show({demoKline("600519", 1468.8, KlinePeriod::day, 20785), KlinePeriod::day},
             OrbPalette{AppTheme::dark});
  EXPECT_EQ(chart.frame().count, 120u);
  EXPECT_FALSE(chart.legendText().contains(u"—"_s));
}

// Through the real detail: the switch is the model's and outlives a restart; the held security's
// candles carry its cost; masked they show no figure; an off-exchange fund has no switch.
TEST(DetailCharts, TheSwitchIsRememberedMaskedAndAbsentForFunds) {
  test::ModelHarness h;
  auto model = h.make();
  ASSERT_EQ(model->setHolding("600519", 100, 1500.5), std::nullopt);
  DetailView view(*model, {}, {});
  view.resize(980, 680);
  view.show();
  QTest::qWait(1);
  DetailCharts& charts = view.charts();
  EXPECT_EQ(std::pair(charts.hasSwitch(), charts.showsCandles()), std::pair(true, false));
  for (auto* pill : charts.findChildren<QPushButton*>())
    if (pill->text() == u"周K"_s) pill->click();
  QTest::qWait(1);
  EXPECT_EQ(model->detailChart(), KlinePeriod::week);
  EXPECT_TRUE(charts.showsCandles());
  EXPECT_EQ(charts.kline().frame().count, 120u);
  EXPECT_EQ(charts.kline().costText(), u"成本 1,500.50"_s);
  EXPECT_EQ(h.make()->detailChart(), KlinePeriod::week) << "remembered";
  model->setMasked(true);
  QTest::qWait(1);
  EXPECT_EQ(charts.kline().legendText(), u"MA5 ••••  MA10 ••••  MA20 ••••"_s);
  model->setMasked(false);
  model->add(QuoteSnapshot{"012345", "A股基金", "示例场外基金", 1.2345, 1.2301, 1.2345, 1.2345, 0,
                           h.clock.now(), "mock"});
  model->select("012345");
  QTest::qWait(1);
  ASSERT_EQ(model->activeID(), "012345");
  EXPECT_EQ(std::pair(charts.hasSwitch(), charts.showsCandles()), std::pair(false, false));
  EXPECT_EQ(model->detailChart(), KlinePeriod::week) << "kept for the next security with candles";
}

}  // namespace
}  // namespace tidemark
