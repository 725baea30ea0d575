#include "app/HoldingsTable.h"

#include <cmath>

#include <QDateTime>

#include "app/TextTable.h"
#include "core/Market.h"
#include "core/NumberText.h"

namespace tidemark {
namespace {

std::string currencyOf(const AppModel& model, const std::string& symbol) {
  if (const QuoteSnapshot* q = model.quote(symbol)) return q->currency();
  QuoteSnapshot unquoted;
  unquoted.market = marketLabel(feedMarket(symbol));
  return unquoted.currency();
}

// The rates' time on the user's clock.
std::string clockText(Date at) {
  return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(at.unixSeconds() * 1000))
      .toString(QStringLiteral("HH:mm"))
      .toStdString();
}

std::string percent(const std::optional<double>& value) {
  return value ? percentText(*value) : "—";
}

// Amounts to the cent, rounded as the table rounds them, and percentages to a ten-thousandth:
// what a sum of products has beyond that is the arithmetic's noise, not the market's.
Json amount(double value) {
  return centRounded(value);
}
Json percentage(const std::optional<double>& value) {
  return value ? Json(std::round(*value * 10000) / 10000) : Json(nullptr);
}

// The totals in yuan with the rates known (null for one not fetched in the last day); null
// while a rate they need is missing.
Json yuanJson(const std::optional<YuanTotal>& yuan) {
  if (!yuan) return nullptr;
  Json rates = Json::object();
  for (const char* currency : {"USD", "HKD"}) {
    const auto known = yuan->known.find(currency);
    rates[currency] = known != yuan->known.end() ? Json(known->second) : Json(nullptr);
  }
  return {{"marketValue", amount(yuan->marketValue)},
          {"dayProfit", amount(yuan->dayProfit)},
          {"totalProfit", amount(yuan->totalProfit)},
          {"rates", std::move(rates)}};
}

}  // namespace

std::string renderHoldingsTable(const AppModel& model) {
  if (model.holdings().empty()) return "还没有持仓 · 在设置的持仓盈亏里录入持有数量和成本价\n";
  using Align = TextTable::Align;
  TextTable table({{"代码"},
                   {"名称"},
                   {"持有", Align::right},
                   {"成本", Align::right},
                   {"现价", Align::right},
                   {"今日盈亏", Align::right},
                   {"今日%", Align::right},
                   {"持有盈亏", Align::right},
                   {"持有%", Align::right},
                   {"市值", Align::right}});
  for (const HoldingLine& line : model.holdingLines()) {
    const Holding& h = *line.holding;
    const std::string shares = sharesText(h.shares),
                      cost = model.quoteStyle().typed(h.symbolID, h.cost);
    const QuoteSnapshot* q = line.quote;
    if (!q) {
      const std::string why = line.watched ? "暂无行情" : "不在自选中";
      table.addRow({h.symbolID, why, shares, cost, "—", "—", "—", "—", "—", "—"});
      continue;
    }
    const HoldingFigures f = holdingFigures(h, *q);
    table.addRow({h.symbolID, q->name, shares, cost, model.quoteStyle().price(*q),
                  signedAmountText(f.dayProfit), percentText(f.dayProfitPct),
                  signedAmountText(f.totalProfit), percent(f.totalProfitPct),
                  amountText(f.marketValue)});
  }
  std::string text = table.render();
  for (const HoldingsTotal& t : model.holdingsTotals()) {
    text += "合计 " + t.currency + "  今日盈亏 " + profitText(t.dayProfit, t.dayProfitPct) +
            "  持有盈亏 " + profitText(t.totalProfit, t.totalProfitPct) + "  市值 " +
            amountText(t.marketValue);
    if (t.missing > 0) text += "（" + std::to_string(t.missing) + " 项暂无行情）";
    text += "\n";
  }
  // In yuan, where a foreign currency is held and its rate is known.
  if (const auto yuan = model.yuanTotal(model.holdingsTotals()); yuan && !yuan->rates.empty())
    text += "折合人民币  今日盈亏 " + profitText(yuan->dayProfit, yuan->dayProfitPct) +
            "  持有盈亏 " + profitText(yuan->totalProfit, yuan->totalProfitPct) + "  市值 " +
            amountText(yuan->marketValue) + "  " + ratesText(*yuan, clockText(yuan->ratesAt)) +
            "\n";
  return text;
}

std::string renderHoldingsJson(const AppModel& model, bool pretty) {
  Json holdings = Json::array();
  for (const HoldingLine& line : model.holdingLines()) {
    const Holding& h = *line.holding;
    const QuoteSnapshot* q = line.quote;
    std::optional<HoldingFigures> f;
    if (q) f = holdingFigures(h, *q);
    holdings.push_back({{"id", h.symbolID},
                        {"name", q ? Json(q->name) : Json(nullptr)},
                        {"currency", currencyOf(model, h.symbolID)},
                        {"shares", h.shares},
                        {"cost", h.cost},
                        {"price", q ? Json(q->price) : Json(nullptr)},
                        {"prevClose", q ? Json(q->prevClose) : Json(nullptr)},
                        {"marketValue", f ? amount(f->marketValue) : Json(nullptr)},
                        {"dayProfit", f ? amount(f->dayProfit) : Json(nullptr)},
                        {"dayProfitPct", f ? percentage(f->dayProfitPct) : Json(nullptr)},
                        {"totalProfit", f ? amount(f->totalProfit) : Json(nullptr)},
                        {"totalProfitPct", f ? percentage(f->totalProfitPct) : Json(nullptr)}});
  }
  Json totals = Json::array();
  for (const HoldingsTotal& t : model.holdingsTotals())
    totals.push_back({{"currency", t.currency},
                      {"marketValue", amount(t.marketValue)},
                      {"dayProfit", amount(t.dayProfit)},
                      {"dayProfitPct", percentage(t.dayProfitPct)},
                      {"totalProfit", amount(t.totalProfit)},
                      {"totalProfitPct", percentage(t.totalProfitPct)},
                      {"missing", t.missing}});
  const Json document{{"holdings", std::move(holdings)},
                      {"totals", std::move(totals)},
                      {"cny", yuanJson(model.yuanTotal(model.holdingsTotals()))}};
  return document.dump(pretty ? 2 : -1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace tidemark
