#include "model/AlertRules.h"

#include <array>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

#include "core/NumberText.h"

namespace tidemark {
namespace {

struct KindText {
  AlertKind kind;
  std::string_view raw, label;
};
constexpr std::array<KindText, 4> kindTexts{{
    {AlertKind::priceAbove, "priceAbove", "价格涨到"},
    {AlertKind::priceBelow, "priceBelow", "价格跌到"},
    {AlertKind::changeUp, "changeUp", "涨幅达到"},
    {AlertKind::changeDown, "changeDown", "跌幅达到"},
}};
constexpr std::array<AlertKind, 4> kinds{AlertKind::priceAbove, AlertKind::priceBelow,
                                         AlertKind::changeUp, AlertKind::changeDown};
constexpr std::array<AlertRepeat, 2> repeats{AlertRepeat::once, AlertRepeat::daily};

// "CNY 1,468.80"; an index's points stand alone.
std::string money(const QuoteSnapshot& quote, const std::string& figure) {
  const std::string currency = quote.currency();
  return (currency.empty() ? "" : currency + " ") + figure;
}

}  // namespace

std::string_view rawValue(AlertKind kind) {
  return kindTexts[static_cast<size_t>(kind)].raw;
}
std::string_view label(AlertKind kind) {
  return kindTexts[static_cast<size_t>(kind)].label;
}
std::string_view rawValue(AlertRepeat repeat) {
  return repeat == AlertRepeat::once ? "once" : "daily";
}
std::string_view label(AlertRepeat repeat) {
  return repeat == AlertRepeat::once ? "仅一次" : "每日一次";
}
template <>
std::span<const AlertKind> allCases<AlertKind>() {
  return kinds;
}
template <>
std::span<const AlertRepeat> allCases<AlertRepeat>() {
  return repeats;
}

bool isChangeKind(AlertKind kind) {
  return kind == AlertKind::changeUp || kind == AlertKind::changeDown;
}

std::optional<std::string> alertThresholdProblem(AlertKind kind, double threshold) {
  if (isChangeKind(kind)) {
    if (!(threshold >= 0.01 && threshold <= 100))
      return std::string("涨跌幅须在 0.01% 到 100% 之间");
  } else if (!std::isfinite(threshold) || !(threshold > 0)) {
    return std::string("请输入大于 0 的价格");
  }
  return std::nullopt;
}

std::string conditionText(const AlertRule& rule, PricePrecision precision) {
  if (isChangeKind(rule.kind))
    return std::string(label(rule.kind)) + " " + priceText(rule.threshold) + "%";
  return std::string(label(rule.kind)) + " " +
         QuoteStyle{.precision = precision}.typed(rule.symbolID, rule.threshold);
}

bool meetsCondition(const AlertRule& rule, const QuoteSnapshot& quote) {
  const double p = quote.price, t = rule.threshold;
  if (!(p > 0) || !(quote.prevClose > 0)) return false;
  switch (rule.kind) {
    case AlertKind::priceAbove:
      return p >= t;
    case AlertKind::priceBelow:
      return p <= t;
    case AlertKind::changeUp:
      return quote.changePct() >= t;
    case AlertKind::changeDown:
      return quote.changePct() <= -t;
  }
  return false;
}

std::string firedSentence(const AlertRule& rule, const QuoteSnapshot& quote,
                          PricePrecision precision) {
  const QuoteStyle style{.precision = precision};
  if (!isChangeKind(rule.kind))
    return money(quote, style.price(quote)) + "，目标 " +
           money(quote, style.typed(rule.symbolID, rule.threshold)) + " 已达到提醒条件。";
  const bool up = rule.kind == AlertKind::changeUp;
  return std::string(up ? "今日涨幅 " : "今日跌幅 ") + percentText(quote.changePct()) +
         "，已达到 " + percentText(up ? rule.threshold : -rule.threshold) + " 的提醒条件。现价 " +
         money(quote, style.price(quote));
}

std::string alertTitle(const QuoteSnapshot& quote) {
  return quote.name.empty() ? "价格提醒已触发" : quote.name + " 价格提醒";
}

Json toJson(const AlertRule& rule) {
  return Json{{"id", rule.id},
              {"symbolID", rule.symbolID},
              {"kind", rawValue(rule.kind)},
              {"threshold", rule.threshold},
              {"repeat", rawValue(rule.repeat)},
              {"enabled", rule.enabled},
              {"triggeredAt", rule.triggeredAt ? Json(rule.triggeredAt->sinceReference) : Json()}};
}

std::optional<AlertRule> alertRuleFromJson(const Json& object) {
  if (!object.is_object()) return std::nullopt;
  auto id = json::string(object, "id");
  auto symbol = json::string(object, "symbolID");
  auto kind = json::enumeration<AlertKind>(object, "kind");
  auto threshold = json::number(object, "threshold");
  auto repeat = json::enumeration<AlertRepeat>(object, "repeat");
  auto enabled = json::boolean(object, "enabled");
  const auto at = object.find("triggeredAt");
  if (!id || id->empty() || *id == primaryAlertID || !symbol || symbol->empty() || !kind ||
      !threshold || alertThresholdProblem(*kind, *threshold) || !repeat || !enabled ||
      at == object.end())
    return std::nullopt;
  AlertRule rule{*id, *symbol, *kind, *threshold, *repeat, *enabled, std::nullopt};
  if (!at->is_null()) {
    auto triggered = json::date(object, "triggeredAt");
    if (!triggered) return std::nullopt;
    rule.triggeredAt = triggered;
  }
  return rule;
}

Json toJson(const AlertsBackup& backup) {
  Json rules = Json::array();
  for (const AlertRule& rule : backup.rules) rules.push_back(toJson(rule));
  return Json{{"version", backup.version},
              {"savedAt", backup.savedAt.sinceReference},
              {"paused", backup.paused},
              {"rules", std::move(rules)}};
}

std::optional<AlertsBackup> alertsBackupFromBytes(std::string_view bytes, size_t* dropped) {
  auto document = json::parse(bytes);
  if (!document || !document->is_object()) return std::nullopt;
  auto version = json::integer(*document, "version");
  auto savedAt = json::date(*document, "savedAt");
  auto paused = json::boolean(*document, "paused");
  auto list = document->find("rules");
  if (!version || !savedAt || !paused || list == document->end() || !list->is_array())
    return std::nullopt;
  size_t bad = 0;
  AlertsBackup backup{*version, *savedAt, *paused, alertRulesFromJson(*list, bad)};
  if (dropped) *dropped = bad;
  return backup;
}

std::vector<AlertRule> alertRulesFromJson(const Json& list, size_t& dropped) {
  std::vector<AlertRule> rules;
  std::unordered_set<std::string> ids;
  std::unordered_map<std::string, size_t> perSymbol;
  for (const Json& entry : list) {
    auto rule = alertRuleFromJson(entry);
    if (!rule || ids.contains(rule->id) || rules.size() == maxAlertCount ||
        perSymbol[rule->symbolID] == maxAlertsPerSymbol) {
      ++dropped;
      continue;
    }
    ids.insert(rule->id);
    ++perSymbol[rule->symbolID];
    rules.push_back(std::move(*rule));
  }
  return rules;
}

}  // namespace tidemark
