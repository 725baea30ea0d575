#include "sources/StockSDKBridge.h"

#include <unistd.h>

#include <sstream>

#include "core/Json.h"
#include "core/Market.h"

extern char** environ;

namespace tidemark {
namespace {

bool isExecutableFile(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

// "/usr/bin" is always reachable, whatever PATH the application was started with.
std::string childPath(const std::map<std::string, std::string>& environment) {
  auto it = environment.find("PATH");
  if (it == environment.end() || it->second.empty()) return "/usr/bin:/bin";
  std::stringstream folders(it->second);
  for (std::string folder; std::getline(folders, folder, ':');)
    if (folder == "/usr/bin") return it->second;
  return it->second + ":/usr/bin";
}

std::optional<std::string> dumpStrict(const Json& value) {
  try {
    return value.dump();
  } catch (const Json::exception&) {
    return std::nullopt;  // a string that is not UTF-8
  }
}

}  // namespace

std::map<std::string, std::string> currentEnvironment() {
  std::map<std::string, std::string> environment;
  for (char** entry = environ; entry && *entry; ++entry) {
    std::string_view text(*entry);
    const size_t equals = text.find('=');
    if (equals == std::string_view::npos) continue;
    environment.emplace(text.substr(0, equals), text.substr(equals + 1));
  }
  return environment;
}

void applyDataSourceEndpoints(const DataSourceEndpoints& endpoints,
                              std::map<std::string, std::string>& environment) {
  if (auto text = dumpStrict(toJson(endpoints))) environment["STOCK_DATA_SOURCE_CONFIG"] = *text;
}

std::vector<QuoteSnapshot> decodeSDKQuotes(std::string_view output, Date readAt) {
  std::vector<QuoteSnapshot> quotes;
  auto document = json::parse(output);
  if (!document || !document->is_array()) return quotes;
  for (const Json& object : *document) {
    auto id = json::string(object, "id");
    auto name = json::string(object, "name");
    auto price = json::number(object, "price");
    auto prevClose = json::number(object, "prevClose");
    if (!id || !name || !price || !prevClose || !(*price > 0) || !(*prevClose > 0)) continue;
    Date updatedAt = readAt;
    if (auto text = json::string(object, "updatedAt"))
      updatedAt = parseISO8601(*text).value_or(readAt);
    const auto traded = json::number(object, "volume");
    int64_t volume = 0;
    if (traded && std::abs(*traded) < 9.2e18) volume = static_cast<int64_t>(*traded);
    quotes.push_back(QuoteSnapshot{
        *id, json::string(object, "market").value_or(std::string(marketLabel(Market::aShare))),
        *name, *price, *prevClose, json::number(object, "high").value_or(*price),
        json::number(object, "low").value_or(*price), volume, updatedAt,
        json::string(object, "source").value_or("stock-sdk")});
  }
  return quotes;
}

std::optional<std::vector<double>> decodeTimeline(std::string_view output) {
  auto document = json::parse(output);
  if (!document || !document->is_object()) return std::nullopt;
  auto values = document->find("values");
  if (values == document->end() || !values->is_array()) return std::nullopt;
  std::vector<double> prices;
  prices.reserve(values->size());
  for (const Json& value : *values) {
    if (!value.is_number()) return std::nullopt;
    const double price = value.get<double>();
    if (std::isfinite(price) && price > 0) prices.push_back(price);
  }
  return prices;
}

std::optional<std::vector<KlineBar>> decodeKline(std::string_view output) {
  auto document = json::parse(output);
  if (!document || !document->is_object() || !document->contains("bars")) return std::nullopt;
  return klineBarsFromJson((*document)["bars"]);
}

struct StockSDKBridge::Slot {
  bool running = false;
  std::vector<std::string> key;  // the running child's arguments and endpoint set
  std::vector<Answer> answers;   // everyone waiting for the running child
  struct Waiting {
    ProcessRequest request;
    Answer answer;
  };
  std::optional<Waiting> waiting;  // the next child, started when the running one has ended
};

namespace {

// Two requests with equal keys get the same answer.
std::vector<std::string> runKey(const ProcessRequest& request) {
  std::vector<std::string> key = request.arguments;
  const auto config = request.environment.find("STOCK_DATA_SOURCE_CONFIG");
  key.push_back(config == request.environment.end() ? "" : config->second);
  return key;
}

}  // namespace

StockSDKBridge::StockSDKBridge(ProcessRunner& runner, const Clock& clock, BridgeSetup setup)
    : runner_(runner),
      clock_(clock),
      setup_(std::move(setup)),
      slots_(std::make_shared<std::array<Slot, purposeCount>>()) {
  if (!setup_.isExecutable) setup_.isExecutable = isExecutableFile;
}

void StockSDKBridge::launch(Purpose purpose, ProcessRequest request, Answer answer) {
  Slot& slot = (*slots_)[purpose];
  if (!slot.running) return start(purpose, request, std::move(answer));
  std::optional<Slot::Waiting> replaced = std::move(slot.waiting);
  slot.waiting.reset();
  if (runKey(request) == slot.key) {
    slot.answers.push_back(std::move(answer));
  } else {
    slot.waiting = Slot::Waiting{std::move(request), std::move(answer)};
  }
  if (replaced) {
    ProcessResult none;  // never started: as if it had found no time to answer
    none.timedOut = true;
    none.replaced = true;
    replaced->answer(none);
  }
}

void StockSDKBridge::start(Purpose purpose, const ProcessRequest& request, Answer answer) {
  Slot& slot = (*slots_)[purpose];
  slot.running = true;
  slot.key = runKey(request);
  slot.answers.push_back(std::move(answer));
  runner_.run(request, [this, purpose, alive = std::weak_ptr(slots_)](const ProcessResult& result) {
    if (alive.lock()) ended(purpose, result);
  });
}

void StockSDKBridge::ended(Purpose purpose, const ProcessResult& result) {
  Slot& slot = (*slots_)[purpose];
  std::vector<Answer> answers = std::move(slot.answers);
  slot.answers.clear();
  slot.running = false;
  // The next child starts before anyone is answered, so an answer that asks again finds the
  // slot as it will stay.
  if (slot.waiting) {
    Slot::Waiting next = std::move(*slot.waiting);
    slot.waiting.reset();
    start(purpose, next.request, std::move(next.answer));
  }
  for (const Answer& answer : answers) answer(result);
}

std::optional<std::string> StockSDKBridge::nodePath() const {
  for (const std::string& candidate : setup_.nodeCandidates)
    if (setup_.isExecutable(candidate)) return candidate;
  if (auto path = setup_.environment.find("PATH"); path != setup_.environment.end()) {
    std::stringstream folders(path->second);
    for (std::string folder; std::getline(folders, folder, ':');) {
      if (folder.empty()) continue;
      const std::string candidate = folder + "/node";
      if (setup_.isExecutable(candidate)) return candidate;
    }
  }
  return std::nullopt;
}

ProcessRequest StockSDKBridge::request(const std::string& node,
                                       const DataSourceEndpoints& endpoints,
                                       std::vector<std::string> arguments, double deadline) const {
  const auto folder = setup_.script->parent_path();
  ProcessRequest request;
  request.program = node;
  request.arguments.push_back(setup_.script->string());
  for (std::string& argument : arguments) request.arguments.push_back(std::move(argument));
  request.workingDirectory = folder.string();
  request.environment = setup_.environment;
  request.environment["NODE_PATH"] = (folder / "node_modules").string();
  request.environment["PATH"] = childPath(setup_.environment);
  applyDataSourceEndpoints(endpoints, request.environment);
  // The user's own Node.js options stay; the heap bound comes last, so it is the one that holds.
  std::string& options = request.environment["NODE_OPTIONS"];
  options += (options.empty() ? "" : " ") + std::string("--max-old-space-size=") +
             std::to_string(setup_.heapLimitMB);
  request.deadline = deadline;
  return request;
}

void StockSDKBridge::fetchQuotes(const DataSourceEndpoints& endpoints,
                                 const std::vector<std::string>& symbols,
                                 QuotesCompletion completion) {
  if (!setup_.script) return completion({}, "stock-sdk 未随应用安装");
  const auto node = nodePath();
  if (!node) return completion({}, "未找到 Node.js，无法启动 stock-sdk");
  const auto list = dumpStrict(Json(symbols));
  if (!list) return completion({}, "无法编码自选行情代码");
  launch(quoteRun, request(*node, endpoints, {"--quotes", *list}, setup_.quoteDeadline),
         [&clock = clock_, completion = std::move(completion)](ProcessResult result) {
           if (result.launchError)
             return completion({}, "stock-sdk 启动失败：" + *result.launchError);
           if (result.outputTooLarge) return completion({}, "stock-sdk 输出的数据过大");
           auto quotes = decodeSDKQuotes(result.standardOutput, clock.now());
           if (quotes.empty()) return completion({}, "stock-sdk 未返回有效报价");
           completion(std::move(quotes), std::nullopt);
         });
}

void StockSDKBridge::probeHealth(const DataSourceEndpoints& endpoints,
                                 std::function<void(std::optional<bool>)> completion) {
  const auto node = nodePath();
  if (!setup_.script || !node) return completion(std::nullopt);
  launch(healthRun, request(*node, endpoints, {"--health"}, setup_.healthDeadline),
         [completion = std::move(completion)](const ProcessResult& result) {
           if (result.launchError || result.timedOut) return completion(std::nullopt);
           completion(result.exitedNormally && result.exitCode == 0);
         });
}

void StockSDKBridge::fetchTimeline(const DataSourceEndpoints& endpoints, const std::string& id,
                                   const std::string& market,
                                   std::function<void(MarketDataSource::Intraday)> completion) {
  const auto node = nodePath();
  const auto argument = dumpStrict(Json{{"id", id}, {"market", market}});
  if (!setup_.script || !node || !argument) return completion({});
  launch(timelineRun, request(*node, endpoints, {"--timeline", *argument}, setup_.timelineDeadline),
         [completion = std::move(completion)](const ProcessResult& result) {
           if (result.launchError || !result.exitedNormally || result.exitCode != 0)
             return completion({std::nullopt, result.replaced});
           completion({decodeTimeline(result.standardOutput)});
         });
}

void StockSDKBridge::fetchKline(const DataSourceEndpoints& endpoints, const std::string& id,
                                KlinePeriod period, KlineCompletion completion) {
  if (!setup_.script) return completion({{}, "stock-sdk 未随应用安装"});
  const auto node = nodePath();
  if (!node) return completion({{}, "未找到 Node.js，无法启动 stock-sdk"});
  const auto argument = dumpStrict(Json{{"id", id}, {"period", rawValue(period)}});
  if (!argument) return completion({{}, "无法编码K线请求"});
  launch(klineRun, request(*node, endpoints, {"--kline", *argument}, setup_.klineDeadline),
         [completion = std::move(completion)](const ProcessResult& result) {
           if (result.launchError)
             return completion({{}, "stock-sdk 启动失败：" + *result.launchError});
           const bool clean =
               !result.outputTooLarge && result.exitedNormally && result.exitCode == 0;
           auto bars = clean ? decodeKline(result.standardOutput) : std::nullopt;
           if (!bars || bars->empty()) return completion({{}, "stock-sdk 未返回K线"});
           completion({std::move(*bars), std::nullopt});
         });
}

void StockSDKBridge::search(const DataSourceEndpoints& endpoints, const std::string& text,
                            QuotesCompletion completion) {
  if (!setup_.script) return completion({}, "stock-sdk 未随应用安装");
  const auto node = nodePath();
  if (!node) return completion({}, "未找到 Node.js，无法启动 stock-sdk");
  launch(searchRun, request(*node, endpoints, {"--search", text}, setup_.searchDeadline),
         [&clock = clock_, completion = std::move(completion)](ProcessResult result) {
           if (result.launchError)
             return completion({}, "stock-sdk 启动失败：" + *result.launchError);
           // Only a clean exit with an array tells "nothing matched" from a failed search.
           const bool clean =
               !result.outputTooLarge && result.exitedNormally && result.exitCode == 0;
           const auto answer = clean ? json::parse(result.standardOutput) : std::nullopt;
           if (!answer || !answer->is_array()) return completion({}, "stock-sdk 搜索失败");
           completion(decodeSDKQuotes(result.standardOutput, clock.now()), std::nullopt);
         });
}

}  // namespace tidemark
