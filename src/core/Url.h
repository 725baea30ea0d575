#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tidemark {

// The parts of an absolute URL (RFC 3986). Text with characters a URL may not hold unescaped
// (spaces, quotes, non-ASCII, ...) does not parse.
struct Url {
  std::string scheme;
  bool hasUserInfo = false;  // "user@" or "user:password@" before the host
  std::string host;
  std::optional<int> port;
  std::string path;
  std::string query;  // without "?"
};

std::optional<Url> parseUrl(std::string_view text);

}  // namespace tidemark
