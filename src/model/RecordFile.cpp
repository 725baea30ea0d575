#include "model/RecordFile.h"

#include "core/FileIO.h"

namespace tidemark {

std::optional<std::string> RecordFile::read(std::string* problem) const {
  if (!path_) return std::nullopt;
  std::error_code error;
  auto bytes = readFile(*path_, error);
  if (!bytes && problem) {
    if (std::error_code missing;
        std::filesystem::exists(std::filesystem::symlink_status(*path_, missing)))
      *problem = error.message();
  }
  return bytes;
}

void RecordFile::setAside(std::string problem, std::vector<SetAsideRecord>& log) {
  std::filesystem::path aside = *path_;
  aside.replace_filename(path_->stem().string() + ".unreadable" + path_->extension().string());
  std::error_code error;
  std::filesystem::rename(*path_, aside, error);
  log.push_back({path_->string(), std::move(problem), error ? std::string() : aside.string(),
                 error ? error.message() : ""});
  held_ = static_cast<bool>(error);
}

void RecordFile::write(const std::string& bytes) const {
  if (!path_ || held_) return;
  std::error_code error;
  std::filesystem::create_directories(path_->parent_path(), error);
  if (error) return;
  writeFileAtomically(*path_, bytes);
}

bool RecordFile::holds(const std::function<bool(std::string_view)>& accepts) const {
  if (!path_ || held_) return true;
  std::error_code error;
  const auto bytes = readFile(*path_, error);
  return bytes && accepts(*bytes);
}

bool RecordFile::storedEverywhere(const KeyValueStore& store, const char* key,
                                  const std::function<bool(std::string_view)>& accepts) const {
  const auto stored = store.data(key);
  return stored && accepts(*stored) && holds(accepts);
}

}  // namespace tidemark
