#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "core/Bundle.h"
#include "core/Date.h"
#include "core/KeyValueStore.h"

namespace tidemark {

struct SelfTestEnvironment {
  // Creates an empty throw-away store suite under the given name; null when it cannot.
  std::function<std::unique_ptr<KeyValueStore>(const std::string& suiteName)> makeSuite;
  // Deletes the suite and everything it wrote.
  std::function<void(const std::string& suiteName)> removeSuite;
  Bundle bundle;
  // Where the checks' clock starts.
  Date start;
  // Parent of the temporary folder for watchlist files.
  std::filesystem::path temporaryRoot;
};

// Drives private models through the watchlist, preference, refresh and alert rules and throws
// ModelError::failedCheck with the text of the first rule that does not hold. Nothing is left
// behind: the suite and the temporary folder go, whether the checks pass or not.
void runAppModelChecks(const SelfTestEnvironment& environment);

}  // namespace tidemark
