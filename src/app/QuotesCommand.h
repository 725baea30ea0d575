#pragma once

#include <iosfwd>

#include "app/CommandLine.h"

namespace tidemark {

// Builds the model on the user's settings and watchlist (or the given symbols), loads once
// through the model's own path and prints the watchlist's quotes as a table or as JSON; with
// --watch it keeps refreshing on the model's heartbeat. Nothing the user has stored is changed:
// writes go to a scratch overlay that is thrown away.
int runQuotes(const CommandLine& line, std::ostream& out, std::ostream& err);

}  // namespace tidemark
