#pragma once

#include <string>

#include "model/AlertBook.h"

namespace tidemark {

// A rule's state in words, with the local time it fired: "待触发", "已触发 11-25 14:32", a daily
// rule that fired on its exchange's current date "今日已触发 14:32", "已关闭", "不在自选中".
// The primary rule keeps no time: "已触发".
std::string alertStateText(const AlertRule& rule, AlertState state);

// "仅一次" or "每日一次".
inline std::string repeatText(const AlertRule& rule) {
  return std::string(label(rule.repeat));
}

}  // namespace tidemark
