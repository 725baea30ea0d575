#include "sources/TextDecoding.h"

#include <iconv.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tidemark {
namespace {

// One converter per thread, reused: opening one costs far more than a short conversion. It
// converts to glibc's internal UCS-4 ("WCHAR_T"), one conversion step instead of two, and the
// few code points of a run are written out as UTF-8 here.
// iconv_open's failure value, (iconv_t)-1 as iconv(3) defines it.
const iconv_t noConverter = reinterpret_cast<iconv_t>(-1);  // NOLINT(performance-no-int-to-ptr)

class GB18030Converter {
 public:
  GB18030Converter() : cd_(iconv_open("WCHAR_T", "GB18030")) {}
  ~GB18030Converter() {
    if (cd_ != noConverter) iconv_close(cd_);
  }
  GB18030Converter(const GB18030Converter&) = delete;
  GB18030Converter& operator=(const GB18030Converter&) = delete;

  // Appends the converted run as UTF-8; false on an invalid or incomplete sequence.
  bool append(std::string_view run, std::string& out) {
    if (cd_ == noConverter) return false;
    iconv(cd_, nullptr, nullptr, nullptr, nullptr);
    // Every character takes at least two bytes of a multi-byte run.
    units_.resize(run.size() / 2 + 1);
    char* in = const_cast<char*>(run.data());
    size_t inLeft = run.size();
    char* outPtr = reinterpret_cast<char*>(units_.data());
    size_t outLeft = units_.size() * sizeof(char32_t);
    if (iconv(cd_, &in, &inLeft, &outPtr, &outLeft) == static_cast<size_t>(-1) || inLeft != 0)
      return false;
    const size_t count = units_.size() - outLeft / sizeof(char32_t);
    const size_t offset = out.size();
    out.resize(offset + count * 4);
    char* p = out.data() + offset;
    for (size_t k = 0; k < count; ++k) p = encodeUTF8(units_[k], p);
    out.resize(static_cast<size_t>(p - out.data()));
    return true;
  }

 private:
  static char* encodeUTF8(char32_t c, char* p) {
    if (c < 0x80) {
      *p++ = static_cast<char>(c);
    } else if (c < 0x800) {
      *p++ = static_cast<char>(0xC0 | (c >> 6));
      *p++ = static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      *p++ = static_cast<char>(0xE0 | (c >> 12));
      *p++ = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      *p++ = static_cast<char>(0x80 | (c & 0x3F));
    } else {
      *p++ = static_cast<char>(0xF0 | (c >> 18));
      *p++ = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      *p++ = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      *p++ = static_cast<char>(0x80 | (c & 0x3F));
    }
    return p;
  }

  iconv_t cd_;
  std::vector<char32_t> units_;
};

// Index of the first byte at or after `i` with the high bit set, or `size`.
size_t nextNonAscii(const unsigned char* data, size_t i, size_t size) {
  // Thirty-two, then eight bytes at a time while the text is plain ASCII, which feed bodies
  // mostly are.
  constexpr uint64_t high = 0x8080808080808080ull;
  while (i + 32 <= size) {
    uint64_t w[4];
    std::memcpy(w, data + i, 32);
    if ((w[0] | w[1] | w[2] | w[3]) & high) break;
    i += 32;
  }
  while (i + 8 <= size) {
    uint64_t word;
    std::memcpy(&word, data + i, 8);
    if (word & 0x8080808080808080ull) break;
    i += 8;
  }
  while (i < size && data[i] < 0x80) ++i;
  return i;
}

// What a UTF-8 lead byte promises: the sequence's length and the range of its first trail byte
// (narrower after E0, ED, F0 and F4, which would otherwise start overlong forms, surrogates or
// code points past U+10FFFF). Length 0: no lead byte.
struct Lead {
  size_t length = 0;
  unsigned char lo = 0x80, hi = 0xBF;
};

Lead leadOf(unsigned char c) {
  if (c >= 0xC2 && c <= 0xDF) return {2};
  if (c == 0xE0) return {3, 0xA0};
  if (c == 0xED) return {3, 0x80, 0x9F};
  if (c >= 0xE1 && c <= 0xEF) return {3};
  if (c == 0xF0) return {4, 0x90};
  if (c == 0xF4) return {4, 0x80, 0x8F};
  if (c >= 0xF1 && c <= 0xF3) return {4};
  return {};
}

// How many bytes from `i` match the lead's sequence: the lead, then trail bytes in range.
size_t matchingPrefix(const unsigned char* s, size_t i, size_t size, const Lead& lead) {
  if (i + 1 >= size || s[i + 1] < lead.lo || s[i + 1] > lead.hi) return 1;
  size_t length = 2;
  while (length < lead.length && i + length < size && s[i + length] >= 0x80 &&
         s[i + length] <= 0xBF)
    ++length;
  return length;
}

// Length of the valid UTF-8 sequence at `i`, or 0.
size_t utf8SequenceLength(const unsigned char* s, size_t i, size_t size) {
  if (s[i] < 0x80) return 1;
  const Lead lead = leadOf(s[i]);
  if (lead.length == 0) return 0;
  return matchingPrefix(s, i, size, lead) == lead.length ? lead.length : 0;
}

// How many bytes of an invalid sequence at `i` form its maximal subpart (at least one).
size_t invalidSubpartLength(const unsigned char* s, size_t i, size_t size) {
  const Lead lead = leadOf(s[i]);
  return lead.length == 0 ? 1 : matchingPrefix(s, i, size, lead);
}

}  // namespace

std::optional<std::string> decodeGB18030(std::string_view bytes) {
  thread_local GB18030Converter converter;
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  const size_t size = bytes.size();
  std::string out;
  out.reserve(size + size / 4);
  size_t i = 0;
  while (i < size) {
    const size_t ascii = nextNonAscii(data, i, size);
    out.append(bytes.data() + i, ascii - i);
    i = ascii;
    if (i == size) break;
    // A run of multi-byte characters. A lead byte followed by a digit starts a four-byte
    // sequence, any other second byte a two-byte one; valid text always splits this way, and
    // the converter rejects whatever does not.
    const size_t start = i;
    while (i < size && data[i] >= 0x80)
      i += (i + 1 < size && data[i + 1] >= 0x30 && data[i + 1] <= 0x39) ? 4 : 2;
    i = std::min(i, size);
    if (!converter.append(bytes.substr(start, i - start), out)) return std::nullopt;
  }
  return out;
}

bool isValidUTF8(std::string_view bytes) {
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  const size_t size = bytes.size();
  for (size_t i = nextNonAscii(data, 0, size); i < size; i = nextNonAscii(data, i, size)) {
    const size_t length = utf8SequenceLength(data, i, size);
    if (length == 0) return false;
    i += length;
  }
  return true;
}

std::string repairUTF8(std::string_view bytes) {
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  const size_t size = bytes.size();
  std::string out;
  out.reserve(size);
  size_t i = 0;
  while (i < size) {
    const size_t length = utf8SequenceLength(data, i, size);
    if (length > 0) {
      out.append(bytes.data() + i, length);
      i += length;
    } else {
      out += "\xEF\xBF\xBD";
      i += invalidSubpartLength(data, i, size);
    }
  }
  return out;
}

std::string decodeLiveText(std::string_view bytes) {
  if (auto text = decodeGB18030(bytes)) return std::move(*text);
  if (isValidUTF8(bytes)) return std::string(bytes);
  return repairUTF8(bytes);
}

}  // namespace tidemark
