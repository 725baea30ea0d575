// The single price alert and its desktop notification.

#include <cmath>

#include "core/NumberText.h"
#include "model/AppModel.h"

namespace tidemark {
namespace {

const std::string alertIdentifierPrefix = "tidemark.price-alert.";

}  // namespace

void AppModel::setAlert(const std::string& symbol, double price, bool above) {
  if (!quote(symbol)) return;
  if (!std::isfinite(price) || !(price > 0)) return;
  // Assigned together and evaluated once below: evaluating between the assignments could fire
  // the new symbol against the old threshold.
  assign(prefs_.alertSymbolID, std::optional<std::string>(symbol));
  assign(prefs_.alertAbove, above);
  assign(prefs_.alertPrice, std::optional<double>(price));
  assign(prefs_.alertTriggered, false);
  alertNotificationNeedsDelivery_ = false;
  ++alertGeneration_;
  savePreferences();
  if (canRequestNotifications_) requestPriceAlertNotifications();
  evaluateAlert();
}

void AppModel::clearAlert() {
  alertNotificationNeedsDelivery_ = false;
  if (prefs_.alertSymbolID) deps_.notifier.remove(alertIdentifierPrefix + *prefs_.alertSymbolID);
  setAlertSymbolID(std::nullopt);
  setAlertPrice(std::nullopt);
}

void AppModel::evaluateAlert() {
  if (!ready_ || !prefs_.alertPrice || !prefs_.alertSymbolID) return;
  const QuoteSnapshot* q = alertQuote();
  if (!q || prefs_.alertTriggered) return;
  const double p = q->price;
  const double t = *prefs_.alertPrice;
  if (!((prefs_.alertAbove && p >= t) || (!prefs_.alertAbove && p <= t))) return;
  setAlertTriggered(true);
  savePreferences();
  alertNotificationNeedsDelivery_ = true;
  if (alertNotificationsAuthorized_) deliverPriceAlertNotification();
}

void AppModel::requestPriceAlertNotifications() {
  deps_.notifier.requestAuthorization(guarded(std::function<void(bool)>([this](bool granted) {
    alertNotificationsAuthorized_ = granted;
    if (granted && alertNotificationNeedsDelivery_) deliverPriceAlertNotification();
  })));
}

void AppModel::deliverPriceAlertNotification() {
  if (!alertNotificationNeedsDelivery_ || !alertNotificationsAuthorized_) return;
  if (alertDeliveryInFlight_ || !prefs_.alertPrice) return;
  const QuoteSnapshot* q = alertQuote();
  if (!q) return;
  // "CNY 1,468.80"; an index's points stand alone.
  const std::string currency = q->currency().empty() ? "" : q->currency() + " ";
  NotificationRequest request;
  request.identifier = alertIdentifierPrefix + q->id;
  request.title = q->name.empty() ? "价格提醒已触发" : q->name + " 价格提醒";
  request.body = currency + priceText(q->price) + "，目标 " + currency +
                 priceText(*prefs_.alertPrice) + " 已达到提醒条件。";
  alertDeliveryInFlight_ = true;
  deps_.notifier.add(request, guarded([this, generation = alertGeneration_] {
                       alertDeliveryInFlight_ = false;
                       if (generation == alertGeneration_) {
                         alertNotificationNeedsDelivery_ = false;
                       } else {
                         deliverPriceAlertNotification();  // re-armed and fired meanwhile
                       }
                     }));
}

}  // namespace tidemark
