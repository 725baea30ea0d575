#include "app/AlertsTable.h"

#include "app/TextTable.h"
#include "views/AlertTexts.h"

namespace tidemark {

std::string renderAlertsTable(const AppModel& model) {
  const auto list = model.alertList();
  if (list.empty()) return "还没有提醒 · 为自选设置价格和涨跌幅提醒\n";
  TextTable table({{"代码"}, {"名称"}, {"条件"}, {"重复"}, {"状态"}});
  for (const auto& [rule, state] : list) {
    const QuoteSnapshot* q = model.quote(rule.symbolID);
    table.addRow({rule.symbolID, q && !q->name.empty() ? q->name : "—",
                  conditionText(rule, model.quoteStyle().precision), repeatText(rule),
                  alertStateText(rule, state)});
  }
  std::string text = table.render();
  if (model.alertBook().paused()) text += "全部提醒已暂停\n";
  return text;
}

std::string renderAlertsJson(const AppModel& model, bool pretty) {
  Json rules = Json::array();
  for (const auto& [rule, state] : model.alertList()) {
    Json entry = toJson(rule);
    entry["state"] = rawValue(state);
    rules.push_back(std::move(entry));
  }
  const Json document{{"paused", model.alertBook().paused()}, {"rules", std::move(rules)}};
  return document.dump(pretty ? 2 : -1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace tidemark
