#include <gtest/gtest.h>

#include <vector>

#include "core/Enums.h"

namespace tidemark {
namespace {

using List = std::vector<std::string>;

// Only the raw value is read back: not the case's name, nor another spelling such as `foreign`.
template <class E>
List rows(const char* foreign) {
  EXPECT_EQ(fromRawValue<E>(foreign), std::nullopt);
  List out;
  for (E value : allCases<E>()) {
    out.push_back(std::string(rawValue(value)) + "=" + std::string(label(value)));
    EXPECT_EQ(fromRawValue<E>(rawValue(value)), value);
  }
  return out;
}

TEST(Enums, CasesInDeclarationOrderWithRawValuesAndLabels) {
  EXPECT_EQ(rows<SourceMode>("staticJSON"),
            (List{"mock=模拟源", "static=静态 JSON", "automatic=自动容错", "tencent=腾讯行情",
                  "sina=新浪行情", "stockSDK=stock-sdk"}));
  EXPECT_EQ(rows<QuotePhase>("Live"),
            (List{"loading=加载中", "live=实时", "stale=已过期", "degraded=降级", "offline=离线"}));
  EXPECT_EQ(rows<AppTheme>(""), (List{"dark=深空", "light=晨雾", "aurora=极光", "amber=琥珀",
                                      "rose=樱粉", "ocean=深海"}));
}

}  // namespace
}  // namespace tidemark
