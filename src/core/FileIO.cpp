#include "core/FileIO.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>

namespace tidemark {

std::optional<std::string> readFile(const std::filesystem::path& path, std::error_code& error) {
  error.clear();
  if (std::filesystem::is_directory(path, error)) {
    error = std::make_error_code(std::errc::is_a_directory);
    return std::nullopt;
  }
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

std::error_code writeFileAtomically(const std::filesystem::path& path, const std::string& bytes) {
  std::string tmpl = path.string() + ".XXXXXX";
  int fd = ::mkstemp(tmpl.data());
  if (fd < 0) return {errno, std::generic_category()};
  std::error_code error;
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
  // mkstemp creates 0600; give the file the usual permissions of a user document.
  if (!error && ::fchmod(fd, 0644) != 0) error = {errno, std::generic_category()};
  if (::close(fd) != 0 && !error) error = {errno, std::generic_category()};
  if (!error && std::rename(tmpl.c_str(), path.c_str()) != 0)
    error = {errno, std::generic_category()};
  if (error) ::unlink(tmpl.c_str());
  return error;
}

}  // namespace tidemark
