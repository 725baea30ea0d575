#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/Date.h"
#include "core/Json.h"
#include "core/QuoteStyle.h"

namespace tidemark {

// What a rule watches: the price reaching a level from below or above, or the day's change
// reaching a percentage up or down.
enum class AlertKind { priceAbove, priceBelow, changeUp, changeDown };
// Whether a rule fires once until the user edits it, or again on each of its exchange's dates.
enum class AlertRepeat { once, daily };

std::string_view rawValue(AlertKind kind);      // "priceAbove"
std::string_view label(AlertKind kind);         // "价格涨到"
std::string_view rawValue(AlertRepeat repeat);  // "once"
std::string_view label(AlertRepeat repeat);     // "仅一次"
template <>
std::span<const AlertKind> allCases<AlertKind>();
template <>
std::span<const AlertRepeat> allCases<AlertRepeat>();
bool isChangeKind(AlertKind kind);

// One alert on one symbol. The threshold is a price (points for an index) for the price kinds
// and a percentage in [0.01, 100] for the change kinds; changeDown fires at -threshold.
struct AlertRule {
  std::string id;  // unique, kept for ever
  std::string symbolID;
  AlertKind kind = AlertKind::priceAbove;
  double threshold = 0;
  AlertRepeat repeat = AlertRepeat::once;
  bool enabled = true;
  std::optional<Date> triggeredAt;
  friend bool operator==(const AlertRule&, const AlertRule&) = default;
};

// The single alert set from the alert editor is listed first, under this id.
inline constexpr std::string_view primaryAlertID = "primary";
inline constexpr size_t maxAlertsPerSymbol = 10;
inline constexpr size_t maxAlertCount = 200;

// Why this threshold cannot be a rule of this kind, in the user's words; none when it can.
std::optional<std::string> alertThresholdProblem(AlertKind kind, double threshold);

// "价格涨到 1,500.00", "跌幅达到 5.00%"; a price at the security's decimals or the more typed.
std::string conditionText(const AlertRule& rule, PricePrecision precision);

// Whether the quote meets the rule's level (equality included); never for a quote without a
// positive price and previous close.
bool meetsCondition(const AlertRule& rule, const QuoteSnapshot& quote);

// The sentence of a fired rule: "CNY 1,512.30，目标 CNY 1,500.00 已达到提醒条件。" for a price,
// "今日涨幅 +5.12%，已达到 +5.00% 的提醒条件。现价 CNY 1,530.00" for a change.
std::string firedSentence(const AlertRule& rule, const QuoteSnapshot& quote,
                          PricePrecision precision);
// A fired alert's notification title: "贵州茅台 价格提醒", or "价格提醒已触发" without a name.
std::string alertTitle(const QuoteSnapshot& quote);
// The body of a notification while figures are masked.
inline constexpr const char* maskedAlertBody = "提醒已触发（行情已遮蔽）";

// The stored and exported record of the alerts besides the primary one.
struct AlertsBackup {
  int64_t version = 1;
  Date savedAt;
  bool paused = false;
  std::vector<AlertRule> rules;
  friend bool operator==(const AlertsBackup&, const AlertsBackup&) = default;
};

// Stored form: keys in field order, dates as seconds since 2001-01-01T00:00:00Z.
Json toJson(const AlertRule& rule);
// None unless every field is there with its type and the threshold fits the kind.
std::optional<AlertRule> alertRuleFromJson(const Json& object);
Json toJson(const AlertsBackup& backup);
// A bad entry, a second one with an id already read and one past the limits are dropped and
// counted in `dropped`; anything else amiss (not JSON, no version, date, switch or list) rejects
// the record.
std::optional<AlertsBackup> alertsBackupFromBytes(std::string_view bytes,
                                                  size_t* dropped = nullptr);
// The rules of a list (an array) by the same rules; what is dropped is added to `dropped`.
std::vector<AlertRule> alertRulesFromJson(const Json& list, size_t& dropped);

}  // namespace tidemark
