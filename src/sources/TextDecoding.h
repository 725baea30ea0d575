#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tidemark {

// Feed bodies as UTF-8 text: strict GB 18030 (what the feeds send), else strict UTF-8, else
// UTF-8 with every invalid sequence replaced by U+FFFD. Never fails.
std::string decodeLiveText(std::string_view bytes);

// Strict GB 18030 to UTF-8; no value on any invalid or truncated sequence.
std::optional<std::string> decodeGB18030(std::string_view bytes);
bool isValidUTF8(std::string_view bytes);
// Each maximal invalid subsequence becomes one U+FFFD, as decoders commonly do.
std::string repairUTF8(std::string_view bytes);

}  // namespace tidemark
