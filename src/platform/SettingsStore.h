#pragma once

#include <memory>
#include <string>

#include <QSettings>
#include <QString>

#include "core/KeyValueStore.h"

namespace tidemark {

// The key-value store on QSettings: INI files under the XDG config folder on Linux.
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

  std::optional<std::string> data(const std::string& key) const override;
  std::optional<std::vector<std::string>> stringArray(const std::string& key) const override;
  void setData(const std::string& key, const std::string& bytes) override;
  void setStringArray(const std::string& key, const std::vector<std::string>& values) override;
  void remove(const std::string& key) override;

  // Writes pending changes now; false when the file could not be written.
  bool sync();
  QString fileName() const { return settings_->fileName(); }

 private:
  explicit SettingsStore(std::unique_ptr<QSettings> settings) : settings_(std::move(settings)) {}
  std::unique_ptr<QSettings> settings_;
};

}  // namespace tidemark
