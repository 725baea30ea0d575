#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTest>

#include "platform/QtHttpClient.h"
#include "support/LoopbackServer.h"

namespace tidemark {
namespace {

HttpResponse get(QtHttpClient& client, const std::string& url, double timeout = 8) {
  std::optional<HttpResponse> response;
  client.get(
      {url, {{"Referer", "https://finance.qq.com/"}, {"User-Agent", "Mozilla/5.0"}}, timeout},
      [&](HttpResponse r) { response = std::move(r); });
  EXPECT_FALSE(response) << "answered inside get()";
  EXPECT_TRUE(QTest::qWaitFor([&] { return response.has_value(); }, 10000));
  return response.value_or(HttpResponse{});
}

TEST(QtHttpClient, AnswersFromALoopbackServer) {
  const std::string body = test::testData("tencent-basic.gbk");
  test::LoopbackServer server([&](const std::string& target) -> test::LoopbackServer::Reply {
    if (target == "/ok") return {200, body};
    if (target == "/broken") return {500, "oops"};
    return {0, "", true};  // never answers
  });
  QtHttpClient client;

  HttpResponse ok = get(client, server.base() + "/ok");
  EXPECT_EQ(ok.status, 200);
  EXPECT_EQ(ok.body, body);  // GB 18030 bytes untouched
  EXPECT_EQ(ok.error, std::nullopt);
  EXPECT_NE(std::find(server.headers[0].begin(), server.headers[0].end(),
                      "Referer: https://finance.qq.com/"),
            server.headers[0].end());

  HttpResponse broken = get(client, server.base() + "/broken");
  EXPECT_EQ(broken.status, 500);
  EXPECT_EQ(broken.body, "oops");
  EXPECT_EQ(broken.error, std::nullopt);  // an HTTP answer, not a transport failure

  QElapsedTimer elapsed;
  elapsed.start();
  HttpResponse silent = get(client, server.base() + "/silent", 0.3);
  EXPECT_EQ(silent.status, std::nullopt);
  EXPECT_EQ(silent.error, "请求超时");
  EXPECT_LT(elapsed.elapsed(), 3000);

  HttpResponse closed =
      get(client, "http://127.0.0.1:" + std::to_string(test::LoopbackServer::closedPort()) + "/");
  EXPECT_EQ(closed.status, std::nullopt);
  EXPECT_EQ(closed.error, "无法连接服务器（连接被拒绝）");
}

}  // namespace
}  // namespace tidemark
