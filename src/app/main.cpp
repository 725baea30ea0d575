#include <iostream>

#include <QCoreApplication>
#include <QDir>

#include "app/AppInfo.h"
#include "app/CommandLine.h"
#include "app/Environment.h"
#include "app/QuotesCommand.h"
#include "model/SelfTest.h"
#include "platform/QtScheduler.h"
#include "platform/SettingsStore.h"

namespace {

int runSelfTest() {
  using namespace tidemark;
  SelfTestEnvironment environment;
  environment.makeSuite = [](const std::string& name) -> std::unique_ptr<KeyValueStore> {
    return SettingsStore::suite(name);
  };
  environment.removeSuite = [](const std::string& name) { SettingsStore::removeSuite(name); };
  environment.bundle = applicationBundle();
  environment.start = SystemClock().now();
  environment.temporaryRoot = QDir::tempPath().toStdString();
  try {
    runAppModelChecks(environment);
  } catch (const std::exception& error) {
    std::cerr << "Self-test failed: " << error.what() << "\n";
    return 1;
  }
  std::cout << "All model checks passed\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("tidemark"));
  QCoreApplication::setApplicationVersion(QStringLiteral(TIDEMARK_VERSION));

  auto parsed = tidemark::parseCommandLine(QCoreApplication::arguments());
  if (auto* error = std::get_if<std::string>(&parsed)) {
    std::cerr << "tidemark: " << *error << " See --help.\n";
    return 2;
  }
  const auto& line = std::get<tidemark::CommandLine>(parsed);
  switch (line.mode) {
    case tidemark::CommandLine::Mode::help:
      std::cout << line.helpText;
      return 0;
    case tidemark::CommandLine::Mode::version:
      std::cout << "tidemark " TIDEMARK_VERSION "\n";
      return 0;
    case tidemark::CommandLine::Mode::selfTest:
      return runSelfTest();
    case tidemark::CommandLine::Mode::quotes:
      return tidemark::runQuotes(line, std::cout, std::cerr);
  }
  return 0;
}
