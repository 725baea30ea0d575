// The refresh engine: heartbeat, debounced loads, the live fallback chain and the snapshots.

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_set>

#include "model/AppModel.h"
#include "model/SnapshotCache.h"
#include "model/StaticSnapshot.h"
#include "model/StoreKeys.h"

namespace tidemark {
namespace {

// A live source is asked this often while no watched market is awake.
constexpr double quietRefreshInterval = 300;
constexpr double refreshDebounce = 0.18;
constexpr double rotationPeriod = 7;

// Tried first to last; a hand-picked live mode is only a first preference.
std::vector<SourceMode> sourceOrder(SourceMode mode) {
  switch (mode) {
    case SourceMode::tencent:
      return {SourceMode::tencent, SourceMode::stockSDK, SourceMode::sina};
    case SourceMode::sina:
      return {SourceMode::sina, SourceMode::stockSDK, SourceMode::tencent};
    default:
      return {SourceMode::stockSDK, SourceMode::tencent, SourceMode::sina};
  }
}

bool sameSymbols(std::vector<std::string> a, std::vector<std::string> b) {
  if (a.size() != b.size()) return false;
  std::sort(a.begin(), a.end());
  std::sort(b.begin(), b.end());
  return a == b;
}

}  // namespace

struct AppModel::LiveLoad {
  SourceMode mode;
  std::vector<std::string> symbols;
  QuoteMap cached;
  std::vector<SourceMode> order;
  Date start;
  size_t index = 0;
  std::vector<std::string> wanted;
  std::vector<QuoteSnapshot> collected;
  std::unordered_set<std::string> collectedIDs;
  std::vector<std::string> errors;
};

void AppModel::heartbeat() {
  const Date now = deps_.clock.now();
  followSessions(now);
  // Data fetched on the quiet cadence stays current until the next quiet refresh is due, also
  // in the moment a market wakes and the next refresh is on its way.
  const double allowed = staleAfter + (quietRefresh_ || quietData_ ? quietRefreshInterval : 0);
  if (prefs_.phase == QuotePhase::live && now - prefs_.updatedAt > allowed)
    setPhase(QuotePhase::stale);

  const bool paused = prefs_.refreshInterval == 0 || prefs_.phase == QuotePhase::offline ||
                      prefs_.phase == QuotePhase::loading ||
                      (prefs_.phase == QuotePhase::stale && prefs_.lastError.has_value());
  const double interval = quietRefresh_ ? quietRefreshInterval : prefs_.refreshInterval;
  // A clock set back (a time change) would hold every period for as long as it went back: the
  // period counts as over, once, and restarts from the new time.
  const double sinceRefresh = now - lastRefreshStartedAt_;
  if (!paused && (sinceRefresh >= interval || sinceRefresh < 0)) beginRefresh(true);

  const double sinceRotation = now - lastRotationAt_;
  if (prefs_.autoRotate && (sinceRotation >= rotationPeriod || sinceRotation < 0)) cycleActive();
}

void AppModel::beginRefresh(bool /*automatic*/) {
  if (sources_.bootstrapInFlight) return;
  pendingRefresh_.cancel();
  lastRefreshStartedAt_ = deps_.clock.now();
  pendingRefresh_ = deps_.scheduler.after(refreshDebounce, guarded([this] {
                                            pendingRefresh_ = TimerHandle();
                                            loadSource(false);
                                          }));
}

void AppModel::loadSource(bool resetMock) {
  switch (prefs_.sourceMode) {
    case SourceMode::mock:
      liveLoad_.reset();
      quietData_ = false;
      loadMock(resetMock);
      break;
    case SourceMode::staticJSON:
      liveLoad_.reset();
      quietData_ = false;
      loadStatic();
      break;
    default:
      fetchLiveQuotes(prefs_.sourceMode);
      break;
  }
}

void AppModel::loadMock(bool resetMock) {
  if (resetMock) {
    mockMarket_.restart();
  } else {
    mockMarket_.step();
  }
  const Date now = deps_.clock.now();
  setQuotes(preservingSavedWatchlistQuotes(mockMarket_.quotes(watchlist_, now)));
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
  if (liveLoad_ && liveLoad_->mode == mode && sameSymbols(liveLoad_->symbols, symbols)) return;
  auto load = std::make_shared<LiveLoad>();
  load->mode = mode;
  load->symbols = std::move(symbols);
  load->cached.reserve(quotes_.size());
  for (const QuoteSnapshot& q : quotes_) load->cached.emplace(q.id, q);
  load->order = sourceOrder(mode);
  load->start = deps_.clock.now();
  load->wanted = load->symbols;
  liveLoad_ = load;
  attempt(load);
}

void AppModel::attempt(const std::shared_ptr<LiveLoad>& load) {
  if (load->wanted.empty() || load->index >= load->order.size()) {
    finish(load);
    return;
  }
  const SourceMode source = load->order[load->index];
  std::weak_ptr<LiveLoad> weakLoad = load;
  // A copy: a completion that runs inside the call shrinks `wanted` while the source still
  // reads its argument.
  const std::vector<std::string> wanted = load->wanted;
  deps_.dataSource.fetchQuotes(
      source, sources_.endpoints, wanted, load->cached,
      guarded(std::function<void(std::vector<QuoteSnapshot>, std::optional<std::string>)>(
          [this, weakLoad](std::vector<QuoteSnapshot> quotes, std::optional<std::string> error) {
            auto load = weakLoad.lock();
            if (!load || load != liveLoad_) return;  // superseded by a newer load
            for (QuoteSnapshot& q : quotes) {
              // A later source never replaces what an earlier one gave.
              if (load->collectedIDs.insert(q.id).second) load->collected.push_back(std::move(q));
            }
            if (error) load->errors.push_back(std::move(*error));
            std::erase_if(load->wanted,
                          [&](const std::string& s) { return load->collectedIDs.contains(s); });
            ++load->index;
            attempt(load);
          })));
}

void AppModel::finish(const std::shared_ptr<LiveLoad>& load) {
  liveLoad_.reset();
  quietData_ = !watchedMarketAwake(deps_.clock.now());
  const bool anyCollected = !load->collected.empty();
  Date latest{-std::numeric_limits<double>::infinity()};
  for (const QuoteSnapshot& q : load->collected) latest = std::max(latest, q.updatedAt);

  setQuotes(preservingSavedWatchlistQuotes(std::move(load->collected)));
  if (ready_) {
    saveQuotes();
    evaluateAlert();
  }
  if (anyCollected) setUpdatedAt(latest);
  const double elapsed = deps_.clock.now() - load->start;
  setLatencyMS(static_cast<int64_t>(std::trunc(elapsed * 1000)));
  if (load->wanted.empty()) {
    setPhase(QuotePhase::live);
    setLastError(std::nullopt);
  } else {
    setPhase(QuotePhase::degraded);
    std::string text;
    for (const std::string& error : load->errors) text += (text.empty() ? "" : "；") + error;
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
  pendingRefresh_.cancel();
  setPhase(phase);
  savePreferences();
  lastRefreshStartedAt_ = deps_.clock.now();
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
      beginRefresh(false);
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
