#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "core/Date.h"
#include "core/Enums.h"

namespace tidemark {

// Objects keep their keys in insertion order, so records encode in field order.
using Json = nlohmann::ordered_json;

namespace json {

// Parses without throwing; malformed text gives no value.
std::optional<Json> parse(std::string_view text);

// Compact text, or no value when a number is not finite (such a record cannot be encoded).
std::optional<std::string> encode(const Json& value);

// Strict member readers: a missing key or a value of another type gives no value. An integer
// accepts a whole-valued number; a double accepts any number.
std::optional<std::string> string(const Json& object, std::string_view key);
std::optional<double> number(const Json& object, std::string_view key);
std::optional<int64_t> integer(const Json& object, std::string_view key);
std::optional<bool> boolean(const Json& object, std::string_view key);
// Seconds since 2001-01-01T00:00:00Z.
std::optional<Date> date(const Json& object, std::string_view key);

std::optional<int64_t> asInteger(const Json& value);

template <class E>
std::optional<E> enumeration(const Json& object, std::string_view key) {
  auto raw = string(object, key);
  if (!raw) return std::nullopt;
  return fromRawValue<E>(*raw);
}

}  // namespace json
}  // namespace tidemark
