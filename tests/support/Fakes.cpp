#include "support/Fakes.h"

#include <unistd.h>

#include <atomic>
#include <random>

namespace tidemark::test {

void FakeMarketDataSource::fetchQuotes(SourceMode source, const DataSourceEndpoints& endpoints,
                                       const std::vector<std::string>& symbols, const QuoteMap&,
                                       QuotesCompletion completion) {
  calls.push_back({source, symbols, endpoints.tencentQuote});
  if (holdAnswers) {
    held.emplace_back(source, std::move(completion));
    return;
  }
  const Answer& answer = answers[source];
  completion(answer.quotes, answer.error);
}

void FakeMarketDataSource::releaseNext(size_t index) {
  auto [source, completion] = std::move(held.at(index));
  held.erase(held.begin() + static_cast<std::ptrdiff_t>(index));
  const Answer& answer = answers[source];
  completion(answer.quotes, answer.error);
}

void FakeMarketDataSource::probeQuoteEndpoints(const DataSourceEndpoints& endpoints,
                                               std::function<void(bool)> completion) {
  probedWith.push_back(endpoints.tencentQuote);
  const size_t index = probedWith.size() - 1;
  completion(index < probeAnswers.size() && probeAnswers[index]);
}

void FakeMarketDataSource::fetchManifest(
    const std::string& url, std::function<void(std::optional<std::string>)> completion) {
  manifestURLs.push_back(url);
  completion(manifestBody);
}

void FakeMarketDataSource::fetchIntraday(
    const DataSourceEndpoints&, const std::string& id, const std::string&,
    std::function<void(std::optional<std::vector<double>>)> completion) {
  intradayRequests.emplace_back(id, std::move(completion));
}

void FakeHttpClient::get(const HttpRequest& request, std::function<void(HttpResponse)> completion) {
  requests.push_back(request);
  auto it = responses.find(request.url);
  HttpResponse response = it != responses.end() ? it->second : HttpResponse{404, "", {}};
  scheduler_.post([completion = std::move(completion), response] { completion(response); });
}

void FakeProcessRunner::run(const ProcessRequest& request,
                            std::function<void(ProcessResult)> completion) {
  requests.push_back(request);
  const size_t index = requests.size() - 1;
  ProcessResult result;
  if (index < results.size()) {
    result = results[index];
  } else {
    result.launchError = "no such program";
  }
  scheduler_.post([completion = std::move(completion), result] { completion(result); });
}

void RecordingNotifier::queryAuthorization(std::function<void(bool)> completion) {
  completion(authorized);
}

void RecordingNotifier::requestAuthorization(std::function<void(bool)> completion) {
  ++authorizationRequests;
  completion(authorized);
}

void RecordingNotifier::add(const NotificationRequest& request, std::function<void()> completion) {
  added.push_back(request);
  if (holdCompletions) {
    heldCompletions.push_back(std::move(completion));
  } else {
    completion();
  }
}

void RecordingNotifier::remove(const std::string& identifier) {
  removed.push_back(identifier);
}

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
