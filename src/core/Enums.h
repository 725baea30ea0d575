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

// Raw values are what gets persisted; labels are what the user reads.
std::string_view rawValue(SourceMode mode);
std::string_view rawValue(QuotePhase phase);
std::string_view rawValue(AppTheme theme);
std::string_view label(SourceMode mode);
std::string_view label(QuotePhase phase);
std::string_view label(AppTheme theme);

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

// An unknown raw value gives no value.
template <class E>
std::optional<E> fromRawValue(std::string_view raw) {
  for (E value : allCases<E>())
    if (rawValue(value) == raw) return value;
  return std::nullopt;
}

}  // namespace tidemark
