#pragma once

#include <array>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Bundle.h"
#include "core/ChangeSignal.h"
#include "core/Lifeline.h"
#include "core/QuoteStyle.h"
#include "model/HoldingsBook.h"
#include "model/IntradaySeries.h"
#include "model/KlineBook.h"
#include "model/MarketExtras.h"
#include "model/MarketSessions.h"
#include "model/ModelDependencies.h"
#include "model/ModelError.h"
#include "model/Preferences.h"
#include "model/PriceAlert.h"
#include "model/RefreshCycle.h"
#include "model/SecuritySearch.h"
#include "model/SourceConfiguration.h"
#include "model/StoredRecords.h"
#include "model/Watchlist.h"

namespace tidemark {

// The one observable object behind the orb, the tray and the windows. Main thread only. Every
// assignment notifies; setters' side effects run once construction has finished.
class AppModel {
 public:
  // The longest watchlist kept: a longer import or watchlist file is refused whole.
  static constexpr size_t maxWatchlistLength = 5000;
  static constexpr double staleAfter = 15;
  static constexpr double heartbeatInterval = 0.5;
  static const std::vector<std::string>& defaultWatchlist();

  // `startTimers` false (self-test, command-line runs): no heartbeat, notifications or bootstrap.
  AppModel(ModelDependencies dependencies, std::optional<std::filesystem::path> watchlistURL,
           bool startTimers, Bundle bundle);

  [[nodiscard]] ChangeSignal::Subscription subscribe(std::function<void()> handler) {
    return changed_.subscribe(std::move(handler));
  }

  // Published state.
  const std::vector<QuoteSnapshot>& quotes() const { return quotes_; }
  const IntradaySeries& intraday() const { return intraday_; }
  const std::vector<std::string>& watchlist() const { return watchlist_; }
  const std::string& activeID() const { return prefs_.activeID; }
  AppTheme theme() const { return prefs_.theme; }
  bool reduceMotion() const { return prefs_.reduceMotion; }
  double refreshInterval() const { return prefs_.refreshInterval; }
  SourceMode sourceMode() const { return prefs_.sourceMode; }
  bool masked() const { return prefs_.masked; }
  double orbSize() const { return prefs_.orbSize; }
  bool autoRotate() const { return prefs_.autoRotate; }
  MenuDensity menuDensity() const { return prefs_.menuDensity; }
  bool orbShowsName() const { return prefs_.orbShowsName.value_or(false); }
  QuotePhase phase() const { return prefs_.phase; }
  const std::optional<std::string>& lastError() const { return prefs_.lastError; }
  int64_t latencyMS() const { return prefs_.latencyMS; }
  Date updatedAt() const { return prefs_.updatedAt; }
  bool onboardingSeen() const { return prefs_.onboardingSeen; }
  QuoteStyle quoteStyle() const { return {prefs_.riseColors, prefs_.pricePrecision}; }
  // The endpoint set in use, its revision and how its check at start-up went.
  const SourceConfiguration& sources() const { return sources_; }
  const SecuritySearch& search() const { return search_; }
  const PriceAlertRule& alertRule() const { return alert_.rule; }
  const AlertBook& alertBook() const { return alerts_; }
  const std::vector<Holding>& holdings() const { return holdings_.list(); }
  bool showsDayProfitInTray() const { return holdings_.showsDayProfitInTray(); }
  // No watched market awake on a live source: refreshed and current for five minutes (heartbeat).
  bool quietRefresh() const { return quietRefresh_; }
  // Why the settings cannot be saved; notifies once at each end of a streak of failed saves.
  const auto& settingsWriteFailure() const { return settingsWriteFailure_; }

  // Setters with their side effects.
  void setQuotes(std::vector<QuoteSnapshot> quotes);
  void setWatchlist(std::vector<std::string> watchlist);
  void setActiveID(std::string symbol);
  void setTheme(AppTheme theme);
  void setReduceMotion(bool on);
  void setRefreshInterval(double seconds);
  void setSourceMode(SourceMode mode);
  void setMasked(bool on);
  void setOrbSize(double points);
  void setAutoRotate(bool on);
  void setMenuDensity(MenuDensity density);
  void setOrbShowsName(bool on);
  void setPhase(QuotePhase phase);
  void setOnboardingSeen(bool seen);
  void setQuoteStyle(QuoteStyle style);
  void resetPreferences();

  // Derived state.
  const QuoteSnapshot* activeQuote() const;
  const QuoteSnapshot* alertQuote() const;
  const QuoteSnapshot* quote(const std::string& symbol) const;
  std::vector<QuoteSnapshot> watchedQuotes() const;
  std::string sourceLabel() const;
  // A market's state now, by its label (none: no such market or zone); the heartbeat follows it.
  std::optional<MarketState> marketStateOf(std::string_view market) const;

  // Unpublished state worth reading: what construction set aside, for the app to tell the user.
  const std::vector<SetAsideRecord>& setAsideRecords() const { return setAside_; }
  // A bootstrap, a live load or its rates are under way; the end changes the published state.
  bool isLoading() const { return sources_.bootstrapInFlight || cycle_.live || extras_.inFlight; }
  bool hasPendingRefresh() const { return static_cast<bool>(cycle_.pending); }
  Date lastRefreshStartedAt() const { return cycle_.lastStartedAt; }

  // Watchlist.
  void select(const std::string& symbol);
  void add(const std::string& symbol);
  void add(const QuoteSnapshot& quote);
  void remove(const std::string& symbol);
  void move(const std::string& symbol, int offset);
  void cycleActive();
  // Looks the text up in the current source (a live one falls back to the local securities).
  void searchSource(const std::string& text);
  // Keeps the candidate's quote (unless a newer one is held) and adds its symbol to the watchlist.
  void addSearchResult(const QuoteSnapshot& quote);
  // Adds the code the search offers (codeToAdd) and asks for its quote, which names it.
  void addCode();
  void saveWatchlist();
  // Both throw: file and encoding errors as std::system_error, bad content as ModelError.
  void exportWatchlist(const std::filesystem::path& url) const;
  WatchlistImportResult importWatchlist(const std::filesystem::path& url);

  // Holdings: setting one replaces the symbol's, or says in words why it cannot be.
  const Holding* holding(const std::string& symbol) const { return holdings_.find(symbol); }
  std::optional<std::string> setHolding(const std::string& symbol, double shares, double cost);
  void removeHolding(const std::string& symbol);
  void setShowsDayProfitInTray(bool on);
  // Each holding with its quote, looked up once; the totals per currency of the watched ones.
  std::vector<HoldingLine> holdingLines() const;
  std::vector<HoldingsTotal> holdingsTotals() const;
  std::vector<HoldingsTotal> holdingsTotals(const std::vector<HoldingLine>& lines) const;
  // The totals in yuan at the rates of now (MarketExtras: rates and US extended-hours trades).
  std::optional<YuanTotal> yuanTotal(const std::vector<HoldingsTotal>& totals) const;
  const MarketExtras& extras() const { return extras_; }

  // Refresh engine: a debounced load of the current source, and the one behind the heartbeat.
  void heartbeat();
  void refresh();
  void loadSource(bool resetMock);
  void simulatePhase(QuotePhase phase);

  // The primary alert: setting it replaces it; refused for a symbol without a quote and for a
  // threshold that is not finite and positive. Beside it the list, which setAlertsPaused stops.
  void setAlert(const std::string& symbol, double price, bool above);
  void clearAlert();
  void requestPriceAlertNotifications();
  // Every alert with its state now, the primary one first. Adding is refused in words.
  std::vector<std::pair<AlertRule, AlertState>> alertList() const;
  std::optional<std::string> addAlert(AlertRule rule);
  void setAlertEnabled(const std::string& id, bool on);
  void removeAlert(const std::string& id);  // "primary" clears the primary alert
  void setAlertsPaused(bool on);

  // Today's series of a quote: asked for at most once a minute, the quote's trend until then.
  void fetchIntraday(const QuoteSnapshot& quote);
  // A security's candles as known now (asked once a day when missing), and the detail's chart.
  const KlineBook::Series& kline(const std::string& symbol, KlinePeriod period);
  std::optional<KlinePeriod> detailChart() const { return prefs_.detailChart; }
  void setDetailChart(std::optional<KlinePeriod> period);

 private:
  template <class T>
  void assign(T& member, T value) {
    member = std::move(value);
    changed_.notify();
  }

  void setLastError(std::optional<std::string> text);
  void setLatencyMS(int64_t milliseconds);
  void setUpdatedAt(Date date);
  void restorePreferences();
  void savePreferences();
  // What is stored: every field set, the name switch and the alert included.
  Preferences currentPreferences() const;
  void restoreSnapshotCache();
  void saveHoldings();
  bool isWatched(const std::string& symbol) const;
  void startFirstLoad();
  void requestActiveIntraday();
  void loadMock(bool resetMock);
  void loadStatic();
  void fetchLiveQuotes(SourceMode mode);
  void fetchExtras();  // the rates for HKD and USD holdings, the US extended-hours trades
  void finishLiveLoad(LiveQuoteLoad::Result load);
  // The fresh quotes and, after them, those of watched symbols the fresh ones lack.
  std::vector<QuoteSnapshot> preservingSavedWatchlistQuotes(std::vector<QuoteSnapshot> fresh) const;
  void saveQuotes();
  void evaluateAlert();
  void deliverPriceAlertNotification();
  void saveAlerts();
  void bootstrapDataSourcesAndLoad();
  void fetchRemoteSourceManifest(const std::function<void(bool adopted)>& completion);
  // The securities of the demonstration set or the shipped snapshot that match the text.
  std::vector<QuoteSnapshot> localSearch(std::string_view text) const;
  // Publishes the results; nothing found gets a message, worded by whether the source failed.
  void endSearch(std::vector<QuoteSnapshot> results, bool sourceFailed);
  QuotePhase phaseForAge(Date dataTime) const;
  // Whether a market of the watched symbols (else of the default list) is awake at the instant.
  bool watchedMarketAwake(Date at) const;
  // Sets quietRefresh and publishes a change of any market's state.
  void followSessions(Date now);
  // What the heartbeat's rules go by, with or without the quiet cadence.
  double staleAllowance(bool quiet) const;
  bool refreshPaused() const;
  double refreshPeriod(bool quiet) const;
  // The earliest instant from `now` on at which one of the heartbeat's rules can act.
  Date nextBeatDue(Date now) const;
  // Sets the heartbeat's next wake-up: after a beat, the first beat at or after the next due
  // instant; after a change, that beat only if it comes sooner than the one planned.
  void planHeartbeat(bool afterBeat);
  void wakeHeartbeatAt(Date wake);

  ModelDependencies deps_;
  ChangeSignal changed_;
  // Callbacks handed to the scheduler and the sources run only while the model is alive.
  Lifeline lifeline_;

  // Published.
  std::vector<QuoteSnapshot> quotes_;
  IntradaySeries intraday_;
  KlineBook klines_;
  SourceConfiguration sources_;
  std::vector<std::string> watchlist_;
  // The preferences in use. Its alert fields stay unused: the alert writes its rule when saved.
  Preferences prefs_ = startingPreferences();
  PriceAlert alert_;
  // The user's choices as last saved (the preferences without what refreshes change).
  std::optional<Preferences> savedChoices_;
  SecuritySearch search_;
  std::optional<StoreWriteFailure> settingsWriteFailure_;
  HoldingsBook holdings_;
  AlertBook alerts_;
  MarketExtras extras_;
  bool quietRefresh_ = false;
  std::array<std::optional<MarketState>, exchangeCount> marketStates_;

  // Unpublished.
  Bundle bundle_;
  WatchlistRecords watchlistRecords_;
  HoldingsRecords holdingsRecords_;
  AlertsRecords alertsRecords_;
  std::vector<SetAsideRecord> setAside_;
  bool canRequestNotifications_;
  bool ready_ = false;
  RefreshCycle cycle_;
};

}  // namespace tidemark
