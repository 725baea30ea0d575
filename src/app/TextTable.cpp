#include "app/TextTable.h"

#include <algorithm>

namespace tidemark {
namespace {

bool isWide(char32_t c) {
  return (c >= 0x1100 && c <= 0x115F) || (c >= 0x2E80 && c <= 0x303E) ||
         (c >= 0x3041 && c <= 0x33FF) || (c >= 0x3400 && c <= 0x4DBF) ||
         (c >= 0x4E00 && c <= 0x9FFF) || (c >= 0xA000 && c <= 0xA4CF) ||
         (c >= 0xAC00 && c <= 0xD7A3) || (c >= 0xF900 && c <= 0xFAFF) ||
         (c >= 0xFE30 && c <= 0xFE4F) || (c >= 0xFF00 && c <= 0xFF60) ||
         (c >= 0xFFE0 && c <= 0xFFE6) || (c >= 0x20000 && c <= 0x3FFFD);
}

}  // namespace

size_t displayWidth(std::string_view s) {
  size_t width = 0;
  for (size_t i = 0; i < s.size();) {
    const auto c = static_cast<unsigned char>(s[i]);
    char32_t cp = c;
    size_t length = 1;
    if (c >= 0xF0 && i + 3 < s.size()) {
      cp = ((c & 0x07u) << 18) | ((s[i + 1] & 0x3Fu) << 12) | ((s[i + 2] & 0x3Fu) << 6) |
           (s[i + 3] & 0x3Fu);
      length = 4;
    } else if (c >= 0xE0 && i + 2 < s.size()) {
      cp = ((c & 0x0Fu) << 12) | ((s[i + 1] & 0x3Fu) << 6) | (s[i + 2] & 0x3Fu);
      length = 3;
    } else if (c >= 0xC0 && i + 1 < s.size()) {
      cp = ((c & 0x1Fu) << 6) | (s[i + 1] & 0x3Fu);
      length = 2;
    }
    width += isWide(cp) ? 2 : 1;
    i += length;
  }
  return width;
}

std::string TextTable::render() const {
  std::vector<size_t> widths(columns_.size(), 0);
  for (size_t c = 0; c < columns_.size(); ++c) widths[c] = displayWidth(columns_[c].title);
  for (const auto& row : rows_)
    for (size_t c = 0; c < columns_.size() && c < row.size(); ++c)
      widths[c] = std::max(widths[c], displayWidth(row[c]));

  std::string out;
  const auto line = [&](const std::vector<std::string>& cells) {
    std::string text;
    for (size_t c = 0; c < columns_.size(); ++c) {
      const std::string cell = c < cells.size() ? cells[c] : std::string();
      const std::string pad(widths[c] - displayWidth(cell), ' ');
      if (c > 0) text += "  ";
      text += columns_[c].align == Align::right ? pad + cell : cell + pad;
    }
    text.erase(text.find_last_not_of(' ') + 1);
    out += text + "\n";
  };
  std::vector<std::string> titles;
  for (const Column& column : columns_) titles.push_back(column.title);
  line(titles);
  for (const auto& row : rows_) line(row);
  return out;
}

}  // namespace tidemark
