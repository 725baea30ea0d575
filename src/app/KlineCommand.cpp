#include "app/KlineCommand.h"

#include <ostream>

#include <QEventLoop>

#include "app/Environment.h"
#include "app/LiveSources.h"
#include "app/TextTable.h"
#include "core/Market.h"
#include "core/NumberText.h"
#include "core/QuoteStyle.h"
#include "model/DemoMarket.h"
#include "model/KlineBook.h"
#include "model/MarketSessions.h"
#include "model/Preferences.h"
#include "platform/QtScheduler.h"

namespace tidemark {
namespace {

Json averageJson(const std::optional<double>& value) {
  return value ? Json(*value) : Json(nullptr);
}

std::string averageText(const std::optional<double>& value, int digits) {
  return value ? priceText(*value, digits) : "—";
}

KlineAnswer fetch(const CommandLine& line, SourceMode mode, Date now) {
  const std::string& symbol = line.klineSymbol;
  const auto day = exchangeDay(exchangeOf(watchlistMarket(symbol)), now)
                       .value_or(int64_t(now.unixSeconds() / 86400));
  if (!isLive(mode)) {
    if (isOffExchangeFundSymbol(symbol)) return {{}, "场外基金没有K线"};
    for (const QuoteSnapshot& q : MockMarket().quotes({symbol}, now))
      if (q.id == symbol) return {demoKline(symbol, q.price, line.klinePeriod, day), std::nullopt};
    return {{}, "模拟数据中没有 " + symbol};
  }
  const Bundle bundle = applicationBundle();
  SystemClock clock;
  LiveSources live(bundle, clock);
  std::optional<KlineAnswer> answer;
  QEventLoop loop;
  live.data.fetchKline(mode, line.endpoints.value_or(DataSourceEndpoints::bundled()), symbol,
                       line.klinePeriod, [&](KlineAnswer a) {
                         answer = std::move(a);
                         QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
                       });
  if (!answer) loop.exec();
  return std::move(*answer);
}

}  // namespace

std::string renderKlineTable(const std::vector<KlineBar>& bars, int digits) {
  using Align = TextTable::Align;
  TextTable table({{"日期"},
                   {"开盘", Align::right},
                   {"最高", Align::right},
                   {"最低", Align::right},
                   {"收盘", Align::right},
                   {"成交量", Align::right},
                   {"MA5", Align::right},
                   {"MA10", Align::right},
                   {"MA20", Align::right}});
  const auto ma5 = movingAverage(bars, 5), ma10 = movingAverage(bars, 10),
             ma20 = movingAverage(bars, 20);
  for (size_t i = 0; i < bars.size(); ++i) {
    const KlineBar& b = bars[i];
    table.addRow({b.date, priceText(b.open, digits), priceText(b.high, digits),
                  priceText(b.low, digits), priceText(b.close, digits),
                  volumeText(static_cast<int64_t>(b.volume)), averageText(ma5[i], digits),
                  averageText(ma10[i], digits), averageText(ma20[i], digits)});
  }
  return table.render();
}

std::string renderKlineJson(const std::string& symbol, KlinePeriod period,
                            const std::vector<KlineBar>& bars) {
  Json list = Json::array();
  const auto ma5 = movingAverage(bars, 5), ma10 = movingAverage(bars, 10),
             ma20 = movingAverage(bars, 20);
  for (size_t i = 0; i < bars.size(); ++i) {
    const KlineBar& b = bars[i];
    list.push_back(Json{{"date", b.date},
                        {"open", b.open},
                        {"high", b.high},
                        {"low", b.low},
                        {"close", b.close},
                        {"volume", b.volume},
                        {"ma5", averageJson(ma5[i])},
                        {"ma10", averageJson(ma10[i])},
                        {"ma20", averageJson(ma20[i])}});
  }
  const Json document{{"symbol", symbol}, {"period", rawValue(period)}, {"bars", std::move(list)}};
  return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

int runKline(const CommandLine& line, std::ostream& out, std::ostream& err) {
  const Preferences stored = storedPreferences();
  const SourceMode mode = line.source ? *line.source : stored.sourceMode;
  const KlineAnswer answer = fetch(line, mode, SystemClock().now());
  if (answer.bars.empty()) {
    err << "tidemark: no " << rawValue(line.klinePeriod) << " candles for " << line.klineSymbol
        << ": " << answer.error.value_or("K线数据暂不可用") << "\n";
    return 1;
  }
  out << (line.json ? renderKlineJson(line.klineSymbol, line.klinePeriod, answer.bars)
                    : renderKlineTable(answer.bars,
                                       priceDigits(line.klineSymbol, "", answer.bars.back().close,
                                                   stored.pricePrecision)))
      << std::flush;
  return out ? 0 : 1;
}

}  // namespace tidemark
