#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include <QObject>
#include <QSettings>
#include <QString>
#include <QTimer>

#include "core/KeyValueStore.h"

namespace tidemark {

// The key-value store on QSettings: INI files under the XDG config folder on Linux. Writes reach
// the file once the event loop runs again, and the observer hears how that went; lazy writes
// wait for the next of those, a minute at most, or the store's end.
class SettingsStore final : public KeyValueStore {
 public:
  // The user's standard store.
  static std::unique_ptr<SettingsStore> standard();
  // A named suite on a file of its own, beside the standard store.
  static std::unique_ptr<SettingsStore> suite(const std::string& name);
  static QString suitePath(const std::string& name);
  // Deletes a suite's file (and QSettings' lock file); true when nothing of it is left.
  static bool removeSuite(const std::string& name);

  explicit SettingsStore(const QString& iniPath);
  ~SettingsStore() override;
  SettingsStore(const SettingsStore&) = delete;
  SettingsStore& operator=(const SettingsStore&) = delete;
  static constexpr int lazyWriteMs = 60'000;

  std::optional<std::string> data(const std::string& key) const override;
  std::optional<std::vector<std::string>> stringArray(const std::string& key) const override;
  void setData(const std::string& key, const std::string& bytes) override;
  void setStringArray(const std::string& key, const std::vector<std::string>& values) override;
  void remove(const std::string& key) override;
  void setDataLazily(const std::string& key, const std::string& bytes) override;
  void setWriteObserver(WriteObserver observer) override { observer_ = std::move(observer); }

  // Writes pending changes now and tells the observer; false when the file could not be written.
  bool sync();
  QString fileName() const { return settings_->fileName(); }

 private:
  using Open = std::function<std::unique_ptr<QSettings>()>;
  explicit SettingsStore(Open open);
  void scheduleSync();

  Open open_;
  std::unique_ptr<QSettings> settings_;
  WriteObserver observer_;
  bool syncPending_ = false;
  bool unwritten_ = false;  // the last write failed
  QObject syncContext_;     // a sync still queued goes with the store
  // Lazy writes not yet handed to QSettings, which would write them at its next turn.
  std::map<std::string, std::string, std::less<>> lazy_;
  QTimer lazyTimer_;
};

}  // namespace tidemark
