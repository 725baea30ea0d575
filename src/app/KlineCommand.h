#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "app/CommandLine.h"
#include "core/Kline.h"

namespace tidemark {

// Asks the day, week or month candles of one security from the run's source (the stored one
// unless --source is given; demonstration data in the offline modes) and prints them as fetched,
// oldest first, as a table or as JSON with the three moving averages. A failure prints its
// reason and exits 1. Nothing stored is read but the source mode and the price precision, and
// nothing is written.
int runKline(const CommandLine& line, std::ostream& out, std::ostream& err);

// The printed forms of a series; the table writes prices with `digits` decimals.
std::string renderKlineTable(const std::vector<KlineBar>& bars, int digits);
std::string renderKlineJson(const std::string& symbol, KlinePeriod period,
                            const std::vector<KlineBar>& bars);

}  // namespace tidemark
