#pragma once

#include <array>
#include <vector>

#include <QStackedLayout>
#include <QWidget>

#include "model/AppModel.h"
#include "views/Charts.h"
#include "views/KlineChart.h"
#include "views/Theme.h"

namespace tidemark {

// The detail's chart card: the switch 分时 / 日K / 周K / 月K over the intraday line or the candles.
// The choice is the model's, so it is remembered; off-exchange funds have no candles and no
// switch.
class DetailCharts final : public QWidget {
 public:
  explicit DetailCharts(AppModel& model, QWidget* parent = nullptr);

  LinearQuoteChart& linear() { return *linear_; }
  KlineChart& kline() { return *kline_; }
  bool showsCandles() const { return stack_->currentWidget() == kline_; }
  bool hasSwitch() const { return !pills_[0]->isHidden(); }

  // Shows the quote in the chosen chart; the candles are asked for when they are chosen.
  void show(const QuoteSnapshot* quote, std::vector<double> intraday, bool real);

 private:
  AppModel& model_;
  std::array<ProductPill*, 4> pills_{};
  QStackedLayout* stack_;
  LinearQuoteChart* linear_;
  KlineChart* kline_;
};

}  // namespace tidemark
