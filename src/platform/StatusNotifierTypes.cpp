#include "platform/StatusNotifierTypes.h"

#include <functional>

#include <QDBusMetaType>
#include <QtEndian>

namespace tidemark::sni {

std::optional<PropertyChanges> propertyChanges(const MenuLayoutItem& before,
                                               const MenuLayoutItem& after) {
  PropertyChanges changes;
  const auto shape = [](const MenuLayoutItem& item, const char* name) {
    return item.properties.value(QLatin1String(name));
  };
  const std::function<bool(const MenuLayoutItem&, const MenuLayoutItem&)> compare =
      [&](const MenuLayoutItem& a, const MenuLayoutItem& b) {
        if (a.id != b.id || a.children.size() != b.children.size() ||
            shape(a, "type") != shape(b, "type") ||
            shape(a, "children-display") != shape(b, "children-display"))
          return false;
        if (a.properties != b.properties) {
          changes.updated.push_back({b.id, b.properties});
          QStringList gone;
          for (auto it = a.properties.cbegin(); it != a.properties.cend(); ++it)
            if (!b.properties.contains(it.key())) gone << it.key();
          if (!gone.isEmpty()) changes.removed.push_back({b.id, gone});
        }
        for (size_t i = 0; i < a.children.size(); ++i)
          if (!compare(a.children[i], b.children[i])) return false;
        return true;
      };
  if (!compare(before, after)) return std::nullopt;
  return changes;
}

IconPixmap iconPixmap(const QImage& image) {
  const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
  IconPixmap pixmap{argb.width(), argb.height(), QByteArray()};
  pixmap.bytes.resize(qsizetype(argb.width()) * argb.height() * 4);
  auto* out = reinterpret_cast<uchar*>(pixmap.bytes.data());
  for (int y = 0; y < argb.height(); ++y) {
    const auto* row = reinterpret_cast<const quint32*>(argb.constScanLine(y));
    for (int x = 0; x < argb.width(); ++x, out += 4) qToBigEndian(row[x], out);
  }
  return pixmap;
}

QDBusArgument& operator<<(QDBusArgument& a, const IconPixmap& v) {
  a.beginStructure();
  a << v.width << v.height << v.bytes;
  a.endStructure();
  return a;
}
const QDBusArgument& operator>>(const QDBusArgument& a, IconPixmap& v) {
  a.beginStructure();
  a >> v.width >> v.height >> v.bytes;
  a.endStructure();
  return a;
}

QDBusArgument& operator<<(QDBusArgument& a, const ToolTip& v) {
  a.beginStructure();
  a << v.iconName << v.pixmaps << v.title << v.text;
  a.endStructure();
  return a;
}
const QDBusArgument& operator>>(const QDBusArgument& a, ToolTip& v) {
  a.beginStructure();
  a >> v.iconName >> v.pixmaps >> v.title >> v.text;
  a.endStructure();
  return a;
}

QDBusArgument& operator<<(QDBusArgument& a, const MenuLayoutItem& v) {
  a.beginStructure();
  a << v.id << v.properties;
  a.beginArray(qMetaTypeId<QDBusVariant>());
  for (const MenuLayoutItem& child : v.children) a << QDBusVariant(QVariant::fromValue(child));
  a.endArray();
  a.endStructure();
  return a;
}
const QDBusArgument& operator>>(const QDBusArgument& a, MenuLayoutItem& v) {
  a.beginStructure();
  a >> v.id >> v.properties;
  a.beginArray();
  v.children.clear();
  while (!a.atEnd()) {
    QDBusVariant wrapped;
    a >> wrapped;
    MenuLayoutItem child;
    wrapped.variant().value<QDBusArgument>() >> child;
    v.children.push_back(std::move(child));
  }
  a.endArray();
  a.endStructure();
  return a;
}

QDBusArgument& operator<<(QDBusArgument& a, const MenuItemProperties& v) {
  a.beginStructure();
  a << v.id << v.properties;
  a.endStructure();
  return a;
}
const QDBusArgument& operator>>(const QDBusArgument& a, MenuItemProperties& v) {
  a.beginStructure();
  a >> v.id >> v.properties;
  a.endStructure();
  return a;
}

QDBusArgument& operator<<(QDBusArgument& a, const MenuEvent& v) {
  a.beginStructure();
  a << v.id << v.eventId << v.data << v.timestamp;
  a.endStructure();
  return a;
}
const QDBusArgument& operator>>(const QDBusArgument& a, MenuEvent& v) {
  a.beginStructure();
  a >> v.id >> v.eventId >> v.data >> v.timestamp;
  a.endStructure();
  return a;
}

QDBusArgument& operator<<(QDBusArgument& a, const MenuItemKeys& v) {
  a.beginStructure();
  a << v.id << v.names;
  a.endStructure();
  return a;
}
const QDBusArgument& operator>>(const QDBusArgument& a, MenuItemKeys& v) {
  a.beginStructure();
  a >> v.id >> v.names;
  a.endStructure();
  return a;
}

void registerTypes() {
  static const bool once = [] {
    qDBusRegisterMetaType<IconPixmap>();
    qDBusRegisterMetaType<IconPixmapList>();
    qDBusRegisterMetaType<ToolTip>();
    qDBusRegisterMetaType<MenuLayoutItem>();
    qDBusRegisterMetaType<MenuItemProperties>();
    qDBusRegisterMetaType<MenuItemPropertiesList>();
    qDBusRegisterMetaType<MenuEvent>();
    qDBusRegisterMetaType<MenuEventList>();
    qDBusRegisterMetaType<MenuItemKeys>();
    qDBusRegisterMetaType<MenuItemKeysList>();
    qDBusRegisterMetaType<QList<int>>();
    return true;
  }();
  (void)once;
}

}  // namespace tidemark::sni
