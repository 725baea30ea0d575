#include "platform/StatusNotifierMenu.h"

#include <QAction>
#include <QMenu>
#include <QTimer>

namespace tidemark {
namespace {

// Mnemonics: Qt marks them with "&", dbusmenu with "_".
QString menuLabel(QString text) {
  text.replace(u'_', QStringLiteral("__"));
  QString label;
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (text[i] == u'&' && i + 1 < text.size()) {
      ++i;
      label += text[i] == u'&' ? QStringLiteral("&") : QStringLiteral("_") + text[i];
    } else {
      label += text[i];
    }
  }
  return label;
}

const sni::MenuLayoutItem* findItem(const sni::MenuLayoutItem& root, int id) {
  if (root.id == id) return &root;
  for (const auto& child : root.children)
    if (const auto* found = findItem(child, id)) return found;
  return nullptr;
}

sni::MenuLayoutItem limited(const sni::MenuLayoutItem& item, int depth, const QStringList& names) {
  sni::MenuLayoutItem copy{item.id, {}, {}};
  for (auto it = item.properties.begin(); it != item.properties.end(); ++it)
    if (names.isEmpty() || names.contains(it.key())) copy.properties.insert(it.key(), it.value());
  if (depth != 0)
    for (const auto& child : item.children)
      copy.children.push_back(limited(child, depth - 1, names));
  return copy;
}

// What the menu tells of an action: a separator, or its label, and whether it is enabled,
// checkable and checked; a hidden one says so.
void addItemProperties(const QAction& action, QVariantMap& properties) {
  if (action.isSeparator()) {
    properties.insert(QStringLiteral("type"), QStringLiteral("separator"));
  } else {
    properties.insert(QStringLiteral("label"), menuLabel(action.text()));
    if (!action.isEnabled()) properties.insert(QStringLiteral("enabled"), false);
    if (action.isCheckable()) {
      properties.insert(QStringLiteral("toggle-type"), QStringLiteral("checkmark"));
      properties.insert(QStringLiteral("toggle-state"), action.isChecked() ? 1 : 0);
    }
  }
  if (!action.isVisible()) properties.insert(QStringLiteral("visible"), false);
}

}  // namespace

using namespace dbus;

StatusNotifierItem::MenuObject::MenuObject(StatusNotifierItem& owner) : owner_(owner) {}

QString StatusNotifierItem::MenuObject::introspect(const QString&) const {
  return QStringLiteral(R"xml(<interface name="com.canonical.dbusmenu">
<property name="Version" type="u" access="read"/><property name="TextDirection" type="s" access="read"/>
<property name="Status" type="s" access="read"/><property name="IconThemePath" type="as" access="read"/>
<method name="GetLayout"><arg type="i" name="parentId" direction="in"/><arg type="i" name="recursionDepth" direction="in"/><arg type="as" name="propertyNames" direction="in"/><arg type="u" name="revision" direction="out"/><arg type="(ia{sv}av)" name="layout" direction="out"/></method>
<method name="GetGroupProperties"><arg type="ai" name="ids" direction="in"/><arg type="as" name="propertyNames" direction="in"/><arg type="a(ia{sv})" name="properties" direction="out"/></method>
<method name="GetProperty"><arg type="i" name="id" direction="in"/><arg type="s" name="name" direction="in"/><arg type="v" name="value" direction="out"/></method>
<method name="Event"><arg type="i" name="id" direction="in"/><arg type="s" name="eventId" direction="in"/><arg type="v" name="data" direction="in"/><arg type="u" name="timestamp" direction="in"/></method>
<method name="EventGroup"><arg type="a(isvu)" name="events" direction="in"/><arg type="ai" name="idErrors" direction="out"/></method>
<method name="AboutToShow"><arg type="i" name="id" direction="in"/><arg type="b" name="needUpdate" direction="out"/></method>
<method name="AboutToShowGroup"><arg type="ai" name="ids" direction="in"/><arg type="ai" name="updatesNeeded" direction="out"/><arg type="ai" name="idErrors" direction="out"/></method>
<signal name="ItemsPropertiesUpdated"><arg type="a(ia{sv})" name="updatedProps"/><arg type="a(ias)" name="removedProps"/></signal>
<signal name="LayoutUpdated"><arg type="u" name="revision"/><arg type="i" name="parent"/></signal>
<signal name="ItemActivationRequested"><arg type="i" name="id"/><arg type="u" name="timestamp"/></signal>
</interface>
)xml");
}

bool StatusNotifierItem::MenuObject::handleMessage(const QDBusMessage& message,
                                                   const QDBusConnection& connection) {
  const QVariantList args = message.arguments();
  const QString member = message.member();
  if (message.interface() == introspectableInterface) return false;
  if (message.interface() == propertiesInterface)
    return answerProperties(message, connection,
                            {{QStringLiteral("Version"), QVariant::fromValue(uint(3))},
                             {QStringLiteral("TextDirection"), QStringLiteral("ltr")},
                             {QStringLiteral("Status"), QStringLiteral("normal")},
                             {QStringLiteral("IconThemePath"), QStringList()}});
  for (const Method& method : methods())
    if (member == QLatin1String(method.name) && args.size() == method.arguments)
      return (this->*method.handler)(message, connection, args);
  return refuse(message, connection, "org.freedesktop.DBus.Error.UnknownMethod");
}

const std::array<StatusNotifierItem::MenuObject::Method, 7>&
StatusNotifierItem::MenuObject::methods() {
  static const std::array<Method, 7> table{{
      {"GetLayout", 3, &MenuObject::getLayout},
      {"GetGroupProperties", 2, &MenuObject::getGroupProperties},
      {"GetProperty", 2, &MenuObject::getProperty},
      {"Event", 4, &MenuObject::menuEvent},
      {"EventGroup", 1, &MenuObject::eventGroup},
      {"AboutToShow", 1, &MenuObject::aboutToShow},
      {"AboutToShowGroup", 1, &MenuObject::aboutToShowGroup},
  }};
  return table;
}

bool StatusNotifierItem::MenuObject::getLayout(const QDBusMessage& message,
                                               const QDBusConnection& connection,
                                               const QVariantList& args) {
  const auto* item = findItem(owner_.layout_, args[0].toInt());
  if (!item) return invalidId(message, connection);
  const QStringList names = qdbus_cast<QStringList>(args[2]);
  return send(message, connection,
              {QVariant::fromValue(owner_.revision_),
               QVariant::fromValue(limited(*item, args[1].toInt(), names))});
}

bool StatusNotifierItem::MenuObject::getGroupProperties(const QDBusMessage& message,
                                                        const QDBusConnection& connection,
                                                        const QVariantList& args) {
  const auto ids = qdbus_cast<QList<int>>(args[0]);
  const QStringList names = qdbus_cast<QStringList>(args[1]);
  sni::MenuItemPropertiesList found;
  for (int id : ids)
    if (const auto* item = findItem(owner_.layout_, id))
      found.append({id, limited(*item, 0, names).properties});
  return send(message, connection, {QVariant::fromValue(found)});
}

bool StatusNotifierItem::MenuObject::getProperty(const QDBusMessage& message,
                                                 const QDBusConnection& connection,
                                                 const QVariantList& args) {
  const auto* item = findItem(owner_.layout_, args[0].toInt());
  if (!item || !item->properties.contains(args[1].toString()))
    return invalidId(message, connection);
  return send(message, connection, {variantArgument(item->properties.value(args[1].toString()))});
}

bool StatusNotifierItem::MenuObject::menuEvent(const QDBusMessage& message,
                                               const QDBusConnection& connection,
                                               const QVariantList& args) {
  handleEvent(args[0].toInt(), args[1].toString());
  return send(message, connection, {});
}

bool StatusNotifierItem::MenuObject::eventGroup(const QDBusMessage& message,
                                                const QDBusConnection& connection,
                                                const QVariantList& args) {
  QList<int> errors;
  for (const sni::MenuEvent& e : qdbus_cast<sni::MenuEventList>(args[0]))
    if (!handleEvent(e.id, e.eventId)) errors << e.id;
  return send(message, connection, {QVariant::fromValue(errors)});
}

bool StatusNotifierItem::MenuObject::aboutToShow(const QDBusMessage& message,
                                                 const QDBusConnection& connection,
                                                 const QVariantList& args) {
  const bool root = args[0].toInt() == 0;
  if (root) owner_.rebuildMenu();
  return send(message, connection, {root});
}

bool StatusNotifierItem::MenuObject::aboutToShowGroup(const QDBusMessage& message,
                                                      const QDBusConnection& connection,
                                                      const QVariantList& args) {
  const auto ids = qdbus_cast<QList<int>>(args[0]);
  QList<int> updates, errors;
  if (ids.contains(0)) {
    owner_.rebuildMenu();
    updates << 0;
  }
  for (int id : ids)
    if (!findItem(owner_.layout_, id)) errors << id;
  return send(message, connection, {QVariant::fromValue(updates), QVariant::fromValue(errors)});
}

bool StatusNotifierItem::MenuObject::handleEvent(int id, const QString& name) {
  const auto it = owner_.actions_.find(id);
  if (it == owner_.actions_.end() && id != 0) return false;
  if (name == QLatin1String("clicked") && it != owner_.actions_.end() && it->second) {
    QPointer<QAction> action = it->second;
    QTimer::singleShot(0, this, [action] {
      if (action && action->isEnabled()) action->trigger();
    });
  }
  return true;
}

bool StatusNotifierItem::MenuObject::invalidId(const QDBusMessage& message,
                                               const QDBusConnection& connection) {
  return refuse(message, connection, "org.freedesktop.DBus.Error.InvalidArgs");
}

void StatusNotifierItem::rebuildMenu() {
  exported_ = std::make_unique<QMenu>();
  if (handlers_.buildMenu) handlers_.buildMenu(*exported_);
  actions_.clear();
  int next = 1;
  // Depth-first numbering: the same menu gets the same ids every time it is rebuilt.
  const std::function<sni::MenuLayoutItem(QMenu&, int)> walk = [&](QMenu& menu, int id) {
    sni::MenuLayoutItem node{
        id, {{QStringLiteral("children-display"), QStringLiteral("submenu")}}, {}};
    for (QAction* action : menu.actions()) {
      const int childID = next++;
      actions_[childID] = action;
      sni::MenuLayoutItem child;
      if (QMenu* sub = action->menu()) {
        child = walk(*sub, childID);
      } else {
        child.id = childID;
      }
      addItemProperties(*action, child.properties);
      node.children.push_back(std::move(child));
    }
    return node;
  };
  sni::MenuLayoutItem layout = walk(*exported_, 0);
  // Hosts keep the layout they fetched until told it changed; an unchanged one keeps its revision.
  if (revision_ > 0 && layout == layout_) return;
  const auto changes =
      revision_ > 0 ? sni::propertyChanges(layout_, layout) : std::optional<sni::PropertyChanges>();
  layout_ = std::move(layout);
  ++revision_;
  if (changes) {
    // Some hosts keep an item's label and check mark by its id across a new layout (GNOME's
    // indicator extension, xfce's sntray plug-in): a changed text or mark is told item by item.
    emitSignal(menuPath, "com.canonical.dbusmenu", "ItemsPropertiesUpdated",
               {QVariant::fromValue(changes->updated), QVariant::fromValue(changes->removed)});
    return;
  }
  emitSignal(menuPath, "com.canonical.dbusmenu", "LayoutUpdated",
             {QVariant::fromValue(revision_), 0});
}

}  // namespace tidemark
