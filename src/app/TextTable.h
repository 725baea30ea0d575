#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tidemark {

// Terminal columns a UTF-8 text takes: two for East Asian wide characters, one otherwise.
size_t displayWidth(std::string_view utf8);

// A plain text table whose columns line up in a terminal, Chinese names included.
class TextTable {
 public:
  enum class Align { left, right };
  struct Column {
    std::string title;
    Align align = Align::left;
  };

  explicit TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}
  void addRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
  // Columns separated by two spaces, no trailing blanks.
  std::string render() const;

 private:
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace tidemark
