#include "model/Holdings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <map>
#include <unordered_map>

#include "core/Market.h"
#include "core/NumberText.h"

namespace tidemark {
namespace {

bool validShares(double shares) {
  return std::isfinite(shares) && shares > 0;
}
bool validCost(double cost) {
  return std::isfinite(cost) && cost >= 0;
}

// Sums of one currency before the percentages are taken.
struct Sums {
  double marketValue = 0, dayProfit = 0, yesterday = 0, totalProfit = 0, paid = 0;
  size_t counted = 0, missing = 0;
};

}  // namespace

std::optional<std::string> holdingProblem(double shares, double cost) {
  if (!validShares(shares)) return "持有数量须大于 0";
  if (shares > maxHoldingShares) return "持有数量不能超过 1 万亿";
  if (!validCost(cost)) return "成本价须为不小于 0 的数字";
  if (cost > maxHoldingCost) return "成本价不能超过 10 亿";
  return std::nullopt;
}

Holding mergedHolding(const Holding& held, double shares, double cost) {
  const double total = held.shares + shares;
  return {held.symbolID, total, (held.shares * held.cost + shares * cost) / total};
}

bool isHoldableQuote(const QuoteSnapshot& quote) {
  const auto holdable = [](double price) {
    return std::isfinite(price) && price >= 0 && price <= maxHoldingCost;
  };
  return holdable(quote.price) && holdable(quote.prevClose);
}

Json toJson(const Holding& holding) {
  return Json{{"symbolID", holding.symbolID}, {"shares", holding.shares}, {"cost", holding.cost}};
}

std::optional<Holding> holdingFromJson(const Json& object) {
  if (!object.is_object()) return std::nullopt;
  auto symbol = json::string(object, "symbolID");
  auto shares = json::number(object, "shares");
  auto cost = json::number(object, "cost");
  // An index is points, not a price anyone pays: it is never held.
  if (!symbol || symbol->empty() || isIndexSymbol(*symbol) || !shares || !cost ||
      holdingProblem(*shares, *cost))
    return std::nullopt;
  return Holding{*symbol, *shares, *cost};
}

Json toJson(const HoldingsBackup& backup) {
  Json holdings = Json::array();
  for (const Holding& holding : backup.holdings) holdings.push_back(toJson(holding));
  return Json{{"version", backup.version},
              {"savedAt", backup.savedAt.sinceReference},
              {"holdings", std::move(holdings)},
              {"showsDayProfitInTray", backup.showsDayProfitInTray}};
}

std::optional<HoldingsBackup> holdingsBackupFromBytes(std::string_view bytes, size_t* dropped) {
  auto document = json::parse(bytes);
  if (!document || !document->is_object()) return std::nullopt;
  auto version = json::integer(*document, "version");
  auto savedAt = json::date(*document, "savedAt");
  auto list = document->find("holdings");
  if (!version || !savedAt || list == document->end() || !list->is_array()) return std::nullopt;
  HoldingsBackup backup{*version, *savedAt, {}, false};
  // An absent switch is off; one of another type is a field amiss like any other.
  if (document->contains("showsDayProfitInTray")) {
    auto shows = json::boolean(*document, "showsDayProfitInTray");
    if (!shows) return std::nullopt;
    backup.showsDayProfitInTray = *shows;
  }
  size_t bad = 0;
  std::unordered_map<std::string, size_t> at;
  for (const Json& entry : *list) {
    auto holding = holdingFromJson(entry);
    if (!holding) {
      ++bad;
      continue;
    }
    if (auto it = at.find(holding->symbolID); it != at.end()) {
      backup.holdings[it->second] = std::move(*holding);
      continue;
    }
    if (backup.holdings.size() == maxHoldingsCount) {
      ++bad;
      continue;
    }
    at.emplace(holding->symbolID, backup.holdings.size());
    backup.holdings.push_back(std::move(*holding));
  }
  if (dropped) *dropped = bad;
  return backup;
}

HoldingFigures holdingFigures(const Holding& holding, const QuoteSnapshot& quote) {
  const double p = quote.price, q = quote.prevClose, n = holding.shares;
  HoldingFigures f;
  f.marketValue = n * p;
  f.dayProfit = n * (p - q);
  f.dayProfitPct = quote.changePct();
  f.totalProfit = n * (p - holding.cost);
  if (holding.cost > 0) f.totalProfitPct = (p - holding.cost) / holding.cost * 100;
  return f;
}

std::vector<HoldingsTotal> holdingsTotals(
    const std::vector<Holding>& holdings,
    const std::function<const QuoteSnapshot*(const std::string&)>& quote,
    const std::function<std::string(const std::string&)>& currencyOf) {
  std::vector<HeldQuote> held;
  held.reserve(holdings.size());
  for (const Holding& holding : holdings) held.push_back({&holding, quote(holding.symbolID)});
  return holdingsTotals(held, currencyOf);
}

std::vector<HoldingsTotal> holdingsTotals(
    const std::vector<HeldQuote>& held,
    const std::function<std::string(const std::string&)>& currencyOf) {
  static constexpr std::array<std::string_view, 3> order{"CNY", "HKD", "USD"};
  std::map<std::string, Sums, std::less<>> sums;
  for (const auto& [held, q] : held) {
    const Holding& holding = *held;
    if (!q) {
      ++sums[currencyOf(holding.symbolID)].missing;
      continue;
    }
    Sums& s = sums[q->currency()];
    const HoldingFigures f = holdingFigures(holding, *q);
    s.marketValue += f.marketValue;
    s.dayProfit += f.dayProfit;
    s.yesterday += holding.shares * q->prevClose;
    s.totalProfit += f.totalProfit;
    s.paid += holding.shares * holding.cost;
    ++s.counted;
  }
  std::vector<HoldingsTotal> totals;
  for (std::string_view currency : order) {
    auto it = sums.find(currency);
    if (it == sums.end()) continue;
    const Sums& s = it->second;
    HoldingsTotal t{std::string(currency), s.marketValue, s.dayProfit, std::nullopt,
                    s.totalProfit,         std::nullopt,  s.missing,   s.counted};
    if (s.yesterday > 0) t.dayProfitPct = s.dayProfit / s.yesterday * 100;
    if (s.paid > 0) t.totalProfitPct = s.totalProfit / s.paid * 100;
    totals.push_back(std::move(t));
  }
  return totals;
}

std::vector<std::string> dayProfitTexts(const std::vector<HoldingsTotal>& totals) {
  std::vector<std::string> texts;
  for (const HoldingsTotal& t : totals)
    if (t.counted > 0) texts.push_back(t.currency + " " + signedAmountText(t.dayProfit));
  return texts;
}

std::string sharesText(double shares) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.4f", std::abs(shares));
  std::string digits(buffer);
  while (digits.back() == '0') digits.pop_back();
  if (digits.back() == '.') digits.pop_back();
  const size_t point = std::min(digits.find('.'), digits.size());
  for (size_t at = point; at > 3; at -= 3) digits.insert(at - 3, ",");
  return (shares < 0 ? "-" : "") + digits;
}

double centRounded(double value) {
  // Rounded on the value to six decimals first, which drops the binary noise of a product or
  // difference (10.5 × (186.25 − 182.40) is 40.424999…94 in doubles, 40.425 in money) and keeps
  // what was typed or sent: 1.005 rounds up as written. Beyond 1e13 a double has no cents left
  // to round, and below 1e-4 nothing reaches a cent.
  if (!std::isfinite(value) || std::abs(value) >= 1e13) return value;
  if (std::abs(value) < 1e-4) return 0;  // also no "-0.00"
  char buffer[64];
  const char* end =
      std::to_chars(buffer, buffer + sizeof buffer, std::abs(value), std::chars_format::fixed, 6)
          .ptr;
  const std::string_view text(buffer, static_cast<size_t>(end - buffer));
  const size_t point = text.find('.');
  if (point == std::string_view::npos || text.size() - point <= 3) {
    double exact = 0;
    std::from_chars(text.data(), text.data() + text.size(), exact);
    return value < 0 ? -exact : exact;
  }
  int64_t cents = 0;
  for (char c : text.substr(0, point + 3))
    if (c != '.') cents = cents * 10 + (c - '0');
  if (text[point + 3] >= '5') ++cents;
  // The double nearest the rounded decimal, so that it prints as that decimal again.
  const std::string decimal =
      std::to_string(cents / 100) + "." + char('0' + cents % 100 / 10) + char('0' + cents % 10);
  double rounded = 0;
  std::from_chars(decimal.data(), decimal.data() + decimal.size(), rounded);
  return value < 0 && rounded > 0 ? -rounded : rounded;  // no "-0.00"
}

std::string amountText(double value) {
  return priceText(centRounded(value));
}

std::string signedAmountText(double value) {
  const double cents = centRounded(value);
  // A figure that rounds to zero shows no sign.
  if (cents == 0) return priceText(0);
  return (cents > 0 ? "+" : "-") + priceText(std::abs(cents));
}

std::string profitText(double amount, const std::optional<double>& pct) {
  return signedAmountText(amount) + " (" + (pct ? percentText(*pct) : "—") + ")";
}

std::string editableNumberText(double value) {
  std::string digits = sharesText(value);
  std::erase(digits, ',');
  return digits;
}

}  // namespace tidemark
