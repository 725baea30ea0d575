#include <gtest/gtest.h>

#include "model/ModelError.h"
#include "model/SelfTest.h"
#include "support/ModelHarness.h"

namespace tidemark {
namespace {

// Forgets every write, as a store that cannot persist would.
struct ForgetfulStore : MemoryKeyValueStore {
  void setData(const std::string&, const std::string&) override {}
  void setStringArray(const std::string&, const std::vector<std::string>&) override {}
};

TEST(SelfTest, PassesAndFailsByTheFirstBrokenRuleLeavingNothingBehind) {
  const std::tuple<const char*, std::function<std::unique_ptr<KeyValueStore>()>, std::string>
      cases[] = {
          {"memory store", [] { return std::make_unique<MemoryKeyValueStore>(); }, ""},
          {"no store", [] { return nullptr; }, "无法创建测试偏好"},
          {"forgetful store", [] { return std::make_unique<ForgetfulStore>(); }, "偏好未持久化"},
      };
  for (const auto& [what, makeStore, failure] : cases) {
    test::TemporaryFolder root;
    std::vector<std::string> made, removed;
    SelfTestEnvironment environment;
    environment.makeSuite = [&](const std::string& name) {
      made.push_back(name);
      return makeStore();
    };
    environment.removeSuite = [&](const std::string& name) { removed.push_back(name); };
    environment.bundle.resourceDirectory = TIDEMARK_TEST_RESOURCE_DIR;
    environment.start = test::testStart();
    environment.temporaryRoot = root.path();
    std::string message;
    try {
      runAppModelChecks(environment);
    } catch (const ModelError& error) {
      message = error.what();
    }
    EXPECT_EQ(message, failure) << what;
    ASSERT_EQ(made.size(), 1u);
    EXPECT_TRUE(made[0].starts_with("tidemark.self-test.")) << made[0];
    EXPECT_EQ(removed, made) << what;
    EXPECT_TRUE(std::filesystem::is_empty(root.path())) << what;
  }
}

}  // namespace
}  // namespace tidemark
