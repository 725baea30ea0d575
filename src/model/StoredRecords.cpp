#include "model/StoredRecords.h"

#include "core/FileIO.h"
#include "model/StoreKeys.h"
#include "model/Watchlist.h"

namespace tidemark {

std::optional<std::vector<std::string>> WatchlistRecords::read(std::string* fileProblem) const {
  std::optional<WatchlistBackup> newest;
  if (auto bytes = file_.read(fileProblem)) {
    size_t dropped = 0;
    newest = watchlistBackupFromBytes(*bytes, &dropped);
    if (fileProblem && !newest) *fileProblem = "not a watchlist record";
    if (fileProblem && newest && dropped > 0)
      *fileProblem = std::to_string(dropped) + " of " +
                     std::to_string(dropped + newest->symbols.size()) +
                     " symbols unreadable, dropped";
    if (newest && newest->symbols.size() > maxLength_) {
      // Too long to keep: refused whole, so the list the settings hold stays.
      if (fileProblem)
        *fileProblem = std::to_string(newest->symbols.size()) + " symbols, more than the " +
                       std::to_string(maxLength_) + " a watchlist holds";
      newest.reset();
    }
  }
  if (auto bytes = store_->data(storeKeys::watchlistBackup)) {
    // On a tie the file, read first, wins.
    auto stored = watchlistBackupFromBytes(*bytes);
    if (stored && (!newest || stored->exportedAt > newest->exportedAt)) newest = std::move(stored);
  }
  if (newest) return validSymbols(newest->symbols, maxLength_);
  if (auto list = store_->stringArray(storeKeys::watchlist)) return validSymbols(*list, maxLength_);
  return std::nullopt;
}

bool WatchlistRecords::hold(const std::vector<std::string>& list) const {
  const auto matches = [&list](std::string_view bytes) {
    size_t dropped = 0;
    const auto record = watchlistBackupFromBytes(bytes, &dropped);
    return record && dropped == 0 && record->symbols == list;
  };
  return store_->stringArray(storeKeys::watchlist) == list &&
         file_.storedEverywhere(*store_, storeKeys::watchlistBackup, matches);
}

void WatchlistRecords::write(const std::vector<std::string>& list, Date at) const {
  // The store first, so it holds the newest list even when the file cannot be written.
  store_->setStringArray(storeKeys::watchlist, list);
  auto bytes = json::encode(toJson(WatchlistBackup{1, at, list}));
  if (!bytes) return;
  store_->setData(storeKeys::watchlistBackup, *bytes);
  file_.write(*bytes);
}

namespace {

// The newer of a dated record's file and its store copy; what could not be read is set aside and
// logged. `what` names the record and its entries: {"holdings", "holdings"}.
template <class Backup, class Parse, class Count>
std::optional<Backup> readNewer(RecordFile& file, KeyValueStore& store, const char* key,
                                const char* unreadableKey, const char* record, const char* entries,
                                Parse parse, Count count, std::vector<SetAsideRecord>& log) {
  std::optional<Backup> newest;
  std::string problem;
  if (auto bytes = file.read(&problem)) {
    size_t dropped = 0;
    newest = parse(*bytes, &dropped);
    // A file that could not be read whole is kept aside; what could be read is used.
    if (!newest)
      problem = std::string("not a ") + record + " record";
    else if (dropped > 0)
      problem = std::to_string(dropped) + " of " + std::to_string(dropped + count(*newest)) + " " +
                entries + " unreadable, dropped";
  }
  if (!problem.empty()) file.setAside(std::move(problem), log);
  if (auto bytes = store.data(key)) {
    auto stored = parse(*bytes, nullptr);
    if (!stored) {
      store.setData(unreadableKey, *bytes);
      log.push_back({key, std::string("not a ") + record + " record", unreadableKey, ""});
    } else if (!newest || stored->savedAt > newest->savedAt) {  // on a tie the file wins
      newest = std::move(stored);
    }
  }
  return newest;
}

}  // namespace

std::optional<HoldingsBackup> HoldingsRecords::read(std::vector<SetAsideRecord>& log) {
  return readNewer<HoldingsBackup>(
      file_, *store_, storeKeys::holdings, storeKeys::holdingsUnreadable, "holdings", "holdings",
      holdingsBackupFromBytes, [](const HoldingsBackup& b) { return b.holdings.size(); }, log);
}

bool HoldingsRecords::hold(const HoldingsBook& book) const {
  return file_.storedEverywhere(*store_, storeKeys::holdings,
                                [&book](std::string_view bytes) { return book.matches(bytes); });
}

void HoldingsRecords::write(const HoldingsBook& book, Date at) const {
  auto bytes = json::encode(toJson(book.record(at)));
  if (!bytes) return;
  // The store first, so it holds the newest list even when the file cannot be written.
  store_->setData(storeKeys::holdings, *bytes);
  file_.write(*bytes);
}

std::optional<AlertsBackup> AlertsRecords::read(std::vector<SetAsideRecord>& log) {
  return readNewer<AlertsBackup>(
      file_, *store_, storeKeys::alerts, storeKeys::alertsUnreadable, "alerts", "rules",
      alertsBackupFromBytes, [](const AlertsBackup& b) { return b.rules.size(); }, log);
}

bool AlertsRecords::hold(const AlertBook& book) const {
  return file_.storedEverywhere(*store_, storeKeys::alerts,
                                [&book](std::string_view bytes) { return book.matches(bytes); });
}

void AlertsRecords::write(const AlertBook& book, Date at) const {
  auto bytes = json::encode(toJson(book.record(at)));
  if (!bytes) return;
  store_->setData(storeKeys::alerts, *bytes);
  file_.write(*bytes);
}

}  // namespace tidemark
