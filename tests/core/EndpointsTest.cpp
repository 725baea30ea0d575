#include <gtest/gtest.h>

#include "core/DataSourceEndpoints.h"
#include "core/Url.h"

namespace tidemark {
namespace {

TEST(Endpoints, OneBadFieldInvalidatesTheSet) {
  const std::pair<std::vector<const char*>, bool> hosts[] = {
      // The bundled set holds the other allowed domains.
      {{"https://gtimg.cn/q=", "https://deep.sub.qt.gtimg.cn/q=", "HTTPS://QT.GTIMG.CN/q=",
        "https://finance.sina.com.cn/x"},
       true},
      {{"http://qt.gtimg.cn/q=", "https://user@qt.gtimg.cn/q=", "https://evilgtimg.cn/q=",
        "https://qt.gtimg.cn.evil.com/q=", "https:///q=", "https://qt.gtimg.cn/q =", ""},
       false},
  };
  for (const auto& [texts, valid] : hosts)
    for (const char* text : texts)
      for (auto field : {&DataSourceEndpoints::tencentQuote, &DataSourceEndpoints::yahooSearch}) {
        DataSourceEndpoints endpoints = DataSourceEndpoints::bundled();
        endpoints.*field = text;
        EXPECT_EQ(endpoints.isValid(), valid) << text;
      }
}

TEST(Manifest, ValidityDecodingAndTheTrustedHost) {
  const std::tuple<int64_t, int64_t, bool> cases[] = {
      {1, 1, true}, {2, 1, false}, {0, 3, false}, {1, 0, false}};
  for (auto [schema, revision, valid] : cases)
    EXPECT_EQ((DataSourceManifest{schema, revision, DataSourceEndpoints::bundled()}.isValid()),
              valid)
        << schema << " " << revision;
  // A manifest as the remote host serves it; the bridge script gets the same endpoint object.
  const std::string served =
      R"({"schemaVersion":1,"revision":4,"endpoints":{"tencentQuote":"a","stockSDKTencentBase":"b",)"
      R"("sinaQuote":"c","tencentSearch":"d","sinaSearch":"e","eastmoneyFundEstimate":"f",)"
      R"("eastmoneyFundHistory":"g","yahooChart":"h","yahooSearch":"i"}})";
  const DataSourceManifest manifest{1, 4, {"a", "b", "c", "d", "e", "f", "g", "h", "i"}};
  EXPECT_EQ(decodeManifest(served), manifest);
  EXPECT_EQ(toJson(manifest).dump(), served);
  for (const char* bad : {"{}", "[]", R"({"schemaVersion":1,"revision":2})",
                          R"({"schemaVersion":"1","revision":2,"endpoints":{}})", "nope"})
    EXPECT_EQ(decodeManifest(bad), std::nullopt) << bad;
  // It is fetched only over https from the one trusted host.
  EXPECT_TRUE(isTrustedManifestURL("https://raw.githubusercontent.com/tidemark-app/c/x.json"));
  for (const char* url :
       {"HTTPS://raw.githubusercontent.com/x.json", "http://raw.githubusercontent.com/x.json",
        "https://raw.githubusercontent.com.evil.org/x.json",
        "https://gist.githubusercontent.com/x.json", "https://me@raw.githubusercontent.com/x.json",
        ""})
    EXPECT_FALSE(isTrustedManifestURL(url)) << url;
}

TEST(Url, Parts) {
  auto url = parseUrl("http://127.0.0.1:8080/q=sh600519,usBRK.B?x=1");
  ASSERT_TRUE(url);
  EXPECT_EQ(std::tuple(url->scheme, url->host, url->port, url->path, url->query),
            std::tuple("http", "127.0.0.1", 8080, "/q=sh600519,usBRK.B", "x=1"));
  for (const char* bad : {"http://h:99999/", "http://h/%zz", "1http://h/", "http://h/\xe4\xb8\xad",
                          "http://[::1/", "nocolon"})
    EXPECT_EQ(parseUrl(bad), std::nullopt) << bad;
  EXPECT_EQ(parseUrl("http://[::1]:80/")->host, "[::1]");
}

}  // namespace
}  // namespace tidemark
