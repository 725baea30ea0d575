// The appearance page's card of how quotes read: the colours of rise and fall and the decimals of
// prices.
#include "views/SettingsView.h"

namespace tidemark {

QWidget* SettingsView::quotesCard(QWidget* page) {
  auto* card = new ProductCard(QStringLiteral("行情显示"), page);
  const auto choicesOf = [this]<class E>(void (*set)(AppModel&, E)) {
    std::vector<Choice> choices;
    for (E value : allCases<E>()) {
      const std::string_view text = label(value);
      choices.emplace_back(QString::fromUtf8(text.data(), qsizetype(text.size())),
                           [this, set, value] { set(model_, value); });
    }
    return choices;
  };
  const auto indexOf = []<class E>(E value) {
    const auto all = allCases<E>();
    return int(std::find(all.begin(), all.end(), value) - all.begin());
  };
  addPills(card, QStringLiteral("涨跌颜色"), choicesOf(+[](AppModel& m, RiseColors colors) {
             m.setQuoteStyle({colors, m.quoteStyle().precision});
           }),
           [this, indexOf] { return indexOf(model_.quoteStyle().colors); });
  addPills(card, QStringLiteral("价格精度"), choicesOf(+[](AppModel& m, PricePrecision precision) {
             m.setQuoteStyle({m.quoteStyle().colors, precision});
           }),
           [this, indexOf] { return indexOf(model_.quoteStyle().precision); });
  card->content().addWidget(themedLabel(
      QStringLiteral("自动：ETF、LOF 和港股仙股显示三位小数，场外基金四位；涨跌幅保持两位。"),
      TextRole::muted, 12));
  return card;
}

}  // namespace tidemark
