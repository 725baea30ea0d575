// What the bridge process prints: read as quotes and as an intraday series.

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "sources/StockSDKBridge.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view output(reinterpret_cast<const char*>(data), size);
  for (const auto& q : tidemark::decodeSDKQuotes(output, {}))
    if (!(q.price > 0) || !(q.prevClose > 0) || q.id.empty()) std::abort();
  if (auto values = tidemark::decodeTimeline(output))
    for (double v : *values)
      if (!std::isfinite(v) || !(v > 0)) std::abort();
  return 0;
}
