#pragma once

#include <string>

#include "model/AppModel.h"

namespace tidemark {

// The holdings of the command line's --holdings: a table with one total line per currency, or
// one JSON object {"holdings": [...], "totals": [...]}.
std::string renderHoldingsTable(const AppModel& model);
std::string renderHoldingsJson(const AppModel& model, bool pretty);

}  // namespace tidemark
