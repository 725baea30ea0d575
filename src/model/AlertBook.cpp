#include "model/AlertBook.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/Market.h"
#include "model/MarketSessions.h"

namespace tidemark {
namespace {

Exchange exchangeOfSymbol(const std::string& symbol) {
  return exchangeOf(feedMarket(symbol));
}

bool sameRule(const AlertRule& a, const AlertRule& b) {
  return a.symbolID == b.symbolID && a.kind == b.kind && a.threshold == b.threshold;
}

}  // namespace

std::string_view rawValue(AlertState state) {
  switch (state) {
    case AlertState::armed:
      return "armed";
    case AlertState::triggered:
      return "triggered";
    case AlertState::disabled:
      return "disabled";
    case AlertState::dormant:
      return "dormant";
  }
  return "";
}

std::string_view label(AlertState state) {
  switch (state) {
    case AlertState::armed:
      return "待触发";
    case AlertState::triggered:
      return "已触发";
    case AlertState::disabled:
      return "已关闭";
    case AlertState::dormant:
      return "不在自选中";
  }
  return "";
}

bool rearmed(const AlertRule& rule, Date now) {
  if (!rule.triggeredAt) return true;
  if (rule.repeat == AlertRepeat::once) return false;
  // Daily: once the exchange's own date has moved on. Without its zone, the UTC date.
  const Exchange exchange = exchangeOfSymbol(rule.symbolID);
  const auto today = exchangeDay(exchange, now), then = exchangeDay(exchange, *rule.triggeredAt);
  if (today && then) return *today > *then;
  return std::floor(now.unixSeconds() / 86400) >
         std::floor(rule.triggeredAt->unixSeconds() / 86400);
}

AlertState alertState(const AlertRule& rule, bool watched, Date now) {
  if (!watched) return AlertState::dormant;
  if (!rule.enabled) return AlertState::disabled;
  return rearmed(rule, now) ? AlertState::armed : AlertState::triggered;
}

std::string AlertBook::identifier(const std::string& symbol, std::string_view id) {
  return "tidemark.price-alert." + symbol + "." + std::string(id);
}

const AlertRule* AlertBook::find(std::string_view id) const {
  for (const AlertRule& rule : rules_)
    if (rule.id == id) return &rule;
  return nullptr;
}

std::optional<std::string> AlertBook::add(AlertRule rule, Date now,
                                          const std::vector<AlertRule>& others) {
  if (auto problem = alertThresholdProblem(rule.kind, rule.threshold)) return problem;
  size_t ofSymbol = 0, total = others.size() + rules_.size();
  for (const std::vector<AlertRule>* list : {&others, &std::as_const(rules_)})
    for (const AlertRule& kept : *list) {
      if (sameRule(kept, rule)) return std::string("已有相同的提醒");
      if (kept.symbolID == rule.symbolID) ++ofSymbol;
    }
  if (ofSymbol >= maxAlertsPerSymbol) return std::string("每个标的最多 10 条提醒");
  if (total >= maxAlertCount) return std::string("提醒总数已达上限（200 条）");
  // Milliseconds of the moment it was made: unique, and never given again by a later clock.
  auto base = static_cast<long long>(std::floor(now.unixSeconds() * 1000));
  rule.id = "r" + std::to_string(base);
  for (int n = 2; find(rule.id); ++n)
    rule.id = "r" + std::to_string(base) + "-" + std::to_string(n);
  rule.triggeredAt.reset();
  rules_.push_back(std::move(rule));
  return std::nullopt;
}

bool AlertBook::setEnabled(std::string_view id, bool on) {
  for (AlertRule& rule : rules_)
    if (rule.id == id && rule.enabled != on) {
      rule.enabled = on;
      // Switched on again, a rule starts afresh.
      if (on) rule.triggeredAt.reset();
      return true;
    }
  return false;
}

bool AlertBook::remove(std::string_view id) {
  return std::erase_if(rules_, [id](const AlertRule& rule) { return rule.id == id; }) > 0;
}

bool AlertBook::setPaused(bool on) {
  if (paused_ == on) return false;
  paused_ = on;
  return true;
}

void AlertBook::restore(AlertsBackup record) {
  rules_ = std::move(record.rules);
  paused_ = record.paused;
}

AlertsBackup AlertBook::record(Date at) const {
  return AlertsBackup{1, at, paused_, rules_};
}

bool AlertBook::matches(std::string_view storedBytes) const {
  size_t dropped = 0;
  const auto stored = alertsBackupFromBytes(storedBytes, &dropped);
  return stored && dropped == 0 && stored->paused == paused_ && stored->rules == rules_;
}

const QuoteSnapshot* AlertBook::fires(const AlertRule& rule, const AlertWorld& world) {
  if (!rule.enabled || !world.watched(rule.symbolID) || !rearmed(rule, world.now)) return nullptr;
  const QuoteSnapshot* quote = world.quote(rule.symbolID);
  if (!quote || !meetsCondition(rule, *quote)) return nullptr;
  // The day's change counts only while its market trades: at start the cache holds yesterday's.
  if (isChangeKind(rule.kind) && !isAwake(exchangeOfSymbol(rule.symbolID), world.now))
    return nullptr;
  return quote;
}

size_t AlertBook::evaluate(const AlertWorld& world) {
  if (paused_) return 0;
  std::vector<Firing> fired;  // per symbol, in the order of their first rule
  size_t count = 0;
  for (AlertRule& rule : rules_) {
    const QuoteSnapshot* quote = fires(rule, world);
    if (!quote) continue;
    rule.triggeredAt = world.now;
    ++count;
    auto it = std::find_if(fired.begin(), fired.end(),
                           [&rule](const Firing& f) { return f.symbol == rule.symbolID; });
    if (it == fired.end()) it = fired.insert(fired.end(), Firing{rule.symbolID, quote, {}});
    it->rules.push_back(&rule);
  }
  for (const Firing& firing : fired) notify(firing, world);
  if (waiting_.size() > 50) waiting_.erase(waiting_.begin(), waiting_.end() - 50);
  return count;
}

void AlertBook::notify(const Firing& firing, const AlertWorld& world) {
  // At most one a minute a symbol; a clock set back starts the minute again.
  if (auto last = notifiedAt_.find(firing.symbol); last != notifiedAt_.end()) {
    const double since = world.now - last->second;
    if (since >= 0 && since < 60) return;
  }
  notifiedAt_[firing.symbol] = world.now;
  NotificationRequest request;
  request.identifier = identifier(firing.symbol, firing.rules.front()->id);
  request.title = alertTitle(*firing.quote);
  for (const AlertRule* rule : firing.rules)
    request.body +=
        (request.body.empty() ? "" : "\n") + firedSentence(*rule, *firing.quote, world.precision);
  if (world.masked) request.body = maskedAlertBody;
  waiting_.push_back(std::move(request));
}

}  // namespace tidemark
