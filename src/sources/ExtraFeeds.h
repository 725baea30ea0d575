#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/MarketExtras.h"

namespace tidemark {

// Tencent's rate rows (v_whUSDCNY="…", v_whHKDCNY="…"), the yuan rate in the fourth field, by the
// currency's code; a row without a positive rate is left out.
RateMap parseTencentRates(std::string_view text);

// The extended-hours trade in Sina's US rows (hq_str_gb_aapl="…"), for the symbols asked, in
// their order: the price in field 21, its change in percent in 22, and in 24 the time on New
// York's clock without a year ("Oct 16 07:59PM EDT"), the year taken as the one that puts it
// latest but not more than a day after `now`. A row without a positive price or a readable time
// is left out.
std::vector<ExtendedQuote> parseSinaExtended(std::string_view text,
                                             const std::vector<std::string>& symbols, Date now);

}  // namespace tidemark
