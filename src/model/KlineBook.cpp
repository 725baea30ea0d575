#include "model/KlineBook.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "core/FileIO.h"
#include "core/Market.h"

namespace tidemark {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono;

// The first day of each of `count` periods, oldest first, the last one holding `today`: trading
// days (Monday to Friday), Mondays, or firsts of the month.
std::vector<sys_days> periodStarts(KlinePeriod period, sys_days today, size_t count) {
  std::vector<sys_days> starts;
  sys_days at = today;
  if (period == KlinePeriod::week) at -= (weekday(at) - Monday);
  if (period == KlinePeriod::month) {
    const year_month_day ymd(at);
    at = sys_days(ymd.year() / ymd.month() / 1);
  }
  while (starts.size() < count) {
    const weekday w(at);
    if (period != KlinePeriod::day || (w != Saturday && w != Sunday)) starts.push_back(at);
    if (period == KlinePeriod::month) {
      const year_month_day ymd(at);
      at = sys_days(year_month_day(ymd.year() / ymd.month() / 1) - months(1));
    } else {
      at -= days(period == KlinePeriod::week ? 7 : 1);
    }
  }
  std::reverse(starts.begin(), starts.end());
  return starts;
}

double rounded(double value) {
  return std::round(value * 100) / 100;
}

}  // namespace

std::vector<KlineBar> demoKline(const std::string& symbol, double lastPrice, KlinePeriod period,
                                int64_t day, size_t count) {
  // A small generator seeded by the symbol and the period, so each series has its own shape.
  uint64_t state = 1469598103934665603ull;
  for (char c : symbol + std::string(rawValue(period)))
    state = (state ^ uint8_t(c)) * 1099511628211ull;
  const auto unit = [&state] {
    state = state * 6364136223846793005ull + 1442695040888963407ull;
    return double(state >> 11) / double(1ull << 53);
  };
  const double swing = period == KlinePeriod::day    ? 0.02
                       : period == KlinePeriod::week ? 0.045
                                                     : 0.09;
  const auto starts = periodStarts(period, sys_days(days(day)), count);
  std::vector<double> closes(starts.size());
  double close = lastPrice;
  for (size_t i = starts.size(); i-- > 0;) {
    closes[i] = close;
    close = close / (1 + (unit() * 2 - 1) * swing);
  }
  std::vector<KlineBar> bars;
  bars.reserve(starts.size());
  double previous = close;
  for (size_t i = 0; i < starts.size(); ++i) {
    KlineBar b;
    b.date = klineDate(starts[i].time_since_epoch().count());
    b.close = i + 1 == starts.size() ? lastPrice : rounded(closes[i]);
    b.open = rounded(previous * (1 + (unit() * 2 - 1) * swing / 4));
    b.high = rounded(std::max(b.open, b.close) * (1 + unit() * swing / 2));
    b.low = rounded(std::min(b.open, b.close) * (1 - unit() * swing / 2));
    b.volume = std::round(1e5 * (0.5 + unit()));
    previous = b.close;
    bars.push_back(std::move(b));
  }
  return bars;
}

KlineBook::KlineBook(MarketDataSource& source, const Clock& clock,
                     std::optional<std::filesystem::path> folder)
    : source_(source), clock_(clock), folder_(std::move(folder)) {}

std::string KlineBook::fileName(const std::string& symbol, KlinePeriod period) {
  // A watchlist symbol may hold any sign; in a file name only letters, digits, dots and hyphens
  // stand for themselves, every other byte as "_" and its hex value.
  std::string name = "kline-";
  for (unsigned char c : symbol) {
    if (std::isalnum(c) || c == '.' || c == '-') {
      name += char(c);
    } else {
      char escaped[4];
      std::snprintf(escaped, sizeof escaped, "_%02X", c);
      name += escaped;
    }
  }
  return name + "-" + std::string(rawValue(period)) + ".json";
}

KlineBook::Entry& KlineBook::entry(const Key& key) {
  auto [it, inserted] = entries_.try_emplace(key);
  if (!inserted) return it->second;
  order_.push_back(key);
  while (order_.size() > memoryLimit) {
    entries_.erase(order_.front());
    order_.pop_front();
  }
  return it->second;
}

bool KlineBook::readFile(const Key& key, int64_t day, Entry& into) const {
  if (!folder_) return false;
  std::error_code error;
  auto bytes = tidemark::readFile(*folder_ / fileName(key.first, key.second), error, 1 << 20);
  auto document = bytes ? json::parse(*bytes) : std::nullopt;
  if (!document || json::integer(*document, "day") != day || !document->contains("bars"))
    return false;
  auto bars = klineBarsFromJson((*document)["bars"]);
  if (!bars || bars->empty()) return false;
  into = {{std::move(*bars), std::nullopt, false}, day, 0};
  return true;
}

void KlineBook::writeFile(const Key& key, const Entry& entry) {
  if (!folder_) return;
  std::error_code error;
  fs::create_directories(*folder_, error);
  const Json document{{"day", entry.day}, {"bars", toJson(entry.series.bars)}};
  if (writeFileAtomically(*folder_ / fileName(key.first, key.second), document.dump())) return;
  // The folder keeps the newest files only.
  std::vector<std::pair<fs::file_time_type, fs::path>> files;
  for (const auto& item : fs::directory_iterator(*folder_, error)) {
    const std::string name = item.path().filename().string();
    if (name.starts_with("kline-") && name.ends_with(".json"))
      files.emplace_back(item.last_write_time(error), item.path());
  }
  if (files.size() <= fileLimit) return;
  std::sort(files.begin(), files.end());
  for (size_t i = 0; i + fileLimit < files.size(); ++i) fs::remove(files[i].second, error);
}

const KlineBook::Series& KlineBook::series(const Request& request,
                                           const std::function<void()>& changed) {
  const Key key{request.symbol, request.period};
  Entry& e = entry(key);
  if (!isLive(request.mode)) {
    // Made once a day; the live price moves its last period.
    if (e.day == request.day && !e.series.bars.empty()) return e.series;
    e.day = request.day;
    e.series = {};
    if (isOffExchangeFundSymbol(request.symbol) || !(request.demoPrice > 0)) {
      e.series.error = "K线数据暂不可用";
    } else {
      e.series.bars = demoKline(request.symbol, request.demoPrice, request.period, request.day);
    }
    return e.series;
  }
  const double now = clock_.now().unixSeconds();
  if (e.day == request.day &&
      (e.series.loading || !e.series.bars.empty() || now - e.failedAt < retryAfter))
    return e.series;
  if (e.day != request.day && readFile(key, request.day, e)) return e.series;
  // Yesterday's bars stay shown while today's are asked for.
  e.day = request.day;
  e.series.loading = true;
  e.series.error.reset();
  const std::function<void(KlineAnswer)> answered = [this, key, day = request.day,
                                                     changed](KlineAnswer answer) {
    auto it = entries_.find(key);
    if (it == entries_.end() || it->second.day != day) return;
    Entry& found = it->second;
    found.series.loading = false;
    if (answer.bars.empty()) {
      found.series.error = answer.error.value_or("K线数据暂不可用");
      found.failedAt = clock_.now().unixSeconds();
    } else {
      found.series = {std::move(answer.bars), std::nullopt, false};
      writeFile(key, found);
    }
    if (changed) changed();
  };
  source_.fetchKline(request.mode, request.endpoints, request.symbol, request.period,
                     lifeline_.guard(answered));
  return e.series;
}

}  // namespace tidemark
