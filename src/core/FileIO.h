#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace tidemark {

// The whole file, or the reason it could not be read.
std::optional<std::string> readFile(const std::filesystem::path& path, std::error_code& error);

// Writes a sibling temporary file and renames it over `path`, so a reader sees the old or the
// new content, never a mix. The temporary file is removed on failure.
std::error_code writeFileAtomically(const std::filesystem::path& path, const std::string& bytes);

}  // namespace tidemark
