#include "core/DataSourceEndpoints.h"

#include <array>

#include "core/Text.h"
#include "core/Url.h"

namespace tidemark {
namespace {

using Field = std::string DataSourceEndpoints::*;

// A key added after the first manifests were published is optional: a manifest without it
// keeps the bundled value.
struct FieldSpec {
  const char* name;
  Field field;
  bool required = true;
};

constexpr std::array<FieldSpec, 10> fields{{
    {"tencentQuote", &DataSourceEndpoints::tencentQuote},
    {"stockSDKTencentBase", &DataSourceEndpoints::stockSDKTencentBase},
    {"sinaQuote", &DataSourceEndpoints::sinaQuote},
    {"tencentSearch", &DataSourceEndpoints::tencentSearch},
    {"sinaSearch", &DataSourceEndpoints::sinaSearch},
    {"eastmoneyFundEstimate", &DataSourceEndpoints::eastmoneyFundEstimate},
    {"eastmoneyFundHistory", &DataSourceEndpoints::eastmoneyFundHistory},
    {"yahooChart", &DataSourceEndpoints::yahooChart},
    {"yahooSearch", &DataSourceEndpoints::yahooSearch},
    {"tencentKline", &DataSourceEndpoints::tencentKline, false},
}};

// Tencent static content, Sina scripts, Sina finance, Eastmoney fund estimates, Eastmoney, Yahoo.
constexpr std::array<std::string_view, 6> allowedDomains{
    "gtimg.cn", "sinajs.cn", "sina.com.cn", "1234567.com.cn", "eastmoney.com", "yahoo.com"};

bool isAllowedHost(const std::string& host) {
  // Letters, digits, hyphens and dots only: a percent-escape or any other sign is no host name.
  for (char c : host)
    if (!((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.')) return false;
  for (std::string_view domain : allowedDomains) {
    if (host == domain) return true;
    if (host.size() > domain.size() && host.ends_with(domain) &&
        host[host.size() - domain.size() - 1] == '.')
      return true;
  }
  return false;
}

bool isValidEndpoint(const std::string& text) {
  auto url = parseUrl(text);
  if (!url) return false;
  if (toLowerAscii(url->scheme) != "https") return false;
  if (url->hasUserInfo) return false;
  if (url->host.empty()) return false;
  return isAllowedHost(toLowerAscii(url->host));
}

}  // namespace

const DataSourceEndpoints& DataSourceEndpoints::bundled() {
  static const DataSourceEndpoints endpoints{
      "https://qt.gtimg.cn/q=",
      "https://qt.gtimg.cn",
      "https://hq.sinajs.cn/list=",
      "https://smartbox.gtimg.cn/s3/?q=",
      "https://suggest3.sinajs.cn/suggest/type=11,12,13,14,15&key=",
      "https://fundgz.1234567.com.cn/js/",
      "https://fund.eastmoney.com/pingzhongdata/",
      "https://query1.finance.yahoo.com/v8/finance/chart/",
      "https://query1.finance.yahoo.com/v1/finance/search?q=",
      "https://web.ifzq.gtimg.cn/appstock/app/fqkline/get?param=",
  };
  return endpoints;
}

bool DataSourceEndpoints::isValid() const {
  for (const auto& [name, field, required] : fields)
    if (!isValidEndpoint(this->*field)) return false;
  return true;
}

Json toJson(const DataSourceEndpoints& endpoints) {
  Json object = Json::object();
  for (const auto& [name, field, required] : fields) object[name] = endpoints.*field;
  return object;
}

std::optional<DataSourceEndpoints> endpointsFromJson(const Json& object) {
  DataSourceEndpoints endpoints;
  for (const auto& [name, field, required] : fields) {
    auto value = json::string(object, name);
    if (!value && required) return std::nullopt;
    endpoints.*field = value.value_or(DataSourceEndpoints::bundled().*field);
  }
  return endpoints;
}

Json toJson(const DataSourceManifest& manifest) {
  return Json{{"schemaVersion", manifest.schemaVersion},
              {"revision", manifest.revision},
              {"endpoints", toJson(manifest.endpoints)}};
}

std::optional<DataSourceManifest> manifestFromJson(const Json& object) {
  auto schema = json::integer(object, "schemaVersion");
  auto revision = json::integer(object, "revision");
  if (!schema || !revision || !object.contains("endpoints")) return std::nullopt;
  auto endpoints = endpointsFromJson(object["endpoints"]);
  if (!endpoints) return std::nullopt;
  return DataSourceManifest{*schema, *revision, std::move(*endpoints)};
}

bool isTrustedManifestURL(std::string_view text) {
  auto url = parseUrl(text);
  return url && url->scheme == "https" && url->host == trustedManifestHost && !url->hasUserInfo;
}

std::optional<DataSourceManifest> decodeManifest(std::string_view bytes) {
  auto document = json::parse(bytes);
  if (!document) return std::nullopt;
  return manifestFromJson(*document);
}

}  // namespace tidemark
