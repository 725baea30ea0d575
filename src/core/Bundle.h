#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace tidemark {

// The application's static resources and its build-time information values.
struct Bundle {
  std::filesystem::path resourceDirectory;
  std::map<std::string, std::string> info;

  // "<resourceDirectory>/<name>.<extension>" when that file exists.
  std::optional<std::filesystem::path> resource(const std::string& name,
                                                const std::string& extension) const;
  std::optional<std::string> infoValue(const std::string& key) const;
};

}  // namespace tidemark
