// A remote or cached manifest, and URLs. A manifest that decodes must encode back to itself.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/DataSourceEndpoints.h"
#include "core/Url.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (auto manifest = tidemark::decodeManifest(bytes)) {
    (void)manifest->isValid();
    if (tidemark::decodeManifest(tidemark::toJson(*manifest).dump()) != *manifest) std::abort();
  }
  (void)tidemark::isTrustedManifestURL(bytes);
  (void)tidemark::parseUrl(bytes);
  return 0;
}
