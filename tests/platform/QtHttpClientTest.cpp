#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTest>

#include "platform/QtHttpClient.h"
#include "support/LoopbackServer.h"

namespace tidemark {
namespace {

using Delivery = test::LoopbackServer::Delivery;

TEST(QtHttpClient, AnswersAndFailuresFromALoopbackServer) {
  const std::string body = test::testData("tencent-basic.gbk");
  const std::string block(64 << 10, 'x');
  test::LoopbackServer server([&](const std::string& target) -> test::LoopbackServer::Reply {
    if (target == "/ok") return {200, body};
    if (target == "/broken") return {500, "oops"};
    if (target == "/cut") return {200, body, Delivery::cut};
    if (target == "/stalled") return {200, body, Delivery::stalled};
    if (target == "/endless") return {200, block, Delivery::endless};
    return {0, "", Delivery::silent};
  });
  const std::string closed =
      "http://127.0.0.1:" + std::to_string(test::LoopbackServer::closedPort()) + "/";
  // The address, the time-out and the cap; the status, body and error answered.
  using Text = std::optional<std::string>;
  using Case = std::tuple<std::string, double, size_t, std::optional<int>, Text, Text>;
  const std::string base = server.base();
  const Case cases[] = {
      {base + "/ok", 8, 8 << 20, 200, body, {}},        // GB 18030 bytes untouched
      {base + "/broken", 8, 8 << 20, 500, "oops", {}},  // an HTTP answer, not a transport error
      {base + "/cut", 8, 8 << 20, 200, {}, "服务器意外断开了连接"},
      {base + "/stalled", 0.3, 8 << 20, 200, {}, "请求超时"},
      {base + "/silent", 0.3, 8 << 20, {}, {}, "请求超时"},
      {base + "/endless", 8, 8 << 20, 200, {}, "服务器返回的数据过大"},
      // Announced past the cap: refused by its length, not left to stall.
      {base + "/stalled", 0.3, body.size(), 200, {}, "服务器返回的数据过大"},
      {closed, 8, 8 << 20, {}, {}, "无法连接服务器（连接被拒绝）"},
  };
  QtHttpClient client;
  for (const auto& [url, timeout, maxBytes, status, answer, error] : cases) {
    std::optional<HttpResponse> response;
    QElapsedTimer elapsed;
    elapsed.start();
    client.get({url, {{"Referer", "https://finance.qq.com/"}}, timeout, maxBytes},
               [&](HttpResponse r) { response = std::move(r); });
    EXPECT_FALSE(response) << "answered inside get()";
    ASSERT_TRUE(QTest::qWaitFor([&] { return response.has_value(); }, 10000)) << url;
    EXPECT_EQ(std::tuple(response->status, response->body, response->error),
              std::tuple(status, answer, error))
        << url;
    EXPECT_LT(elapsed.elapsed(), 3000) << url;
  }
  EXPECT_LT(server.endlessBytes, size_t{16} << 20);  // it stopped reading at the cap
  EXPECT_NE(std::find(server.headers[0].begin(), server.headers[0].end(),
                      "Referer: https://finance.qq.com/"),
            server.headers[0].end());
}

}  // namespace
}  // namespace tidemark
