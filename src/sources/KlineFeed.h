#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/DataSourceEndpoints.h"
#include "core/Kline.h"

namespace tidemark {

// Periods asked of the feed: the chart's 120 and the 20 before them its longest average needs.
inline constexpr int klineRequestCount = 160;

// The Tencent K-line address of a feed code ("sh600519"): the endpoint, the code and
// ",day,,,160,qfq" (or week, month). None for a symbol the feed has no code for.
std::optional<std::string> tencentKlineURL(const DataSourceEndpoints& endpoints,
                                           std::string_view symbol, KlinePeriod period);

// The periods of a Tencent K-line answer, oldest first: the forward-adjusted series ("qfqday")
// or, where the feed does not adjust (indices), the plain one ("day"). Rows are
// [date, open, close, high, low, volume, ...]; a row without a date, with a field that is no
// number, a price not above zero or a high below its low is skipped. None when the answer is
// no such document or holds no series for the code.
std::optional<std::vector<KlineBar>> parseTencentKline(std::string_view body,
                                                       std::string_view feedCode,
                                                       KlinePeriod period);

}  // namespace tidemark
