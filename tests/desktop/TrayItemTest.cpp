// The tray item exported over D-Bus, read by a host written here, with the real
// status-notifier-watcher on a private session bus (the test runs under dbus-run-session).

#include <gtest/gtest.h>

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QProcess>
#include <QTest>

#include "desktop/DesktopFixture.h"
#include "platform/DesktopPortal.h"
#include "platform/StatusNotifierItem.h"

namespace tidemark {
namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");

// Collects the item's label signals; QtDBus hands signals only to slots.
class LabelLog : public QObject {
  Q_OBJECT
 public:
  QStringList labels;
 public Q_SLOTS:
  void label(const QString& text, const QString&) { labels << text; }
};

// A StatusNotifierHost on a connection of its own, so every call really crosses the bus.
struct Host {
  QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "host");
  QString name =
      QStringLiteral("org.kde.StatusNotifierHost-%1").arg(QCoreApplication::applicationPid());

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
  QVariant property(const QString& service, const QString& path, const QString& interface,
                    const QString& name) {
    const QDBusMessage reply =
        call(service, path, QStringLiteral("org.freedesktop.DBus.Properties"),
             QStringLiteral("Get"), {interface, name});
    return reply.arguments().value(0).value<QDBusVariant>().variant();
  }
  bool registerWithWatcher() {
    bus.registerService(name);
    return call(watcherName, QStringLiteral("/StatusNotifierWatcher"), watcherName,
                QStringLiteral("RegisterStatusNotifierHost"), {name})
               .type() == QDBusMessage::ReplyMessage;
  }
  QStringList registeredItems() {
    return property(watcherName, QStringLiteral("/StatusNotifierWatcher"), watcherName,
                    QStringLiteral("RegisteredStatusNotifierItems"))
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
    bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
  }
  ~FakePortal() override {
    bus.unregisterService(QStringLiteral("org.freedesktop.portal.Desktop"));
    bus.unregisterObject(path);
  }
  void change(const QString& group, const QString& key, const QVariant& value) {
    QDBusMessage signal = QDBusMessage::createSignal(
        path, QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("SettingChanged"));
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
      bus.send(message.createErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"),
                                        QStringLiteral("Requested setting not found")));
      return {};
    }
    return QDBusVariant(QVariant::fromValue(QDBusVariant(values.value(name))));
  }

 private:
  const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
};

struct Watcher {
  QProcess process;
  void start(Host& host) {
    process.start(QStringLiteral("status-notifier-watcher"), {});
    ASSERT_TRUE(process.waitForStarted()) << "status-notifier-watcher is not installed";
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return host.bus.interface()->isServiceRegistered(watcherName).value(); }, 5000));
    // A watcher that has just taken its name may not serve its object yet.
    ASSERT_TRUE(QTest::qWaitFor([&] { return host.registerWithWatcher(); }, 5000));
  }
  void stop() {
    process.terminate();
    process.waitForFinished();
  }
  ~Watcher() { stop(); }
};

// The menu as a host shows it: labels in order, "—" for separators, [x] and [ ] for check marks,
// (off) for disabled items, submenus in braces.
std::string shown(const sni::MenuLayoutItem& item) {
  std::string text;
  for (const auto& child : item.children) {
    const QVariantMap& p = child.properties;
    if (!text.empty()) text += " | ";
    if (p.value(QStringLiteral("type")) == QStringLiteral("separator")) {
      text += "—";
      continue;
    }
    text += p.value(QStringLiteral("label")).toString().toStdString();
    if (p.contains(QStringLiteral("toggle-state")))
      text += p.value(QStringLiteral("toggle-state")).toInt() ? " [x]" : " [ ]";
    if (p.value(QStringLiteral("enabled"), true) == false) text += " (off)";
    if (!child.children.empty()) text += " {" + shown(child) + "}";
  }
  return text;
}

const sni::MenuLayoutItem* findLabel(const sni::MenuLayoutItem& item, const QString& label) {
  if (item.properties.value(QStringLiteral("label")).toString() == label) return &item;
  for (const auto& child : item.children)
    if (const auto* found = findLabel(child, label)) return found;
  return nullptr;
}

TEST(TrayItem, AHostReadsItDrivesItAndFindsItAgainAfterTheWatcherRestarts) {
  Host host;
  Watcher watcher;
  watcher.start(host);
  StatusNotifierItem* item = nullptr;
  test::Desktop d({.notifier = [&]() -> std::unique_ptr<StatusNotifier> {
    auto made = std::make_unique<StatusNotifierItem>(QDBusConnection::sessionBus());
    item = made.get();
    return made;
  }});
  ASSERT_TRUE(item);
  const QString service = item->serviceName(), path = QStringLiteral("/StatusNotifierItem");
  ASSERT_TRUE(QTest::qWaitFor([&] { return d.delegate->statusItem().usesNotifier(); }, 3000));
  EXPECT_TRUE(host.registeredItems().join(u' ').contains(service));

  // Every property, as a host reads them.
  const QDBusMessage all =
      host.call(service, path, QStringLiteral("org.freedesktop.DBus.Properties"),
                QStringLiteral("GetAll"), {itemInterface});
  const QVariantMap p = qdbus_cast<QVariantMap>(all.arguments().value(0));
  const std::pair<const char*, QVariant> plain[] = {
      {"Category", QStringLiteral("ApplicationStatus")},
      {"Id", QStringLiteral("tidemark")},
      {"Title", QStringLiteral("潮汐栏")},
      {"Status", QStringLiteral("Active")},
      {"ItemIsMenu", false},
      {"XAyatanaLabel", QStringLiteral("600519  1,468.80  +1.16%")},
      {"XAyatanaLabelGuide", QStringLiteral("888888  8,888.88  +88.88%")},
  };
  for (const auto& [name, value] : plain) EXPECT_EQ(p.value(QLatin1String(name)), value) << name;
  EXPECT_EQ(qdbus_cast<QDBusObjectPath>(p.value(QStringLiteral("Menu"))).path(),
            QStringLiteral("/MenuBar"));
  const auto icons = qdbus_cast<sni::IconPixmapList>(p.value(QStringLiteral("IconPixmap")));
  ASSERT_EQ(icons.size(), 2);
  EXPECT_EQ(std::tuple(icons[0].width, icons[0].height, icons[0].bytes.size()),
            std::tuple(22, 22, 22 * 22 * 4));
  EXPECT_EQ(std::tuple(icons[1].width, icons[1].height, icons[1].bytes.size()),
            std::tuple(44, 44, 44 * 44 * 4));
  EXPECT_EQ(uchar(icons[1].bytes[(22 * 44 + 22) * 4]), 255);  // alpha first: the opaque middle
  const auto tip = qdbus_cast<sni::ToolTip>(p.value(QStringLiteral("ToolTip")));
  EXPECT_EQ(tip.title, QStringLiteral("潮汐栏"));
  EXPECT_EQ(tip.text.toStdString(), d.delegate->tooltip());

  // The label follows the price, and is empty while masked.
  LabelLog log;
  ASSERT_TRUE(host.bus.connect(service, path, itemInterface, QStringLiteral("XAyatanaNewLabel"),
                               &log, SLOT(label(QString, QString))));
  d.model->refresh();
  d.h.scheduler.advance(1);
  ASSERT_TRUE(QTest::qWaitFor([&] { return !log.labels.isEmpty(); }, 3000));
  EXPECT_EQ(log.labels.last().toStdString(), "600519  1,465.74  +0.95%");  // the demo's next step
  d.model->setMasked(true);
  d.h.scheduler.runDue();
  ASSERT_TRUE(QTest::qWaitFor([&] { return log.labels.last().isEmpty(); }, 3000));

  // Activate hides the orb; a wheel step either way moves to the next symbol.
  ASSERT_TRUE(d.delegate->panel().isVisible());
  host.call(service, path, itemInterface, QStringLiteral("Activate"), {0, 0});
  EXPECT_TRUE(QTest::qWaitFor([&] { return !d.delegate->panel().isVisible(); }, 3000));
  for (const auto& [delta, next] : {std::pair{120, "00700"}, {-120, "NVDA"}}) {
    host.call(service, path, itemInterface, QStringLiteral("Scroll"),
              {delta, QStringLiteral("vertical")});
    EXPECT_TRUE(QTest::qWaitFor([&] { return d.model->activeID() == next; }, 3000)) << delta;
  }

  // The menu is built on opening, with its check marks; a click on "立即刷新" refreshes.
  const QString menu = QStringLiteral("/MenuBar");
  EXPECT_TRUE(host.call(service, menu, menuInterface, QStringLiteral("AboutToShow"), {0})
                  .arguments()
                  .value(0)
                  .toBool());
  const QDBusMessage layout =
      host.call(service, menu, menuInterface, QStringLiteral("GetLayout"), {0, -1, QStringList()});
  const auto root = qdbus_cast<sni::MenuLayoutItem>(layout.arguments().value(1));
  EXPECT_EQ(shown(root),
            "模拟源 (off) | — | 显示灵球 | 设置… | — | 立即刷新 | 价格预警… | 屏幕共享遮蔽 [x] | "
            "鼠标穿透（仅菜单栏可恢复） [ ] | 重新居中 / 解除贴边 | — | "
            "灵球尺寸 {72 pt [ ] | 96 pt [x] | 132 pt [ ]} | "
            "演示数据状态 {加载 [ ] | 正常 [x] | 过期 [ ] | 降级 [ ] | 离线 [ ]} | 使用引导 | "
            "退出潮汐栏");
  const auto* refresh = findLabel(root, QStringLiteral("立即刷新"));
  ASSERT_TRUE(refresh);
  EXPECT_FALSE(d.model->hasPendingRefresh());
  host.call(service, menu, menuInterface, QStringLiteral("Event"),
            {refresh->id, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), 0u});
  EXPECT_TRUE(QTest::qWaitFor([&] { return d.model->hasPendingRefresh(); }, 3000));

  // The wire types hosts rely on, as signatures.
  const std::tuple<QString, QString, QVariantList, QString> signatures[] = {
      {menu, QStringLiteral("GetLayout"), {0, -1, QStringList()}, QStringLiteral("u(ia{sv}av)")},
      {menu,
       QStringLiteral("GetGroupProperties"),
       {QVariant::fromValue(QList<int>{refresh->id}), QStringList()},
       QStringLiteral("a(ia{sv})")},
      {menu,
       QStringLiteral("GetProperty"),
       {refresh->id, QStringLiteral("label")},
       QStringLiteral("v")},
      {menu,
       QStringLiteral("AboutToShowGroup"),
       {QVariant::fromValue(QList<int>{0, 999})},
       QStringLiteral("aiai")},
      {menu,
       QStringLiteral("EventGroup"),
       {QVariant::fromValue(sni::MenuEventList{})},
       QStringLiteral("ai")},
  };
  for (const auto& [object, method, args, signature] : signatures)
    EXPECT_EQ(host.call(service, object, menuInterface, method, args).signature(), signature)
        << method.toStdString();
  EXPECT_EQ(all.signature(), QStringLiteral("a{sv}"));
  const QDBusMessage xml =
      host.call(service, path, QStringLiteral("org.freedesktop.DBus.Introspectable"),
                QStringLiteral("Introspect"));
  EXPECT_TRUE(xml.arguments().value(0).toString().contains(QStringLiteral("XAyatanaNewLabel")));

  // A restarted watcher knows the item again once its host is back.
  watcher.stop();
  EXPECT_TRUE(QTest::qWaitFor([&] { return !d.delegate->statusItem().usesNotifier(); }, 3000));
  watcher.start(host);
  EXPECT_TRUE(QTest::qWaitFor([&] { return d.delegate->statusItem().usesNotifier(); }, 5000));
  EXPECT_TRUE(host.registeredItems().join(u' ').contains(service));
}

TEST(DesktopPortal, TheDesktopsReduceMotionIsReadAndFollowed) {
  const QString gnome = QStringLiteral("org.gnome.desktop.interface enable-animations");
  const QString kde = QStringLiteral("org.kde.kdeglobals.KDE AnimationDurationFactor");
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
      ASSERT_TRUE(QTest::qWaitFor([&] { return portal->reads == 2; }, 3000)) << k.what;
    }
    // The answers arrive after the reads were served.
    EXPECT_EQ(QTest::qWaitFor([&] { return setting.calm(); }, k.calm ? 3000 : 200), k.calm)
        << k.what;
  }
  FakePortal portal({{gnome, true}});
  PortalMotionSetting setting(QDBusConnection::sessionBus());
  std::vector<bool> changes;
  setting.watch([&](bool calm) { changes.push_back(calm); });
  ASSERT_TRUE(QTest::qWaitFor([&] { return portal.reads == 2; }, 3000));
  portal.change(QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("enable-animations"),
                false);
  ASSERT_TRUE(QTest::qWaitFor([&] { return !changes.empty(); }, 3000));
  portal.change(QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("font-name"),
                QStringLiteral("Sans 11"));
  portal.change(QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("enable-animations"),
                true);
  ASSERT_TRUE(QTest::qWaitFor([&] { return changes.size() == 2; }, 3000));
  EXPECT_EQ(changes, (std::vector<bool>{true, false}));
}

TEST(TrayItem, IconPixelsGoOutAsAlphaRedGreenBlue) {
  const std::pair<QRgb, QByteArray> cases[] = {
      {qRgba(0x11, 0x22, 0x33, 0xff), QByteArray("\xff\x11\x22\x33", 4)},
      {qRgba(0x11, 0x22, 0x33, 0x80), QByteArray("\x80\x11\x22\x33", 4)},
      {qRgba(0, 0, 0, 0), QByteArray(4, 0)},
  };
  for (const auto& [pixel, bytes] : cases) {
    QImage image(1, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, pixel);
    const sni::IconPixmap icon = sni::iconPixmap(image);
    EXPECT_EQ(std::tuple(icon.width, icon.height, icon.bytes), std::tuple(1, 1, bytes));
  }
}

TEST(TrayItem, TheGuideKeepsTheLabelsWidestShape) {
  const std::pair<const char*, const char*> cases[] = {
      {"+1.16%", "+88.88%"},
      {"600519  1,468.80  -12.50%", "888888  8,888.88  -88.88%"},
      {"暂无自选", "暂无自选"},
      {"", ""},
  };
  for (const auto& [label, guide] : cases)
    EXPECT_EQ(StatusNotifierItem::labelGuide(QString::fromUtf8(label)), QString::fromUtf8(guide));
}

}  // namespace
}  // namespace tidemark

#include "TrayItemTest.moc"
