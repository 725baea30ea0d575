#include "core/Enums.h"

#include <array>

namespace tidemark {
namespace {

template <class E>
struct Entry {
  E value;
  std::string_view raw;
  std::string_view label;
};

constexpr std::array<Entry<SourceMode>, 6> sourceModes{{
    {SourceMode::mock, "mock", "模拟源"},
    {SourceMode::staticJSON, "static", "静态 JSON"},
    {SourceMode::automatic, "automatic", "自动容错"},
    {SourceMode::tencent, "tencent", "腾讯行情"},
    {SourceMode::sina, "sina", "新浪行情"},
    {SourceMode::stockSDK, "stockSDK", "stock-sdk"},
}};

constexpr std::array<Entry<QuotePhase>, 5> quotePhases{{
    {QuotePhase::loading, "loading", "加载中"},
    {QuotePhase::live, "live", "实时"},
    {QuotePhase::stale, "stale", "已过期"},
    {QuotePhase::degraded, "degraded", "降级"},
    {QuotePhase::offline, "offline", "离线"},
}};

constexpr std::array<Entry<AppTheme>, 6> appThemes{{
    {AppTheme::dark, "dark", "深空"},
    {AppTheme::light, "light", "晨雾"},
    {AppTheme::aurora, "aurora", "极光"},
    {AppTheme::amber, "amber", "琥珀"},
    {AppTheme::rose, "rose", "樱粉"},
    {AppTheme::ocean, "ocean", "深海"},
}};

constexpr std::array<Entry<RiseColors>, 2> riseColors{{
    {RiseColors::redRises, "redRises", "红涨绿跌"},
    {RiseColors::greenRises, "greenRises", "绿涨红跌"},
}};

constexpr std::array<Entry<PricePrecision>, 2> pricePrecisions{{
    {PricePrecision::two, "two", "两位小数"},
    {PricePrecision::automatic, "automatic", "自动"},
}};

template <class E, size_t N>
constexpr std::array<E, N> casesOf(const std::array<Entry<E>, N>& table) {
  std::array<E, N> out{};
  for (size_t i = 0; i < N; ++i) out[i] = table[i].value;
  return out;
}

constexpr auto sourceModeCases = casesOf(sourceModes);
constexpr auto quotePhaseCases = casesOf(quotePhases);
constexpr auto appThemeCases = casesOf(appThemes);
constexpr auto riseColorsCases = casesOf(riseColors);
constexpr auto pricePrecisionCases = casesOf(pricePrecisions);

// Tables are in declaration order, so the case's index is its row.
template <class E, size_t N>
const Entry<E>& row(const std::array<Entry<E>, N>& table, E value) {
  return table[static_cast<size_t>(value)];
}

}  // namespace

std::string_view rawValue(SourceMode v) {
  return row(sourceModes, v).raw;
}
std::string_view rawValue(QuotePhase v) {
  return row(quotePhases, v).raw;
}
std::string_view rawValue(AppTheme v) {
  return row(appThemes, v).raw;
}
std::string_view rawValue(RiseColors v) {
  return row(riseColors, v).raw;
}
std::string_view rawValue(PricePrecision v) {
  return row(pricePrecisions, v).raw;
}
std::string_view label(SourceMode v) {
  return row(sourceModes, v).label;
}
std::string_view label(QuotePhase v) {
  return row(quotePhases, v).label;
}
std::string_view label(AppTheme v) {
  return row(appThemes, v).label;
}
std::string_view label(RiseColors v) {
  return row(riseColors, v).label;
}
std::string_view label(PricePrecision v) {
  return row(pricePrecisions, v).label;
}

bool isDark(AppTheme theme) {
  return theme != AppTheme::light;
}

bool isLive(SourceMode mode) {
  return mode == SourceMode::automatic || mode == SourceMode::tencent || mode == SourceMode::sina ||
         mode == SourceMode::stockSDK;
}

template <>
std::span<const SourceMode> allCases<SourceMode>() {
  return sourceModeCases;
}
template <>
std::span<const QuotePhase> allCases<QuotePhase>() {
  return quotePhaseCases;
}
template <>
std::span<const AppTheme> allCases<AppTheme>() {
  return appThemeCases;
}
template <>
std::span<const RiseColors> allCases<RiseColors>() {
  return riseColorsCases;
}
template <>
std::span<const PricePrecision> allCases<PricePrecision>() {
  return pricePrecisionCases;
}

}  // namespace tidemark
