// The alerts: the primary one set from the alert editor, the list besides it, and their desktop
// notifications.

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
  if (!ready_ || alerts_.paused() || !deps_.evaluatesAlerts) return;
  const QuoteSnapshot* q = alertQuote();
  if (q && alert_.firesAt(*q)) {
    assign(alert_.rule.triggered, true);
    savePreferences();
    alert_.needsDelivery = true;
    if (alert_.authorized) deliverPriceAlertNotification();
  }
  const size_t fired =
      alerts_.evaluate({[this](const std::string& symbol) { return quote(symbol); },
                        [this](const std::string& symbol) { return isWatched(symbol); },
                        deps_.clock.now(), prefs_.masked, prefs_.pricePrecision});
  if (fired == 0) return;
  changed_.notify();
  saveAlerts();
  deliverPriceAlertNotification();
}

void AppModel::requestPriceAlertNotifications() {
  deps_.notifier.requestAuthorization(
      lifeline_.guard(std::function<void(bool)>([this](bool granted) {
        alert_.authorized = granted;
        if (granted) deliverPriceAlertNotification();
      })));
}

void AppModel::deliverPriceAlertNotification() {
  // The list's notifications wait until the desktop says it takes them.
  if (alert_.authorized)
    for (const NotificationRequest& request : alerts_.takeNotifications())
      deps_.notifier.add(request, [] {});
  if (!alert_.needsDelivery || !alert_.authorized) return;
  if (alert_.deliveryInFlight || !alert_.rule.price) return;
  const QuoteSnapshot* q = alertQuote();
  if (!q) return;
  alert_.deliveryInFlight = true;
  deps_.notifier.add(alert_.notification(*q, prefs_.masked, prefs_.pricePrecision),
                     lifeline_.guard([this, generation = alert_.generation] {
                       alert_.deliveryInFlight = false;
                       if (generation == alert_.generation) {
                         alert_.needsDelivery = false;
                       } else {
                         deliverPriceAlertNotification();  // re-armed and fired meanwhile
                       }
                     }));
}

std::vector<std::pair<AlertRule, AlertState>> AppModel::alertList() const {
  const Date now = deps_.clock.now();
  std::vector<std::pair<AlertRule, AlertState>> list;
  if (alert_.rule.symbolID && alert_.rule.price) {
    const bool watched = isWatched(*alert_.rule.symbolID);
    const AlertState state = !watched                ? AlertState::dormant
                             : alert_.rule.triggered ? AlertState::triggered
                                                     : AlertState::armed;
    list.emplace_back(alert_.asListed(), state);
  }
  for (const AlertRule& rule : alerts_.rules())
    list.emplace_back(rule, alertState(rule, isWatched(rule.symbolID), now));
  return list;
}

std::optional<std::string> AppModel::addAlert(AlertRule rule) {
  if (!isWatched(rule.symbolID)) return std::string("只能为自选中的标的设置提醒");
  std::vector<AlertRule> primary;
  if (alert_.rule.symbolID && alert_.rule.price) primary.push_back(alert_.asListed());
  if (auto refused = alerts_.add(std::move(rule), deps_.clock.now(), primary)) return refused;
  changed_.notify();
  saveAlerts();
  evaluateAlert();
  return std::nullopt;
}

void AppModel::setAlertEnabled(const std::string& id, bool on) {
  if (!alerts_.setEnabled(id, on)) return;
  changed_.notify();
  saveAlerts();
  evaluateAlert();
}

void AppModel::removeAlert(const std::string& id) {
  if (id == primaryAlertID) return clearAlert();
  const AlertRule* rule = alerts_.find(id);
  if (!rule) return;
  deps_.notifier.remove(AlertBook::identifier(rule->symbolID, id));
  alerts_.remove(id);
  changed_.notify();
  saveAlerts();
}

void AppModel::setAlertsPaused(bool on) {
  if (!alerts_.setPaused(on)) return;
  changed_.notify();
  saveAlerts();
  evaluateAlert();
}

void AppModel::saveAlerts() {
  if (ready_) alertsRecords_.write(alerts_, deps_.clock.now());
}

}  // namespace tidemark
