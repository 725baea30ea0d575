// On a private session bus (dbus-run-session): the tray item read by a host here through the real
// status-notifier-watcher, the settings portal's reduce-motion switch, and notifications to dunst.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include "desktop/DesktopFixture.h"
#include "platform/DBusNotifier.h"
#include "platform/DesktopPortal.h"
#include "platform/StatusNotifierItem.h"

namespace tidemark {
namespace {

// Generous for a busy machine's slow hosts and bus; a wait that succeeds ends at once.
constexpr int busWait = 10000;

using namespace Qt::StringLiterals;
using testing::MatchesRegex;

const QString watcherName = u"org.kde.StatusNotifierWatcher"_s;
const QString itemInterface = u"org.kde.StatusNotifierItem"_s;
const QString menuInterface = u"com.canonical.dbusmenu"_s;

// Collects the item's label signals; QtDBus hands signals only to slots.
class LabelLog : public QObject {
  Q_OBJECT
 public:
  QStringList labels;
  QList<uint> revisions;
  QStringList properties;  // "id label" of each updated item, "id -name" of each removed name
 public Q_SLOTS:
  void label(const QString& text, const QString&) { labels << text; }
  void toolTip() { labels << u"(tooltip)"_s; }
  void layout(uint revision, int) { revisions << revision; }
  void updated(const QDBusMessage& message) {
    for (const auto& item : qdbus_cast<sni::MenuItemPropertiesList>(message.arguments().value(0)))
      properties << u"%1 %2"_s.arg(item.id).arg(item.properties.value(u"label"_s).toString());
    for (const auto& item : qdbus_cast<sni::MenuItemKeysList>(message.arguments().value(1)))
      properties << u"%1 -%2"_s.arg(item.id).arg(item.names.join(u",-"_s));
  }
};

// A StatusNotifierHost on a connection of its own, so every call really crosses the bus.
struct Host {
  QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "host");
  QString name = u"org.kde.StatusNotifierHost-%1"_s.arg(QCoreApplication::applicationPid());

  QDBusMessage call(const QString& service, const QString& path, const QString& interface,
                    const QString& method, const QVariantList& args = {}) {
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(args);
    QDBusPendingCall pending = bus.asyncCall(message, 5000);
    // The item answers from this thread's event loop.
    EXPECT_TRUE(QTest::qWaitFor([&] { return pending.isFinished(); }, 6000))
        << method.toStdString();
    return pending.reply();
  }
  bool registerWithWatcher() {
    bus.registerService(name);
    return call(watcherName, u"/StatusNotifierWatcher"_s, watcherName,
                u"RegisterStatusNotifierHost"_s, {name})
               .type() == QDBusMessage::ReplyMessage;
  }
  QVariantMap properties(const QString& service) {
    return qdbus_cast<QVariantMap>(call(service, u"/StatusNotifierItem"_s,
                                        u"org.freedesktop.DBus.Properties"_s, u"GetAll"_s,
                                        {itemInterface})
                                       .arguments()
                                       .value(0));
  }
  QStringList registeredItems() {
    return call(watcherName, u"/StatusNotifierWatcher"_s, u"org.freedesktop.DBus.Properties"_s,
                u"Get"_s, {watcherName, u"RegisteredStatusNotifierItems"_s})
        .arguments()
        .value(0)
        .value<QDBusVariant>()
        .variant()
        .toStringList();
  }
};

// The freedesktop settings portal, serving the values it is given, on a connection of its own.
class FakePortal : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")
 public:
  QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "portal");
  QVariantMap values;  // "group key" → value
  int reads = 0;

  explicit FakePortal(QVariantMap given) : values(std::move(given)) {
    bus.registerObject(path, this, QDBusConnection::ExportAllSlots);
    bus.registerService(u"org.freedesktop.portal.Desktop"_s);
  }
  ~FakePortal() override {
    bus.unregisterService(u"org.freedesktop.portal.Desktop"_s);
    bus.unregisterObject(path);
  }
  void change(const QString& group, const QString& key, const QVariant& value) {
    QDBusMessage signal =
        QDBusMessage::createSignal(path, u"org.freedesktop.portal.Settings"_s, u"SettingChanged"_s);
    signal << group << key << QVariant::fromValue(QDBusVariant(value));
    bus.send(signal);
  }

 public Q_SLOTS:
  // As the real portal does, the value comes wrapped in one variant more than it needs.
  QDBusVariant Read(const QString& group, const QString& key, const QDBusMessage& message) {
    ++reads;
    const QString name = group + u' ' + key;
    if (!values.contains(name)) {
      message.setDelayedReply(true);
      bus.send(message.createErrorReply(u"org.freedesktop.portal.Error.NotFound"_s,
                                        u"Requested setting not found"_s));
      return {};
    }
    return QDBusVariant(QVariant::fromValue(QDBusVariant(values.value(name))));
  }

 private:
  const QString path = u"/org/freedesktop/portal/desktop"_s;
};

// A program the test runs until it ends.
struct Running {
  QProcess process;
  Running(const QString& program, const QStringList& arguments, QProcessEnvironment environment) {
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForStarted()) << program.toStdString() << " is not installed";
  }
  ~Running() {
    process.terminate();
    if (!process.waitForFinished(3000)) process.kill();
    process.waitForFinished();
  }
};

struct Watcher {
  std::optional<Running> process;
  void start(Host& host) {
    process.emplace(u"status-notifier-watcher"_s, QStringList{},
                    QProcessEnvironment::systemEnvironment());
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return host.bus.interface()->isServiceRegistered(watcherName).value(); }, 5000));
    // A watcher that has just taken its name may not serve its object yet.
    ASSERT_TRUE(QTest::qWaitFor([&] { return host.registerWithWatcher(); }, 5000));
  }
  void stop() { process.reset(); }
};

// The menu as a host shows it: labels in order, "—" for separators, [x] and [ ] for check marks,
// (off) for disabled items, submenus in braces.
std::string shown(const sni::MenuLayoutItem& item) {
  std::string text;
  for (const auto& child : item.children) {
    const QVariantMap& p = child.properties;
    if (!text.empty()) text += " | ";
    if (p.value(u"type"_s) == u"separator"_s) {
      text += "—";
      continue;
    }
    text += p.value(u"label"_s).toString().toStdString();
    if (p.contains(u"toggle-state"_s)) text += p.value(u"toggle-state"_s).toInt() ? " [x]" : " [ ]";
    if (p.value(u"enabled"_s, true) == false) text += " (off)";
    if (!child.children.empty()) text += " {" + shown(child) + "}";
  }
  return text;
}

const sni::MenuLayoutItem* findLabel(const sni::MenuLayoutItem& item, const QString& label) {
  if (item.properties.value(u"label"_s).toString() == label) return &item;
  for (const auto& child : item.children)
    if (const auto* found = findLabel(child, label)) return found;
  return nullptr;
}

// The app with its tray item registered with a real watcher, read through a host's connection.
class RegisteredTrayItem : public ::testing::Test {
 protected:
  void SetUp() override {
    watcher.start(host);
    d = std::make_unique<test::Desktop>(
        test::DesktopOptions{.notifier = [this]() -> std::unique_ptr<StatusNotifier> {
          auto made = std::make_unique<StatusNotifierItem>(QDBusConnection::sessionBus());
          item = made.get();
          return made;
        }});
    ASSERT_FALSE(item) << "registered only once the orb is on screen";
    ASSERT_TRUE(QTest::qWaitFor([&] { return item != nullptr; }, busWait));
    service = item->serviceName();
    ASSERT_TRUE(QTest::qWaitFor([&] { return d->delegate->statusItem().usesNotifier(); }, busWait));
    // Under the connection's own name, which hosts match a signal's sender against at once.
    ASSERT_EQ(host.registeredItems().join(u' ').toStdString(),
              QDBusConnection::sessionBus().baseService().toStdString());
  }

  // The named icon's file, checked to hold the same image as the pixmaps.
  QString namedIcon() {
    const QVariantMap now = host.properties(service);
    EXPECT_EQ(
        now.value(u"IconThemePath"_s).toString(),
        QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + u"/tidemark-tray"_s);
    const QString file = now.value(u"IconThemePath"_s).toString() + u'/' +
                         now.value(u"IconName"_s).toString() + u".png"_s;
    const auto pixmaps = qdbus_cast<sni::IconPixmapList>(now.value(u"IconPixmap"_s));
    EXPECT_EQ(sni::iconPixmap(QImage(file)), pixmaps.value(1)) << file.toStdString();
    return file;
  }
  sni::MenuLayoutItem layout() {
    return qdbus_cast<sni::MenuLayoutItem>(
        host.call(service, menu, menuInterface, u"GetLayout"_s, {0, -1, QStringList()})
            .arguments()
            .value(1));
  }

  Host host;
  Watcher watcher;
  StatusNotifierItem* item = nullptr;
  std::unique_ptr<test::Desktop> d;
  QString service;
  const QString path = u"/StatusNotifierItem"_s, menu = u"/MenuBar"_s;
};

TEST_F(RegisteredTrayItem, AHostReadsEveryProperty) {
  const QVariantMap p = host.properties(service);
  const std::pair<const char*, QVariant> plain[] = {
      {"Category", u"ApplicationStatus"_s},
      {"Id", u"tidemark"_s},
      {"Title", u"潮汐栏"_s},
      {"Status", u"Active"_s},
      {"ItemIsMenu", false},
      {"XAyatanaLabel", u"600519  1,468.80  +1.16%"_s},
      {"XAyatanaLabelGuide", u"888888  8,888.88  +88.88%"_s},
  };
  for (const auto& [name, value] : plain) EXPECT_EQ(p.value(QLatin1String(name)), value) << name;
  EXPECT_EQ(qdbus_cast<QDBusObjectPath>(p.value(u"Menu"_s)).path(), u"/MenuBar"_s);
  const auto icons = qdbus_cast<sni::IconPixmapList>(p.value(u"IconPixmap"_s));
  ASSERT_EQ(icons.size(), 2);
  for (int i : {0, 1})  // 22 and 44 pixels square
    EXPECT_EQ(std::tuple(icons[i].width, icons[i].height, icons[i].bytes.size()),
              std::tuple(22 << i, 22 << i, (22 << i) * (22 << i) * 4));
  EXPECT_EQ(uchar(icons[1].bytes[(22 * 44 + 22) * 4]), 255);  // alpha first: the opaque middle
  const auto tip = qdbus_cast<sni::ToolTip>(p.value(u"ToolTip"_s));
  EXPECT_EQ(tip.title, u"潮汐栏"_s);
  EXPECT_EQ(tip.text.toStdString(), d->delegate->tooltip());
}

TEST_F(RegisteredTrayItem, TheLabelFollowsThePriceAndMaskingEmptiesItAndBaresTheIcon) {
  const QString firstIcon = namedIcon();  // also for the hosts that draw only names
  LabelLog log;
  ASSERT_TRUE(host.bus.connect(service, path, itemInterface, u"XAyatanaNewLabel"_s, &log,
                               SLOT(label(QString, QString))));
  d->model->refresh();
  d->h.scheduler.advance(1);
  ASSERT_TRUE(QTest::qWaitFor([&] { return !log.labels.isEmpty(); }, busWait));
  EXPECT_EQ(log.labels.last().toStdString(), "600519  1,465.74  +0.95%");  // the demo's next step
  const QString shownIcon = namedIcon();
  d->model->setMasked(true);
  d->h.scheduler.runDue();
  ASSERT_TRUE(QTest::qWaitFor([&] { return log.labels.last().isEmpty(); }, busWait));
  // Masked, the icon is the bare orb: a new file under a new name.
  const QString maskedIcon = namedIcon();
  EXPECT_NE(maskedIcon, shownIcon);
  // Unmasked, the face shown before is named again, its file not written anew.
  d->model->setMasked(false);
  d->h.scheduler.runDue();
  ASSERT_TRUE(QTest::qWaitFor([&] { return !log.labels.last().isEmpty(); }, busWait));
  EXPECT_EQ(namedIcon().toStdString(), shownIcon.toStdString());
  // The files go with the item.
  d.reset();
  for (const QString& file : {firstIcon, shownIcon, maskedIcon})
    EXPECT_FALSE(QFile::exists(file)) << file.toStdString();
}

// Activate hides the orb and a middle click (SecondaryActivate) shows it again; ContextMenu opens
// our menu; a wheel step either way moves to the next symbol.
TEST_F(RegisteredTrayItem, ClicksTheContextMenuAndTheWheel) {
  ASSERT_TRUE(d->delegate->panel().isVisible());
  host.call(service, path, itemInterface, u"Activate"_s, {0, 0});
  EXPECT_TRUE(QTest::qWaitFor([&] { return !d->delegate->panel().isVisible(); }, busWait));
  host.call(service, path, itemInterface, u"SecondaryActivate"_s, {0, 0});
  EXPECT_TRUE(QTest::qWaitFor([&] { return d->delegate->panel().isVisible(); }, busWait));
  QMenu& ours = d->delegate->statusItem().menu();
  host.call(service, path, itemInterface, u"ContextMenu"_s, {100, 100});
  EXPECT_TRUE(QTest::qWaitFor([&] { return ours.isVisible(); }, busWait));
  // The menu Qt draws takes the theme; the one the host reads over the bus is never drawn and
  // has no style sheet parsed for it (a quarter of a megabyte each).
  EXPECT_FALSE(ours.styleSheet().isEmpty());
  QCoreApplication::sendPostedEvents();  // the polish of a menu rebuilt just now
  int exported = 0;
  for (QWidget* window : QApplication::topLevelWidgets()) {
    const auto* other = qobject_cast<QMenu*>(window);
    if (!other || other == &ours || other->parent() == &ours) continue;
    ++exported;
    EXPECT_TRUE(other->testAttribute(Qt::WA_WState_Polished));
    EXPECT_TRUE(other->styleSheet().isEmpty());
  }
  EXPECT_EQ(exported, 3) << "the exported menu and its two submenus";
  ours.hide();
  d->h.scheduler.runDue();
  for (const auto& [delta, next] : {std::pair{120, "00700"}, {-120, "NVDA"}}) {
    host.call(service, path, itemInterface, u"Scroll"_s, {delta, u"vertical"_s});
    EXPECT_TRUE(QTest::qWaitFor([&] { return d->model->activeID() == next; }, busWait)) << delta;
  }
}

// A host that keeps the menu it fetched hears of each changed text or check mark item by item,
// without a new layout.
TEST_F(RegisteredTrayItem, AKeptMenuHearsOfEveryChangeItemByItem) {
  d->model->setMasked(true);
  d->h.scheduler.runDue();
  LabelLog log;
  ASSERT_TRUE(host.bus.connect(service, menu, menuInterface, u"LayoutUpdated"_s, &log,
                               SLOT(layout(uint, int))));
  ASSERT_TRUE(host.bus.connect(service, menu, menuInterface, u"ItemsPropertiesUpdated"_s, &log,
                               SLOT(updated(QDBusMessage))));
  layout();  // fetched, and kept
  const qsizetype layouts = log.revisions.size();
  for (const char* shown : {"显示灵球", "隐藏灵球"}) {
    log.properties.clear();
    d->keys.pressed(1);
    d->h.scheduler.runDue();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !log.properties.isEmpty(); }, busWait)) << shown;
    EXPECT_EQ(log.properties.join(u" | "_s).toStdString(), "3 " + std::string(shown));
    EXPECT_EQ(layout().children.at(2).properties.value(u"label"_s).toString().toStdString(), shown);
  }
  log.properties.clear();
  d->model->setMasked(false);
  d->h.scheduler.runDue();
  EXPECT_TRUE(QTest::qWaitFor([&] { return !log.properties.isEmpty(); }, busWait));
  EXPECT_EQ(log.properties.join(u" | "_s).toStdString(), "8 屏幕共享遮蔽");
  EXPECT_EQ(log.revisions.size(), layouts) << "no new layout for changed texts";
}

// The menu is built on opening; a click on "立即刷新" refreshes; the wire types hosts rely on hold.
TEST_F(RegisteredTrayItem, TheMenuIsBuiltOnOpeningAndItsClicksAndSignaturesHold) {
  d->model->setOrbSize(132);
  EXPECT_TRUE(
      host.call(service, menu, menuInterface, u"AboutToShow"_s, {0}).arguments().value(0).toBool());
  const auto root = layout();
  EXPECT_EQ(shown(root),
            "模拟源 (off) | — | 隐藏灵球 | 设置… | — | 立即刷新 | 价格预警… | 屏幕共享遮蔽 [ ] | "
            "鼠标穿透（仅托盘菜单可恢复） [ ] | 重新居中 / 解除贴边 | — | "
            "灵球尺寸 {72 pt [ ] | 96 pt [ ] | 132 pt [x]} | "
            "演示数据状态 {加载 [ ] | 正常 [x] | 过期 [ ] | 降级 [ ] | 离线 [ ]} | 使用引导 | "
            "退出潮汐栏");
  const auto* refresh = findLabel(root, u"立即刷新"_s);
  ASSERT_TRUE(refresh);
  EXPECT_FALSE(d->model->hasPendingRefresh());
  host.call(service, menu, menuInterface, u"Event"_s,
            {refresh->id, u"clicked"_s, QVariant::fromValue(QDBusVariant(0)), 0u});
  EXPECT_TRUE(QTest::qWaitFor([&] { return d->model->hasPendingRefresh(); }, busWait));

  const std::tuple<QString, QVariantList, QString> signatures[] = {
      {u"GetLayout"_s, {0, -1, QStringList()}, u"u(ia{sv}av)"_s},
      {u"GetGroupProperties"_s,
       {QVariant::fromValue(QList<int>{refresh->id}), QStringList()},
       u"a(ia{sv})"_s},
      {u"GetProperty"_s, {refresh->id, u"label"_s}, u"v"_s},
      {u"AboutToShowGroup"_s, {QVariant::fromValue(QList<int>{0, 999})}, u"aiai"_s},
      {u"EventGroup"_s, {QVariant::fromValue(sni::MenuEventList{})}, u"ai"_s},
  };
  for (const auto& [method, args, signature] : signatures)
    EXPECT_EQ(host.call(service, menu, menuInterface, method, args).signature(), signature)
        << method.toStdString();
  const QDBusMessage xml =
      host.call(service, path, u"org.freedesktop.DBus.Introspectable"_s, u"Introspect"_s);
  EXPECT_TRUE(xml.arguments().value(0).toString().contains(u"XAyatanaNewLabel"_s));
}

// A restarted watcher knows the item again once its host is back.
TEST_F(RegisteredTrayItem, ARestartedWatcherFindsItAgain) {
  watcher.stop();
  EXPECT_TRUE(QTest::qWaitFor([&] { return !d->delegate->statusItem().usesNotifier(); }, busWait));
  watcher.start(host);
  EXPECT_TRUE(QTest::qWaitFor([&] { return d->delegate->statusItem().usesNotifier(); }, 5000));
  EXPECT_TRUE(host.registeredItems().join(u' ').contains(service));
}

TEST(DesktopPortal, TheDesktopsReduceMotionIsReadAndFollowed) {
  const QString gnome = u"org.gnome.desktop.interface enable-animations"_s;
  const QString kde = u"org.kde.kdeglobals.KDE AnimationDurationFactor"_s;
  const struct {
    const char* what;
    std::optional<QVariantMap> portal;
    bool calm;
  } cases[] = {
      {"no portal", std::nullopt, false},
      {"neither setting", QVariantMap{}, false},
      {"GNOME without animations", QVariantMap{{gnome, false}}, true},
      {"GNOME with animations", QVariantMap{{gnome, true}}, false},
      {"KDE at speed 0", QVariantMap{{kde, 0.0}}, true},
      {"KDE at speed 1", QVariantMap{{kde, 1.0}}, false},
  };
  for (const auto& k : cases) {
    std::optional<FakePortal> portal;
    if (k.portal) portal.emplace(*k.portal);
    PortalMotionSetting setting(QDBusConnection::sessionBus());
    if (portal) {
      ASSERT_TRUE(QTest::qWaitFor([&] { return portal->reads == 2; }, busWait)) << k.what;
    }
    // The answers arrive after the reads were served.
    EXPECT_EQ(QTest::qWaitFor([&] { return setting.calm(); }, k.calm ? busWait : 200), k.calm)
        << k.what;
  }
  FakePortal portal({{gnome, true}});
  PortalMotionSetting setting(QDBusConnection::sessionBus());
  std::vector<bool> changes;
  setting.watch([&](bool calm) { changes.push_back(calm); });
  ASSERT_TRUE(QTest::qWaitFor([&] { return portal.reads == 2; }, busWait));
  portal.change(u"org.gnome.desktop.interface"_s, u"enable-animations"_s, false);
  ASSERT_TRUE(QTest::qWaitFor([&] { return !changes.empty(); }, busWait));
  portal.change(u"org.gnome.desktop.interface"_s, u"font-name"_s, u"Sans 11"_s);
  portal.change(u"org.gnome.desktop.interface"_s, u"enable-animations"_s, true);
  ASSERT_TRUE(QTest::qWaitFor([&] { return changes.size() == 2; }, busWait));
  EXPECT_EQ(changes, (std::vector<bool>{true, false}));
}

// Where labels are off (MATE draws nothing for an empty one), none is published or announced.
TEST(TrayItem, WithoutLabelsNoneIsPublishedOrAnnounced) {
  Host host;
  Watcher watcher;
  watcher.start(host);
  StatusNotifierItem item(QDBusConnection::sessionBus(), false);
  item.start({});
  const QString service = item.serviceName(), path = u"/StatusNotifierItem"_s;
  LabelLog log;
  for (const auto& [signal, slot] :
       {std::pair{u"XAyatanaNewLabel"_s, SLOT(label(QString, QString))},
        std::pair{u"NewToolTip"_s, SLOT(toolTip())}})
    ASSERT_TRUE(host.bus.connect(service, path, itemInterface, signal, &log, slot));
  item.setLabel("600519  1,468.80  +1.16%");
  item.setToolTip("岚舟");  // announced after the label would have been
  ASSERT_TRUE(QTest::qWaitFor([&] { return !log.labels.isEmpty(); }, busWait));
  EXPECT_EQ(log.labels, QStringList{u"(tooltip)"_s});
  const QVariantMap p = host.properties(service);
  EXPECT_EQ(p.value(u"Id"_s), u"tidemark"_s);
  for (const char* name : {"XAyatanaLabel", "XAyatanaLabelGuide", "XAyatanaOrderingIndex"})
    EXPECT_FALSE(p.contains(QLatin1String(name))) << name;
}

// The icon's pixels go out as alpha, red, green and blue, not premultiplied; the label's guide is
// its widest shape, so the panel keeps its room as the figures change.
TEST(TrayItem, IconBytesAndTheLabelsGuide) {
  QImage image(3, 1, QImage::Format_ARGB32);
  image.setPixel(0, 0, qRgba(0x11, 0x22, 0x33, 0xff));
  image.setPixel(1, 0, qRgba(0x11, 0x22, 0x33, 0x80));
  image.setPixel(2, 0, qRgba(0, 0, 0, 0));
  const sni::IconPixmap icon = sni::iconPixmap(image);
  EXPECT_EQ(std::tuple(icon.width, icon.height, icon.bytes),
            std::tuple(3, 1, QByteArray("\xff\x11\x22\x33\x80\x11\x22\x33\0\0\0\0", 12)));
  const std::pair<const char*, const char*> guides[] = {
      {"600519  1,468.80  -12.50%", "888888  8,888.88  -88.88%"},
      {"暂无自选", "暂无自选"},
      {"", ""}};
  for (const auto& [label, guide] : guides)
    EXPECT_EQ(StatusNotifierItem::labelGuide(QString::fromUtf8(label)), QString::fromUtf8(guide));
}

// Changed texts and marks go out item by item; a changed structure needs a new layout.
TEST(TrayItem, AMenusChangesAreItsItemsPropertiesWhileItsStructureStays) {
  const auto item = [](int id, QVariantMap properties,
                       std::vector<sni::MenuLayoutItem> children = {}) {
    return sni::MenuLayoutItem{id, std::move(properties), std::move(children)};
  };
  const QVariantMap off{{u"label"_s, u"a"_s}, {u"enabled"_s, false}};
  const auto menu = [&](QVariantMap first, QVariantMap second = {{u"type"_s, u"separator"_s}}) {
    return item(0, {}, {item(1, std::move(first)), item(2, std::move(second))});
  };
  const struct {
    const char* what;
    sni::MenuLayoutItem after;
    const char* changes;  // "none" for a new layout
  } cases[] = {
      {"nothing", menu(off), ""},
      {"a label", menu({{u"label"_s, u"b"_s}, {u"enabled"_s, false}}), "1 b"},
      {"enabled again", menu({{u"label"_s, u"a"_s}}), "1 a, 1 -enabled"},
      {"a separator made an item", menu(off, {{u"label"_s, u"c"_s}}), "none"},
      {"an item more", item(0, {}, {item(1, off), item(2, {}), item(3, {})}), "none"},
      {"another id", item(0, {}, {item(1, off), item(4, {{u"type"_s, u"separator"_s}})}), "none"},
  };
  for (const auto& c : cases) {
    const auto changes = sni::propertyChanges(menu(off), c.after);
    QStringList told;
    if (changes) {
      for (const auto& [id, properties] : changes->updated)
        told << u"%1 %2"_s.arg(id).arg(properties.value(u"label"_s).toString());
      for (const auto& [id, names] : changes->removed)
        told << u"%1 -%2"_s.arg(id).arg(names.join(u','));
    }
    EXPECT_EQ(changes ? told.join(u", "_s).toStdString() : "none", c.changes) << c.what;
  }
}

bool authorized(DBusNotifier& notifier) {
  std::optional<bool> answer;
  notifier.queryAuthorization([&](bool value) { answer = value; });
  EXPECT_FALSE(answer) << "answered inline";
  EXPECT_TRUE(QTest::qWaitFor([&] { return answer.has_value(); }, 5000));
  return answer.value_or(false);
}

// dunst on an X server of its own, owning the bus's notification service; start() again restarts
// it.
struct Dunst {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  Running xvfb{u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-nolisten"_s, u"tcp"_s}, environment};
  std::unique_ptr<Running> daemon;  // ends before the X server
  QString owner;

  Dunst() {
    EXPECT_TRUE(xvfb.process.waitForReadyRead(10000)) << "Xvfb did not start";
    environment.insert(u"DISPLAY"_s,
                       u":"_s + QString::fromLatin1(xvfb.process.readLine().trimmed()));
  }
  void start() {
    daemon.reset();
    daemon = std::make_unique<Running>(u"dunst"_s, QStringList{}, environment);
    const QString previous = owner;
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
          owner = QDBusConnection::sessionBus()
                      .interface()
                      ->serviceOwner(u"org.freedesktop.Notifications"_s)
                      .value();
          return !owner.isEmpty() && owner != previous;
        },
        10000));
  }
  // What it has shown, the newest first (closed at once, so that the history holds them all).
  QJsonArray history() const {
    QProcess dunstctl;
    dunstctl.setProcessEnvironment(environment);
    dunstctl.start(u"sh"_s, {u"-c"_s, u"dunstctl close-all && dunstctl history"_s});
    EXPECT_TRUE(dunstctl.waitForFinished(5000));
    return QJsonDocument::fromJson(dunstctl.readAllStandardOutput())["data"][0].toArray();
  }
};

// The calls to the notification service as dbus-monitor prints them: the member and its first
// number (Notify's replaces_id, CloseNotification's id), and what else a line names.
QStringList notificationCalls(const QString& monitored) {
  QStringList calls;
  for (const QString& block : monitored.split(u"method call "_s).mid(1)) {
    if (!block.contains(u"destination=org.freedesktop.Notifications"_s)) continue;
    const QString member = block.section(u"member="_s, 1).section(u'\n', 0, 0);
    if (member != u"Notify"_s && member != u"CloseNotification"_s) continue;
    const QString number = block.section(u"uint32 "_s, 1).section(u'\n', 0, 0);
    calls << member + u' ' + number;
    if (member == u"Notify"_s && !block.contains(uR"(string "org.tidemark.Tidemark")"_s))
      calls << u"(no app icon or desktop entry)"_s;
  }
  return calls;
}

// Alerts are posted with the app's icon file and replaced; after the daemon restarts, the old ids
// are forgotten: nothing is replaced or closed with them.
TEST(DBusNotifier, PostsReplacesAndForgetsTheIdsOfADaemonThatRestarted) {
  DBusNotifier unconnected(
      QDBusConnection::connectToBus(u"unix:path=/nonexistent/bus"_s, u"nowhere"_s));
  EXPECT_FALSE(authorized(unconnected));
  const QString icon = QStringLiteral(TIDEMARK_TEST_RESOURCE_DIR "/icons/128.png");
  ASSERT_TRUE(QFile::exists(icon));
  DBusNotifier notifier(QDBusConnection::sessionBus(), u"潮汐栏"_s, icon);
  int completions = 0;
  const auto add = [&](const char* identifier) {
    notifier.add({identifier, "贵州茅台 价格提醒", "CNY 1,600.50"}, [&] { ++completions; });
    return QTest::qWaitFor([&, want = completions + 1] { return completions == want; }, 5000);
  };
  EXPECT_FALSE(authorized(notifier)) << "no daemon yet";
  EXPECT_TRUE(add("a")) << "no daemon: the post still completes";

  Dunst dunst;
  Running monitor(u"dbus-monitor"_s, {u"--session"_s, u"interface=org.freedesktop.Notifications"_s},
                  dunst.environment);
  QString monitored;
  dunst.start();
  EXPECT_TRUE(authorized(notifier));
  for (const char* identifier : {"a", "b", "a"}) EXPECT_TRUE(add(identifier)) << identifier;
  dunst.start();
  notifier.remove("b");  // the old daemon's id 2: nothing to close here
  EXPECT_TRUE(add("a"));
  notifier.remove("a");
  EXPECT_TRUE(QTest::qWaitFor(
      [&] {
        monitored += QString::fromUtf8(monitor.process.readAllStandardOutput());
        return notificationCalls(monitored).size() >= 5;
      },
      5000));
  // The replaced id is the first daemon's, the closed one the second's; the first's "b" never
  // closes.
  EXPECT_THAT(notificationCalls(monitored).join(u", "_s).toStdString(),
              MatchesRegex("Notify 0, Notify 0, Notify [1-9][0-9]*, Notify 0, "
                           "CloseNotification [1-9][0-9]*"));
  EXPECT_TRUE(add("c"));
  const QJsonArray shown = dunst.history();
  ASSERT_FALSE(shown.isEmpty());
  EXPECT_EQ(shown[0]["icon_path"]["data"].toString(), icon);
}

// Two rules of one symbol in one notification, another symbol's apart; masked, no figure.
TEST(DBusNotifier, AlertsArriveWithTheirSentencesAndMaskedWithoutFigures) {
  Dunst dunst;
  dunst.start();
  DBusNotifier notifier(QDBusConnection::sessionBus(), u"潮汐栏"_s, QString());
  test::ModelHarness h;
  AppModel model({h.store, h.clock, h.scheduler, h.source, notifier, h.folder.path()},
                 h.folder.path() / "watchlist.json", true, h.bundle);
  model.setAlertsPaused(true);
  for (const auto& [symbol, kind, threshold] : {std::tuple{"600519", AlertKind::priceBelow, 1500.0},
                                                {"600519", AlertKind::changeUp, 1.0},
                                                {"00700", AlertKind::priceAbove, 1.0}})
    ASSERT_EQ(model.addAlert({"", symbol, kind, threshold, AlertRepeat::daily, true, {}}),
              std::nullopt);
  model.setAlertsPaused(false);  // both symbols fire in one evaluation
  const auto shown = [&](qsizetype count) {
    QJsonArray history;
    EXPECT_TRUE(QTest::qWaitFor([&] { return (history = dunst.history()).size() >= count; }, 5000))
        << history.size() << " of " << count;
    QStringList texts;
    for (const auto& entry : history) {
      const QJsonObject shownEntry = entry.toObject();
      texts << shownEntry[u"summary"_s][u"data"_s].toString() + u" | "_s +
                   shownEntry[u"body"_s][u"data"_s].toString();
    }
    return texts;
  };
  EXPECT_EQ(shown(2),
            (QStringList{u"腾讯控股 价格提醒 | HKD 485.20，目标 HKD 1.00 已达到提醒条件。"_s,
                         u"贵州茅台 价格提醒 | CNY 1,468.80，目标 CNY 1,500.00 "
                         u"已达到提醒条件。\n今日涨幅 +1.16%，已达到 +1.00% 的提醒条件。"
                         u"现价 CNY 1,468.80"_s}));
  model.setMasked(true);
  model.setAlert("600519", 1400, true);
  EXPECT_EQ(shown(3).first(), u"贵州茅台 价格提醒 | 提醒已触发（行情已遮蔽）"_s);
}

}  // namespace
}  // namespace tidemark

#include "SessionBusTest.moc"
