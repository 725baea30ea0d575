#include "core/FileIO.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>

namespace tidemark {

std::optional<std::string> readFile(const std::filesystem::path& path, std::error_code& error,
                                    uintmax_t maxBytes) {
  error.clear();
  struct stat file {};
  if (::stat(path.c_str(), &file) != 0) {
    error = {errno, std::generic_category()};
    return std::nullopt;
  }
  if (S_ISDIR(file.st_mode))
    error = std::make_error_code(std::errc::is_a_directory);
  else if (!S_ISREG(file.st_mode))
    error = std::make_error_code(std::errc::invalid_argument);
  else if (static_cast<uintmax_t>(file.st_size) > maxBytes)
    error = std::make_error_code(std::errc::file_too_large);
  if (error) return std::nullopt;
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = std::error_code(errno ? errno : ENOENT, std::generic_category());
    return std::nullopt;
  }
  std::ostringstream out;
  out << in.rdbuf();
  if (in.bad()) {
    error = std::make_error_code(std::errc::io_error);
    return std::nullopt;
  }
  error.clear();
  return std::move(out).str();
}

void removeLeftoverTemporaries(const std::filesystem::path& file) {
  const std::string prefix = file.filename().string() + ".";
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(file.parent_path(), error)) {
    const std::string name = entry.path().filename().string();
    // mkstemp's six letters and digits after the name and a point.
    const bool temporary =
        name.size() == prefix.size() + 6 && name.starts_with(prefix) &&
        std::all_of(name.begin() + static_cast<std::ptrdiff_t>(prefix.size()), name.end(),
                    [](char c) { return std::isalnum(static_cast<unsigned char>(c)); });
    std::error_code ignored;
    if (temporary && entry.is_regular_file(ignored)) std::filesystem::remove(entry.path(), ignored);
  }
}

bool isReplaceable(const std::filesystem::path& path) {
  struct stat target {};
  if (::stat(path.c_str(), &target) == 0) return S_ISREG(target.st_mode);
  // Missing is fine; a link that points nowhere is not, for the write would replace the link.
  struct stat link {};
  return errno == ENOENT && ::lstat(path.c_str(), &link) != 0;
}

std::error_code writeFileAtomically(const std::filesystem::path& path, const std::string& bytes,
                                    NewFileAccess access) {
  if (!isReplaceable(path)) return std::make_error_code(std::errc::invalid_argument);
  std::error_code error;
  // Through a link to the file it names, so the link stays.
  std::filesystem::path file = path;
  if (std::filesystem::is_symlink(std::filesystem::symlink_status(path, error))) {
    file = std::filesystem::canonical(path, error);
    if (error) return error;
  }
  error.clear();
  mode_t mode = 0600;
  if (struct stat existing{}; ::stat(file.c_str(), &existing) == 0) {
    mode = existing.st_mode & 07777;
  } else if (access == NewFileAccess::document) {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    mode = 0666 & ~mask;
  }
  std::string tmpl = file.string() + ".XXXXXX";
  int fd = ::mkstemp(tmpl.data());
  if (fd < 0) return {errno, std::generic_category()};
  size_t written = 0;
  while (written < bytes.size()) {
    ssize_t n = ::write(fd, bytes.data() + written, bytes.size() - written);
    if (n < 0) {
      if (errno == EINTR) continue;
      error = {errno, std::generic_category()};
      break;
    }
    written += static_cast<size_t>(n);
  }
  if (!error && ::fsync(fd) != 0) error = {errno, std::generic_category()};
  if (!error && ::fchmod(fd, mode) != 0) error = {errno, std::generic_category()};
  if (::close(fd) != 0 && !error) error = {errno, std::generic_category()};
  if (!error && std::rename(tmpl.c_str(), file.c_str()) != 0)
    error = {errno, std::generic_category()};
  if (error) {
    ::unlink(tmpl.c_str());
    return error;
  }
  // The rename lives in the folder's own data.
  const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : ".";
  if (const int dir = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); dir >= 0) {
    ::fsync(dir);
    ::close(dir);
  }
  return error;
}

}  // namespace tidemark
