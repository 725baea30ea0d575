#pragma once

#include <iosfwd>

#include "app/CommandLine.h"

namespace tidemark {

// Builds the model on the user's settings and watchlist, loads once and prints the watchlist's
// quotes as a table or as JSON. Nothing the user has stored is changed: writes go to a scratch
// overlay that is thrown away.
int runQuotes(const CommandLine& line, std::ostream& out, std::ostream& err);

}  // namespace tidemark
