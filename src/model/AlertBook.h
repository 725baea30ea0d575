#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/Notifier.h"
#include "model/AlertRules.h"

namespace tidemark {

// What a rule is doing, as the list and the command line say it.
enum class AlertState { armed, triggered, disabled, dormant };
std::string_view rawValue(AlertState state);  // "armed"
std::string_view label(AlertState state);     // "待触发"

// What an evaluation needs of the world: the quotes, the watchlist, the sessions and the clock.
struct AlertWorld {
  std::function<const QuoteSnapshot*(const std::string& symbol)> quote;
  std::function<bool(const std::string& symbol)> watched;
  Date now;
  bool masked = false;
  PricePrecision precision = PricePrecision::two;
};

// The alerts besides the primary one: their rules in the order added, the pause switch and their
// stored record, and the evaluation after each quote update. The primary rule is passed in where
// the limits count it.
class AlertBook {
 public:
  const std::vector<AlertRule>& rules() const { return rules_; }
  bool paused() const { return paused_; }
  const AlertRule* find(std::string_view id) const;

  // Adds the rule under a new id made from `now`; refused in words for a threshold that does not
  // fit its kind, the same rule twice and past the limits. `others` are the rules kept elsewhere
  // (the primary one), counted and compared too.
  std::optional<std::string> add(AlertRule rule, Date now,
                                 const std::vector<AlertRule>& others = {});
  // Whether it changed.
  bool setEnabled(std::string_view id, bool on);
  bool remove(std::string_view id);
  bool setPaused(bool on);
  void restore(AlertsBackup record);

  AlertsBackup record(Date at) const;
  // Whether these stored bytes read whole to exactly this book.
  bool matches(std::string_view storedBytes) const;

  // The rules that fire now are marked triggered at `world.now`; how many fired. Their
  // notifications wait in takeNotifications(): one per symbol, none for a symbol notified less
  // than a minute ago.
  size_t evaluate(const AlertWorld& world);
  // The notifications not yet posted, the oldest first; at most the last 50 are kept (while the
  // desktop has not said it takes them).
  std::vector<NotificationRequest> takeNotifications() { return std::exchange(waiting_, {}); }

  // The identifier of a rule's notification.
  static std::string identifier(const std::string& symbol, std::string_view id);

 private:
  // The rules of one symbol that fired in one evaluation, with its quote.
  struct Firing {
    std::string symbol;
    const QuoteSnapshot* quote;
    std::vector<const AlertRule*> rules;
  };
  // The rule's quote when the rule fires with it now.
  static const QuoteSnapshot* fires(const AlertRule& rule, const AlertWorld& world);
  void notify(const Firing& firing, const AlertWorld& world);

  std::vector<AlertRule> rules_;
  bool paused_ = false;
  std::map<std::string, Date> notifiedAt_;  // by symbol
  std::vector<NotificationRequest> waiting_;
};

// A rule's state at `now`: a `daily` one that fired on an earlier date of its exchange is armed
// again.
AlertState alertState(const AlertRule& rule, bool watched, Date now);

// Whether a fired rule may fire again at `now`.
bool rearmed(const AlertRule& rule, Date now);

}  // namespace tidemark
