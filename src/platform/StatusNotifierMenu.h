#pragma once

#include <array>

#include <QDBusVirtualObject>

#include "platform/DBusReplies.h"
#include "platform/StatusNotifierItem.h"

namespace tidemark {

// The tray item's menu as com.canonical.dbusmenu: the layout the item last built, read by the
// hosts, and their clicks turned into the actions'.
class StatusNotifierItem::MenuObject final : public QDBusVirtualObject {
 public:
  explicit MenuObject(StatusNotifierItem& owner);

  QString introspect(const QString&) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

 private:
  // The menu's methods, each with the number of arguments it takes.
  using Handler = bool (MenuObject::*)(const QDBusMessage&, const QDBusConnection&,
                                       const QVariantList&);
  struct Method {
    const char* name;
    qsizetype arguments;
    Handler handler;
  };
  static const std::array<Method, 7>& methods();

  bool getLayout(const QDBusMessage& message, const QDBusConnection& connection,
                 const QVariantList& args);
  bool getGroupProperties(const QDBusMessage& message, const QDBusConnection& connection,
                          const QVariantList& args);
  bool getProperty(const QDBusMessage& message, const QDBusConnection& connection,
                   const QVariantList& args);
  bool menuEvent(const QDBusMessage& message, const QDBusConnection& connection,
                 const QVariantList& args);
  bool eventGroup(const QDBusMessage& message, const QDBusConnection& connection,
                  const QVariantList& args);
  bool aboutToShow(const QDBusMessage& message, const QDBusConnection& connection,
                   const QVariantList& args);
  bool aboutToShowGroup(const QDBusMessage& message, const QDBusConnection& connection,
                        const QVariantList& args);
  // A click triggers the item's action on the next turn; other events need nothing.
  bool handleEvent(int id, const QString& name);
  static bool invalidId(const QDBusMessage& message, const QDBusConnection& connection);

  StatusNotifierItem& owner_;
};

}  // namespace tidemark
