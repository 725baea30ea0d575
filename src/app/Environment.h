#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "core/Bundle.h"
#include "model/Preferences.h"

namespace tidemark {

// The resources next to the executable (share/tidemark in the build and install trees), or
// $TIDEMARK_RESOURCE_DIR, with the build-time information values.
Bundle applicationBundle();

// The user's application-support folder (~/.local/share on Linux); the watchlist file lives in
// its "Tidemark" subfolder.
std::optional<std::filesystem::path> applicationSupportDirectory();

// The app's own cache folder (~/.cache/Tidemark on Linux), for what can be fetched again.
std::optional<std::filesystem::path> applicationCacheDirectory();

// The app's icon rendered at `side` pixels square, from the resources' "icons" folder; empty
// where the resources have none.
std::string appIconFile(const Bundle& bundle, int side);

// The stored preferences, read only; the defaults (the demonstration) where nothing is stored.
Preferences storedPreferences();

}  // namespace tidemark
