#include "views/DetailCharts.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "core/Market.h"
#include "model/MarketSessions.h"

namespace tidemark {
namespace {

// The switch's choices in order: none is the intraday line.
constexpr std::array<std::optional<KlinePeriod>, 4> choices{std::nullopt, KlinePeriod::day,
                                                            KlinePeriod::week, KlinePeriod::month};

QString choiceLabel(std::optional<KlinePeriod> choice) {
  if (!choice) return QStringLiteral("分时");
  const std::string_view text = label(*choice);
  return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

// The exchange's date of the instant, as the candles write it.
std::string exchangeDate(std::string_view market, Date at) {
  const auto exchange = exchangeOfLabel(market).value_or(Exchange::shanghai);
  const auto day = exchangeDay(exchange, at);
  return day ? klineDate(*day) : std::string();
}

}  // namespace

DetailCharts::DetailCharts(AppModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      stack_(new QStackedLayout),
      linear_(new LinearQuoteChart(this)),
      kline_(new KlineChart(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(8);
  auto* row = new QHBoxLayout;
  row->setSpacing(6);
  for (size_t i = 0; i < choices.size(); ++i) {
    pills_[i] = new ProductPill(choiceLabel(choices[i]), this);
    pills_[i]->setProperty("compact", true);
    QObject::connect(pills_[i], &QPushButton::clicked, this,
                     [this, i] { model_.setDetailChart(choices[i]); });
    row->addWidget(pills_[i]);
  }
  row->addStretch(1);
  layout->addLayout(row);
  // Under the switch the charts give up what it takes, so the window keeps its size.
  linear_->setMinimumHeight(100);
  kline_->setMinimumHeight(100);
  stack_->addWidget(linear_);
  stack_->addWidget(kline_);
  layout->addLayout(stack_, 1);
}

void DetailCharts::show(const QuoteSnapshot* quote, std::vector<double> intraday, bool real) {
  const OrbPalette palette{model_.theme()};
  const bool masked = model_.masked();
  const bool candlesKnown = quote && !isOffExchangeFundSymbol(quote->id);
  const auto chosen = candlesKnown ? model_.detailChart() : std::nullopt;
  for (size_t i = 0; i < choices.size(); ++i) {
    pills_[i]->setVisible(candlesKnown);
    pills_[i]->setSelected(choices[i] == chosen);
  }
  if (!chosen) {
    stack_->setCurrentWidget(linear_);
    linear_->show(quote ? *quote : QuoteSnapshot{}, std::move(intraday), real, masked,
                  model_.quoteStyle(), palette);
    return;
  }
  stack_->setCurrentWidget(kline_);
  const KlineBook::Series& series = model_.kline(quote->id, *chosen);
  KlineChartData data;
  data.period = *chosen;
  data.masked = masked;
  data.colors = model_.quoteStyle().colors;
  data.digits = priceDigits(quote->id, quote->market, quote->price, model_.quoteStyle().precision);
  data.loading = series.loading;
  // Today's period from the live quote, once there is a series to carry it.
  data.bars = series.bars.empty()
                  ? series.bars
                  : withLiveQuote(series.bars, *chosen,
                                  {exchangeDate(quote->market, quote->updatedAt), quote->price,
                                   quote->high, quote->low, static_cast<double>(quote->volume)});
  if (const Holding* held = model_.holding(quote->id); held && held->cost > 0)
    data.cost = held->cost;
  kline_->show(std::move(data), palette);
}

}  // namespace tidemark
