// The single price alert and its desktop notification.

#include <cmath>

#include "model/AppModel.h"

namespace tidemark {

void AppModel::setAlert(const std::string& symbol, double price, bool above) {
  if (!quote(symbol)) return;
  if (!std::isfinite(price) || !(price > 0)) return;
  // Assigned together and evaluated once below: evaluating between the assignments could fire
  // the new symbol against the old threshold.
  assign(alert_.rule.symbolID, std::optional<std::string>(symbol));
  assign(alert_.rule.above, above);
  assign(alert_.rule.price, std::optional<double>(price));
  assign(alert_.rule.triggered, false);
  alert_.needsDelivery = false;
  ++alert_.generation;
  savePreferences();
  if (canRequestNotifications_) requestPriceAlertNotifications();
  evaluateAlert();
}

void AppModel::clearAlert() {
  alert_.needsDelivery = false;
  if (alert_.rule.symbolID) deps_.notifier.remove(PriceAlert::identifier(*alert_.rule.symbolID));
  assign(alert_.rule.symbolID, std::optional<std::string>());
  assign(alert_.rule.price, std::optional<double>());
  assign(alert_.rule.triggered, false);
  savePreferences();
}

void AppModel::evaluateAlert() {
  if (!ready_) return;
  const QuoteSnapshot* q = alertQuote();
  if (!q || !alert_.firesAt(*q)) return;
  assign(alert_.rule.triggered, true);
  savePreferences();
  alert_.needsDelivery = true;
  if (alert_.authorized) deliverPriceAlertNotification();
}

void AppModel::requestPriceAlertNotifications() {
  deps_.notifier.requestAuthorization(
      lifeline_.guard(std::function<void(bool)>([this](bool granted) {
        alert_.authorized = granted;
        if (granted && alert_.needsDelivery) deliverPriceAlertNotification();
      })));
}

void AppModel::deliverPriceAlertNotification() {
  if (!alert_.needsDelivery || !alert_.authorized) return;
  if (alert_.deliveryInFlight || !alert_.rule.price) return;
  const QuoteSnapshot* q = alertQuote();
  if (!q) return;
  alert_.deliveryInFlight = true;
  deps_.notifier.add(alert_.notification(*q),
                     lifeline_.guard([this, generation = alert_.generation] {
                       alert_.deliveryInFlight = false;
                       if (generation == alert_.generation) {
                         alert_.needsDelivery = false;
                       } else {
                         deliverPriceAlertNotification();  // re-armed and fired meanwhile
                       }
                     }));
}

}  // namespace tidemark
