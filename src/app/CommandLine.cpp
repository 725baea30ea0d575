#include "app/CommandLine.h"

#include <QCommandLineParser>

#include "core/FileIO.h"
#include "core/GlobalCommands.h"
#include "model/Watchlist.h"

namespace tidemark {
namespace {

std::string modeList() {
  std::string list;
  for (SourceMode mode : allCases<SourceMode>())
    list += (list.empty() ? "" : ", ") + std::string(rawValue(mode));
  return list;
}

}  // namespace

std::variant<DataSourceEndpoints, std::string> readEndpointsFile(const std::string& path) {
  std::error_code error;
  auto bytes = readFile(path, error);
  if (!bytes) return "cannot read " + path + ": " + error.message();
  auto document = json::parse(*bytes);
  if (!document) return path + " is not JSON";
  if (auto endpoints = endpointsFromJson(*document)) return *endpoints;
  if (auto manifest = manifestFromJson(*document)) return manifest->endpoints;
  return path + " holds no endpoint set (the nine addresses, alone or under \"endpoints\")";
}

namespace {

// Every option, added to the parser.
struct Options {
  QCommandLineOption help, version, selfTest, quotes, json, watch, source, symbols, endpoints,
      previews, holdings, alerts, kline, period, search, toggleOrb, toggleMask;
};

Options addOptions(QCommandLineParser& parser) {
  parser.setApplicationDescription(
      QStringLiteral("潮汐栏 (Tidemark): a desktop market-quote companion.\n"
                     "Without options it starts the desktop app: the orb and the tray item."));
  const QCommandLineOption help = parser.addHelpOption();
  const QCommandLineOption version = parser.addVersionOption();
  const QCommandLineOption selfTest(
      QStringLiteral("self-test"),
      QStringLiteral("Run the model and event-routing checks and exit 0 or 1."));
  const QCommandLineOption quotes(
      QStringLiteral("quotes"),
      QStringLiteral("Print the watchlist's quotes from the stored settings; changes nothing."));
  const QCommandLineOption json(
      QStringLiteral("json"), QStringLiteral("Print one JSON object (with --watch: one a line)."));
  const QCommandLineOption watch(QStringLiteral("watch"),
                                 QStringLiteral("Keep refreshing and print each new load."));
  const QCommandLineOption source(QStringLiteral("source"),
                                  QStringLiteral("Load from MODE for this run: ") +
                                      QString::fromStdString(modeList()) + QStringLiteral("."),
                                  QStringLiteral("MODE"));
  const QCommandLineOption symbols(
      QStringLiteral("symbols"),
      QStringLiteral("Show these symbols (comma separated) instead of the watchlist; nothing "
                     "stored is read or written."),
      QStringLiteral("LIST"));
  const QCommandLineOption endpoints(
      QStringLiteral("endpoints"),
      QStringLiteral("Take the feed addresses from this JSON file for this run."),
      QStringLiteral("FILE"));
  const QCommandLineOption previews(
      QStringLiteral("render-previews"),
      QStringLiteral("Render every view in every theme as PNG files into the directory given as "
                     "the last argument; nothing stored is read or written."));
  const QCommandLineOption holdings(
      QStringLiteral("holdings"),
      QStringLiteral("Print the holdings with today's and the total profit, a total line per "
                     "currency; --source and --json apply; changes nothing."));
  const QCommandLineOption alerts(
      QStringLiteral("alerts"),
      QStringLiteral("Print every price alert with its condition, repeat and state; --json "
                     "applies; nothing is evaluated or written."));
  const QCommandLineOption kline(
      QStringLiteral("kline"),
      QStringLiteral("Print the candles of SYMBOL as fetched, oldest first, with MA5, MA10 and "
                     "MA20; --period, --source, --endpoints and --json apply; changes nothing."),
      QStringLiteral("SYMBOL"));
  const QCommandLineOption period(QStringLiteral("period"),
                                  QStringLiteral("The candles' period for --kline: day (the "
                                                 "default), week or month."),
                                  QStringLiteral("PERIOD"));
  const QCommandLineOption search(
      QStringLiteral("search"),
      QStringLiteral("List every security the watchlist manager's search finds for TEXT, watched "
                     "or not; --source, --endpoints and --json apply; changes nothing."),
      QStringLiteral("TEXT"));
  const auto globalOption = [](GlobalCommand command, const char* more) {
    const auto text = [](std::string_view s) {
      return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
    };
    const GlobalCommandSpec& spec = specOf(command);
    return QCommandLineOption(text(spec.option), text(spec.help) + QStringLiteral(", as ") +
                                                     text(spec.keys) + QStringLiteral(" does") +
                                                     QString::fromUtf8(more));
  };
  const QCommandLineOption toggleOrb = globalOption(
      GlobalCommand::toggleOrb,
      "; for a key bound in the desktop's keyboard settings. Exits 1 when the app is not "
      "running.");
  const QCommandLineOption toggleMask = globalOption(GlobalCommand::toggleMask, ".");

  parser.addOptions({selfTest, quotes, json, watch, source, symbols, endpoints, previews, holdings,
                     alerts, kline, period, search, toggleOrb, toggleMask});
  return {help,     version,  selfTest, quotes, json,   watch,  source,    symbols,   endpoints,
          previews, holdings, alerts,   kline,  period, search, toggleOrb, toggleMask};
}

using Parsed = std::variant<CommandLine, std::string>;

// The modes that stand alone: help, version, the two toggles and the self-test.
std::optional<Parsed> standaloneMode(const QCommandLineParser& parser, const Options& o) {
  CommandLine line;
  if (parser.isSet(o.help)) {
    line.mode = CommandLine::Mode::help;
    line.helpText = parser.helpText().toStdString();
    return line;
  }
  if (parser.isSet(o.version)) {
    line.mode = CommandLine::Mode::version;
    return line;
  }
  for (const auto& [option, mode] : {std::pair{&o.toggleOrb, CommandLine::Mode::toggleOrb},
                                     {&o.toggleMask, CommandLine::Mode::toggleMask}}) {
    if (!parser.isSet(*option)) continue;
    if (parser.optionNames().size() > 1)
      return "--" + option->names().constFirst().toStdString() + " takes no other option";
    line.mode = mode;
    return line;
  }
  if (parser.isSet(o.selfTest)) {
    for (const auto* other : {&o.quotes, &o.json, &o.watch, &o.source, &o.symbols, &o.endpoints,
                              &o.holdings, &o.alerts, &o.kline, &o.period, &o.search})
      if (parser.isSet(*other)) return std::string("--self-test takes no other option");
    line.mode = CommandLine::Mode::selfTest;
    return line;
  }
  return std::nullopt;
}

// The quotes' own options: the source, the symbols and the endpoints file, read and checked.
std::optional<std::string> takeQuoteValues(const QCommandLineParser& parser, const Options& o,
                                           CommandLine& line) {
  if (parser.isSet(o.source)) {
    const std::string value = parser.value(o.source).toStdString();
    line.source = fromRawValue<SourceMode>(value);
    if (!line.source) return "unknown source '" + value + "' (" + modeList() + ")";
  }
  if (parser.isSet(o.symbols)) {
    std::vector<std::string> list;
    for (const QString& part : parser.value(o.symbols).split(u','))
      list.push_back(std::string(trimmedSymbol(part.toStdString())));
    list = validSymbols(list);
    if (list.empty()) return std::string("--symbols needs at least one symbol");
    line.symbols = std::move(list);
  }
  if (parser.isSet(o.endpoints)) {
    auto read = readEndpointsFile(parser.value(o.endpoints).toStdString());
    if (auto* message = std::get_if<std::string>(&read)) return *message;
    line.endpoints = std::get<DataSourceEndpoints>(read);
  }
  return std::nullopt;
}

// --kline with its period; the quotes' other options are not its own.
std::optional<Parsed> klineMode(const QCommandLineParser& parser, const Options& o) {
  if (!parser.isSet(o.kline)) {
    if (parser.isSet(o.period)) return std::string("--period goes with --kline");
    return std::nullopt;
  }
  for (const auto* other : {&o.quotes, &o.watch, &o.symbols, &o.holdings, &o.alerts})
    if (parser.isSet(*other))
      return "--kline does not take --" + other->names().constFirst().toStdString();
  CommandLine line;
  line.mode = CommandLine::Mode::kline;
  const auto symbols =
      validSymbols({std::string(trimmedSymbol(parser.value(o.kline).toStdString()))});
  if (symbols.empty())
    return "--kline needs a symbol, not '" + parser.value(o.kline).toStdString() + "'";
  line.klineSymbol = symbols.front();
  if (parser.isSet(o.period)) {
    const std::string value = parser.value(o.period).toStdString();
    auto period = klinePeriodFromRawValue(value);
    if (!period) return "unknown period '" + value + "' (day, week, month)";
    line.klinePeriod = *period;
  }
  line.json = parser.isSet(o.json);
  if (auto error = takeQuoteValues(parser, o, line)) return *error;
  return line;
}

// --search with its text; it takes the source, the endpoints and --json.
std::optional<Parsed> searchMode(const QCommandLineParser& parser, const Options& o) {
  if (!parser.isSet(o.search)) return std::nullopt;
  for (const auto* other : {&o.quotes, &o.watch, &o.symbols, &o.holdings, &o.alerts, &o.kline})
    if (parser.isSet(*other))
      return "--search does not take --" + other->names().constFirst().toStdString();
  CommandLine line;
  line.mode = CommandLine::Mode::search;
  line.searchText = std::string(trimmedSymbol(parser.value(o.search).toStdString()));
  if (line.searchText.empty()) return std::string("--search needs a text to look for");
  line.json = parser.isSet(o.json);
  if (auto error = takeQuoteValues(parser, o, line)) return *error;
  return line;
}

}  // namespace

std::variant<CommandLine, std::string> parseCommandLine(const QStringList& arguments) {
  QCommandLineParser parser;
  const Options o = addOptions(parser);

  // The directory is the last argument whatever comes before it, so this mode skips the parser.
  if (arguments.contains(QStringLiteral("--render-previews"))) {
    CommandLine line;
    line.mode = CommandLine::Mode::previews;
    line.previewDirectory = arguments.size() > 1 ? arguments.constLast().toStdString()
                                                 : std::string("/tmp/tidemark-previews");
    return line;
  }

  if (!parser.parse(arguments)) return parser.errorText().toStdString();
  if (!parser.positionalArguments().isEmpty())
    return "unexpected argument '" + parser.positionalArguments().constFirst().toStdString() + "'";
  if (auto standalone = standaloneMode(parser, o)) return *standalone;
  if (auto search = searchMode(parser, o)) return *search;
  if (auto kline = klineMode(parser, o)) return *kline;

  CommandLine line;
  // Any of the quote options asks for the quotes; alone, --endpoints goes to the desktop app.
  for (const auto* option :
       {&o.quotes, &o.json, &o.watch, &o.source, &o.symbols, &o.holdings, &o.alerts})
    if (parser.isSet(*option)) line.mode = CommandLine::Mode::quotes;
  line.holdings = parser.isSet(o.holdings);
  line.alerts = parser.isSet(o.alerts);
  if (line.holdings && line.alerts) return std::string("--holdings does not take --alerts");
  // The holdings and the alerts are the user's own: a list of symbols has none.
  for (const auto* own : {&o.holdings, &o.alerts})
    for (const auto* other : {&o.symbols, &o.watch})
      if (parser.isSet(*own) && parser.isSet(*other))
        return "--" + own->names().constFirst().toStdString() + " does not take --" +
               other->names().constFirst().toStdString();
  line.json = parser.isSet(o.json);
  line.watch = parser.isSet(o.watch);
  if (auto error = takeQuoteValues(parser, o, line)) return *error;
  return line;
}

}  // namespace tidemark
