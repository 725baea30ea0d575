#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "core/HttpClient.h"
#include "core/KeyValueStore.h"
#include "core/ManualScheduler.h"
#include "core/MarketDataSource.h"
#include "core/Notifier.h"
#include "core/ProcessRunner.h"

namespace tidemark {

inline void PrintTo(const StoreWriteFailure& f, std::ostream* out) {
  *out << "{" << f.path << " | " << f.reason << "}";
}

}  // namespace tidemark

namespace tidemark::test {

// A store in memory that logs the byte values written, in order, and whose writes can be
// reported failed, as a settings file that cannot be written is.
class ReportingStore final : public MemoryKeyValueStore {
 public:
  void setData(const std::string& key, const std::string& bytes) override {
    writes.emplace_back(key, bytes);
    MemoryKeyValueStore::setData(key, bytes);
  }
  void setDataLazily(const std::string& key, const std::string& bytes) override {
    lazy.push_back(key);
    setData(key, bytes);
  }
  void setWriteObserver(WriteObserver observer) override { observer_ = std::move(observer); }
  void report(const std::optional<StoreWriteFailure>& failure) {
    if (observer_) observer_(failure);
  }
  std::vector<std::pair<std::string, std::string>> writes;
  std::vector<std::string> lazy;  // the keys of the writes that were lazy, in order

 private:
  WriteObserver observer_;
};

// Answers each live source with what the test configured (not filtered by the request), at
// once or when the test releases it.
class FakeMarketDataSource final : public MarketDataSource {
 public:
  struct Call {
    SourceMode source;
    std::vector<std::string> symbols;
  };
  struct Answer {
    std::vector<QuoteSnapshot> quotes;
    std::optional<std::string> error;
  };

  void fetchQuotes(SourceMode source, const DataSourceEndpoints&,
                   const std::vector<std::string>& symbols, const QuoteMap&,
                   QuotesCompletion completion) override {
    calls.push_back({source, symbols});
    held.emplace_back(source, std::move(completion));
    if (!holdAnswers) releaseNext(held.size() - 1);
  }
  // Completes a held request (the oldest by default) with its configured answer.
  void releaseNext(size_t index = 0) {
    auto [source, completion] = std::move(held.at(index));
    held.erase(held.begin() + static_cast<std::ptrdiff_t>(index));
    std::vector<QuoteSnapshot> quotes = answers[source].quotes;
    if (stampWith)
      for (QuoteSnapshot& q : quotes) q.updatedAt = stampWith->now();
    completion(std::move(quotes), answers[source].error);
  }
  // Probes answer from `probeAnswers` in turn (false once they run out).
  void probeQuoteEndpoints(const DataSourceEndpoints& endpoints,
                           std::function<void(bool)> completion) override {
    probedWith.push_back(endpoints.tencentQuote);
    completion(probedWith.size() <= probeAnswers.size() && probeAnswers[probedWith.size() - 1]);
  }
  void fetchManifest(const std::string&,
                     std::function<void(std::optional<std::string>)> completion) override {
    completion(manifestBody);
  }
  bool canFetchIntraday() const override { return intradayAvailable; }
  // Held until the test answers it from `intradayRequests`.
  void fetchIntraday(const DataSourceEndpoints&, const std::string& id, const std::string&,
                     std::function<void(Intraday)> completion) override {
    intradayRequests.emplace_back(id, std::move(completion));
  }
  // Answered from `searchAnswer` at once, or held until the test answers it.
  void searchSecurities(const DataSourceEndpoints&, const std::string& text,
                        QuotesCompletion completion) override {
    searches.emplace_back(text, std::move(completion));
    if (!holdSearches) answerSearch(searches.size() - 1, searchAnswer);
  }
  void answerSearch(size_t index, const Answer& answer) {
    std::exchange(searches.at(index).second, nullptr)(answer.quotes, answer.error);
  }
  // Held until the test answers it.
  void fetchKline(SourceMode, const DataSourceEndpoints&, const std::string& symbol,
                  KlinePeriod period, KlineCompletion completion) override {
    klineRequests.push_back({symbol + " " + std::string(rawValue(period)), std::move(completion)});
  }

  // Answered at once from `ratesAnswer` and `extendedAnswer`; what was asked is kept.
  void fetchRates(const DataSourceEndpoints&, RatesCompletion completion) override {
    ++rateRequests;
    completion(ratesAnswer.first, ratesAnswer.second);
  }
  void fetchExtendedHours(const DataSourceEndpoints&, const std::vector<std::string>& symbols,
                          ExtendedCompletion completion) override {
    extendedRequests.push_back(symbols);
    completion(extendedAnswer.first, extendedAnswer.second);
  }
  std::pair<RateMap, std::optional<std::string>> ratesAnswer{{}, "汇率请求失败"};
  std::pair<std::vector<ExtendedQuote>, std::optional<std::string>> extendedAnswer;
  size_t rateRequests = 0;
  std::vector<std::vector<std::string>> extendedRequests;

  std::map<SourceMode, Answer> answers;
  bool holdAnswers = false;
  // Answers are stamped with this clock's time, as the feeds stamp what they parse.
  const Clock* stampWith = nullptr;
  std::vector<Call> calls;
  std::vector<std::pair<SourceMode, QuotesCompletion>> held;

  std::vector<bool> probeAnswers;
  std::vector<std::string> probedWith;  // tencentQuote of each probe's endpoint set
  std::optional<std::string> manifestBody;
  bool intradayAvailable = true;
  std::vector<std::pair<std::string, std::function<void(Intraday)>>> intradayRequests;
  Answer searchAnswer;
  bool holdSearches = false;
  std::vector<std::pair<std::string, QuotesCompletion>> searches;      // text, then completion
  std::vector<std::pair<std::string, KlineCompletion>> klineRequests;  // "600519 day", completion
};

// Answers each URL with the response the test configured for it, always after get() has
// returned.
class FakeHttpClient final : public HttpClient {
 public:
  explicit FakeHttpClient(Scheduler& scheduler) : scheduler_(scheduler) {}
  void get(const HttpRequest& request, std::function<void(HttpResponse)> completion) override {
    requests.push_back(request);
    auto it = responses.find(request.url);
    HttpResponse response = it != responses.end() ? it->second : HttpResponse{404, "", {}};
    scheduler_.post([completion = std::move(completion), response] { completion(response); });
  }

  std::map<std::string, HttpResponse> responses;  // by URL; others get a 404
  std::vector<HttpRequest> requests;

 private:
  Scheduler& scheduler_;
};

// Records each run and answers it with the next configured result, after run() has returned,
// or when the test ends it.
class FakeProcessRunner final : public ProcessRunner {
 public:
  explicit FakeProcessRunner(Scheduler& scheduler) : scheduler_(scheduler) {}
  void run(const ProcessRequest& request, std::function<void(ProcessResult)> completion) override {
    requests.push_back(request);
    ProcessResult result;
    result.launchError = "no such program";
    if (requests.size() <= results.size()) result = results[requests.size() - 1];
    held.push_back([completion = std::move(completion), result] { completion(result); });
    if (!holdRuns) end(requests.size() - 1);
  }
  // Lets the run with this index end, on the next scheduler turn.
  void end(size_t index) { scheduler_.post(std::move(held.at(index))); }

  std::vector<ProcessResult> results;  // in order; a launch error once they run out
  std::vector<ProcessRequest> requests;
  bool holdRuns = false;  // runs go on until the test ends them
  std::vector<std::function<void()>> held;

 private:
  Scheduler& scheduler_;
};

class RecordingNotifier final : public Notifier {
 public:
  void queryAuthorization(std::function<void(bool)> completion) override { completion(authorized); }
  void requestAuthorization(std::function<void(bool)> completion) override {
    ++authorizationRequests;
    completion(authorized);
  }
  void add(const NotificationRequest& request, std::function<void()> completion) override {
    added.push_back(request);
    if (holdCompletions)
      heldCompletions.push_back(std::move(completion));
    else
      completion();
  }
  void remove(const std::string& identifier) override { removed.push_back(identifier); }

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
