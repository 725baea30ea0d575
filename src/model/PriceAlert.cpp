#include "model/PriceAlert.h"

namespace tidemark {

bool PriceAlert::firesAt(const QuoteSnapshot& quote) const {
  if (!rule.price || !rule.symbolID || rule.triggered) return false;
  const double p = quote.price;
  const double t = *rule.price;
  return (rule.above && p >= t) || (!rule.above && p <= t);
}

std::string PriceAlert::identifier(const std::string& symbol) {
  return "tidemark.price-alert." + symbol;
}

NotificationRequest PriceAlert::notification(const QuoteSnapshot& quote, bool masked,
                                             PricePrecision precision) const {
  NotificationRequest request;
  request.identifier = identifier(quote.id);
  request.title = alertTitle(quote);
  request.body = masked ? maskedAlertBody : firedSentence(asListed(), quote, precision);
  return request;
}

AlertRule PriceAlert::asListed() const {
  return AlertRule{std::string(primaryAlertID),
                   rule.symbolID.value_or(""),
                   rule.above ? AlertKind::priceAbove : AlertKind::priceBelow,
                   rule.price.value_or(0),
                   AlertRepeat::once,
                   true,
                   std::nullopt};
}

void PriceAlert::readFrom(const Preferences& record) {
  rule = PriceAlertRule{record.alertSymbolID, validAlertPrice(record.alertPrice), record.alertAbove,
                        record.alertTriggered};
}

void PriceAlert::writeTo(Preferences& record) const {
  record.alertSymbolID = rule.symbolID;
  record.alertPrice = rule.price;
  record.alertAbove = rule.above;
  record.alertTriggered = rule.triggered;
}

}  // namespace tidemark
