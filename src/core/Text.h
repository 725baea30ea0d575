#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tidemark {

// Code points in UTF-8 text (what a user counts as characters in a symbol).
inline size_t characterCount(std::string_view utf8) {
  size_t count = 0;
  for (unsigned char c : utf8)
    if ((c & 0xC0) != 0x80) ++count;
  return count;
}

// ASCII letters changed, every other byte kept.
inline std::string toLowerAscii(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return out;
}

inline std::string toUpperAscii(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return out;
}

// FNV-1a: a small hash that is the same on every run and platform.
inline uint64_t stableHash(std::string_view bytes) {
  uint64_t hash = 1469598103934665603ull;
  for (unsigned char c : bytes) hash = (hash ^ c) * 1099511628211ull;
  return hash;
}

}  // namespace tidemark
