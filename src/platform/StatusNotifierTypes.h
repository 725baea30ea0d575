#pragma once

#include <optional>
#include <vector>

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QImage>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QVariantMap>

// The D-Bus structures of a StatusNotifierItem and of the com.canonical.dbusmenu menu it
// exports, with their marshalling; the tests' host reads them with the same code.
namespace tidemark::sni {

// One icon size: width, height and ARGB32 pixels in network byte order, signature (iiay).
struct IconPixmap {
  int width = 0;
  int height = 0;
  QByteArray bytes;
  friend bool operator==(const IconPixmap&, const IconPixmap&) = default;
};
using IconPixmapList = QList<IconPixmap>;

// (sa(iiay)ss): icon name, icon, title, text.
struct ToolTip {
  QString iconName;
  IconPixmapList pixmaps;
  QString title;
  QString text;
};

// One menu item with its children, (ia{sv}av).
struct MenuLayoutItem {
  int id = 0;
  QVariantMap properties;
  std::vector<MenuLayoutItem> children;
  friend bool operator==(const MenuLayoutItem&, const MenuLayoutItem&) = default;
};

// (ia{sv}): an item's properties.
struct MenuItemProperties {
  int id = 0;
  QVariantMap properties;
};
using MenuItemPropertiesList = QList<MenuItemProperties>;

// (isvu): one event of an EventGroup call.
struct MenuEvent {
  int id = 0;
  QString eventId;
  QDBusVariant data;
  uint timestamp = 0;
};
using MenuEventList = QList<MenuEvent>;

// (ias): the properties removed from an item.
struct MenuItemKeys {
  int id = 0;
  QStringList names;
};
using MenuItemKeysList = QList<MenuItemKeys>;

IconPixmap iconPixmap(const QImage& image);

// What changed between two layouts of the same structure (the same ids in the same places, each
// of the same type): each changed item's properties now, and the names it no longer has. None
// when the structure changed.
struct PropertyChanges {
  MenuItemPropertiesList updated;
  MenuItemKeysList removed;
};
std::optional<PropertyChanges> propertyChanges(const MenuLayoutItem& before,
                                               const MenuLayoutItem& after);

QDBusArgument& operator<<(QDBusArgument& a, const IconPixmap& v);
const QDBusArgument& operator>>(const QDBusArgument& a, IconPixmap& v);
QDBusArgument& operator<<(QDBusArgument& a, const ToolTip& v);
const QDBusArgument& operator>>(const QDBusArgument& a, ToolTip& v);
QDBusArgument& operator<<(QDBusArgument& a, const MenuLayoutItem& v);
const QDBusArgument& operator>>(const QDBusArgument& a, MenuLayoutItem& v);
QDBusArgument& operator<<(QDBusArgument& a, const MenuItemProperties& v);
const QDBusArgument& operator>>(const QDBusArgument& a, MenuItemProperties& v);
QDBusArgument& operator<<(QDBusArgument& a, const MenuEvent& v);
const QDBusArgument& operator>>(const QDBusArgument& a, MenuEvent& v);
QDBusArgument& operator<<(QDBusArgument& a, const MenuItemKeys& v);
const QDBusArgument& operator>>(const QDBusArgument& a, MenuItemKeys& v);

// Registers every type above with QtDBus; safe to call again.
void registerTypes();

}  // namespace tidemark::sni

Q_DECLARE_METATYPE(tidemark::sni::IconPixmap)
Q_DECLARE_METATYPE(tidemark::sni::ToolTip)
Q_DECLARE_METATYPE(tidemark::sni::MenuLayoutItem)
Q_DECLARE_METATYPE(tidemark::sni::MenuItemProperties)
Q_DECLARE_METATYPE(tidemark::sni::MenuEvent)
Q_DECLARE_METATYPE(tidemark::sni::MenuItemKeys)
