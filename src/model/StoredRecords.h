#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/Date.h"
#include "core/KeyValueStore.h"
#include "model/AlertBook.h"
#include "model/HoldingsBook.h"
#include "model/RecordFile.h"

namespace tidemark {

// Where the watchlist is kept: the store's list and its dated record, and a file beside the
// user's other files. The newer record is read; the store is written first.
class WatchlistRecords {
 public:
  WatchlistRecords(KeyValueStore& store, RecordFile file, size_t maxLength)
      : store_(&store), file_(std::move(file)), maxLength_(maxLength) {}

  RecordFile& file() { return file_; }
  // The stored list; `fileProblem` says what could not be read of a file that exists.
  std::optional<std::vector<std::string>> read(std::string* fileProblem) const;
  // Whether the store and the file already hold exactly this list.
  bool hold(const std::vector<std::string>& list) const;
  void write(const std::vector<std::string>& list, Date at) const;

 private:
  KeyValueStore* store_;
  RecordFile file_;
  size_t maxLength_;
};

// Where the holdings are kept: the store and a file beside the watchlist's. The newer record is
// read; the store is written first.
class HoldingsRecords {
 public:
  HoldingsRecords(KeyValueStore& store, RecordFile file) : store_(&store), file_(std::move(file)) {}

  RecordFile& file() { return file_; }
  // The newer of the two records; what could not be read is set aside and logged. None when
  // neither holds one.
  std::optional<HoldingsBackup> read(std::vector<SetAsideRecord>& log);
  bool hold(const HoldingsBook& book) const;
  void write(const HoldingsBook& book, Date at) const;

 private:
  KeyValueStore* store_;
  RecordFile file_;
};

// Where the alerts besides the primary one are kept, as the holdings are.
class AlertsRecords {
 public:
  AlertsRecords(KeyValueStore& store, RecordFile file) : store_(&store), file_(std::move(file)) {}

  RecordFile& file() { return file_; }
  std::optional<AlertsBackup> read(std::vector<SetAsideRecord>& log);
  bool hold(const AlertBook& book) const;
  void write(const AlertBook& book, Date at) const;

 private:
  KeyValueStore* store_;
  RecordFile file_;
};

}  // namespace tidemark
