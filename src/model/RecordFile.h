#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/KeyValueStore.h"

namespace tidemark {

// A stored record that construction could not read (fully), kept aside before anything was
// saved over it.
struct SetAsideRecord {
  std::string record;   // the store key, or the file's path
  std::string problem;  // what could not be read, in English: "not JSON", "field \"theme\""
  std::string keptAs;   // the key or file that holds it now; empty when it could not be moved
  std::string failure;  // why it could not be moved; the file is then left alone this run
  friend bool operator==(const SetAsideRecord&, const SetAsideRecord&) = default;
};

// The file that keeps a copy of a stored record beside the user's other files (the watchlist's,
// the holdings'), or none when the record lives in the store only. An unreadable file is moved
// aside; one that cannot be moved is held: never written over this run.
class RecordFile {
 public:
  explicit RecordFile(std::optional<std::filesystem::path> path = std::nullopt)
      : path_(std::move(path)) {}

  const std::optional<std::filesystem::path>& path() const { return path_; }
  // The file's bytes; none when there is none or it cannot be read. When `problem` is given, it
  // says why a file that exists could not be read (a folder, a pipe, too large, no access).
  std::optional<std::string> read(std::string* problem = nullptr) const;
  // "watchlist.json" → "watchlist.unreadable.json", logged; a later unreadable file replaces it.
  void setAside(std::string problem, std::vector<SetAsideRecord>& log);
  // Writes atomically, creating the folder; nothing when there is no file or it is held.
  void write(const std::string& bytes) const;
  // Whether the file already reads to what `accepts` takes; true when it is not written at all.
  bool holds(const std::function<bool(std::string_view)>& accepts) const;
  // Whether the store's copy under `key` and the file both already read to what `accepts` takes:
  // then a start need not write the record again.
  bool storedEverywhere(const KeyValueStore& store, const char* key,
                        const std::function<bool(std::string_view)>& accepts) const;

 private:
  std::optional<std::filesystem::path> path_;
  bool held_ = false;
};

}  // namespace tidemark
