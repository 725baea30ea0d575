#pragma once

#include <string_view>

namespace tidemark {

// The lower-case initials of the readings of a Han character the local securities' names use
// ("hx" for 行, read háng in 银行 and xíng elsewhere); empty for any other character.
std::string_view pinyinInitials(char32_t character);

}  // namespace tidemark
