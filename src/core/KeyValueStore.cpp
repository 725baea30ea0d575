#include "core/KeyValueStore.h"

namespace tidemark {

std::optional<std::string> MemoryKeyValueStore::data(const std::string& key) const {
  auto it = values_.find(key);
  if (it == values_.end()) return std::nullopt;
  if (auto* bytes = std::get_if<std::string>(&it->second)) return *bytes;
  return std::nullopt;
}

std::optional<std::vector<std::string>> MemoryKeyValueStore::stringArray(
    const std::string& key) const {
  auto it = values_.find(key);
  if (it == values_.end()) return std::nullopt;
  if (auto* list = std::get_if<std::vector<std::string>>(&it->second)) return *list;
  return std::nullopt;
}

void MemoryKeyValueStore::setData(const std::string& key, const std::string& bytes) {
  values_[key] = bytes;
}

void MemoryKeyValueStore::setStringArray(const std::string& key,
                                         const std::vector<std::string>& values) {
  values_[key] = values;
}

void MemoryKeyValueStore::remove(const std::string& key) {
  values_.erase(key);
}

std::optional<std::string> OverlayKeyValueStore::data(const std::string& key) const {
  if (written_.contains(key)) return written_.data(key);
  if (removed_.contains(key)) return std::nullopt;
  return base_.data(key);
}

std::optional<std::vector<std::string>> OverlayKeyValueStore::stringArray(
    const std::string& key) const {
  if (written_.contains(key)) return written_.stringArray(key);
  if (removed_.contains(key)) return std::nullopt;
  return base_.stringArray(key);
}

void OverlayKeyValueStore::setData(const std::string& key, const std::string& bytes) {
  written_.setData(key, bytes);
}

void OverlayKeyValueStore::setStringArray(const std::string& key,
                                          const std::vector<std::string>& values) {
  written_.setStringArray(key, values);
}

void OverlayKeyValueStore::remove(const std::string& key) {
  written_.remove(key);
  removed_[key] = true;
}

}  // namespace tidemark
