#include "views/QuoteFigures.h"

#include "core/ExchangeTime.h"
#include "views/Theme.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;

QString q(const std::string& s) {
  return QString::fromStdString(s);
}

}  // namespace

std::vector<std::pair<QString, QString>> fullerFigures(const QuoteSnapshot& quote,
                                                       const QuoteStyle& style, bool masked) {
  std::vector<std::pair<QString, QString>> shown;
  const auto add = [&](const char* caption, const std::optional<double>& value, auto text) {
    if (value) shown.emplace_back(QString::fromUtf8(caption), masked ? u"••••"_s : q(text(*value)));
  };
  const auto price = [&](double value) { return style.price(quote, value); };
  add("今开", quote.open, price);
  add("成交额", quote.amount, [](double v) { return volumeText(static_cast<int64_t>(v)); });
  add("换手率", quote.turnoverPct, [](double v) { return priceText(v) + "%"; });
  add("市盈率", quote.pe, [](double v) { return priceText(v); });
  add("涨停", quote.limitUp, price);
  add("跌停", quote.limitDown, price);
  add("52周高", quote.high52w, price);
  add("52周低", quote.low52w, price);
  if (quote.quoteTime) {
    const auto market = marketOfLabel(quote.market).value_or(feedMarket(quote.id));
    if (const auto clock = exchangeTime(exchangeOf(market), *quote.quoteTime))
      shown.emplace_back(u"行情时间"_s, masked ? u"••••"_s : q(monthDayTimeText(*clock)));
  }
  return shown;
}

FullerFiguresGrid::FullerFiguresGrid() {
  setHorizontalSpacing(8);
  setVerticalSpacing(2);
  for (int column = 0; column < columns; ++column) setColumnStretch(column, 1);
}

void FullerFiguresGrid::show(const std::vector<std::pair<QString, QString>>& figures) {
  QStringList captions;
  for (const auto& figure : figures) captions << figure.first;
  if (captions != captions_) {
    captions_ = captions;
    while (cells_.size() < figures.size()) {
      auto* caption = themedLabel(QString(), TextRole::muted, 11.5);
      auto* value = themedLabel(QString(), TextRole::plain, 13, QFont::DemiBold);
      caption->setWordWrap(false);
      value->setWordWrap(false);
      cells_.emplace_back(caption, value);
    }
    for (auto [caption, value] : cells_) {
      removeWidget(caption);
      removeWidget(value);
      caption->hide();
      value->hide();
    }
    // Tiles of a caption over its value, three to a row; the time, the widest, takes two.
    int at = 0;
    for (size_t i = 0; i < figures.size(); ++i) {
      auto [caption, value] = cells_[i];
      const int span = figures[i].first == u"行情时间"_s ? 2 : 1;
      if (at % columns + span > columns) at += columns - at % columns;
      addWidget(caption, at / columns * 2, at % columns, 1, span);
      addWidget(value, at / columns * 2 + 1, at % columns, 1, span);
      at += span;
      caption->setText(figures[i].first);
      caption->show();
      value->show();
    }
  }
  for (size_t i = 0; i < figures.size(); ++i) cells_[i].second->setText(figures[i].second);
}

QStringList FullerFiguresGrid::shownTexts() const {
  QStringList texts;
  for (const auto& [caption, value] : cells_)
    if (!caption->isHidden()) texts << caption->text() << value->text();
  return texts;
}

}  // namespace tidemark
