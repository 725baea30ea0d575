#include <gtest/gtest.h>

#include "app/TextTable.h"

namespace tidemark {
namespace {

TEST(TextTable, WideCharactersCountTwice) {
  const std::pair<const char*, size_t> cases[] = {
      {"", 0}, {"NVDA", 4}, {"贵州茅台", 8}, {"阿里巴巴-W", 10}, {"—", 1}, {"1.2万", 5}, {"，", 2},
  };
  for (auto [text, width] : cases) EXPECT_EQ(displayWidth(text), width) << text;
}

TEST(TextTable, ColumnsLineUp) {
  TextTable table({{"代码"}, {"价格", TextTable::Align::right}, {"名称"}});
  table.addRow({"600519", "1,468.80", "贵州茅台"});
  table.addRow({"NVDA", "186.25", "英伟达"});
  EXPECT_EQ(table.render(),
            "代码        价格  名称\n"
            "600519  1,468.80  贵州茅台\n"
            "NVDA      186.25  英伟达\n");
}

}  // namespace
}  // namespace tidemark
