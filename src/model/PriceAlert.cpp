#include "model/PriceAlert.h"

#include "core/NumberText.h"

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

NotificationRequest PriceAlert::notification(const QuoteSnapshot& quote) const {
  // "CNY 1,468.80"; an index's points stand alone.
  const std::string currency = quote.currency().empty() ? "" : quote.currency() + " ";
  NotificationRequest request;
  request.identifier = identifier(quote.id);
  request.title = quote.name.empty() ? "价格提醒已触发" : quote.name + " 价格提醒";
  request.body = currency + priceText(quote.price) + "，目标 " + currency +
                 priceText(rule.price.value_or(0)) + " 已达到提醒条件。";
  return request;
}

void PriceAlert::readFrom(const Preferences& record) {
  rule = AlertRule{record.alertSymbolID, validAlertPrice(record.alertPrice), record.alertAbove,
                   record.alertTriggered};
}

void PriceAlert::writeTo(Preferences& record) const {
  record.alertSymbolID = rule.symbolID;
  record.alertPrice = rule.price;
  record.alertAbove = rule.above;
  record.alertTriggered = rule.triggered;
}

}  // namespace tidemark
