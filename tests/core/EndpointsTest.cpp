#include <gtest/gtest.h>

#include "core/DataSourceEndpoints.h"
#include "core/Url.h"

namespace tidemark {
namespace {

TEST(Endpoints, OneBadFieldInvalidatesTheSet) {
  const std::pair<const char*, bool> hosts[] = {
      {"https://qt.gtimg.cn/q=", true},
      {"https://gtimg.cn/q=", true},
      {"https://deep.sub.qt.gtimg.cn/q=", true},
      {"HTTPS://QT.GTIMG.CN/q=", true},
      {"https://finance.sina.com.cn/x", true},
      {"https://fundgz.1234567.com.cn/js/", true},
      {"https://query2.finance.yahoo.com/v8/", true},
      {"http://qt.gtimg.cn/q=", false},
      {"https://user@qt.gtimg.cn/q=", false},
      {"https://user:pw@qt.gtimg.cn/q=", false},
      {"https://evilgtimg.cn/q=", false},
      {"https://qt.gtimg.cn.evil.com/q=", false},
      {"https:///q=", false},
      {"https://qt.gtimg.cn/q =", false},
      {"qt.gtimg.cn/q=", false},
      {"", false},
  };
  for (auto [text, valid] : hosts) {
    for (auto field : {&DataSourceEndpoints::tencentQuote, &DataSourceEndpoints::yahooSearch}) {
      DataSourceEndpoints endpoints = DataSourceEndpoints::bundled();
      endpoints.*field = text;
      EXPECT_EQ(endpoints.isValid(), valid) << text;
    }
  }
}

TEST(Manifest, SchemaRevisionAndEndpointsDecideValidity) {
  const std::tuple<int64_t, int64_t, bool> cases[] = {
      {1, 1, true}, {1, 7, true}, {2, 1, false}, {1, 0, false}, {0, 3, false}, {1, -1, false},
  };
  for (auto [schema, revision, valid] : cases)
    EXPECT_EQ((DataSourceManifest{schema, revision, DataSourceEndpoints::bundled()}.isValid()),
              valid)
        << schema << " " << revision;
  DataSourceManifest http{1, 3, DataSourceEndpoints::bundled()};
  http.endpoints.sinaQuote = "http://hq.sinajs.cn/list=";
  EXPECT_FALSE(http.isValid());

  const DataSourceManifest manifest{1, 4, DataSourceEndpoints::bundled()};
  EXPECT_EQ(decodeManifest(toJson(manifest).dump()), manifest);
  for (const char* bad : {"{}", "[]", R"({"schemaVersion":1,"revision":2})",
                          R"({"schemaVersion":"1","revision":2,"endpoints":{}})", "nope"})
    EXPECT_EQ(decodeManifest(bad), std::nullopt) << bad;
}

TEST(Manifest, OnlyHttpsOnTheTrustedHostIsFetched) {
  const std::pair<const char*, bool> cases[] = {
      {"https://raw.githubusercontent.com/tidemark-app/config/main/x.json", true},
      {"HTTPS://raw.githubusercontent.com/x.json", false},
      {"http://raw.githubusercontent.com/x.json", false},
      {"https://raw.githubusercontent.com.evil.org/x.json", false},
      {"https://gist.githubusercontent.com/x.json", false},
      {"https://me@raw.githubusercontent.com/x.json", false},
      {"", false},
  };
  for (auto [url, trusted] : cases) EXPECT_EQ(isTrustedManifestURL(url), trusted) << url;
}

TEST(Url, Parts) {
  auto url = parseUrl("http://127.0.0.1:8080/q=sh600519,usBRK.B?x=1");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->scheme, "http");
  EXPECT_EQ(url->host, "127.0.0.1");
  EXPECT_EQ(url->port, 8080);
  EXPECT_EQ(url->path, "/q=sh600519,usBRK.B");
  EXPECT_EQ(url->query, "x=1");
  for (const char* bad : {"http://h/a b", "http://h:99999/", "http://h/%zz", "1http://h/",
                          "http://h/\xe4\xb8\xad", "http://[::1/", "nocolon"})
    EXPECT_EQ(parseUrl(bad), std::nullopt) << bad;
  EXPECT_EQ(parseUrl("http://[::1]:80/")->host, "[::1]");
}

}  // namespace
}  // namespace tidemark
