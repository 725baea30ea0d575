#include "app/SearchCommand.h"

#include <ostream>

#include <QEventLoop>

#include "app/Environment.h"
#include "app/LiveSources.h"
#include "app/TextTable.h"
#include "model/AppModel.h"
#include "model/StoreKeys.h"
#include "platform/QtScheduler.h"
#include "platform/SettingsStore.h"

namespace tidemark {
namespace {

// The live sources as far as a search goes: the model's first load gets no quotes at once, so
// nothing but the search goes out.
class SearchOnly final : public MarketDataSource {
 public:
  explicit SearchOnly(MarketDataSource& sources) : sources_(sources) {}
  void fetchQuotes(SourceMode, const DataSourceEndpoints&, const std::vector<std::string>&,
                   const QuoteMap&, QuotesCompletion completion) override {
    completion({}, "只搜索");
  }
  void probeQuoteEndpoints(const DataSourceEndpoints&,
                           std::function<void(bool)> completion) override {
    completion(true);
  }
  void fetchManifest(const std::string&,
                     std::function<void(std::optional<std::string>)> completion) override {
    completion(std::nullopt);
  }
  bool canFetchIntraday() const override { return false; }
  void fetchIntraday(const DataSourceEndpoints&, const std::string&, const std::string&,
                     std::function<void(Intraday)> completion) override {
    completion({});
  }
  void searchSecurities(const DataSourceEndpoints& endpoints, const std::string& text,
                        QuotesCompletion completion) override {
    sources_.searchSecurities(endpoints, text, std::move(completion));
  }

 private:
  MarketDataSource& sources_;
};

}  // namespace

std::string renderSearchTable(const std::vector<QuoteSnapshot>& results) {
  TextTable table({{"代码"}, {"名称"}, {"市场"}});
  for (const QuoteSnapshot& q : results) table.addRow({q.id, q.name, q.market});
  return table.render();
}

std::string renderSearchJson(const std::vector<QuoteSnapshot>& results) {
  Json list = Json::array();
  for (const QuoteSnapshot& q : results)
    list.push_back(Json{{"id", q.id}, {"name", q.name}, {"market", q.market}});
  return Json{{"results", std::move(list)}}.dump(2, ' ', false, Json::error_handler_t::replace) +
         "\n";
}

int runSearch(const CommandLine& line, std::ostream& out, std::ostream& err) {
  CommandRuntime run;
  SearchOnly sources(run.live.data);
  // The user's settings (the source, a custom endpoint set) are read; writes stay in memory.
  auto settings = SettingsStore::standard();
  OverlayKeyValueStore store(*settings);
  Preferences preferences = storedPreferences();
  if (line.source) preferences.sourceMode = *line.source;
  store.setData(storeKeys::preferences, toJson(preferences).dump());

  AppModel model(
      {store, run.clock, run.scheduler, sources, run.notifier, std::nullopt, line.endpoints, false},
      std::nullopt, false, run.bundle);
  model.searchSource(line.searchText);
  if (model.search().isSearching()) {
    QEventLoop loop;
    auto subscription = model.subscribe([&] {
      if (!model.search().isSearching())
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
  }
  const auto& results = model.search().results();
  if (line.json)
    out << renderSearchJson(results);
  else if (!results.empty())
    out << renderSearchTable(results);
  const auto& message = model.search().message();
  if (message && !line.json) out << *message << "\n";
  out << std::flush;
  if (results.empty() && message && *message != "没有找到匹配的标的") {
    if (line.json) err << "tidemark: " << *message << "\n";
    return 1;
  }
  return out ? 0 : 1;
}

}  // namespace tidemark
