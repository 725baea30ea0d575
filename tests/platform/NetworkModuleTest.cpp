#include <gtest/gtest.h>

#include <QTest>

#include "platform/ModuleHttpClient.h"
#include "support/LoopbackServer.h"

namespace tidemark {

// The module is found, loaded once and answers; a module that is not there fails each request in
// words, after get() returns, and the app goes on.
TEST(NetworkModule, LoadedAtTheFirstRequestOrEachRequestFailsInWords) {
  test::LoopbackServer server([](const std::string&) -> test::LoopbackServer::Reply {
    return {200, "v_sh600519=\"1\";"};
  });
  struct Case {
    const char* name;
    QString module;
    std::optional<std::string> body, errorStart;
  };
  const Case cases[] = {
      {"built", QStringLiteral(TIDEMARK_NETWORK_MODULE_FILE), "v_sh600519=\"1\";", {}},
      {"missing", QStringLiteral("/nonexistent/tidemark-network.so"), {}, "网络模块无法加载："},
  };
  for (const auto& c : cases) {
    ModuleHttpClient client(c.module);
    for (int round = 0; round < 2; ++round) {
      std::optional<HttpResponse> response;
      client.get({server.base() + "/q"}, [&](HttpResponse r) { response = std::move(r); });
      EXPECT_FALSE(response) << c.name << ": answered inside get()";
      ASSERT_TRUE(QTest::qWaitFor([&] { return response.has_value(); }, 10000)) << c.name;
      EXPECT_EQ(response->body, c.body) << c.name;
      EXPECT_EQ(response->error.value_or("").substr(0, c.errorStart ? c.errorStart->size() : 0),
                c.errorStart.value_or(""))
          << c.name;
      if (c.errorStart) {
        EXPECT_NE(response->error->find("/nonexistent/tidemark-network.so"), std::string::npos)
            << *response->error;
      }
    }
  }
  EXPECT_EQ(server.targets.size(), 2u);  // the missing module asked nothing
}

}  // namespace tidemark
