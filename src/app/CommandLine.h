#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <QStringList>

#include "core/DataSourceEndpoints.h"
#include "core/Enums.h"
#include "core/Kline.h"

namespace tidemark {

struct CommandLine {
  enum class Mode {
    desktop,
    quotes,
    kline,
    search,
    selfTest,
    previews,
    help,
    version,
    toggleOrb,
    toggleMask
  };
  Mode mode = Mode::desktop;
  bool json = false;
  bool watch = false;
  bool holdings = false;  // the holdings instead of the quotes
  bool alerts = false;    // the alerts, as stored
  std::string klineSymbol;
  std::string searchText;
  KlinePeriod klinePeriod = KlinePeriod::day;
  std::optional<SourceMode> source;
  std::optional<std::vector<std::string>> symbols;
  std::optional<DataSourceEndpoints> endpoints;
  std::string previewDirectory;
  std::string helpText;
};

// The parsed arguments, or a one-line message for a usage error (exit status 2). An endpoint
// file is read here, so a bad one is a usage error too.
std::variant<CommandLine, std::string> parseCommandLine(const QStringList& arguments);

// An endpoint set from a file of the user's: the nine addresses alone or a whole manifest.
// Trusted as given (http and any host included); no value when the file holds no such set.
std::variant<DataSourceEndpoints, std::string> readEndpointsFile(const std::string& path);

}  // namespace tidemark
