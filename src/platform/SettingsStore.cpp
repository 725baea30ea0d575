#include "platform/SettingsStore.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStringList>

#include "core/FileIO.h"

namespace tidemark {
namespace {

QString key(const std::string& k) {
  return QString::fromStdString(k);
}

// QSettings says only that it could not write. Taking its steps again finds the system's
// reason: the folder, the file itself, then a new file beside it at least as large as the file
// (a full disk shows only when data is written).
std::string whyUnwritable(const std::filesystem::path& file) {
  namespace fs = std::filesystem;
  std::error_code error;
  fs::create_directories(file.parent_path(), error);
  if (error) return error.message();
  if (fs::exists(file, error)) {
    const int fd = ::open(file.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) return std::generic_category().message(errno);
    ::close(fd);
  }
  const uintmax_t size = fs::file_size(file, error);
  const fs::path probe = file.string() + ".write-check";
  error =
      writeFileAtomically(probe, std::string(std::max<uintmax_t>(error ? 0 : size, 4096), '\n'));
  std::error_code ignored;
  fs::remove(probe, ignored);
  if (error) return error.message();
  return "the file could not be written";
}

}  // namespace

std::unique_ptr<SettingsStore> SettingsStore::standard() {
  return std::unique_ptr<SettingsStore>(new SettingsStore([] {
    return std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                       QStringLiteral("Tidemark"), QStringLiteral("Tidemark"));
  }));
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
    : SettingsStore(
          [iniPath] { return std::make_unique<QSettings>(iniPath, QSettings::IniFormat); }) {}

SettingsStore::SettingsStore(Open open) : open_(std::move(open)), settings_(open_()) {
  lazyTimer_.setSingleShot(true);
  lazyTimer_.setInterval(lazyWriteMs);
  QObject::connect(&lazyTimer_, &QTimer::timeout, &syncContext_, [this] { sync(); });
}

SettingsStore::~SettingsStore() {
  // What waited is written now; nobody is left to hear how it went.
  if (lazy_.empty()) return;
  observer_ = nullptr;
  sync();
}

std::optional<std::string> SettingsStore::data(const std::string& k) const {
  if (const auto waiting = lazy_.find(k); waiting != lazy_.end()) return waiting->second;
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

void SettingsStore::setDataLazily(const std::string& k, const std::string& bytes) {
  if (data(k) == bytes) return;
  lazy_.insert_or_assign(k, bytes);
  if (!lazyTimer_.isActive()) lazyTimer_.start();
}

void SettingsStore::setData(const std::string& k, const std::string& bytes) {
  // What the file already holds needs no write (a start, a choice made again); after a failed
  // write everything is tried again.
  if (!unwritten_ && !lazy_.contains(k) && data(k) == bytes) return;
  lazy_.erase(k);
  settings_->setValue(key(k), QByteArray::fromStdString(bytes));
  scheduleSync();
}

void SettingsStore::setStringArray(const std::string& k, const std::vector<std::string>& values) {
  if (!unwritten_ && !lazy_.contains(k) && stringArray(k) == values) return;
  lazy_.erase(k);
  QStringList list;
  list.reserve(static_cast<qsizetype>(values.size()));
  for (const std::string& s : values) list.push_back(QString::fromStdString(s));
  settings_->setValue(key(k), list);
  scheduleSync();
}

void SettingsStore::remove(const std::string& k) {
  lazy_.erase(k);
  settings_->remove(key(k));
  scheduleSync();
}

void SettingsStore::scheduleSync() {
  // QSettings queues a write of its own at its first change; ours comes after it and would
  // write the file again for the lazy values it adds. Ours writes everything in one go.
  QCoreApplication::removePostedEvents(settings_.get(), QEvent::UpdateRequest);
  if (syncPending_) return;
  syncPending_ = true;
  QMetaObject::invokeMethod(
      &syncContext_,
      [this] {
        if (syncPending_) sync();
      },
      Qt::QueuedConnection);
}

bool SettingsStore::sync() {
  syncPending_ = false;
  lazyTimer_.stop();
  for (const auto& [k, bytes] : lazy_)
    settings_->setValue(key(k), QByteArray::fromStdString(bytes));
  lazy_.clear();
  settings_->sync();
  if (settings_->status() != QSettings::NoError) {
    // QSettings keeps the first error it met for good. A fresh object on the same file starts
    // clean and tries the write again at once; Qt shares one copy of a file's values among the
    // objects open on it, so what is not yet written carries over while the old one lives.
    auto fresh = open_();
    settings_.swap(fresh);
  }
  const bool kept = settings_->status() == QSettings::NoError;
  unwritten_ = !kept;
  if (observer_) {
    if (kept)
      observer_(std::nullopt);
    else
      observer_(
          StoreWriteFailure{fileName().toStdString(), whyUnwritable(fileName().toStdString())});
  }
  return kept;
}

}  // namespace tidemark
