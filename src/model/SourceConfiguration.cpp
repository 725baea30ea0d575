#include "model/SourceConfiguration.h"

#include <algorithm>

#include "core/FileIO.h"
#include "model/StoreKeys.h"

namespace tidemark {

SourceConfiguration SourceConfiguration::restored(const KeyValueStore& store,
                                                  const Bundle& bundle) {
  SourceConfiguration c;
  if (auto bytes = store.data(storeKeys::sourceManifest)) {
    if (auto manifest = decodeManifest(*bytes); manifest && manifest->isValid()) {
      c.endpoints = manifest->endpoints;
      c.revision = manifest->revision;
      c.status = "使用缓存地址 r" + std::to_string(manifest->revision);
      return c;
    }
  }
  // The configuration shipped with the application is the built-in set, possibly newer than
  // the compiled-in one.
  if (auto path = bundle.resource("data-source-config", "json")) {
    std::error_code error;
    if (auto bytes = readFile(*path, error)) {
      if (auto manifest = decodeManifest(*bytes); manifest && manifest->isValid()) {
        c.endpoints = manifest->endpoints;
        c.revision = manifest->revision;
      }
    }
  }
  return c;
}

bool SourceConfiguration::adopt(const std::optional<std::string>& body, KeyValueStore& store) {
  auto manifest = body ? decodeManifest(*body) : std::nullopt;
  if (!manifest || !manifest->isValid() || manifest->revision < revision) return false;
  endpoints = manifest->endpoints;
  revision = manifest->revision;
  store.setData(storeKeys::sourceManifest, *body);
  return true;
}

std::string sourceLabel(const std::vector<QuoteSnapshot>& quotes, SourceMode mode) {
  const auto any = [&quotes](auto predicate) {
    return std::any_of(quotes.begin(), quotes.end(), predicate);
  };
  if (any([](const QuoteSnapshot& q) { return q.source == "embedded_fallback"; }))
    return "内置离线快照";
  if (any([](const QuoteSnapshot& q) { return q.source == "stock-sdk"; })) return "stock-sdk 行情";
  if (any([](const QuoteSnapshot& q) { return q.source == "tencent"; })) return "腾讯行情";
  if (any([](const QuoteSnapshot& q) { return q.source == "sina"; })) return "新浪行情";
  if (any([](const QuoteSnapshot& q) { return q.source.starts_with("stock-api"); }))
    return "stock-api 行情";
  return std::string(label(mode));
}

}  // namespace tidemark
