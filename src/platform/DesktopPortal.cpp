#include "platform/DesktopPortal.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

namespace tidemark {
namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString gnome = QStringLiteral("org.gnome.desktop.interface");
const QString gnomeKey = QStringLiteral("enable-animations");
const QString kde = QStringLiteral("org.kde.kdeglobals.KDE");
const QString kdeKey = QStringLiteral("AnimationDurationFactor");

// Read wraps the value in one more variant than the change signal does.
QVariant unwrapped(QVariant value) {
  while (value.canConvert<QDBusVariant>() && value.userType() == qMetaTypeId<QDBusVariant>())
    value = value.value<QDBusVariant>().variant();
  return value;
}

}  // namespace

PortalMotionSetting::PortalMotionSetting(QDBusConnection bus) : bus_(std::move(bus)) {
  if (!bus_.isConnected()) return;
  bus_.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
               SLOT(settingChanged(QString, QString, QDBusVariant)));
  read(gnome, gnomeKey);
  read(kde, kdeKey);
}

bool PortalMotionSetting::calm() const {
  return (animations_ && !*animations_) || (speed_ && *speed_ <= 0);
}

void PortalMotionSetting::watch(std::function<void(bool)> changed) {
  changed_ = std::move(changed);
}

void PortalMotionSetting::read(const QString& group, const QString& key) {
  QDBusMessage message =
      QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
  message.setArguments({group, key});
  // A portal that never answers costs nothing but this call's timeout.
  auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message, 5000), this);
  QObject::connect(
      watcher, &QDBusPendingCallWatcher::finished, this,
      [this, group, key](QDBusPendingCallWatcher* w) {
        w->deleteLater();
        const QDBusMessage reply = w->reply();
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return;
        const bool before = calm();
        if (take(group, key, unwrapped(reply.arguments().first())) && calm() != before && changed_)
          changed_(calm());
      });
}

void PortalMotionSetting::settingChanged(const QString& group, const QString& key,
                                         const QDBusVariant& value) {
  const bool before = calm();
  if (take(group, key, unwrapped(value.variant())) && calm() != before && changed_)
    changed_(calm());
}

bool PortalMotionSetting::take(const QString& group, const QString& key, const QVariant& value) {
  if (group == gnome && key == gnomeKey && value.userType() == QMetaType::Bool) {
    animations_ = value.toBool();
    return true;
  }
  if (group == kde && key == kdeKey) {
    bool ok = false;
    const double factor = value.toDouble(&ok);
    if (!ok) return false;
    speed_ = factor;
    return true;
  }
  return false;
}

std::unique_ptr<DesktopMotionSetting> makeDesktopMotionSetting() {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return nullptr;
  return std::make_unique<PortalMotionSetting>(bus);
}

}  // namespace tidemark
