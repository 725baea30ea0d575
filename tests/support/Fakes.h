#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/ManualScheduler.h"
#include "core/MarketDataSource.h"
#include "core/Notifier.h"

namespace tidemark::test {

// Answers each live source with what the test configured (not filtered by the request), at
// once or when the test releases it.
class FakeMarketDataSource final : public MarketDataSource {
 public:
  struct Call {
    SourceMode source;
    std::vector<std::string> symbols;
    std::string tencentQuote;  // the endpoint the request was built from
  };
  struct Answer {
    std::vector<QuoteSnapshot> quotes;
    std::optional<std::string> error;
  };

  void fetchQuotes(SourceMode source, const DataSourceEndpoints& endpoints,
                   const std::vector<std::string>& symbols, const QuoteMap& cached,
                   QuotesCompletion completion) override;
  // Completes the oldest held request with its configured answer.
  void releaseNext();

  std::map<SourceMode, Answer> answers;
  bool holdAnswers = false;
  std::vector<Call> calls;
  std::vector<std::pair<SourceMode, QuotesCompletion>> held;
};

class RecordingNotifier final : public Notifier {
 public:
  void queryAuthorization(std::function<void(bool)> completion) override;
  void requestAuthorization(std::function<void(bool)> completion) override;
  void add(const NotificationRequest& request, std::function<void()> completion) override;
  void remove(const std::string& identifier) override;

  bool authorized = false;
  bool holdCompletions = false;  // keep add() completions for the test to run
  int authorizationRequests = 0;
  std::vector<NotificationRequest> added;
  std::vector<std::string> removed;
  std::vector<std::function<void()>> heldCompletions;
};

// A quote with the given prices, stamped at `at`.
QuoteSnapshot quote(const std::string& id, double price, double prevClose = 10,
                    const std::string& source = "tencent", Date at = {});

// A folder that is removed with everything in it when the object goes.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace tidemark::test
