// Watchlist operations and the three places the list is kept.

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <system_error>
#include <unordered_map>
#include <unordered_set>

#include "core/FileIO.h"
#include "model/AppModel.h"
#include "model/StoreKeys.h"

namespace tidemark {

void AppModel::select(const std::string& symbol) {
  if (std::find(watchlist_.begin(), watchlist_.end(), symbol) == watchlist_.end()) return;
  if (!quote(symbol)) return;
  setActiveID(symbol);
}

void AppModel::add(const std::string& symbol) {
  if (!quote(symbol) || watchlist_.size() >= maxWatchlistLength) return;
  if (std::find(watchlist_.begin(), watchlist_.end(), symbol) != watchlist_.end()) return;
  auto list = watchlist_;
  list.push_back(symbol);
  setWatchlist(std::move(list));
}

void AppModel::add(const QuoteSnapshot& newQuote) {
  // The id is copied first: the quote may live in a list that a subscriber replaces when the
  // quotes change below.
  const std::string id = newQuote.id;
  if (!quote(id)) {
    auto list = quotes_;
    list.push_back(newQuote);
    setQuotes(std::move(list));
    if (ready_) {
      saveQuotes();
      evaluateAlert();
    }
  }
  add(id);
}

void AppModel::remove(const std::string& symbol) {
  auto first = std::find(watchlist_.begin(), watchlist_.end(), symbol);
  if (first == watchlist_.end()) return;
  auto list = watchlist_;
  std::erase(list, symbol);
  setWatchlist(std::move(list));
}

void AppModel::move(const std::string& symbol, int offset) {
  auto it = std::find(watchlist_.begin(), watchlist_.end(), symbol);
  if (it == watchlist_.end()) return;
  const auto index = static_cast<int64_t>(it - watchlist_.begin());
  const auto count = static_cast<int64_t>(watchlist_.size());
  const int64_t target = std::max<int64_t>(0, std::min(index + offset, count - 1));
  if (target == index) return;
  auto list = watchlist_;
  std::string moved = std::move(list[index]);
  list.erase(list.begin() + index);
  list.insert(list.begin() + target, std::move(moved));
  setWatchlist(std::move(list));
}

void AppModel::cycleActive() {
  std::unordered_set<std::string_view> quoted;
  quoted.reserve(quotes_.size());
  for (const QuoteSnapshot& q : quotes_) quoted.insert(q.id);
  // Symbols without a quote are skipped, so rotation never sticks on them.
  std::vector<const std::string*> candidates;
  for (const std::string& symbol : watchlist_)
    if (quoted.contains(symbol)) candidates.push_back(&symbol);
  if (candidates.size() < 2) return;
  size_t next = 0;
  for (size_t k = 0; k < candidates.size(); ++k)
    if (*candidates[k] == prefs_.activeID) next = (k + 1) % candidates.size();
  select(*candidates[next]);
}

void AppModel::saveWatchlist() {
  if (ready_) watchlistRecords_.write(watchlist_, deps_.clock.now());
}

void AppModel::exportWatchlist(const std::filesystem::path& url) const {
  std::string text = exportText(WatchlistBackup{1, deps_.clock.now(), watchlist_}, holdings_.list(),
                                alerts_.rules());
  if (!isReplaceable(url)) throw std::runtime_error("无法写入 " + url.string() + "：不是普通文件");
  if (auto error = writeFileAtomically(url, text, NewFileAccess::document))
    throw std::system_error(error, "无法写入 " + url.string());
}

namespace {

// The holdings an import carries: a later entry for the same symbol replaces the earlier one in
// its place; entries that are no holding, and those past the limit, are counted as skipped.
std::vector<Holding> importedHoldings(const Json& entries, size_t& skipped) {
  if (!entries.is_array()) throw ModelError::invalidImport("文件中的持仓不是有效的列表");
  std::vector<Holding> held;
  std::unordered_map<std::string, size_t> at;
  for (const Json& entry : entries) {
    auto holding = holdingFromJson(entry);
    if (holding) {
      if (auto it = at.find(holding->symbolID); it != at.end()) {
        held[it->second] = std::move(*holding);
        continue;
      }
    }
    if (!holding || held.size() == maxHoldingsCount) {
      ++skipped;
      continue;
    }
    at.emplace(holding->symbolID, held.size());
    held.push_back(std::move(*holding));
  }
  return held;
}

}  // namespace

namespace {

// The list rules, then the import's own: something recognised and no more than a watchlist holds.
std::vector<std::string> checkedImport(std::vector<std::string> list) {
  list = validSymbols(list);
  if (list.empty()) throw ModelError::invalidImport("没有可识别的股票代码");
  if (list.size() > AppModel::maxWatchlistLength)
    throw ModelError::invalidImport("自选最多 " + std::to_string(AppModel::maxWatchlistLength) +
                                    " 个标的，文件中有 " + std::to_string(list.size()) + " 个");
  return list;
}

WatchlistImportResult importCodes(AppModel& model, std::string_view text) {
  WatchlistImportResult result;
  auto list = checkedImport(codesFromText(text, result.skippedLines));
  result.symbols = list.size();
  model.setWatchlist(std::move(list));
  return result;
}

}  // namespace

WatchlistImportResult AppModel::importWatchlist(const std::filesystem::path& url) {
  std::error_code error;
  auto bytes = readFile(url, error);
  if (error == std::errc::file_too_large)
    throw ModelError::invalidImport("文件超过 16 MB，不是自选列表");
  if (!bytes) throw std::system_error(error, "无法读取 " + url.string());
  // A file that does not open as JSON is a plain list of codes. An editor's byte-order mark may
  // stand before either.
  std::string_view head = *bytes;
  if (head.starts_with("\xEF\xBB\xBF")) head.remove_prefix(3);
  head = trimmedSymbol(head);
  if (!head.starts_with('{') && !head.starts_with('[')) return importCodes(*this, *bytes);
  auto document = json::parse(*bytes);
  if (!document) throw std::runtime_error("文件不是有效的 JSON");

  const auto symbols = document->is_object() ? document->find("symbols") : document->end();
  if (!document->is_object() || symbols == document->end() || !symbols->is_array() ||
      !std::all_of(symbols->begin(), symbols->end(), [](const Json& s) { return s.is_string(); }))
    throw ModelError::invalidImport("文件中没有有效的 symbols 列表");

  std::vector<std::string> list;
  for (const Json& symbol : *symbols) {
    // Kept as the code it is, without the blanks and line breaks a hand-edited file brings.
    const std::string_view code = trimmedSymbol(symbol.get_ref<const std::string&>());
    if (isRecognizedSymbol(code)) list.emplace_back(code);
  }
  list = checkedImport(std::move(list));
  WatchlistImportResult result;
  std::optional<std::vector<Holding>> held;
  if (const auto entries = document->find("holdings"); entries != document->end())
    held = importedHoldings(*entries, result.skippedHoldings);
  std::optional<std::vector<AlertRule>> alerts;
  if (const auto entries = document->find("alerts"); entries != document->end()) {
    if (!entries->is_array()) throw ModelError::invalidImport("文件中的提醒不是有效的列表");
    alerts = alertRulesFromJson(*entries, result.skippedAlerts);
  }
  result.symbols = list.size();
  setWatchlist(std::move(list));
  if (held) {
    result.holdings = held->size();
    holdings_.replace(std::move(*held));
    changed_.notify();
    saveHoldings();
  }
  if (alerts) {
    result.alerts = alerts->size();
    alerts_.restore({1, deps_.clock.now(), alerts_.paused(), std::move(*alerts)});
    changed_.notify();
    saveAlerts();
    evaluateAlert();
  }
  return result;
}

}  // namespace tidemark
