#include "views/KlineGeometry.h"

#include <algorithm>
#include <cmath>

namespace tidemark {

KlineFrame klineFrame(const std::vector<KlineBar>& bars, const Rect& plot,
                      std::optional<double> cost) {
  KlineFrame frame;
  frame.count = bars.size();
  const double split = plot.height * 0.75;
  frame.prices = {plot.x, plot.y, plot.width, std::max(0.0, split - 8)};
  frame.volumes = {plot.x, plot.y + split, plot.width, plot.height - split};
  if (bars.empty()) return frame;
  double low = bars.front().low, high = bars.front().high;
  for (const KlineBar& b : bars) {
    low = std::min(low, b.low);
    high = std::max(high, b.high);
    frame.maxVolume = std::max(frame.maxVolume, b.volume);
  }
  if (cost && *cost > 0) {
    low = std::min(low, *cost);
    high = std::max(high, *cost);
  }
  // A flat series gets one percent of its price either way, any other 6 % of its range.
  const double air = high > low ? (high - low) * 0.06 : std::abs(high) * 0.01 + 0.01;
  frame.low = low - air;
  frame.high = high + air;
  return frame;
}

double candleX(const KlineFrame& frame, size_t i) {
  if (frame.count == 0) return frame.prices.x;
  return frame.prices.x +
         (static_cast<double>(i) + 0.5) * frame.prices.width / static_cast<double>(frame.count);
}

double candleWidth(const KlineFrame& frame) {
  if (frame.count == 0) return 1;
  return std::max(1.0, frame.prices.width / static_cast<double>(frame.count) * 0.7);
}

double priceY(const KlineFrame& frame, double price) {
  if (!(frame.high > frame.low)) return frame.prices.midY();
  return frame.prices.maxY() - (price - frame.low) / (frame.high - frame.low) * frame.prices.height;
}

Rect volumeBar(const KlineFrame& frame, size_t i, double volume) {
  const double w = candleWidth(frame);
  const double h =
      frame.maxVolume > 0 ? std::max(0.0, volume) / frame.maxVolume * frame.volumes.height : 0;
  return {candleX(frame, i) - w / 2, frame.volumes.maxY() - h, w, h};
}

std::optional<size_t> candleIndex(const KlineFrame& frame, double x) {
  if (frame.count == 0 || x < frame.prices.x || x >= frame.prices.maxX()) return std::nullopt;
  const double slot = frame.prices.width / static_cast<double>(frame.count);
  return std::min(frame.count - 1, static_cast<size_t>((x - frame.prices.x) / slot));
}

std::vector<size_t> klineDateLabels(const std::vector<KlineBar>& bars, KlinePeriod period) {
  // Day candles change label with the month ("2026-10"), the others with the year ("2026").
  const size_t length = period == KlinePeriod::day ? 7 : 4;
  std::vector<size_t> labels;
  for (size_t i = 1; i < bars.size(); ++i)
    if (bars[i].date.compare(0, length, bars[i - 1].date, 0, length) != 0) labels.push_back(i);
  return labels;
}

}  // namespace tidemark
