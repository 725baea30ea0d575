#pragma once

// The keys of the records the app keeps in its settings store.
namespace tidemark::storeKeys {

inline constexpr const char* preferences = "tidemark.native.preferences.v2";
// An unreadable preferences record is moved here before the defaults are saved over it; the
// next unreadable one replaces it.
inline constexpr const char* preferencesUnreadable = "tidemark.native.preferences.unreadable.v2";
inline constexpr const char* watchlist = "tidemark.native.watchlist.v1";
inline constexpr const char* watchlistBackup = "tidemark.native.watchlist.backup.v1";
inline constexpr const char* snapshots = "tidemark.native.snapshots.v1";
inline constexpr const char* holdings = "tidemark.native.holdings.v1";
inline constexpr const char* holdingsUnreadable = "tidemark.native.holdings.unreadable.v1";
inline constexpr const char* alerts = "tidemark.native.alerts.v1";
inline constexpr const char* alertsUnreadable = "tidemark.native.alerts.unreadable.v1";
inline constexpr const char* sourceManifest = "tidemark.native.source-manifest.v1";

}  // namespace tidemark::storeKeys
