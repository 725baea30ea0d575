#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/HttpClient.h"
#include "core/ManualScheduler.h"
#include "core/MarketDataSource.h"
#include "core/Notifier.h"
#include "core/ProcessRunner.h"

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
  // Completes a held request (the oldest by default) with its configured answer.
  void releaseNext(size_t index = 0);
  // Probes answer from `probeAnswers` in turn (false once they run out).
  void probeQuoteEndpoints(const DataSourceEndpoints& endpoints,
                           std::function<void(bool)> completion) override;
  void fetchManifest(const std::string& url,
                     std::function<void(std::optional<std::string>)> completion) override;
  bool canFetchIntraday() const override { return intradayAvailable; }
  // Held until the test answers it from `intradayRequests`.
  void fetchIntraday(const DataSourceEndpoints& endpoints, const std::string& id,
                     const std::string& market,
                     std::function<void(std::optional<std::vector<double>>)> completion) override;

  std::map<SourceMode, Answer> answers;
  bool holdAnswers = false;
  std::vector<Call> calls;
  std::vector<std::pair<SourceMode, QuotesCompletion>> held;

  std::vector<bool> probeAnswers;
  std::vector<std::string> probedWith;  // tencentQuote of each probe's endpoint set
  std::optional<std::string> manifestBody;
  std::vector<std::string> manifestURLs;
  bool intradayAvailable = true;
  std::vector<std::pair<std::string, std::function<void(std::optional<std::vector<double>>)>>>
      intradayRequests;
};

// Answers each URL with the response the test configured for it (none: an unanswered request
// held until the test answers it), always after get() has returned.
class FakeHttpClient final : public HttpClient {
 public:
  explicit FakeHttpClient(Scheduler& scheduler) : scheduler_(scheduler) {}
  void get(const HttpRequest& request, std::function<void(HttpResponse)> completion) override;

  std::map<std::string, HttpResponse> responses;  // by URL; others get a 404
  std::vector<HttpRequest> requests;

 private:
  Scheduler& scheduler_;
};

// Records each run and answers it with the next configured result, after run() has returned.
class FakeProcessRunner final : public ProcessRunner {
 public:
  explicit FakeProcessRunner(Scheduler& scheduler) : scheduler_(scheduler) {}
  void run(const ProcessRequest& request, std::function<void(ProcessResult)> completion) override;

  std::vector<ProcessResult> results;  // in order; a launch error once they run out
  std::vector<ProcessRequest> requests;

 private:
  Scheduler& scheduler_;
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
