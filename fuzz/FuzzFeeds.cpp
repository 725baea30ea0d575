// Feed bodies as the network hands them: decoded, then parsed by both feed parsers. Every
// record that comes out must be a usable quote.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "sources/QuoteFeeds.h"
#include "sources/TextDecoding.h"

namespace {

const std::vector<std::string> symbols{"600519", "00700",  "NVDA",   "000858", "600000",
                                       "601988", "300750", "000001", "688981", "ABCDE",
                                       "WXYZ1",  "AAPL",   "BRK.B",  "601318", "600519"};

void check(const std::vector<tidemark::QuoteSnapshot>& records) {
  for (const auto& q : records) {
    if (!(q.price > 0) || !(q.prevClose > 0) || q.high < q.price || q.low > q.price) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text = tidemark::decodeLiveText({reinterpret_cast<const char*>(data), size});
  if (!tidemark::isValidUTF8(text)) std::abort();
  check(tidemark::parseTencent(text, symbols, {}));
  check(tidemark::parseSina(text, symbols, {}));
  return 0;
}
