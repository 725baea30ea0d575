#include <gtest/gtest.h>

#include <vector>

#include "core/Enums.h"

namespace tidemark {
namespace {

template <class E>
std::vector<std::string> rows() {
  std::vector<std::string> out;
  for (E value : allCases<E>()) {
    out.push_back(std::string(rawValue(value)) + "=" + std::string(label(value)));
    EXPECT_EQ(fromRawValue<E>(rawValue(value)), value);
  }
  return out;
}

TEST(Enums, CasesInDeclarationOrderWithRawValuesAndLabels) {
  EXPECT_EQ(rows<SourceMode>(),
            (std::vector<std::string>{"mock=模拟源", "static=静态 JSON", "automatic=自动容错",
                                      "tencent=腾讯行情", "sina=新浪行情", "stockSDK=stock-sdk"}));
  EXPECT_EQ(rows<QuotePhase>(),
            (std::vector<std::string>{"loading=加载中", "live=实时", "stale=已过期",
                                      "degraded=降级", "offline=离线"}));
  EXPECT_EQ(rows<AppTheme>(), (std::vector<std::string>{"dark=深空", "light=晨雾", "aurora=极光",
                                                        "amber=琥珀", "rose=樱粉", "ocean=深海"}));
  // Only the raw value is read back: not the case's name, nor another spelling.
  EXPECT_EQ(fromRawValue<SourceMode>("staticJSON"), std::nullopt);
  EXPECT_EQ(fromRawValue<QuotePhase>("Live"), std::nullopt);
  EXPECT_EQ(fromRawValue<AppTheme>(""), std::nullopt);
}

}  // namespace
}  // namespace tidemark
