#include "app/CommandLine.h"

#include <QCommandLineParser>

namespace tidemark {

std::variant<CommandLine, std::string> parseCommandLine(const QStringList& arguments) {
  QCommandLineParser parser;
  parser.setApplicationDescription(
      QStringLiteral("潮汐栏 (Tidemark): a desktop market-quote companion.\n"
                     "Without options it prints the watchlist's quotes, like --quotes."));
  const QCommandLineOption help = parser.addHelpOption();
  const QCommandLineOption version = parser.addVersionOption();
  const QCommandLineOption selfTest(QStringLiteral("self-test"),
                                    QStringLiteral("Run the model checks and exit 0 or 1."));
  const QCommandLineOption quotes(
      QStringLiteral("quotes"),
      QStringLiteral("Print the watchlist's quotes from the stored settings; changes nothing."));
  const QCommandLineOption json(QStringLiteral("json"),
                                QStringLiteral("With --quotes: print one JSON object."));
  parser.addOptions({selfTest, quotes, json});

  if (!parser.parse(arguments)) return parser.errorText().toStdString();
  if (!parser.positionalArguments().isEmpty())
    return "unexpected argument '" + parser.positionalArguments().constFirst().toStdString() + "'";

  CommandLine line;
  if (parser.isSet(help)) {
    line.mode = CommandLine::Mode::help;
    line.helpText = parser.helpText().toStdString();
    return line;
  }
  if (parser.isSet(version)) {
    line.mode = CommandLine::Mode::version;
    return line;
  }
  if (parser.isSet(selfTest) && (parser.isSet(quotes) || parser.isSet(json)))
    return std::string("--self-test takes no other option");
  if (parser.isSet(selfTest)) line.mode = CommandLine::Mode::selfTest;
  line.json = parser.isSet(json);
  return line;
}

}  // namespace tidemark
