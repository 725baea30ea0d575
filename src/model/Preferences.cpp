#include "model/Preferences.h"

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
  object["menuDensity"] = p.menuDensity;
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
  return object;
}

std::optional<Preferences> preferencesFromJson(const Json& object) {
  using namespace json;
  if (!object.is_object()) return std::nullopt;
  auto activeID = string(object, "activeID");
  auto theme = enumeration<AppTheme>(object, "theme");
  auto reduceMotion = boolean(object, "reduceMotion");
  auto refreshInterval = number(object, "refreshInterval");
  auto sourceMode = enumeration<SourceMode>(object, "sourceMode");
  auto masked = boolean(object, "masked");
  auto orbSize = number(object, "orbSize");
  auto autoRotate = boolean(object, "autoRotate");
  auto menuDensity = integer(object, "menuDensity");
  auto phase = enumeration<QuotePhase>(object, "phase");
  auto latencyMS = integer(object, "latencyMS");
  auto updatedAt = date(object, "updatedAt");
  auto onboardingSeen = boolean(object, "onboardingSeen");
  auto alertAbove = boolean(object, "alertAbove");
  auto alertTriggered = boolean(object, "alertTriggered");
  if (!activeID || !theme || !reduceMotion || !refreshInterval || !sourceMode || !masked ||
      !orbSize || !autoRotate || !menuDensity || !phase || !latencyMS || !updatedAt ||
      !onboardingSeen || !alertAbove || !alertTriggered)
    return std::nullopt;

  Preferences p;
  p.activeID = *activeID;
  p.theme = *theme;
  p.reduceMotion = *reduceMotion;
  p.refreshInterval = *refreshInterval;
  p.sourceMode = *sourceMode;
  p.masked = *masked;
  p.orbSize = *orbSize;
  p.autoRotate = *autoRotate;
  p.menuDensity = *menuDensity;
  p.phase = *phase;
  p.latencyMS = *latencyMS;
  p.updatedAt = *updatedAt;
  p.onboardingSeen = *onboardingSeen;
  p.alertAbove = *alertAbove;
  p.alertTriggered = *alertTriggered;
  if (!readOptional(object, "orbShowsName", p.orbShowsName, boolean) ||
      !readOptional(object, "lastError", p.lastError, string) ||
      !readOptional(object, "alertPrice", p.alertPrice, number) ||
      !readOptional(object, "alertSymbolID", p.alertSymbolID, string))
    return std::nullopt;
  return p;
}

double clampedRefreshInterval(double seconds) {
  return (seconds == 0 || seconds == 2.6 || seconds == 5.0) ? seconds : 2.6;
}

double clampedOrbSize(double points) {
  return (points == 72 || points == 96 || points == 132) ? points : 96;
}

int64_t clampedMenuDensity(int64_t density) {
  return static_cast<uint64_t>(density) < 3 ? density : 0;
}

std::optional<double> validAlertPrice(std::optional<double> price) {
  if (price && std::isfinite(*price) && *price > 0) return price;
  return std::nullopt;
}

}  // namespace tidemark
