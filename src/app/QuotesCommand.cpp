#include "app/QuotesCommand.h"

#include <ostream>

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>

#include "app/Environment.h"
#include "app/TextTable.h"
#include "core/NumberText.h"
#include "model/AppModel.h"
#include "platform/QtScheduler.h"
#include "platform/SettingsStore.h"
#include "sources/UnavailableDataSource.h"

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
  const std::string phase(model.phaseLabel());
  for (const std::string& symbol : model.watchlist()) {
    if (const QuoteSnapshot* q = model.quote(symbol)) {
      table.addRow({q->id, q->name, q->market, priceText(q->price), percentText(q->changePct()),
                    volumeText(q->volume), q->source, phase});
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

std::string renderJson(const AppModel& model) {
  Json quotes = Json::array();
  for (const QuoteSnapshot& q : model.watchedQuotes()) {
    Json record = toJson(q);
    record["updatedAt"] = formatISO8601(q.updatedAt);
    quotes.push_back(std::move(record));
  }
  Json document{{"phase", rawValue(model.phase())},
                {"lastError", model.lastError() ? Json(*model.lastError()) : Json(nullptr)},
                {"sourceLabel", model.sourceLabel()},
                {"updatedAt", formatISO8601(model.updatedAt())},
                {"quotes", std::move(quotes)}};
  return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

int runQuotes(const CommandLine& line, std::ostream& out, std::ostream& err) {
  auto settings = SettingsStore::standard();
  OverlayKeyValueStore store(*settings);

  // The model reads the user's watchlist file; a copy takes whatever it writes back.
  QTemporaryDir scratch;
  if (!scratch.isValid()) {
    err << "tidemark: cannot create a temporary folder: " << scratch.errorString().toStdString()
        << "\n";
    return 1;
  }
  const auto support = applicationSupportDirectory();
  const std::filesystem::path copy =
      scratch.filePath(QStringLiteral("watchlist.json")).toStdString();
  if (support) {
    const auto original =
        QString::fromStdString((*support / "Tidemark" / "watchlist.json").string());
    if (QFile::exists(original)) QFile::copy(original, QString::fromStdString(copy.string()));
  }

  SystemClock clock;
  QtScheduler scheduler;
  UnavailableDataSource source;
  NullNotifier notifier;
  AppModel model({store, clock, scheduler, source, notifier, support}, copy, false,
                 applicationBundle());

  out << (line.json ? renderJson(model) : renderTable(model));
  out.flush();
  return out ? 0 : 1;
}

}  // namespace tidemark
