// The refresh engine: heartbeat, debounced loads, the live fallback chain and the snapshots.

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_set>
#include <utility>

#include "model/AppModel.h"
#include "model/SnapshotCache.h"
#include "model/StaticSnapshot.h"
#include "model/StoreKeys.h"

namespace tidemark {
void AppModel::heartbeat() {
  const Date now = deps_.clock.now();
  cycle_.lastBeat = now;
  // What the rules change is planned for once, after them.
  const bool beating = std::exchange(cycle_.beating, false);
  followSessions(now);
  if (prefs_.phase == QuotePhase::live && now - prefs_.updatedAt > staleAllowance(quietRefresh_))
    setPhase(QuotePhase::stale);
  if (!refreshPaused() &&
      RefreshCycle::over(cycle_.lastStartedAt, now, refreshPeriod(quietRefresh_)))
    refresh();
  if (prefs_.autoRotate &&
      RefreshCycle::over(cycle_.lastRotationAt, now, RefreshCycle::rotationPeriod))
    cycleActive();
  cycle_.beating = beating;
  planHeartbeat(true);
}

// Data fetched on the quiet cadence stays current until the next quiet refresh is due, also in
// the moment a market wakes and the next refresh is on its way.
double AppModel::staleAllowance(bool quiet) const {
  return staleAfter + (quiet || cycle_.quietData ? RefreshCycle::quietInterval : 0);
}

bool AppModel::refreshPaused() const {
  return prefs_.refreshInterval == 0 || prefs_.phase == QuotePhase::offline ||
         prefs_.phase == QuotePhase::loading ||
         (prefs_.phase == QuotePhase::stale && prefs_.lastError.has_value());
}

double AppModel::refreshPeriod(bool quiet) const {
  return quiet ? RefreshCycle::quietInterval : prefs_.refreshInterval;
}

Date AppModel::nextBeatDue(Date now) const {
  // The market sessions change state only as a whole minute begins (their hours and the
  // exchanges' offsets from UTC are whole minutes), and the reference date is one.
  Date due{(std::floor(now.sinceReference / 60) + 1) * 60};
  // The sessions as the next beat will find them, for a source or watchlist changed meanwhile.
  const bool quiet = isLive(prefs_.sourceMode) && !watchedMarketAwake(now);
  if (quiet != quietRefresh_) return now;
  if (prefs_.phase == QuotePhase::live)
    due = std::min(due, prefs_.updatedAt + staleAllowance(quiet));
  if (!refreshPaused()) due = std::min(due, cycle_.lastStartedAt + refreshPeriod(quiet));
  if (prefs_.autoRotate) due = std::min(due, cycle_.lastRotationAt + RefreshCycle::rotationPeriod);
  return due;
}

void AppModel::planHeartbeat(bool afterBeat) {
  if (!cycle_.beating) return;
  const Date now = deps_.clock.now();
  if (now < cycle_.lastBeat) cycle_.lastBeat = now;  // the clock went back unnoticed
  // Beats counted from the last; a hundredth of a beat early rather than a beat late, since a
  // rule met a moment after its beat waits for the next one.
  const double due = (nextBeatDue(now) - cycle_.lastBeat) / heartbeatInterval - 0.02;
  const double passed = std::floor((now - cycle_.lastBeat) / heartbeatInterval) + 1;
  const Date wake = cycle_.lastBeat + std::max(std::ceil(due), passed) * heartbeatInterval;
  if (!afterBeat && wake >= cycle_.nextBeat) return;
  wakeHeartbeatAt(wake);
}

void AppModel::wakeHeartbeatAt(Date wake) {
  cycle_.nextBeat = wake;
  cycle_.heartbeat =
      deps_.scheduler.after(wake - deps_.clock.now(), lifeline_.guard([this] { heartbeat(); }));
}

void AppModel::refresh() {
  if (sources_.bootstrapInFlight) return;
  cycle_.pending.cancel();
  cycle_.lastStartedAt = deps_.clock.now();
  cycle_.pending = deps_.scheduler.after(RefreshCycle::debounce, lifeline_.guard([this] {
    cycle_.pending = TimerHandle();
    loadSource(false);
  }));
}

void AppModel::loadSource(bool resetMock) {
  switch (prefs_.sourceMode) {
    case SourceMode::mock:
      extras_.clearExtended();
      cycle_.live.reset();
      cycle_.quietData = false;
      loadMock(resetMock);
      break;
    case SourceMode::staticJSON:
      extras_.clearExtended();
      cycle_.live.reset();
      cycle_.quietData = false;
      loadStatic();
      break;
    default:
      fetchLiveQuotes(prefs_.sourceMode);
      break;
  }
}

void AppModel::loadMock(bool resetMock) {
  if (resetMock) {
    cycle_.mock.restart();
  } else {
    cycle_.mock.step();
  }
  const Date now = deps_.clock.now();
  setQuotes(preservingSavedWatchlistQuotes(cycle_.mock.quotes(watchlist_, now)));
  setUpdatedAt(now);
  setPhase(QuotePhase::live);
  setLastError(std::nullopt);
  saveQuotes();
  evaluateAlert();
}

void AppModel::loadStatic() {
  std::optional<std::string> failure;
  try {
    StaticSnapshot snapshot = loadStaticSnapshot(bundle_);
    setQuotes(preservingSavedWatchlistQuotes(std::move(snapshot.quotes)));
    setUpdatedAt(snapshot.updatedAt);
    setLastError(std::nullopt);
  } catch (const ModelError& error) {
    const Date at = embeddedSnapshotDate();
    setQuotes(preservingSavedWatchlistQuotes(embeddedQuotes(at, "embedded_fallback")));
    setUpdatedAt(at);
    setLastError(std::string(error.what()) + " · 已使用内置离线快照");
  }
  // Never stamped with the current time: a shipped snapshot must not pass for live data.
  setPhase(phaseForAge(prefs_.updatedAt));
  saveQuotes();
  evaluateAlert();
}

void AppModel::fetchLiveQuotes(SourceMode mode) {
  std::vector<std::string> symbols = watchlist_.empty() ? defaultWatchlist() : watchlist_;
  // A load already asking the same feeds for the same symbols answers for this one too; piling
  // up requests (or bridge processes) behind a slow feed helps nobody. A changed watchlist starts
  // a new load at once, and the older one's answers are dropped.
  if (cycle_.live && cycle_.live->asksFor(mode, symbols)) return;
  fetchExtras();
  cycle_.live =
      std::make_shared<LiveQuoteLoad>(mode, std::move(symbols), quotes_, deps_.clock.now());
  cycle_.live->run(deps_.dataSource, sources_.endpoints,
                   lifeline_.guard(std::function<void(LiveQuoteLoad::Result)>(
                       [this, load = cycle_.live.get()](LiveQuoteLoad::Result result) {
                         if (load == cycle_.live.get()) finishLiveLoad(std::move(result));
                       })));
}

void AppModel::finishLiveLoad(LiveQuoteLoad::Result load) {
  cycle_.live.reset();
  cycle_.quietData = !watchedMarketAwake(deps_.clock.now());
  const bool anyCollected = !load.collected.empty();
  Date latest{-std::numeric_limits<double>::infinity()};
  for (const QuoteSnapshot& q : load.collected) latest = std::max(latest, q.updatedAt);

  setQuotes(preservingSavedWatchlistQuotes(std::move(load.collected)));
  if (ready_) {
    saveQuotes();
    evaluateAlert();
  }
  if (anyCollected) setUpdatedAt(latest);
  const double elapsed = deps_.clock.now() - load.start;
  setLatencyMS(static_cast<int64_t>(std::trunc(elapsed * 1000)));
  if (load.missing.empty()) {
    setPhase(QuotePhase::live);
    setLastError(std::nullopt);
  } else {
    setPhase(QuotePhase::degraded);
    std::string text;
    for (const std::string& error : load.errors) text += (text.empty() ? "" : "；") + error;
    if (text.empty()) text = "部分标的暂无有效报价";
    setLastError(text + " · 保留上一份快照");
  }
  requestActiveIntraday();
}

std::vector<QuoteSnapshot> AppModel::preservingSavedWatchlistQuotes(
    std::vector<QuoteSnapshot> fresh) const {
  // The views point into `fresh` and `quotes_`, so `fresh` must not grow while they are in use:
  // the held quotes are picked first and appended afterwards.
  std::vector<const QuoteSnapshot*> missing;
  {
    std::unordered_set<std::string_view> present;
    present.reserve(fresh.size() + quotes_.size());
    for (const QuoteSnapshot& q : fresh) present.insert(q.id);
    const std::unordered_set<std::string_view> watched(watchlist_.begin(), watchlist_.end());
    for (const QuoteSnapshot& q : quotes_)
      if (watched.contains(q.id) && present.insert(q.id).second) missing.push_back(&q);
  }
  fresh.reserve(fresh.size() + missing.size());
  for (const QuoteSnapshot* q : missing) fresh.push_back(*q);
  return fresh;
}

void AppModel::saveQuotes() {
  if (!ready_) return;
  if (auto bytes = encodeSnapshotCache(quotes_))
    deps_.defaults.setDataLazily(storeKeys::snapshots, *bytes);
}

void AppModel::simulatePhase(QuotePhase phase) {
  cycle_.pending.cancel();
  setPhase(phase);
  savePreferences();
  cycle_.lastStartedAt = deps_.clock.now();
  switch (phase) {
    case QuotePhase::stale:
      setLastError("演示过期状态 · 请手动刷新");
      break;
    case QuotePhase::offline:
      setLastError("演示离线状态 · 自动刷新已暂停");
      break;
    case QuotePhase::degraded:
      setLastError("演示降级状态 · 数据可能延迟");
      break;
    case QuotePhase::live:
      setLastError(std::nullopt);
      refresh();
      break;
    case QuotePhase::loading:
      setLastError(std::nullopt);
      break;
  }
}

void AppModel::requestActiveIntraday() {
  if (const QuoteSnapshot* q = activeQuote()) fetchIntraday(*q);
}

}  // namespace tidemark
