#pragma once

#include <string>
#include <vector>

namespace tidemark::bench {

// `count` distinct symbols the feeds would recognise, mixing A-shares, Hong Kong codes and US
// tickers the way a large watchlist would.
inline std::vector<std::string> symbols(size_t count) {
  std::vector<std::string> out;
  out.reserve(count);
  for (size_t i = 0; out.size() < count; ++i) {
    char buffer[16];
    switch (i % 4) {
      case 0:
        std::snprintf(buffer, sizeof buffer, "6%05zu", i / 4 % 100000);
        break;
      case 1:
        std::snprintf(buffer, sizeof buffer, "0%05zu", i / 4 % 100000);
        break;
      case 2:
        std::snprintf(buffer, sizeof buffer, "%05zu", i / 4 % 100000);
        break;
      default: {
        std::string ticker;
        for (size_t n = i / 4 + 1; n > 0; n /= 26)
          ticker.insert(ticker.begin(), char('A' + n % 26));
        std::snprintf(buffer, sizeof buffer, "%s", ticker.substr(0, 5).c_str());
      }
    }
    out.push_back(buffer);
  }
  return out;
}

}  // namespace tidemark::bench
