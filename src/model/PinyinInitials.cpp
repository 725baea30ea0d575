// Written by scripts/pinyin-initials.py from Unicode's Unihan readings; run it again rather than
// editing by hand.

#include "model/PinyinInitials.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tidemark {

std::string_view pinyinInitials(char32_t character) {
  static constexpr std::array<std::pair<char32_t, std::string_view>, 69> table{{
      {0x4E0A, "s"},   // 上
      {0x4E1A, "y"},   // 业
      {0x4E2D, "z"},   // 中
      {0x4E94, "w"},   // 五
      {0x4EE3, "d"},   // 代
      {0x4F01, "q"},   // 企
      {0x4F1F, "w"},   // 伟
      {0x514B, "k"},   // 克
      {0x521B, "c"},   // 创
      {0x5317, "b"},   // 北
      {0x5357, "n"},   // 南
      {0x53F0, "t"},   // 台
      {0x5546, "s"},   // 商
      {0x56E2, "t"},   // 团
      {0x56FD, "g"},   // 国
      {0x57FA, "j"},   // 基
      {0x5B81, "n"},   // 宁
      {0x5B89, "a"},   // 安
      {0x5BCC, "f"},   // 富
      {0x5DDE, "z"},   // 州
      {0x5DF4, "b"},   // 巴
      {0x5E73, "p"},   // 平
      {0x5FAE, "w"},   // 微
      {0x5FB7, "d"},   // 德
      {0x6052, "h"},   // 恒
      {0x6210, "c"},   // 成
      {0x6280, "j"},   // 技
      {0x62C9, "l"},   // 拉
      {0x62DB, "z"},   // 招
      {0x6307, "z"},   // 指
      {0x63A7, "k"},   // 控
      {0x6570, "s"},   // 数
      {0x65AF, "s"},   // 斯
      {0x65B9, "f"},   // 方
      {0x65F6, "s"},   // 时
      {0x666E, "p"},   // 普
      {0x677F, "b"},   // 板
      {0x679C, "g"},   // 果
      {0x6807, "b"},   // 标
      {0x6CAA, "h"},   // 沪
      {0x6DB2, "y"},   // 液
      {0x6DF1, "s"},   // 深
      {0x6F14, "y"},   // 演
      {0x7279, "t"},   // 特
      {0x743C, "q"},   // 琼
      {0x751F, "s"},   // 生
      {0x7684, "d"},   // 的
      {0x76C8, "y"},   // 盈
      {0x793A, "s"},   // 示
      {0x79D1, "k"},   // 科
      {0x7CAE, "l"},   // 粮
      {0x7EB3, "n"},   // 纳
      {0x7F8E, "m"},   // 美
      {0x80A1, "g"},   // 股
      {0x817E, "t"},   // 腾
      {0x82F1, "y"},   // 英
      {0x82F9, "p"},   // 苹
      {0x8305, "m"},   // 茅
      {0x884C, "hx"},  // 行
      {0x8BAF, "x"},   // 讯
      {0x8BC1, "z"},   // 证
      {0x8D35, "g"},   // 贵
      {0x8F6F, "r"},   // 软
      {0x8FBE, "d"},   // 达
      {0x9053, "d"},   // 道
      {0x91CC, "l"},   // 里
      {0x91D1, "j"},   // 金
      {0x94F6, "y"},   // 银
      {0x963F, "ae"},  // 阿
  }};
  const auto* found =
      std::lower_bound(table.begin(), table.end(), character,
                       [](const auto& entry, char32_t c) { return entry.first < c; });
  return found != table.end() && found->first == character ? found->second : std::string_view();
}

}  // namespace tidemark
