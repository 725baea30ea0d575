#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "app/CommandLine.h"
#include "core/QuoteSnapshot.h"

namespace tidemark {

// --search TEXT: what the watchlist manager's search finds for TEXT with the run's source (the
// stored one unless --source names another), watched or not, as a table or as
// {"results":[{"id","name","market"}]}. Exits 1 when the search itself failed; nothing stored is
// changed.
int runSearch(const CommandLine& line, std::ostream& out, std::ostream& err);

std::string renderSearchTable(const std::vector<QuoteSnapshot>& results);
std::string renderSearchJson(const std::vector<QuoteSnapshot>& results);

}  // namespace tidemark
