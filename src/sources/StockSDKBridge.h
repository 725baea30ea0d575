#pragma once

#include <array>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Clock.h"
#include "core/DataSourceEndpoints.h"
#include "core/MarketDataSource.h"
#include "core/ProcessRunner.h"

namespace tidemark {

// What every bridge run takes from its surroundings; tests replace any of it.
struct BridgeSetup {
  // The bridge script; its folder holds node_modules with the stock-sdk package.
  std::optional<std::filesystem::path> script;
  // The application's own environment, handed on to the child.
  std::map<std::string, std::string> environment;
  // Tried in order, then every folder of the environment's PATH.
  std::vector<std::string> nodeCandidates{"/opt/homebrew/bin/node", "/usr/local/bin/node",
                                          "/usr/bin/node"};
  std::function<bool(const std::string& path)> isExecutable;  // default: an executable file
  double quoteDeadline = 22;
  double healthDeadline = 4;
  double timelineDeadline = 22;
  double searchDeadline = 22;  // a search and a quote run, one after the other
  double klineDeadline = 22;
  // The V8 heap of a child, in megabytes. Downloads are buffers outside it, bounded by the
  // script itself.
  int heapLimitMB = 64;
};

// The process environment as a map.
std::map<std::string, std::string> currentEnvironment();

// Writes the endpoint set as JSON into "STOCK_DATA_SOURCE_CONFIG".
void applyDataSourceEndpoints(const DataSourceEndpoints& endpoints,
                              std::map<std::string, std::string>& environment);

// The bridge's "--quotes" answer: a JSON array of quote objects. Objects without id, name,
// price or previous close, or with a price or previous close not above zero, are skipped.
std::vector<QuoteSnapshot> decodeSDKQuotes(std::string_view output, Date readAt);

// The bridge's "--timeline" answer {"values": [...]}: the finite prices above zero, in order;
// none unless the answer is such an object with an array of numbers.
std::optional<std::vector<double>> decodeTimeline(std::string_view output);

// The bridge's "--kline" answer {"bars": [...]}: the bars `klineBarsFromJson` keeps; none unless
// the answer is such an object.
std::optional<std::vector<KlineBar>> decodeKline(std::string_view output);

// Runs the bridge script under Node.js for quotes, its health check, intraday series and
// search.
//
// At most one child per kind of run is alive. A request equal to the running one (same
// arguments, same endpoint set) shares its answer; any other waits until the running child has
// ended, and a newer request takes the place of one still waiting, which is answered at once
// as a run that got no answer in time. The newest request is what callers want: a newer load,
// search or intraday request makes the older one's answer moot.
class StockSDKBridge {
 public:
  // Where the process runner should kill a child that keeps growing. A child at work stays near
  // 100 MB; one fetching the most the script accepts on three connections, about 125.
  static constexpr size_t childMemoryLimit = 160 << 20;

  StockSDKBridge(ProcessRunner& runner, const Clock& clock, BridgeSetup setup);

  std::optional<std::string> nodePath() const;
  bool isAvailable() const { return setup_.script && nodePath(); }

  void fetchQuotes(const DataSourceEndpoints& endpoints, const std::vector<std::string>& symbols,
                   QuotesCompletion completion);
  // Yes when the package loads and answers, no when the check fails, none without a verdict
  // (no Node.js, no script, no start, no answer in time).
  void probeHealth(const DataSourceEndpoints& endpoints,
                   std::function<void(std::optional<bool>)> completion);
  void fetchTimeline(const DataSourceEndpoints& endpoints, const std::string& id,
                     const std::string& market,
                     std::function<void(MarketDataSource::Intraday)> completion);
  void fetchKline(const DataSourceEndpoints& endpoints, const std::string& id, KlinePeriod period,
                  KlineCompletion completion);
  // The package's own search: the stocks and funds it finds, with their quotes. An empty answer
  // is a search that matched nothing; an error text is a search that failed.
  void search(const DataSourceEndpoints& endpoints, const std::string& text,
              QuotesCompletion completion);

 private:
  enum Purpose : size_t { quoteRun, healthRun, timelineRun, searchRun, klineRun, purposeCount };
  using Answer = std::function<void(ProcessResult)>;
  struct Slot;

  ProcessRequest request(const std::string& node, const DataSourceEndpoints& endpoints,
                         std::vector<std::string> arguments, double deadline) const;
  void launch(Purpose purpose, ProcessRequest request, Answer answer);
  void start(Purpose purpose, const ProcessRequest& request, Answer answer);
  void ended(Purpose purpose, const ProcessResult& result);

  ProcessRunner& runner_;
  const Clock& clock_;
  BridgeSetup setup_;
  std::shared_ptr<std::array<Slot, purposeCount>> slots_;  // runner callbacks hold it weakly
};

}  // namespace tidemark
