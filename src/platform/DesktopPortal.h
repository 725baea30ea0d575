#pragma once

#include <functional>
#include <optional>

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

#include "seams/DesktopSeams.h"

namespace tidemark {

// The desktop's reduce-motion switch as the freedesktop settings portal reports it: GNOME's
// "enable-animations" and KDE's animation speed (a factor of 0 switches animations off). Read
// once without waiting and followed through the portal's change signal; without a portal, or
// before it answers, the desktop is not calm.
class PortalMotionSetting final : public QObject, public DesktopMotionSetting {
  Q_OBJECT
 public:
  explicit PortalMotionSetting(QDBusConnection bus);

  bool calm() const override;
  void watch(std::function<void(bool)> changed) override;

 private Q_SLOTS:
  void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void read(const QString& group, const QString& key);
  // Whether the value is one of the two settings, and took effect.
  bool take(const QString& group, const QString& key, const QVariant& value);

  QDBusConnection bus_;
  std::optional<bool> animations_;  // GNOME
  std::optional<double> speed_;     // KDE
  std::function<void(bool)> changed_;
};

}  // namespace tidemark
