#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace tidemark {

// Where quotes come from.
enum class SourceMode { mock, staticJSON, automatic, tencent, sina, stockSDK };

// How fresh the data on screen is.
enum class QuotePhase { loading, live, stale, degraded, offline };

// Colour theme.
enum class AppTheme { dark, light, aurora, amber, rose, ocean };

// Which colour a rise takes: red (the mainland convention) or green, the fall the other.
enum class RiseColors { redRises, greenRises };

// How many decimals prices show: always two, or by the security (funds and pennies get more).
enum class PricePrecision { two, automatic };

// Raw values are what gets persisted; labels are what the user reads.
std::string_view rawValue(SourceMode mode);
std::string_view rawValue(QuotePhase phase);
std::string_view rawValue(AppTheme theme);
std::string_view rawValue(RiseColors colors);
std::string_view rawValue(PricePrecision precision);
std::string_view label(SourceMode mode);
std::string_view label(QuotePhase phase);
std::string_view label(AppTheme theme);
std::string_view label(RiseColors colors);
std::string_view label(PricePrecision precision);

bool isDark(AppTheme theme);
// The four modes that ask live feeds.
bool isLive(SourceMode mode);

template <class E>
std::span<const E> allCases();
template <>
std::span<const SourceMode> allCases<SourceMode>();
template <>
std::span<const QuotePhase> allCases<QuotePhase>();
template <>
std::span<const AppTheme> allCases<AppTheme>();
template <>
std::span<const RiseColors> allCases<RiseColors>();
template <>
std::span<const PricePrecision> allCases<PricePrecision>();

// An unknown raw value gives no value.
template <class E>
std::optional<E> fromRawValue(std::string_view raw) {
  for (E value : allCases<E>())
    if (rawValue(value) == raw) return value;
  return std::nullopt;
}

}  // namespace tidemark
