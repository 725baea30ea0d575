#include "support/Fakes.h"

#include <unistd.h>

#include <atomic>
#include <random>

namespace tidemark::test {

QuoteSnapshot quote(const std::string& id, double price, double prevClose,
                    const std::string& source, Date at) {
  return QuoteSnapshot{id, "A股", "名称" + id, price, prevClose, price, price, 100, at, source};
}

TemporaryFolder::TemporaryFolder() {
  static std::atomic<int> counter{0};
  path_ = std::filesystem::temp_directory_path() /
          ("tidemark-test-" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + "-" +
           std::to_string(std::random_device{}()));
  std::filesystem::create_directories(path_);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace tidemark::test
