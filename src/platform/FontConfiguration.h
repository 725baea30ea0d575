#pragma once

namespace tidemark {

// Reads the system's font configuration (its files parsed, its caches mapped) into the process,
// which Qt's font database would otherwise do at the first text drawn. Safe from any thread, and
// before the application object exists: it needs no display.
void loadFontConfiguration();

}  // namespace tidemark
