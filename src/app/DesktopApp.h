#pragma once

#include "app/CommandLine.h"

namespace tidemark {

// Whether a display server can be reached (or the offscreen platform was asked for).
bool hasDisplay();

// The desktop app: the orb, the tray item and the auxiliary windows over the user's settings and
// watchlist, until the user quits. Answers the exit status.
int runDesktop(int& argc, char** argv, const CommandLine& line);

// The model checks and then the orb's event-routing checks; works without a display.
int runSelfTest(int& argc, char** argv);

}  // namespace tidemark
