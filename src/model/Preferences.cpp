#include "model/Preferences.h"

#include <algorithm>
#include <cmath>

namespace tidemark {
namespace {

// An optional member: absent or null gives "no value" (accepted); a present value of the wrong
// type makes the whole record unreadable.
template <class T, class Read>
bool readOptional(const Json& object, const char* key, std::optional<T>& out, Read read) {
  auto it = object.find(key);
  if (it == object.end() || it->is_null()) return true;
  auto value = read(object, key);
  if (!value) return false;
  out = *value;
  return true;
}

}  // namespace

Json toJson(const Preferences& p) {
  Json object = Json::object();
  object["activeID"] = p.activeID;
  object["theme"] = rawValue(p.theme);
  object["reduceMotion"] = p.reduceMotion;
  object["refreshInterval"] = p.refreshInterval;
  object["sourceMode"] = rawValue(p.sourceMode);
  object["masked"] = p.masked;
  object["orbSize"] = p.orbSize;
  object["autoRotate"] = p.autoRotate;
  object["menuDensity"] = static_cast<int64_t>(p.menuDensity);
  if (p.orbShowsName) object["orbShowsName"] = *p.orbShowsName;
  object["phase"] = rawValue(p.phase);
  if (p.lastError) object["lastError"] = *p.lastError;
  object["latencyMS"] = p.latencyMS;
  object["updatedAt"] = p.updatedAt.sinceReference;
  object["onboardingSeen"] = p.onboardingSeen;
  if (p.alertPrice) object["alertPrice"] = *p.alertPrice;
  object["alertAbove"] = p.alertAbove;
  object["alertTriggered"] = p.alertTriggered;
  if (p.alertSymbolID) object["alertSymbolID"] = *p.alertSymbolID;
  if (p.detailChart) object["detailChart"] = rawValue(*p.detailChart);
  if (p.riseColors != RiseColors::redRises) object["riseColors"] = rawValue(p.riseColors);
  if (p.pricePrecision != PricePrecision::two)
    object["pricePrecision"] = rawValue(p.pricePrecision);
  return object;
}

std::optional<Preferences> preferencesFromJson(const Json& object, std::string* badKey) {
  using namespace json;
  if (badKey) badKey->clear();
  if (!object.is_object()) return std::nullopt;
  Preferences p;
  std::string_view bad;
  const auto take = [&bad]<class T>(std::optional<T> value, std::string_view key, T& out) {
    if (value)
      out = std::move(*value);
    else if (bad.empty())
      bad = key;
  };
  const auto takeOptional = [&bad, &object](const char* key, auto& out, auto read) {
    if (!readOptional(object, key, out, read) && bad.empty()) bad = key;
  };
  take(string(object, "activeID"), "activeID", p.activeID);
  take(enumeration<AppTheme>(object, "theme"), "theme", p.theme);
  take(boolean(object, "reduceMotion"), "reduceMotion", p.reduceMotion);
  take(number(object, "refreshInterval"), "refreshInterval", p.refreshInterval);
  take(enumeration<SourceMode>(object, "sourceMode"), "sourceMode", p.sourceMode);
  take(boolean(object, "masked"), "masked", p.masked);
  take(number(object, "orbSize"), "orbSize", p.orbSize);
  take(boolean(object, "autoRotate"), "autoRotate", p.autoRotate);
  int64_t density = 0;
  take(integer(object, "menuDensity"), "menuDensity", density);
  p.menuDensity = static_cast<MenuDensity>(density);  // clamped where it is used
  takeOptional("orbShowsName", p.orbShowsName, boolean);
  take(enumeration<QuotePhase>(object, "phase"), "phase", p.phase);
  takeOptional("lastError", p.lastError, string);
  take(integer(object, "latencyMS"), "latencyMS", p.latencyMS);
  take(date(object, "updatedAt"), "updatedAt", p.updatedAt);
  take(boolean(object, "onboardingSeen"), "onboardingSeen", p.onboardingSeen);
  takeOptional("alertPrice", p.alertPrice, number);
  take(boolean(object, "alertAbove"), "alertAbove", p.alertAbove);
  take(boolean(object, "alertTriggered"), "alertTriggered", p.alertTriggered);
  takeOptional("alertSymbolID", p.alertSymbolID, string);
  takeOptional("detailChart", p.detailChart, [](const Json& o, const char* key) {
    auto raw = string(o, key);
    return raw ? klinePeriodFromRawValue(*raw) : std::nullopt;
  });
  std::optional<RiseColors> colors;
  takeOptional("riseColors", colors, enumeration<RiseColors>);
  p.riseColors = colors.value_or(RiseColors::redRises);
  std::optional<PricePrecision> precision;
  takeOptional("pricePrecision", precision, enumeration<PricePrecision>);
  p.pricePrecision = precision.value_or(PricePrecision::two);
  if (bad.empty()) return p;
  if (badKey) *badKey = bad;
  return std::nullopt;
}

double clampedRefreshInterval(double seconds) {
  return (seconds == 0 || seconds == 2.6 || seconds == 5.0) ? seconds : 2.6;
}

double clampedOrbSize(double points) {
  return std::find(orbSizes.begin(), orbSizes.end(), points) != orbSizes.end() ? points
                                                                               : orbSizes[1];
}

MenuDensity clampedMenuDensity(int64_t stored) {
  return static_cast<uint64_t>(stored) < menuDensities.size() ? static_cast<MenuDensity>(stored)
                                                              : MenuDensity::iconOnly;
}

std::optional<double> validAlertPrice(std::optional<double> price) {
  if (price && std::isfinite(*price) && *price > 0) return price;
  return std::nullopt;
}

Preferences startingPreferences() {
  Preferences p;
  p.activeID = "600519";
  p.orbShowsName = false;
  return p;
}

}  // namespace tidemark
