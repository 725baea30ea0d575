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

// The code points of UTF-8 text; a malformed byte stands for itself.
inline std::u32string codePoints(std::string_view utf8) {
  std::u32string out;
  for (size_t i = 0; i < utf8.size();) {
    const auto lead = static_cast<unsigned char>(utf8[i]);
    const size_t length = lead < 0x80       ? 1
                          : lead >> 5 == 6  ? 2
                          : lead >> 4 == 14 ? 3
                          : lead >> 3 == 30 ? 4
                                            : 1;
    if (length == 1 || i + length > utf8.size()) {
      out.push_back(lead);
      ++i;
      continue;
    }
    char32_t c = lead & (0x7F >> length);
    for (size_t k = 1; k < length; ++k)
      c = c << 6 | (static_cast<unsigned char>(utf8[i + k]) & 0x3F);
    out.push_back(c);
    i += length;
  }
  return out;
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
