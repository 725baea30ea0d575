#include "core/Bundle.h"

namespace tidemark {

std::optional<std::filesystem::path> Bundle::resource(const std::string& name,
                                                      const std::string& extension) const {
  if (resourceDirectory.empty()) return std::nullopt;
  auto path = resourceDirectory / (name + "." + extension);
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  return path;
}

std::optional<std::string> Bundle::infoValue(const std::string& key) const {
  auto it = info.find(key);
  if (it == info.end()) return std::nullopt;
  return it->second;
}

}  // namespace tidemark
