#include "core/Json.h"

#include <cmath>

namespace tidemark::json {
namespace {

bool allFinite(const Json& value) {
  if (value.is_number_float()) return std::isfinite(value.get<double>());
  if (value.is_structured()) {
    for (const auto& element : value)
      if (!allFinite(element)) return false;
  }
  return true;
}

const Json* member(const Json& object, std::string_view key) {
  if (!object.is_object()) return nullptr;
  auto it = object.find(key);
  return it == object.end() ? nullptr : &*it;
}

}  // namespace

std::optional<Json> parse(std::string_view text) {
  Json value = Json::parse(text, nullptr, false);
  if (value.is_discarded()) return std::nullopt;
  return value;
}

std::optional<std::string> encode(const Json& value) {
  if (!allFinite(value)) return std::nullopt;
  // Invalid UTF-8 in a string is replaced rather than thrown on.
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<std::string> string(const Json& object, std::string_view key) {
  const Json* v = member(object, key);
  if (!v || !v->is_string()) return std::nullopt;
  return v->get<std::string>();
}

std::optional<double> number(const Json& object, std::string_view key) {
  const Json* v = member(object, key);
  if (!v || !v->is_number()) return std::nullopt;
  return v->get<double>();
}

std::optional<int64_t> asInteger(const Json& v) {
  if (v.is_number_integer()) {
    if (v.is_number_unsigned() && v.get<uint64_t>() > static_cast<uint64_t>(INT64_MAX))
      return std::nullopt;
    return v.get<int64_t>();
  }
  if (v.is_number_float()) {
    double d = v.get<double>();
    // 2^63 itself does not fit, hence the strict upper bound.
    if (std::trunc(d) == d && d >= -9223372036854775808.0 && d < 9223372036854775808.0)
      return static_cast<int64_t>(d);
  }
  return std::nullopt;
}

std::optional<int64_t> integer(const Json& object, std::string_view key) {
  const Json* v = member(object, key);
  if (!v) return std::nullopt;
  return asInteger(*v);
}

std::optional<bool> boolean(const Json& object, std::string_view key) {
  const Json* v = member(object, key);
  if (!v || !v->is_boolean()) return std::nullopt;
  return v->get<bool>();
}

std::optional<Date> date(const Json& object, std::string_view key) {
  auto seconds = number(object, key);
  if (!seconds) return std::nullopt;
  return Date{*seconds};
}

}  // namespace tidemark::json
