#include "app/QuotesCommand.h"

#include <ostream>

#include <QDateTime>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include "app/AlertsTable.h"
#include "app/Environment.h"
#include "app/HoldingsTable.h"
#include "app/LiveSources.h"
#include "app/TextTable.h"
#include "core/ExchangeTime.h"
#include "core/NumberText.h"
#include "model/AppModel.h"
#include "model/StoreKeys.h"
#include "platform/QtScheduler.h"
#include "platform/SettingsStore.h"

namespace tidemark {
namespace {

std::string localTime(Date date) {
  const auto msecs = static_cast<qint64>(date.unixSeconds() * 1000);
  return QDateTime::fromMSecsSinceEpoch(msecs)
      .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))
      .toStdString();
}

std::string renderTable(const AppModel& model) {
  using Align = TextTable::Align;
  TextTable table({{"代码"},
                   {"名称"},
                   {"市场"},
                   {"价格", Align::right},
                   {"涨跌幅", Align::right},
                   {"成交量", Align::right},
                   {"来源"},
                   {"状态"}});
  const std::string phase(label(model.phase()));
  for (const std::string& symbol : model.watchlist()) {
    if (const QuoteSnapshot* q = model.quote(symbol)) {
      table.addRow({q->id, q->name, q->market, model.quoteStyle().price(*q),
                    percentText(q->changePct()), volumeText(q->volume), q->source, phase});
    } else {
      table.addRow({symbol, "暂无行情", "—", "—", "—", "—", "—", phase});
    }
  }
  std::string text = table.render();
  text += "行情源：" + model.sourceLabel() + " · " + phase + " · 更新于 " +
          localTime(model.updatedAt()) + "\n";
  if (model.lastError()) text += "提示：" + *model.lastError() + "\n";
  return text;
}

std::string renderJson(const AppModel& model, bool pretty) {
  Json quotes = Json::array();
  for (const QuoteSnapshot& q : model.watchedQuotes()) {
    Json record = toJson(q);
    record["updatedAt"] = formatISO8601(q.updatedAt);
    // The exchange's own time, with its offset.
    if (q.quoteTime) {
      const auto market = marketOfLabel(q.market).value_or(feedMarket(q.id));
      const auto clock = exchangeTime(exchangeOf(market), *q.quoteTime);
      record["quoteTime"] = clock ? iso8601WithOffset(*clock) : formatISO8601(*q.quoteTime);
    }
    quotes.push_back(std::move(record));
  }
  Json document{{"phase", rawValue(model.phase())},
                {"lastError", model.lastError() ? Json(*model.lastError()) : Json(nullptr)},
                {"sourceLabel", model.sourceLabel()},
                {"updatedAt", formatISO8601(model.updatedAt())},
                {"quotes", std::move(quotes)}};
  return document.dump(pretty ? 2 : -1, ' ', false, Json::error_handler_t::replace) + "\n";
}

// A throw-away copy of the stored settings with the run's source in them, so the model's
// first load already asks the right feeds.
void useSourceMode(KeyValueStore& store, SourceMode mode, Date now) {
  Preferences preferences;
  preferences.updatedAt = now;
  if (auto bytes = store.data(storeKeys::preferences)) {
    if (auto document = json::parse(*bytes)) {
      if (auto stored = preferencesFromJson(*document)) preferences = *stored;
    }
  }
  preferences.sourceMode = mode;
  store.setData(storeKeys::preferences, toJson(preferences).dump());
}

// The live sources without intraday series: the command line draws no charts, so the model
// should not start a bridge process for one after each load.
class QuotesOnly final : public MarketDataSource {
 public:
  explicit QuotesOnly(MarketDataSource& sources) : sources_(sources) {}
  void fetchQuotes(SourceMode source, const DataSourceEndpoints& endpoints,
                   const std::vector<std::string>& symbols, const QuoteMap& cached,
                   QuotesCompletion completion) override {
    sources_.fetchQuotes(source, endpoints, symbols, cached, std::move(completion));
  }
  void probeQuoteEndpoints(const DataSourceEndpoints& endpoints,
                           std::function<void(bool)> completion) override {
    sources_.probeQuoteEndpoints(endpoints, std::move(completion));
  }
  void fetchManifest(const std::string& url,
                     std::function<void(std::optional<std::string>)> completion) override {
    sources_.fetchManifest(url, std::move(completion));
  }
  bool canFetchIntraday() const override { return false; }
  void fetchIntraday(const DataSourceEndpoints&, const std::string&, const std::string&,
                     std::function<void(Intraday)> completion) override {
    completion({});
  }
  // The yuan rates for --holdings; nothing prints the extended hours, so they are not asked.
  void fetchRates(const DataSourceEndpoints& endpoints, RatesCompletion completion) override {
    sources_.fetchRates(endpoints, std::move(completion));
  }

 private:
  MarketDataSource& sources_;
};

// Runs the event loop until the model has no load under way.
void waitForLoad(AppModel& model) {
  if (!model.isLoading()) return;
  QEventLoop loop;
  auto subscription = model.subscribe([&] {
    if (!model.isLoading())
      QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
  });
  loop.exec();
}

// What a printed load showed, to print again only when something changed.
struct Shown {
  Date updatedAt;
  QuotePhase phase;
  std::optional<std::string> lastError;
  std::vector<QuoteSnapshot> quotes;
  bool operator==(const Shown&) const = default;
};

Shown shown(const AppModel& model) {
  return {model.updatedAt(), model.phase(), model.lastError(), model.watchedQuotes()};
}

}  // namespace

namespace {

// What the model reads and writes for one command.
struct CommandInputs {
  std::unique_ptr<SettingsStore> settings;
  std::unique_ptr<KeyValueStore> store;
  std::optional<std::filesystem::path> support, watchlistFile;
};

// With --symbols nothing of the user's is read or written; otherwise the user's settings and
// watchlist are read, and whatever the model writes back goes to a scratch overlay and copy.
std::optional<CommandInputs> commandInputs(const CommandLine& line, const QTemporaryDir& scratch,
                                           std::ostream& err) {
  CommandInputs in;
  if (line.symbols) {
    auto memory = std::make_unique<MemoryKeyValueStore>();
    memory->setStringArray(storeKeys::watchlist, *line.symbols);
    in.store = std::move(memory);
    return in;
  }
  if (!scratch.isValid()) {
    err << "tidemark: cannot create a temporary folder: " << scratch.errorString().toStdString()
        << "\n";
    return std::nullopt;
  }
  in.settings = SettingsStore::standard();
  in.store = std::make_unique<OverlayKeyValueStore>(*in.settings);
  in.support = applicationSupportDirectory();
  in.watchlistFile = scratch.filePath(QStringLiteral("watchlist.json")).toStdString();
  if (in.support) {
    const auto original =
        QString::fromStdString((*in.support / "Tidemark" / "watchlist.json").string());
    if (QFile::exists(original))
      QFile::copy(original, QString::fromStdString(in.watchlistFile->string()));
    // The holdings and alerts files live beside the watchlist file.
    for (const char* name : {"holdings.json", "alerts.json"}) {
      const auto kept = QString::fromStdString((*in.support / "Tidemark" / name).string());
      if (QFile::exists(kept)) QFile::copy(kept, scratch.filePath(QString::fromUtf8(name)));
    }
  }
  return in;
}

// The model's own heartbeat: stale data, automatic refresh and rotation, every half second;
// prints again whenever what is shown changed, until the user interrupts.
int watch(AppModel& model, const CommandLine& line, std::ostream& out,
          const std::function<void()>& print) {
  Shown last = shown(model);
  QTimer heartbeat;
  QObject::connect(&heartbeat, &QTimer::timeout, &heartbeat, [&] {
    model.heartbeat();
    if (model.isLoading() || shown(model) == last) return;
    last = shown(model);
    if (!line.json) out << "\n";
    print();
  });
  heartbeat.start(static_cast<int>(AppModel::heartbeatInterval * 1000));
  QEventLoop loop;
  loop.exec();
  return 0;
}

}  // namespace

int runQuotes(const CommandLine& line, std::ostream& out, std::ostream& err) {
  CommandRuntime run;
  QuotesOnly sources(run.live.data);

  QTemporaryDir scratch;
  auto in = commandInputs(line, scratch, err);
  if (!in) return 1;
  if (line.source) useSourceMode(*in->store, *line.source, run.clock.now());

  AppModel model({*in->store, run.clock, run.scheduler, sources, run.notifier, in->support,
                  line.endpoints, !line.alerts},
                 in->watchlistFile, false, run.bundle);
  // The alerts are listed as stored, with the names the kept quotes give: nothing is asked.
  if (!line.alerts) waitForLoad(model);
  const auto print = [&] {
    if (line.alerts) {
      out << (line.json ? renderAlertsJson(model, true) : renderAlertsTable(model));
    } else if (line.holdings) {
      out << (line.json ? renderHoldingsJson(model, true) : renderHoldingsTable(model));
    } else {
      out << (line.json ? renderJson(model, !line.watch) : renderTable(model));
    }
    out << std::flush;
  };
  print();
  if (!line.watch) return out ? 0 : 1;
  return watch(model, line, out, print);
}

}  // namespace tidemark
