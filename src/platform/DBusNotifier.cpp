#include "platform/DBusNotifier.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStringList>
#include <QVariantMap>

namespace tidemark {
namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");
const QString interface = QStringLiteral("org.freedesktop.Notifications");
// The app's desktop entry and the name of its icon in the icon theme.
const QString desktopEntry = QStringLiteral("org.tidemark.Tidemark");

}  // namespace

DBusNotifier::DBusNotifier(QDBusConnection bus, QString applicationName, QString imageFile)
    : bus_(std::move(bus)),
      applicationName_(std::move(applicationName)),
      imageFile_(std::move(imageFile)) {
  if (!bus_.isConnected()) return;
  watcher_.setConnection(bus_);
  watcher_.addWatchedService(service);
  watcher_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
  // A new service numbers its notifications afresh: ours of the old one mean nothing to it.
  QObject::connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, &context_,
                   [this](const QString&, const QString&, const QString& owner) {
                     service_ = owner;
                     shown_.clear();
                   });
}

void DBusNotifier::call(const QString& method, const QList<QVariant>& arguments,
                        std::function<void(const QDBusMessage&)> done) {
  QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
  message.setArguments(arguments);
  if (!bus_.isConnected()) {
    // No session bus at all: answer like a missing service, on a later turn.
    QMetaObject::invokeMethod(
        &context_,
        [done = std::move(done), message] {
          done(message.createErrorReply(QDBusError::Disconnected, QStringLiteral("no bus")));
        },
        Qt::QueuedConnection);
    return;
  }
  auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message), &context_);
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &context_,
                   [done = std::move(done)](QDBusPendingCallWatcher* w) {
                     w->deleteLater();
                     done(w->reply());
                   });
}

void DBusNotifier::queryAuthorization(std::function<void(bool)> completion) {
  call(QStringLiteral("GetServerInformation"), {},
       [completion = std::move(completion)](const QDBusMessage& reply) {
         completion(reply.type() == QDBusMessage::ReplyMessage);
       });
}

void DBusNotifier::requestAuthorization(std::function<void(bool)> completion) {
  queryAuthorization(std::move(completion));
}

void DBusNotifier::add(const NotificationRequest& request, std::function<void()> completion) {
  const auto previous = shown_.find(request.identifier);
  // A restarted daemon's ids are forgotten as it appears (above).
  const uint32_t replaces = previous == shown_.end() ? 0 : previous->second.id;
  QVariantMap hints;
  hints.insert(QStringLiteral("urgency"), QVariant::fromValue(static_cast<uchar>(1)));
  hints.insert(QStringLiteral("category"), QStringLiteral("x-tidemark.price-alert"));
  // The daemon shows the app's icon from its desktop entry, or by the icon's name.
  hints.insert(QStringLiteral("desktop-entry"), desktopEntry);
  if (!imageFile_.isEmpty()) hints.insert(QStringLiteral("image-path"), imageFile_);
  const QList<QVariant> arguments{applicationName_,
                                  QVariant::fromValue(replaces),
                                  desktopEntry,
                                  QString::fromStdString(request.title),
                                  QString::fromStdString(request.body),
                                  QStringList(),
                                  hints,
                                  -1};
  call(QStringLiteral("Notify"), arguments,
       [this, identifier = request.identifier,
        completion = std::move(completion)](const QDBusMessage& reply) {
         if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()) {
           // The first answer tells which service runs, when the watcher has not said yet.
           if (service_.isEmpty()) service_ = reply.service();
           if (reply.service() == service_)
             shown_[identifier] = {reply.arguments().constFirst().toUInt(), service_};
         }
         completion();
       });
}

void DBusNotifier::remove(const std::string& identifier) {
  const auto shown = shown_.find(identifier);
  if (shown == shown_.end()) return;
  if (shown->second.service == service_)
    call(QStringLiteral("CloseNotification"), {QVariant::fromValue(shown->second.id)},
         [](const QDBusMessage&) {});
  shown_.erase(shown);
}

}  // namespace tidemark
