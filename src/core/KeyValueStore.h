#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tidemark {

// Why a store could not keep what it was given: the file it keeps its values in, and the
// system's reason.
struct StoreWriteFailure {
  std::string path;
  std::string reason;
  friend bool operator==(const StoreWriteFailure&, const StoreWriteFailure&) = default;
};

// The user's settings store: byte values (JSON documents) and plain lists of strings under keys.
// Reading a key that holds the other kind gives no value.
class KeyValueStore {
 public:
  // Told after each attempt to keep the values for good: the failure, or none once everything
  // handed over so far is kept. One observer; a new one replaces the old.
  using WriteObserver = std::function<void(const std::optional<StoreWriteFailure>&)>;

  virtual ~KeyValueStore() = default;
  virtual std::optional<std::string> data(const std::string& key) const = 0;
  virtual std::optional<std::vector<std::string>> stringArray(const std::string& key) const = 0;
  virtual void setData(const std::string& key, const std::string& bytes) = 0;
  virtual void setStringArray(const std::string& key, const std::vector<std::string>& values) = 0;
  virtual void remove(const std::string& key) = 0;
  // A value that changes with every refresh: read back at once like any other, but a store on
  // disk may keep it for good only later (within a minute, and when it is synced or closed), so
  // that a day of refreshes is not a day of disk flushes.
  virtual void setDataLazily(const std::string& key, const std::string& bytes) {
    setData(key, bytes);
  }
  // Stores that keep nothing beyond memory have nothing to tell. A sink for those that keep it.
  // NOLINTNEXTLINE(performance-unnecessary-value-param)
  virtual void setWriteObserver(WriteObserver /*observer*/) {}
};

// A store that lives in memory only: throw-away runs and tests.
class MemoryKeyValueStore : public KeyValueStore {
 public:
  std::optional<std::string> data(const std::string& key) const override;
  std::optional<std::vector<std::string>> stringArray(const std::string& key) const override;
  void setData(const std::string& key, const std::string& bytes) override;
  void setStringArray(const std::string& key, const std::vector<std::string>& values) override;
  void remove(const std::string& key) override;

  bool contains(const std::string& key) const { return values_.contains(key); }
  size_t size() const { return values_.size(); }

 private:
  using Value = std::variant<std::string, std::vector<std::string>>;
  std::map<std::string, Value, std::less<>> values_;
};

// Reads through to another store and keeps every write to itself, so a run can use the user's
// settings without ever changing them.
class OverlayKeyValueStore final : public KeyValueStore {
 public:
  explicit OverlayKeyValueStore(const KeyValueStore& base) : base_(base) {}
  std::optional<std::string> data(const std::string& key) const override;
  std::optional<std::vector<std::string>> stringArray(const std::string& key) const override;
  void setData(const std::string& key, const std::string& bytes) override;
  void setStringArray(const std::string& key, const std::vector<std::string>& values) override;
  void remove(const std::string& key) override;

 private:
  const KeyValueStore& base_;
  MemoryKeyValueStore written_;
  std::map<std::string, bool, std::less<>> removed_;
};

}  // namespace tidemark
