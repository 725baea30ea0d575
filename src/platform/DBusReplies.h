#pragma once

// Answers of the objects this app exports on the session bus.

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QString>
#include <QVariant>

namespace tidemark::dbus {

inline const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
inline const QString introspectableInterface =
    QStringLiteral("org.freedesktop.DBus.Introspectable");

inline QVariant variantArgument(const QVariant& value) {
  return QVariant::fromValue(QDBusVariant(value));
}

inline bool send(const QDBusMessage& message, const QDBusConnection& connection,
                 const QVariantList& values) {
  if (message.isReplyRequired()) connection.send(message.createReply(values));
  return true;
}

inline bool refuse(const QDBusMessage& message, const QDBusConnection& connection,
                   const char* error) {
  connection.send(message.createErrorReply(QLatin1String(error), message.member()));
  return true;
}

// org.freedesktop.DBus.Properties for read-only values.
inline bool answerProperties(const QDBusMessage& message, const QDBusConnection& connection,
                             const QVariantMap& all) {
  const QVariantList args = message.arguments();
  if (message.member() == QLatin1String("GetAll")) return send(message, connection, {all});
  if (message.member() == QLatin1String("Get") && args.size() == 2 &&
      all.contains(args[1].toString()))
    return send(message, connection, {variantArgument(all.value(args[1].toString()))});
  return refuse(message, connection, "org.freedesktop.DBus.Error.InvalidArgs");
}

}  // namespace tidemark::dbus
