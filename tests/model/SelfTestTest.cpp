#include <gtest/gtest.h>

#include <fstream>

#include "model/ModelError.h"
#include "model/SelfTest.h"
#include "support/ModelHarness.h"

namespace tidemark {
namespace {

// Forgets the writes to the keys it is given (every key when given none).
struct ForgetfulStore : MemoryKeyValueStore {
  explicit ForgetfulStore(std::vector<std::string> keys = {}) : keys(std::move(keys)) {}
  bool forgets(const std::string& key) const {
    return keys.empty() || std::find(keys.begin(), keys.end(), key) != keys.end();
  }
  void setData(const std::string& key, const std::string& bytes) override {
    if (!forgets(key)) MemoryKeyValueStore::setData(key, bytes);
  }
  void setStringArray(const std::string& key, const std::vector<std::string>& values) override {
    if (!forgets(key)) MemoryKeyValueStore::setStringArray(key, values);
  }
  std::vector<std::string> keys;
};

TEST(SelfTest, EachBrokenEnvironmentFailsWithItsTextAndLeavesNothingBehind) {
  using Store = std::function<std::unique_ptr<KeyValueStore>()>;
  const Store memory = [] { return std::make_unique<MemoryKeyValueStore>(); };
  const Store inUse = [] {
    auto store = std::make_unique<MemoryKeyValueStore>();
    store->setStringArray(storeKeys::watchlist, {"NVDA"});
    return store;
  };
  const auto forgetting = [](std::vector<std::string> keys) -> Store {
    return [keys] { return std::make_unique<ForgetfulStore>(keys); };
  };
  const Store losesWatchlist = forgetting({storeKeys::watchlist, storeKeys::watchlistBackup});
  const std::string future =
      R"({"updatedAt":"2030-01-01T00:00:00Z","quotes":[{"symbol":"600519","market":"CN",)"
      R"("name":"贵州茅台","price":1,"prevClose":1,"high":1,"low":1,"volume":1}]})";
  // The store, tidemark-quotes.json (none: the bundle's), a file as the root, then the failure.
  const std::tuple<const char*, Store, std::optional<std::string>, bool, std::string> cases[] = {
      {"sound", memory, {}, false, ""},
      {"missing snapshot resource", memory, "", false, ""},  // the embedded one stands in
      {"no store", [] { return nullptr; }, {}, false, "无法创建测试偏好"},
      {"unwritable folder", memory, {}, true, "无法创建测试偏好"},
      {"a suite already in use", inUse, {}, false, "默认行情或自选不正确"},
      {"a store that loses writes", forgetting({}), {}, false, "偏好未持久化"},
      {"loses the watchlist", losesWatchlist, {}, false, "文件写入失败后旧文件覆盖了最新自选"},
      {"a snapshot from the future", memory, future, false, "静态快照刷新伪造实时数据"},
  };
  for (const auto& [what, store, resource, rootIsAFile, failure] : cases) {
    test::TemporaryFolder root;
    std::vector<std::string> made, removed;
    SelfTestEnvironment environment;
    environment.makeSuite = [&](const std::string& name) {
      made.push_back(name);
      return store();
    };
    environment.removeSuite = [&](const std::string& name) { removed.push_back(name); };
    environment.bundle.resourceDirectory =
        resource ? root.path() : std::filesystem::path(TIDEMARK_TEST_RESOURCE_DIR);
    if (resource && !resource->empty())
      std::ofstream(root.path() / "tidemark-quotes.json") << *resource;
    environment.start = test::testStart();
    environment.temporaryRoot = root.path() / "tmp";
    if (rootIsAFile) std::ofstream(environment.temporaryRoot) << "not a folder";
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
    EXPECT_TRUE(rootIsAFile || std::filesystem::is_empty(environment.temporaryRoot)) << what;
  }
}

}  // namespace
}  // namespace tidemark
