#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "core/Date.h"
#include "core/Enums.h"
#include "core/Json.h"
#include "core/Kline.h"

namespace tidemark {

// What the tray shows beside its icon: nothing, the active security's percentage, or its code,
// price and percentage. Stored as 0, 1 and 2.
enum class MenuDensity : int64_t { iconOnly = 0, percent = 1, full = 2 };
inline constexpr std::array<MenuDensity, 3> menuDensities{MenuDensity::iconOnly,
                                                          MenuDensity::percent, MenuDensity::full};

// The persisted settings record, one JSON document in the store.
struct Preferences {
  std::string activeID;
  AppTheme theme = AppTheme::dark;
  bool reduceMotion = false;
  double refreshInterval = 2.6;
  SourceMode sourceMode = SourceMode::mock;
  bool masked = false;
  double orbSize = 96;
  bool autoRotate = true;
  MenuDensity menuDensity = MenuDensity::iconOnly;
  std::optional<bool> orbShowsName;
  QuotePhase phase = QuotePhase::live;
  std::optional<std::string> lastError;
  int64_t latencyMS = 86;
  Date updatedAt;
  bool onboardingSeen = false;
  std::optional<double> alertPrice;
  bool alertAbove = true;
  bool alertTriggered = false;
  std::optional<std::string> alertSymbolID;
  // The detail's chart: candles of this period, or the intraday line when absent.
  std::optional<KlinePeriod> detailChart;
  // Written only when not the default, so that records of earlier versions read the same.
  RiseColors riseColors = RiseColors::redRises;
  PricePrecision pricePrecision = PricePrecision::two;

  friend bool operator==(const Preferences&, const Preferences&) = default;
};

// Keys in field order; an absent optional is left out.
Json toJson(const Preferences& preferences);
// The optional keys (the five optionals and the two display choices) may be missing (or null); a
// missing required key, a value of the wrong type or an unknown raw value rejects the whole record,
// and `badKey` names the first such key (empty when the document is not an object).
std::optional<Preferences> preferencesFromJson(const Json& object, std::string* badKey = nullptr);

// The allowed values of the clamped settings, and what replaces anything else.
double clampedRefreshInterval(double seconds);  // 0, 2.6, 5.0 → else 2.6
// The orb's three sizes in points, small to large; the middle one is the default.
inline constexpr std::array<double, 3> orbSizes{72, 96, 132};
double clampedOrbSize(double points);            // one of orbSizes → else 96
MenuDensity clampedMenuDensity(int64_t stored);  // 0…2 → else iconOnly
// Only finite thresholds above zero are kept.
std::optional<double> validAlertPrice(std::optional<double> price);
// The preferences a first start uses: the store's defaults but for the first symbol and the name
// switch, which is always set.
Preferences startingPreferences();

}  // namespace tidemark
