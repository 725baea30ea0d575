#include "model/AppModel.h"
#include "model/StoreKeys.h"

#include <algorithm>
#include <unordered_map>

#include "core/FileIO.h"
#include "model/SnapshotCache.h"

namespace tidemark {

const std::vector<std::string>& AppModel::defaultWatchlist() {
  static const std::vector<std::string> list{"600519", "00700", "NVDA", "03033", "000858"};
  return list;
}

namespace {

// The watchlist file and, beside it, the holdings' and the alerts'. A write cut short by a kill
// leaves its temporary file, which goes; the real one is intact.
void placeFiles(const std::optional<std::filesystem::path>& watchlistURL, RecordFile& watchlist,
                RecordFile& holdings, RecordFile& alerts) {
  if (!watchlistURL) return;
  watchlist = RecordFile(watchlistURL);
  holdings = RecordFile(watchlistURL->parent_path() / "holdings.json");
  alerts = RecordFile(watchlistURL->parent_path() / "alerts.json");
  for (const RecordFile* file : {&watchlist, &holdings, &alerts})
    removeLeftoverTemporaries(*file->path());
}

}  // namespace

AppModel::AppModel(ModelDependencies dependencies,
                   std::optional<std::filesystem::path> watchlistURL, bool startTimers,
                   Bundle bundle)
    : deps_(std::move(dependencies)),
      klines_(deps_.dataSource, deps_.clock,
              deps_.cacheDirectory ? std::optional(*deps_.cacheDirectory / "kline") : std::nullopt),
      bundle_(std::move(bundle)),
      watchlistRecords_(deps_.defaults, RecordFile(), maxWatchlistLength),
      holdingsRecords_(deps_.defaults, RecordFile()),
      alertsRecords_(deps_.defaults, RecordFile()),
      canRequestNotifications_(startTimers) {
  const Date now = deps_.clock.now();
  prefs_.updatedAt = now;
  cycle_.lastStartedAt = now;
  cycle_.lastRotationAt = now;

  deps_.defaults.setWriteObserver(
      lifeline_.guard(std::function<void(const std::optional<StoreWriteFailure>&)>(
          [this](const std::optional<StoreWriteFailure>& failure) {
            if (static_cast<bool>(failure) != static_cast<bool>(settingsWriteFailure_))
              assign(settingsWriteFailure_, failure);
          })));

  if (!watchlistURL && deps_.applicationSupportDirectory)
    watchlistURL = *deps_.applicationSupportDirectory / "Tidemark" / "watchlist.json";
  placeFiles(watchlistURL, watchlistRecords_.file(), holdingsRecords_.file(),
             alertsRecords_.file());

  sources_ = SourceConfiguration::restored(deps_.defaults, bundle_);
  if (deps_.endpointsOverride) {
    sources_.endpoints = *deps_.endpointsOverride;
    sources_.status = "使用指定地址";
  }
  restorePreferences();
  restoreSnapshotCache();

  std::string fileProblem;
  if (auto stored = watchlistRecords_.read(&fileProblem)) {
    watchlist_ = std::move(*stored);
  } else {
    watchlist_ = defaultWatchlist();
  }
  if (std::find(watchlist_.begin(), watchlist_.end(), prefs_.activeID) == watchlist_.end())
    prefs_.activeID = watchlist_.empty() ? std::string() : watchlist_.front();
  if (!fileProblem.empty()) watchlistRecords_.file().setAside(std::move(fileProblem), setAside_);
  // Nothing is written for a user who never held anything.
  auto storedHoldings = holdingsRecords_.read(setAside_);
  const bool holdingsStored = storedHoldings.has_value();
  if (storedHoldings) holdings_.restore(std::move(*storedHoldings));
  auto storedAlerts = alertsRecords_.read(setAside_);
  const bool alertsStored = storedAlerts.has_value();
  if (storedAlerts) alerts_.restore(std::move(*storedAlerts));

  followSessions(now);
  ready_ = true;
  startFirstLoad();

  // What the store and the files already hold is not written again: most starts write nothing.
  savePreferences();
  saveQuotes();
  if (!watchlistRecords_.hold(watchlist_)) saveWatchlist();
  if (holdingsStored && !holdingsRecords_.hold(holdings_)) saveHoldings();
  if (alertsStored && !alertsRecords_.hold(alerts_)) saveAlerts();
  evaluateAlert();

  if (startTimers) {
    cycle_.beating = true;
    cycle_.lastBeat = deps_.clock.now();
    cycle_.changes = changed_.subscribe([this] { planHeartbeat(false); });
    // A jumped clock is looked at half a second later, and the beats go on from there.
    cycle_.clockJumps = deps_.scheduler.whenClockJumps([this] {
      cycle_.lastBeat = deps_.clock.now();
      wakeHeartbeatAt(cycle_.lastBeat + heartbeatInterval);
    });
    planHeartbeat(true);
    deps_.notifier.queryAuthorization(
        lifeline_.guard(std::function<void(bool)>([this](bool authorized) {
          alert_.authorized = authorized;
          if (authorized) deliverPriceAlertNotification();
        })));
  }
}

// ---- Restoring ---------------------------------------------------------------------------

namespace {

// The user's choices among the preferences: without what refreshes and the rotation change (the
// state of the data, its time, the latency, the active symbol).
Preferences choicesOf(Preferences p) {
  p.activeID.clear();
  p.phase = {};
  p.lastError.reset();
  p.latencyMS = 0;
  p.updatedAt = {};
  return p;
}

}  // namespace

void AppModel::restorePreferences() {
  auto bytes = deps_.defaults.data(storeKeys::preferences);
  if (!bytes) return;
  auto document = json::parse(*bytes);
  std::string badKey;
  auto p = document ? preferencesFromJson(*document, &badKey) : std::nullopt;
  if (!p) {
    // The record is ignored as a whole, but a theme from a newer version or one mistyped field
    // must not cost the user the rest: it is kept before the defaults are saved over it.
    deps_.defaults.setData(storeKeys::preferencesUnreadable, *bytes);
    const std::string problem = !document                ? "not JSON"
                                : !document->is_object() ? "not a JSON object"
                                                         : "field \"" + badKey + "\"";
    setAside_.push_back({storeKeys::preferences, problem, storeKeys::preferencesUnreadable, ""});
    return;
  }
  // The stored choices: a start that changes none of them writes nothing at once.
  savedChoices_ = choicesOf(*p);
  setActiveID(p->activeID);
  setTheme(p->theme);
  setReduceMotion(p->reduceMotion);
  setRefreshInterval(clampedRefreshInterval(p->refreshInterval));
  setSourceMode(p->sourceMode);
  setMasked(p->masked);
  setOrbSize(clampedOrbSize(p->orbSize));
  setAutoRotate(p->autoRotate);
  setMenuDensity(clampedMenuDensity(static_cast<int64_t>(p->menuDensity)));
  setOrbShowsName(p->orbShowsName.value_or(false));
  setDetailChart(p->detailChart);
  setQuoteStyle({p->riseColors, p->pricePrecision});
  setPhase(p->phase);
  setLastError(p->lastError);
  setLatencyMS(p->latencyMS);
  setUpdatedAt(p->updatedAt);
  setOnboardingSeen(p->onboardingSeen);
  alert_.readFrom(*p);
  changed_.notify();
}

void AppModel::restoreSnapshotCache() {
  if (auto bytes = deps_.defaults.data(storeKeys::snapshots)) {
    if (auto restored = decodeSnapshotCache(*bytes)) setQuotes(std::move(*restored));
  }
  setPhase(phaseForAge(prefs_.updatedAt));
}

QuotePhase AppModel::phaseForAge(Date dataTime) const {
  return deps_.clock.now() - dataTime > staleAfter ? QuotePhase::stale : QuotePhase::live;
}

// ---- Setters -------------------------------------------------------------------------------

void AppModel::setQuotes(std::vector<QuoteSnapshot> quotes) {
  assign(quotes_, std::move(quotes));
}

void AppModel::setWatchlist(std::vector<std::string> watchlist) {
  if (!ready_) {
    assign(watchlist_, std::move(watchlist));
    return;
  }
  assign(watchlist_, validSymbols(watchlist, maxWatchlistLength));
  if (std::find(watchlist_.begin(), watchlist_.end(), prefs_.activeID) == watchlist_.end())
    setActiveID(watchlist_.empty() ? std::string() : watchlist_.front());
  saveWatchlist();
  savePreferences();
}

void AppModel::setActiveID(std::string symbol) {
  assign(prefs_.activeID, std::move(symbol));
  if (!ready_) return;
  cycle_.lastRotationAt = deps_.clock.now();
  savePreferences();
  evaluateAlert();
  requestActiveIntraday();
}

void AppModel::setTheme(AppTheme theme) {
  assign(prefs_.theme, theme);
  savePreferences();
}

void AppModel::setReduceMotion(bool on) {
  assign(prefs_.reduceMotion, on);
  savePreferences();
}

void AppModel::setRefreshInterval(double seconds) {
  if (!ready_) {
    assign(prefs_.refreshInterval, seconds);
    return;
  }
  assign(prefs_.refreshInterval, clampedRefreshInterval(seconds));
  cycle_.lastStartedAt = deps_.clock.now();
  savePreferences();
}

void AppModel::setSourceMode(SourceMode mode) {
  const SourceMode previous = prefs_.sourceMode;
  assign(prefs_.sourceMode, mode);
  if (!ready_) return;
  savePreferences();
  if (mode != previous) {
    cycle_.pending.cancel();
    startFirstLoad();
  }
  cycle_.lastStartedAt = deps_.clock.now();
}

void AppModel::setMasked(bool on) {
  assign(prefs_.masked, on);
  savePreferences();
}

void AppModel::setOrbSize(double points) {
  assign(prefs_.orbSize, ready_ ? clampedOrbSize(points) : points);
  savePreferences();
}

void AppModel::setAutoRotate(bool on) {
  assign(prefs_.autoRotate, on);
  if (!ready_) return;
  cycle_.lastRotationAt = deps_.clock.now();
  savePreferences();
}

void AppModel::setMenuDensity(MenuDensity density) {
  assign(prefs_.menuDensity, ready_ ? clampedMenuDensity(static_cast<int64_t>(density)) : density);
  savePreferences();
}

void AppModel::setOrbShowsName(bool on) {
  assign(prefs_.orbShowsName, std::optional(on));
  savePreferences();
}

void AppModel::setQuoteStyle(QuoteStyle style) {
  assign(prefs_.riseColors, style.colors);
  assign(prefs_.pricePrecision, style.precision);
  savePreferences();
}

void AppModel::setPhase(QuotePhase phase) {
  assign(prefs_.phase, phase);
  savePreferences();
}

void AppModel::setLastError(std::optional<std::string> text) {
  assign(prefs_.lastError, std::move(text));
  savePreferences();
}

void AppModel::setLatencyMS(int64_t milliseconds) {
  assign(prefs_.latencyMS, milliseconds);
  savePreferences();
}

void AppModel::setUpdatedAt(Date date) {
  assign(prefs_.updatedAt, date);
  savePreferences();
}

void AppModel::setOnboardingSeen(bool seen) {
  assign(prefs_.onboardingSeen, seen);
  savePreferences();
}

// ---- Derived -------------------------------------------------------------------------------

const QuoteSnapshot* AppModel::quote(const std::string& symbol) const {
  for (const QuoteSnapshot& q : quotes_)
    if (q.id == symbol) return &q;
  return nullptr;
}

const QuoteSnapshot* AppModel::activeQuote() const {
  return quote(prefs_.activeID);
}

const QuoteSnapshot* AppModel::alertQuote() const {
  return alert_.rule.symbolID ? quote(*alert_.rule.symbolID) : nullptr;
}

std::vector<QuoteSnapshot> AppModel::watchedQuotes() const {
  std::unordered_map<std::string_view, const QuoteSnapshot*> byID;
  byID.reserve(quotes_.size());
  for (const QuoteSnapshot& q : quotes_) byID.emplace(q.id, &q);
  std::vector<QuoteSnapshot> watched;
  watched.reserve(watchlist_.size());
  for (const std::string& symbol : watchlist_)
    if (auto it = byID.find(symbol); it != byID.end()) watched.push_back(*it->second);
  return watched;
}

std::string AppModel::sourceLabel() const {
  return tidemark::sourceLabel(quotes_, prefs_.sourceMode);
}

// ---- Preferences -------------------------------------------------------------------------

Preferences AppModel::currentPreferences() const {
  Preferences record = prefs_;
  alert_.writeTo(record);
  return record;
}

void AppModel::savePreferences() {
  if (!ready_) return;
  const Preferences now = currentPreferences();
  auto bytes = json::encode(toJson(now));
  if (!bytes) return;
  // What refreshes and the rotation change is kept lazily; a choice of the user's at once.
  Preferences chosen = choicesOf(now);
  if (savedChoices_ == chosen) return deps_.defaults.setDataLazily(storeKeys::preferences, *bytes);
  savedChoices_ = std::move(chosen);
  deps_.defaults.setData(storeKeys::preferences, *bytes);
}

void AppModel::resetPreferences() {
  cycle_.pending.cancel();
  ready_ = false;
  setTheme(AppTheme::dark);
  setReduceMotion(false);
  setRefreshInterval(2.6);
  setSourceMode(SourceMode::mock);
  setMasked(false);
  setOrbSize(96);
  setAutoRotate(true);
  setMenuDensity(MenuDensity::iconOnly);
  setOrbShowsName(false);
  setOnboardingSeen(false);
  setQuoteStyle({});
  assign(alert_.rule, PriceAlertRule{});
  loadSource(true);
  ready_ = true;
  cycle_.lastStartedAt = deps_.clock.now();
  cycle_.lastRotationAt = deps_.clock.now();
  savePreferences();
  saveWatchlist();
  saveQuotes();
}

}  // namespace tidemark
