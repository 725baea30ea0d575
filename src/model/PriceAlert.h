#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/Notifier.h"
#include "core/QuoteSnapshot.h"
#include "model/AlertRules.h"
#include "model/Preferences.h"

namespace tidemark {

// A threshold on one symbol's price, crossed upward (`above`) or downward, that fires once
// until it is set again. Any part may be missing while the user edits it; only a whole rule
// fires.
struct PriceAlertRule {
  std::optional<std::string> symbolID;
  std::optional<double> price;
  bool above = true;
  bool triggered = false;
  friend bool operator==(const PriceAlertRule&, const PriceAlertRule&) = default;
};

// The price alert and the delivery of its notification. Its rule is stored in the preferences
// record; nothing else of it is kept.
class PriceAlert {
 public:
  PriceAlertRule rule;
  bool authorized = false;        // the desktop lets us post notifications
  bool needsDelivery = false;     // fired, and its notification not yet posted
  bool deliveryInFlight = false;  // keeps one firing from being posted twice
  uint64_t generation = 0;        // counts new rules, to match a delivery to the rule it was for

  // Whether a quote of the rule's symbol fires it now: whole, not yet fired, and the price at or
  // past the threshold.
  bool firesAt(const QuoteSnapshot& quote) const;
  // The notification of the fired rule for its symbol's quote; no figure in it while masked.
  NotificationRequest notification(const QuoteSnapshot& quote, bool masked,
                                   PricePrecision precision) const;
  // The rule as the list of alerts shows it: first, with the id "primary", fired or not (the
  // time it fired is not kept).
  AlertRule asListed() const;
  // The identifier of a symbol's notification, to take it back.
  static std::string identifier(const std::string& symbol);

  void readFrom(const Preferences& record);
  void writeTo(Preferences& record) const;
};

}  // namespace tidemark
