#pragma once

#include <optional>
#include <vector>

#include "core/Kline.h"
#include "views/Geometry2D.h"

namespace tidemark {

// The candle chart shows this many periods at most: the latest ones.
inline constexpr size_t klineShownCount = 120;

// Where the candle chart draws in its plot rectangle: prices in the upper three quarters, volume
// in the lower quarter, one slot per period on a category axis (no gaps for holidays).
struct KlineFrame {
  Rect prices, volumes;
  double low = 0, high = 0;  // the price range drawn, a little air included
  double maxVolume = 0;
  size_t count = 0;
};

// The frame of `bars` in `plot`; a cost line, when given, is kept inside the range.
KlineFrame klineFrame(const std::vector<KlineBar>& bars, const Rect& plot,
                      std::optional<double> cost = std::nullopt);
// The centre of period i's slot and a candle's width (70 % of a slot, at least one pixel).
double candleX(const KlineFrame& frame, size_t i);
double candleWidth(const KlineFrame& frame);
// A price's height: the range's low at the bottom of the prices, its high at their top.
double priceY(const KlineFrame& frame, double price);
// Period i's volume bar, standing on the bottom of the volumes.
Rect volumeBar(const KlineFrame& frame, size_t i, double volume);
// The period under a horizontal position; none outside the slots.
std::optional<size_t> candleIndex(const KlineFrame& frame, double x);
// The periods whose date opens a new month (day K) or a new year (week and month K), where the
// date labels stand; the first period is not one.
std::vector<size_t> klineDateLabels(const std::vector<KlineBar>& bars, KlinePeriod period);

}  // namespace tidemark
