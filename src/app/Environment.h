#pragma once

#include <filesystem>
#include <optional>

#include "core/Bundle.h"

namespace tidemark {

// The resources next to the executable (share/tidemark in the build and install trees), or
// $TIDEMARK_RESOURCE_DIR, with the build-time information values.
Bundle applicationBundle();

// The user's application-support folder (~/.local/share on Linux); the watchlist file lives in
// its "Tidemark" subfolder.
std::optional<std::filesystem::path> applicationSupportDirectory();

}  // namespace tidemark
