#include <exception>
#include <iostream>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <QCoreApplication>

#include "app/AppInfo.h"
#include "app/CommandLine.h"
#include "app/DesktopApp.h"
#include "app/KlineCommand.h"
#include "app/Previews.h"
#include "app/QuotesCommand.h"
#include "app/SearchCommand.h"
#include "app/SingleInstance.h"

namespace {

int run(int argc, char** argv) {
#ifdef __GLIBC__
  // A feed that fails by sending too much leaves large blocks that are freed at once. glibc's
  // threshold for mapping a block on its own rises with each such free, after which the blocks
  // come from the heaps and stay with the process for good (+15 MB after a run of faults). A
  // fixed threshold maps each on its own and returns it when freed.
  mallopt(M_MMAP_THRESHOLD, 128 << 10);
  // The threads besides the main one (the bus, Qt's painting pool, the X reader, the network)
  // allocate a little now and then; an arena each kept about a megabyte of their pages resident
  // for good. One arena shares the free pages, a quarter of a megabyte less over all.
  mallopt(M_ARENA_MAX, 1);
#endif
  QStringList arguments;
  for (int i = 0; i < argc; ++i) arguments << QString::fromLocal8Bit(argv[i]);
  auto parsed = tidemark::parseCommandLine(arguments);
  if (auto* error = std::get_if<std::string>(&parsed)) {
    std::cerr << "tidemark: " << *error << " See --help.\n";
    return 2;
  }
  const auto& line = std::get<tidemark::CommandLine>(parsed);
  switch (line.mode) {
    case tidemark::CommandLine::Mode::help: {
      // The usage line names the program, which takes an application object.
      QCoreApplication app(argc, argv);
      const auto again = tidemark::parseCommandLine(arguments);
      std::cout << std::get<tidemark::CommandLine>(again).helpText;
      return 0;
    }
    case tidemark::CommandLine::Mode::version:
      std::cout << "tidemark " TIDEMARK_VERSION "\n";
      return 0;
    case tidemark::CommandLine::Mode::selfTest:
      return tidemark::runSelfTest(argc, argv);
    case tidemark::CommandLine::Mode::previews:
      return tidemark::runRenderPreviews(argc, argv, line.previewDirectory);
    case tidemark::CommandLine::Mode::desktop:
      return tidemark::runDesktop(argc, argv, line);
    case tidemark::CommandLine::Mode::toggleOrb:
    case tidemark::CommandLine::Mode::toggleMask: {
      QCoreApplication app(argc, argv);
      QCoreApplication::setApplicationName(QStringLiteral("tidemark"));
      using Request = tidemark::SingleInstance::Request;
      const Request request = line.mode == tidemark::CommandLine::Mode::toggleOrb
                                  ? Request::toggleOrb
                                  : Request::toggleMask;
      if (tidemark::SingleInstance::tell(tidemark::SingleInstance::defaultPath(), request))
        return 0;
      std::cerr << "潮汐栏没有在运行\n";
      return 1;
    }
    case tidemark::CommandLine::Mode::quotes: {
      QCoreApplication app(argc, argv);
      QCoreApplication::setApplicationName(QStringLiteral("tidemark"));
      return tidemark::runQuotes(line, std::cout, std::cerr);
    }
    case tidemark::CommandLine::Mode::kline: {
      QCoreApplication app(argc, argv);
      QCoreApplication::setApplicationName(QStringLiteral("tidemark"));
      return tidemark::runKline(line, std::cout, std::cerr);
    }
    case tidemark::CommandLine::Mode::search: {
      QCoreApplication app(argc, argv);
      QCoreApplication::setApplicationName(QStringLiteral("tidemark"));
      return tidemark::runSearch(line, std::cout, std::cerr);
    }
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  // What no layer could handle ends the run with its reason rather than an abort.
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "tidemark: " << error.what() << "\n";
  } catch (...) {
    std::cerr << "tidemark: unexpected failure\n";
  }
  return 1;
}
