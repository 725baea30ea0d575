#pragma once

#include <string>

#include <QByteArray>

namespace tidemark {

// Bytes read from a server or a child, up to a cap. Past it, what was held is dropped, so memory
// stays bounded whatever the other side sends, and the reader is told to stop.
class CappedBuffer {
 public:
  explicit CappedBuffer(size_t cap) : cap_(cap) {}

  // Answers false once the cap is passed; later chunks are ignored.
  bool append(const QByteArray& chunk) {
    if (overflowed_) return false;
    if (bytes_.size() + static_cast<size_t>(chunk.size()) > cap_) {
      overflowed_ = true;
      bytes_ = std::string();
      return false;
    }
    // Past the first chunks, room for the whole cap at once: growing by doubling would hold the
    // old copy and a new one of twice the size while it copies. Untouched room costs no memory.
    const size_t needed = bytes_.size() + static_cast<size_t>(chunk.size());
    if (needed > bytes_.capacity() && needed > (256u << 10)) bytes_.reserve(cap_);
    bytes_.append(chunk.constData(), static_cast<size_t>(chunk.size()));
    return true;
  }
  // Marks the buffer full without reading, when the sender announces too much up front.
  void overflow() {
    overflowed_ = true;
    bytes_ = std::string();
  }
  bool overflowed() const { return overflowed_; }
  size_t cap() const { return cap_; }
  std::string take() { return std::move(bytes_); }

 private:
  size_t cap_;
  std::string bytes_;
  bool overflowed_ = false;
};

}  // namespace tidemark
