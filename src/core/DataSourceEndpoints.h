#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/Json.h"

namespace tidemark {

// Every web address the data sources use. Each value is a prefix to which the caller appends a
// code or query text directly.
struct DataSourceEndpoints {
  std::string tencentQuote;
  std::string stockSDKTencentBase;
  std::string sinaQuote;
  std::string tencentSearch;
  std::string sinaSearch;
  std::string eastmoneyFundEstimate;
  std::string eastmoneyFundHistory;
  std::string yahooChart;
  std::string yahooSearch;
  std::string tencentKline;  // day, week and month candles

  // The compiled-in set of public hosts.
  static const DataSourceEndpoints& bundled();

  // Every field is https, without user or password, on a host of the allow-list.
  bool isValid() const;

  friend bool operator==(const DataSourceEndpoints&, const DataSourceEndpoints&) = default;
};

// A versioned replacement for the endpoint set.
struct DataSourceManifest {
  int64_t schemaVersion = 1;
  int64_t revision = 0;
  DataSourceEndpoints endpoints;

  bool isValid() const { return schemaVersion == 1 && revision >= 1 && endpoints.isValid(); }
  friend bool operator==(const DataSourceManifest&, const DataSourceManifest&) = default;
};

Json toJson(const DataSourceEndpoints& endpoints);
std::optional<DataSourceEndpoints> endpointsFromJson(const Json& object);
Json toJson(const DataSourceManifest& manifest);
std::optional<DataSourceManifest> manifestFromJson(const Json& object);
// The remote manifest is fetched only from an https URL on the one raw-file host we trust.
bool isTrustedManifestURL(std::string_view url);
inline constexpr std::string_view trustedManifestHost = "raw.githubusercontent.com";

// Parses the bytes of a manifest document.
std::optional<DataSourceManifest> decodeManifest(std::string_view bytes);

}  // namespace tidemark
