#include "platform/SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStringList>

namespace tidemark {
namespace {

QString key(const std::string& k) {
  return QString::fromStdString(k);
}

}  // namespace

std::unique_ptr<SettingsStore> SettingsStore::standard() {
  return std::unique_ptr<SettingsStore>(new SettingsStore(
      std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                  QStringLiteral("Tidemark"), QStringLiteral("Tidemark"))));
}

QString SettingsStore::suitePath(const std::string& name) {
  return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
         QStringLiteral("/Tidemark/suites/") + QString::fromStdString(name) +
         QStringLiteral(".conf");
}

std::unique_ptr<SettingsStore> SettingsStore::suite(const std::string& name) {
  if (name.empty() || name.find('/') != std::string::npos) return nullptr;
  const QString path = suitePath(name);
  if (!QDir().mkpath(QFileInfo(path).absolutePath())) return nullptr;
  auto store = std::make_unique<SettingsStore>(path);
  if (!store->sync()) return nullptr;
  return store;
}

bool SettingsStore::removeSuite(const std::string& name) {
  const QString path = suitePath(name);
  QFile::remove(path);
  QFile::remove(path + QStringLiteral(".lock"));
  // Folders made for suites go too once empty; rmdir leaves anything else in place.
  QDir folder = QFileInfo(path).absoluteDir();
  if (QDir().rmdir(folder.path())) {
    folder.cdUp();
    QDir().rmdir(folder.path());
  }
  return !QFileInfo::exists(path);
}

SettingsStore::SettingsStore(const QString& iniPath)
    : settings_(std::make_unique<QSettings>(iniPath, QSettings::IniFormat)) {}

std::optional<std::string> SettingsStore::data(const std::string& k) const {
  const QVariant value = settings_->value(key(k));
  if (value.typeId() != QMetaType::QByteArray) return std::nullopt;
  return value.toByteArray().toStdString();
}

std::optional<std::vector<std::string>> SettingsStore::stringArray(const std::string& k) const {
  if (!settings_->contains(key(k))) return std::nullopt;
  const QVariant value = settings_->value(key(k));
  // INI files do not keep list types: an empty list reads back as an invalid value and a
  // one-element list as a plain string. Byte values are ours, so those cases are lists.
  std::vector<std::string> list;
  switch (value.typeId()) {
    case QMetaType::UnknownType:
      return list;
    case QMetaType::QString:
      list.push_back(value.toString().toStdString());
      return list;
    case QMetaType::QStringList:
      for (const QString& s : value.toStringList()) list.push_back(s.toStdString());
      return list;
    default:
      return std::nullopt;
  }
}

void SettingsStore::setData(const std::string& k, const std::string& bytes) {
  settings_->setValue(key(k), QByteArray::fromStdString(bytes));
}

void SettingsStore::setStringArray(const std::string& k, const std::vector<std::string>& values) {
  QStringList list;
  list.reserve(static_cast<qsizetype>(values.size()));
  for (const std::string& s : values) list.push_back(QString::fromStdString(s));
  settings_->setValue(key(k), list);
}

void SettingsStore::remove(const std::string& k) {
  settings_->remove(key(k));
}

bool SettingsStore::sync() {
  settings_->sync();
  return settings_->status() == QSettings::NoError;
}

}  // namespace tidemark
