#include "app/Environment.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include "app/AppInfo.h"
#include "model/StoreKeys.h"
#include "platform/SettingsStore.h"

namespace tidemark {

Bundle applicationBundle() {
  Bundle bundle;
  bundle.info["StockDataSourceConfigURL"] = TIDEMARK_SOURCE_CONFIG_URL;
  const QByteArray overridden = qgetenv("TIDEMARK_RESOURCE_DIR");
  if (!overridden.isEmpty()) {
    bundle.resourceDirectory = overridden.toStdString();
    return bundle;
  }
  const QDir executable(QCoreApplication::applicationDirPath());
  for (const QString& candidate :
       {QStringLiteral("../share/tidemark"), QStringLiteral("resources")}) {
    const QString path = executable.absoluteFilePath(candidate);
    if (QFileInfo(path).isDir()) {
      bundle.resourceDirectory = QDir::cleanPath(path).toStdString();
      break;
    }
  }
  return bundle;
}

std::optional<std::filesystem::path> applicationSupportDirectory() {
  const QString location = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
  if (location.isEmpty()) return std::nullopt;
  return std::filesystem::path(location.toStdString());
}

std::optional<std::filesystem::path> applicationCacheDirectory() {
  const QString location = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
  if (location.isEmpty()) return std::nullopt;
  return std::filesystem::path(location.toStdString()) / "Tidemark";
}

std::string appIconFile(const Bundle& bundle, int side) {
  if (bundle.resourceDirectory.empty()) return {};
  const auto file = bundle.resourceDirectory / "icons" / (std::to_string(side) + ".png");
  std::error_code error;
  return std::filesystem::is_regular_file(file, error) ? file.string() : std::string();
}

Preferences storedPreferences() {
  auto settings = SettingsStore::standard();
  if (auto bytes = settings->data(storeKeys::preferences))
    if (auto document = json::parse(*bytes))
      if (auto preferences = preferencesFromJson(*document)) return *preferences;
  return Preferences();
}

}  // namespace tidemark
