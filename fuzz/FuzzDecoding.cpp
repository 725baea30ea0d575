// Text decoding alone: whatever the bytes, the result is valid UTF-8, and text that already is
// plain ASCII comes back unchanged.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "sources/TextDecoding.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::string text = tidemark::decodeLiveText(bytes);
  if (!tidemark::isValidUTF8(text)) std::abort();
  if (tidemark::isValidUTF8(bytes) && !tidemark::isValidUTF8(tidemark::repairUTF8(bytes)))
    std::abort();
  bool ascii = true;
  for (unsigned char c : bytes) ascii = ascii && c < 0x80;
  if (ascii && text != bytes) std::abort();
  return 0;
}
