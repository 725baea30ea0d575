#pragma once

#include <string>
#include <variant>

#include <QStringList>

namespace tidemark {

struct CommandLine {
  enum class Mode { quotes, selfTest, help, version };
  Mode mode = Mode::quotes;
  bool json = false;
  std::string helpText;
};

// The parsed arguments, or a one-line message for a usage error (exit status 2).
std::variant<CommandLine, std::string> parseCommandLine(const QStringList& arguments);

}  // namespace tidemark
