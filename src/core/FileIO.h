#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace tidemark {

// Far beyond any list a person keeps: a larger file is refused before it is read.
inline constexpr uintmax_t maxReadBytes = 16u << 20;

// The whole regular file, or the reason it could not be read: is_a_directory, invalid_argument
// for anything else that is not a regular file (a pipe would never end), file_too_large past
// `maxBytes`.
std::optional<std::string> readFile(const std::filesystem::path& path, std::error_code& error,
                                    uintmax_t maxBytes = maxReadBytes);

// Removes what interrupted writes of `file` left beside it ("watchlist.json.a1B2c3").
void removeLeftoverTemporaries(const std::filesystem::path& file);

// Who may read a file that a write creates: the app's own files (holdings among them) are the
// user's alone; a document the user exports follows the umask, as any program's would.
enum class NewFileAccess { owner, document };

// Whether a write may replace what stands at `path`: nothing, a regular file, or a link to one.
// A device, a folder, a pipe or a dangling link is never replaced.
bool isReplaceable(const std::filesystem::path& path);

// Writes a temporary file beside the file and renames it over it, so a reader sees the old or
// the new content, never a mix, and syncs the folder so the rename outlives a crash. A link is
// followed and stays a link; an existing file keeps its permissions. What is not replaceable is
// refused (invalid_argument) untouched. The temporary file is removed on failure.
std::error_code writeFileAtomically(const std::filesystem::path& path, const std::string& bytes,
                                    NewFileAccess access = NewFileAccess::owner);

}  // namespace tidemark
