#include "platform/StatusNotifierItem.h"

#include <signal.h>
#include <unistd.h>
#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <vector>

#include <atomic>

#include <png.h>

#include <QAction>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusVirtualObject>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QMutex>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>

#include "platform/DBusReplies.h"
#include "platform/StatusNotifierMenu.h"

namespace tidemark {
namespace {

const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");

}  // namespace

using namespace dbus;

// Receives the watcher's "a host registered" signal, which QtDBus delivers only to slots.
class StatusNotifierItem::Listener : public QObject {
  Q_OBJECT
 public:
  explicit Listener(StatusNotifierItem& owner) : owner_(owner) {}
 public Q_SLOTS:
  void hostRegistered() {
    if (!owner_.available_) owner_.registerWithWatcher();
  }

 private:
  StatusNotifierItem& owner_;
};

// Lives on the bus's own thread once the item starts: a host reads the properties back after
// every change, several a signal, and answering there spares the main thread a wake-up for each.
// The properties are published to it whole, under its lock; clicks and scrolls go to the main
// thread.
class StatusNotifierItem::ItemObject final : public QDBusVirtualObject {
 public:
  explicit ItemObject(StatusNotifierItem& owner) : owner_(owner) {}

  void publish(QVariantMap properties) {
    const QMutexLocker lock(&lock_);
    properties_.swap(properties);
  }

  QString introspect(const QString&) const override {
    return QStringLiteral(R"xml(<interface name="org.kde.StatusNotifierItem">
<property name="Category" type="s" access="read"/><property name="Id" type="s" access="read"/>
<property name="Title" type="s" access="read"/><property name="Status" type="s" access="read"/>
<property name="WindowId" type="i" access="read"/>
<property name="IconName" type="s" access="read"/>
<property name="IconThemePath" type="s" access="read"/>
<property name="IconPixmap" type="a(iiay)" access="read"/>
<property name="OverlayIconName" type="s" access="read"/>
<property name="OverlayIconPixmap" type="a(iiay)" access="read"/>
<property name="AttentionIconName" type="s" access="read"/>
<property name="AttentionIconPixmap" type="a(iiay)" access="read"/>
<property name="AttentionMovieName" type="s" access="read"/>
<property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
<property name="ItemIsMenu" type="b" access="read"/>
<property name="Menu" type="o" access="read"/>
<property name="XAyatanaLabel" type="s" access="read"/>
<property name="XAyatanaLabelGuide" type="s" access="read"/>
<property name="XAyatanaOrderingIndex" type="u" access="read"/>
<method name="Activate"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
<method name="SecondaryActivate"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
<method name="ContextMenu"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
<method name="Scroll"><arg name="delta" type="i" direction="in"/><arg name="orientation" type="s" direction="in"/></method>
<signal name="NewTitle"/><signal name="NewIcon"/><signal name="NewAttentionIcon"/>
<signal name="NewOverlayIcon"/><signal name="NewToolTip"/>
<signal name="NewStatus"><arg name="status" type="s"/></signal>
<signal name="XAyatanaNewLabel"><arg name="label" type="s"/><arg name="guide" type="s"/></signal>
</interface>
)xml");
  }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    const QVariantList args = message.arguments();
    const QString member = message.member();
    if (message.interface() == introspectableInterface)
      return false;  // Qt answers from introspect()
    if (message.interface() == propertiesInterface) {
      QVariantMap now;
      {
        const QMutexLocker lock(&lock_);
        now = properties_;
      }
      return answerProperties(message, connection, now);
    }
    if (member == QLatin1String("Activate") || member == QLatin1String("SecondaryActivate")) {
      later([](const Handlers& h) {
        if (h.activate) h.activate();
      });
    } else if (member == QLatin1String("ContextMenu") && args.size() == 2) {
      const QPoint at(args[0].toInt(), args[1].toInt());
      later([at](const Handlers& h) {
        if (h.contextMenu) h.contextMenu(at);
      });
    } else if (member == QLatin1String("Scroll") && args.size() == 2) {
      if (args[0].toInt() != 0)
        later([](const Handlers& h) {
          if (h.scroll) h.scroll();
        });
    } else if (member != QLatin1String("ProvideXdgActivationToken") &&
               member != QLatin1String("XAyatanaSecondaryActivate")) {
      return refuse(message, connection, "org.freedesktop.DBus.Error.UnknownMethod");
    }
    return send(message, connection, {});
  }

  // The handlers run on the main thread's next turn, after the caller has its reply.
  template <class F>
  void later(F work) {
    StatusNotifierItem* owner = &owner_;
    QMetaObject::invokeMethod(
        owner->listener_.get(), [owner, work] { work(owner->handlers_); }, Qt::QueuedConnection);
  }

 private:
  StatusNotifierItem& owner_;
  QMutex lock_;
  QVariantMap properties_;
};

StatusNotifierItem::StatusNotifierItem(QDBusConnection bus, bool labels)
    : bus_(std::move(bus)),
      labels_(labels),
      serviceName_(bus_.baseService()),
      item_(std::make_unique<ItemObject>(*this)),
      menu_(std::make_unique<MenuObject>(*this)),
      listener_(std::make_unique<Listener>(*this)) {
  sni::registerTypes();
}

StatusNotifierItem::~StatusNotifierItem() {
  removeIconFiles(false);
  bus_.disconnect(watcherService, watcherPath, watcherService,
                  QStringLiteral("StatusNotifierHostRegistered"), listener_.get(),
                  SLOT(hostRegistered()));
  bus_.unregisterObject(QLatin1String(itemPath));
  bus_.unregisterObject(QLatin1String(menuPath));
  // Reads the bus thread has already taken for the item are answered before it comes back here
  // to be deleted.
  QThread* here = QThread::currentThread();
  if (item_->thread() != here && item_->thread()->isRunning())
    QMetaObject::invokeMethod(
        item_.get(), [this, here] { item_->moveToThread(here); }, Qt::BlockingQueuedConnection);
}

void StatusNotifierItem::start(Handlers handlers) {
  handlers_ = std::move(handlers);
  rebuildMenu();
  publish();
  // The connection's own objects live on the bus's thread.
  if (const QObject* busSide = bus_.interface()) item_->moveToThread(busSide->thread());
  bus_.registerVirtualObject(QLatin1String(itemPath), item_.get());
  bus_.registerVirtualObject(QLatin1String(menuPath), menu_.get());
  watcher_.setConnection(bus_);
  watcher_.addWatchedService(watcherService);
  // Owner changes include a watcher replaced without a gap, which the plain registration and
  // unregistration signals miss.
  watcher_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
  QObject::connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, &watcher_,
                   [this](const QString&, const QString&, const QString& owner) {
                     retriesLeft_ = 5;
                     if (owner.isEmpty())
                       settle(false);
                     else
                       registerWithWatcher();
                   });
  bus_.connect(watcherService, watcherPath, watcherService,
               QStringLiteral("StatusNotifierHostRegistered"), listener_.get(),
               SLOT(hostRegistered()));
  registerWithWatcher();
}

void StatusNotifierItem::registerWithWatcher() {
  const uint64_t attempt = ++attempts_;
  if (!bus_.interface() || !bus_.interface()->isServiceRegistered(watcherService)) {
    settle(false);
    return;
  }
  // Asked without blocking: a watcher may answer only once its desktop has finished starting.
  // Until it does the item is pending, and the tray shows no second icon in its place.
  pending_ = true;
  QDBusMessage call = QDBusMessage::createMethodCall(watcherService, watcherPath, watcherService,
                                                     QStringLiteral("RegisterStatusNotifierItem"));
  call << serviceName_;
  const auto answered = [this, attempt](const std::function<void(const QDBusMessage&)>& next) {
    return [this, attempt, next](QDBusPendingCallWatcher* w) {
      w->deleteLater();
      if (attempt == attempts_) next(w->reply());
    };
  };
  auto* registered = new QDBusPendingCallWatcher(bus_.asyncCall(call, 60000), &watcher_);
  QObject::connect(registered, &QDBusPendingCallWatcher::finished, &watcher_,
                   answered([this, answered](const QDBusMessage& reply) {
                     if (reply.type() != QDBusMessage::ReplyMessage) {
                       // A watcher that has just taken its name may not serve its object yet.
                       if (retriesLeft_-- > 0) {
                         QTimer::singleShot(400, &watcher_, [this] { registerWithWatcher(); });
                         return;
                       }
                       settle(false);
                       return;
                     }
                     QDBusMessage host = QDBusMessage::createMethodCall(
                         watcherService, watcherPath, propertiesInterface, QStringLiteral("Get"));
                     host << watcherService << QStringLiteral("IsStatusNotifierHostRegistered");
                     auto* asked = new QDBusPendingCallWatcher(bus_.asyncCall(host), &watcher_);
                     QObject::connect(
                         asked, &QDBusPendingCallWatcher::finished, &watcher_,
                         answered([this](const QDBusMessage& answer) {
                           settle(answer.type() == QDBusMessage::ReplyMessage &&
                                  !answer.arguments().isEmpty() &&
                                  answer.arguments()[0].value<QDBusVariant>().variant().toBool());
                         }));
                   }));
}

void StatusNotifierItem::settle(bool available) {
  const bool changed = pending_ || available != available_;
  pending_ = false;
  available_ = available;
  if (changed && handlers_.availabilityChanged) handlers_.availabilityChanged();
}

QVariantMap StatusNotifierItem::itemProperties() const {
  const QString none;
  const QVariant noPixmaps = QVariant::fromValue(sni::IconPixmapList());
  QVariantMap properties{
      {QStringLiteral("Category"), QStringLiteral("ApplicationStatus")},
      {QStringLiteral("Id"), QStringLiteral("tidemark")},
      {QStringLiteral("Title"), QStringLiteral("潮汐栏")},
      {QStringLiteral("Status"), QStringLiteral("Active")},
      {QStringLiteral("WindowId"), 0},
      {QStringLiteral("IconName"), iconName_},
      {QStringLiteral("IconThemePath"), iconName_.isEmpty() ? none : iconFolder_},
      {QStringLiteral("IconPixmap"), QVariant::fromValue(icon_)},
      {QStringLiteral("OverlayIconName"), none},
      {QStringLiteral("OverlayIconPixmap"), noPixmaps},
      {QStringLiteral("AttentionIconName"), none},
      {QStringLiteral("AttentionIconPixmap"), noPixmaps},
      {QStringLiteral("AttentionMovieName"), none},
      {QStringLiteral("ToolTip"),
       QVariant::fromValue(sni::ToolTip{none, icon_, QStringLiteral("潮汐栏"), toolTip_})},
      {QStringLiteral("ItemIsMenu"), false},
      {QStringLiteral("Menu"), QVariant::fromValue(QDBusObjectPath(QLatin1String(menuPath)))},
  };
  if (labels_) {
    properties.insert(QStringLiteral("XAyatanaLabel"), label_);
    properties.insert(QStringLiteral("XAyatanaLabelGuide"), guide_);
    properties.insert(QStringLiteral("XAyatanaOrderingIndex"), QVariant::fromValue(uint(0)));
  }
  return properties;
}

void StatusNotifierItem::publish() {
  item_->publish(itemProperties());
}

void StatusNotifierItem::emitSignal(const char* path, const char* interface, const char* name,
                                    const QVariantList& arguments) {
  QDBusMessage signal = QDBusMessage::createSignal(QLatin1String(path), QLatin1String(interface),
                                                   QLatin1String(name));
  signal.setArguments(arguments);
  bus_.send(signal);
}

void StatusNotifierItem::setIcon(const QImage& small, const QImage& large) {
  const sni::IconPixmapList icon{sni::iconPixmap(small), sni::iconPixmap(large)};
  if (icon == icon_) return;
  icon_ = icon;
  writeIconFile(large);
  publish();
  emitSignal(itemPath, "org.kde.StatusNotifierItem", "NewIcon");
}

QString StatusNotifierItem::iconFolder() {
  return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) +
         QStringLiteral("/tidemark-tray");
}

namespace {

// Writes the rows with libpng, stored rather than compressed: the file is a few kilobytes on a
// memory-backed folder, read once by the tray host, and setting deflate up afresh for every file
// (its state is a quarter of a megabyte) took more of a refresh than the tray's other work.
bool writeStoredPng(FILE* file, const QImage& rgba) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (!info) {
    png_destroy_write_struct(&png, nullptr);
    return false;
  }
  std::vector<png_bytep> rows(static_cast<size_t>(rgba.height()));
  for (int y = 0; y < rgba.height(); ++y)
    rows[static_cast<size_t>(y)] = const_cast<png_bytep>(rgba.constScanLine(y));
  if (setjmp(png_jmpbuf(png)) != 0) {  // libpng reports its errors by a long jump here
    png_destroy_write_struct(&png, &info);
    return false;
  }
  png_init_io(png, file);
  png_set_IHDR(png, info, static_cast<png_uint_32>(rgba.width()),
               static_cast<png_uint_32>(rgba.height()), 8, PNG_COLOR_TYPE_RGB_ALPHA,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
  png_set_compression_level(png, 0);
  png_set_compression_mem_level(png, 1);
  png_write_info(png, info);
  png_write_image(png, rows.data());
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return true;
}

}  // namespace

bool StatusNotifierItem::writePng(const QImage& image, const QString& path) {
  const QImage rgba = image.convertToFormat(QImage::Format_RGBA8888);
  FILE* file = std::fopen(QFile::encodeName(path).constData(), "wb");
  if (!file) return false;
  const bool written = writeStoredPng(file, rgba);
  if (std::fclose(file) != 0 || !written) {
    QFile::remove(path);
    return false;
  }
  return true;
}

void StatusNotifierItem::writeIconFile(const QImage& image) {
  static std::atomic<unsigned> written{0};
  const QDir folder(iconFolder_);
  const auto file = [&folder](const QString& name) {
    return folder.filePath(name + QStringLiteral(".png"));
  };
  const size_t key = qHashBits(image.constBits(), static_cast<size_t>(image.sizeInBytes()),
                               static_cast<size_t>(image.width()));
  const auto known = std::find_if(iconFiles_.begin(), iconFiles_.end(),
                                  [key](const auto& each) { return each.first == key; });
  if (known != iconFiles_.end()) {
    const auto entry = *known;
    iconFiles_.erase(known);
    if (QFile::exists(file(entry.second))) {
      iconFiles_.push_back(entry);
      iconName_ = entry.second;
      return;
    }
  }
  if (iconName_.isEmpty()) removeIconFiles(true);  // left by an earlier run that ended abruptly
  if (!folderMade_ && !QDir().mkpath(folder.path())) return;
  // Hosts look an icon up by its name once: a new image needs a new name.
  const QString name = QStringLiteral("tidemark-tray-%1-%2").arg(::getpid()).arg(++written);
  folderMade_ = writePng(image, file(name));  // a folder removed meanwhile is made again next time
  if (!folderMade_) return;
  iconFiles_.emplace_back(key, name);
  // The oldest goes; the ones shown just before stay, for a host still reading them.
  if (iconFiles_.size() > iconFilesKept) {
    QFile::remove(file(iconFiles_.front().second));
    iconFiles_.erase(iconFiles_.begin());
  }
  iconName_ = name;
}

void StatusNotifierItem::removeIconFiles(bool othersToo) {
  QDir folder(iconFolder_);
  const QString own = QStringLiteral("tidemark-tray-%1-").arg(::getpid());
  for (const QString& file :
       folder.entryList({QStringLiteral("tidemark-tray-*.png")}, QDir::Files)) {
    // Another run's files go only once that run has ended.
    const pid_t owner = file.section(u'-', 2, 2).toInt();
    if (file.startsWith(own) ||
        (othersToo && owner > 0 && owner != ::getpid() && ::kill(owner, 0) != 0))
      folder.remove(file);
  }
  if (!othersToo) iconFiles_.clear();
  folderMade_ = !folder.rmdir(folder.path()) && folder.exists();  // removed only when empty
}

void StatusNotifierItem::setToolTip(const std::string& text) {
  const QString tip = QString::fromStdString(text);
  if (tip == toolTip_) return;
  toolTip_ = tip;
  publish();
  emitSignal(itemPath, "org.kde.StatusNotifierItem", "NewToolTip");
}

void StatusNotifierItem::setLabel(const std::string& text) {
  const QString label = QString::fromStdString(text).trimmed();
  if (!labels_ || label == label_) return;
  label_ = label;
  guide_ = labelGuide(label);
  publish();
  emitSignal(itemPath, "org.kde.StatusNotifierItem", "XAyatanaNewLabel", {label_, guide_});
}

QString StatusNotifierItem::labelGuide(const QString& label) {
  QString guide;
  for (qsizetype i = 0; i < label.size(); ++i) {
    const QChar c = label[i];
    // "+1.23%" may become "+12.34%": give a percentage two digits before its point.
    if ((c == u'+' || c == u'-') && i + 2 < label.size() && label[i + 1].isDigit() &&
        label[i + 2] == u'.')
      guide += c + QStringLiteral("8");
    else
      guide += c.isDigit() ? QChar(u'8') : c;
  }
  return guide;
}

std::unique_ptr<StatusNotifier> makeStatusNotifier(bool labels) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return nullptr;
  return std::make_unique<StatusNotifierItem>(bus, labels);
}

}  // namespace tidemark

#include "StatusNotifierItem.moc"
