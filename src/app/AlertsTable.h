#pragma once

#include <string>

#include "model/AppModel.h"

namespace tidemark {

// The alerts of the command line's --alerts, as stored: a table (代码 名称 条件 重复 状态), or one
// JSON object {"paused": …, "rules": [...]} with each rule's stored fields and its state.
std::string renderAlertsTable(const AppModel& model);
std::string renderAlertsJson(const AppModel& model, bool pretty);

}  // namespace tidemark
