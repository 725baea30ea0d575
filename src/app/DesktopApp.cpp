#include "app/DesktopApp.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <future>
#include <iostream>

#include <QApplication>
#include <QCursor>
#include <QDir>
#include <QIcon>
#include <QLibraryInfo>
#include <QScreen>
#include <QSocketNotifier>
#include <QStandardPaths>
#include <QTranslator>

#include "app/AppInfo.h"
#include "app/Environment.h"
#include "app/LiveSources.h"
#include "app/SingleInstance.h"
#include "app/StoreNotices.h"
#include "core/ExchangeTime.h"
#include "core/GlobalCommands.h"
#include "platform/Autostart.h"
#include "platform/DBusNotifier.h"
#include "platform/FontConfiguration.h"
#include "platform/GnomeShortcuts.h"
#include "platform/QtScheduler.h"
#include "platform/SessionBusProbe.h"
#include "platform/SettingsStore.h"
#include "shell/AppDelegate.h"
#include "shell/NativeChecks.h"

namespace tidemark {
namespace {

bool isSet(const char* name) {
  const char* value = std::getenv(name);
  return value && *value;
}

std::vector<Screen> qtScreens() {
  std::vector<Screen> screens;
  for (QScreen* screen : QGuiApplication::screens()) {
    const QRect f = screen->geometry(), v = screen->availableGeometry();
    screens.push_back({{double(f.x()), double(f.y()), double(f.width()), double(f.height())},
                       {double(v.x()), double(v.y()), double(v.width()), double(v.height())}});
  }
  return screens;
}

// SIGTERM (logging out), SIGHUP (a closed terminal) and SIGINT end the event loop normally, so
// the shell's teardown runs: the position saved, the one-instance lock and socket removed. The
// handlers go in before anything slow, and only write a byte to a pipe; once the event loop
// runs, it reads the byte, also one written while the app was still starting.
int quitPipe[2] = {-1, -1};

void requestQuit(int) {
  const char byte = 1;
  [[maybe_unused]] const auto written = ::write(quitPipe[1], &byte, 1);
}

void catchQuitSignals() {
  if (::pipe2(quitPipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
  struct sigaction action {};
  action.sa_handler = requestQuit;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  for (int signal : {SIGTERM, SIGINT, SIGHUP}) sigaction(signal, &action, nullptr);
}

std::unique_ptr<QSocketNotifier> quitOnSignals() {
  if (quitPipe[0] < 0) return nullptr;
  auto notifier = std::make_unique<QSocketNotifier>(quitPipe[0], QSocketNotifier::Read);
  QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                   [] { QCoreApplication::quit(); });
  return notifier;
}

void setIdentity() {
  QCoreApplication::setApplicationName(QStringLiteral("tidemark"));
  QCoreApplication::setApplicationVersion(QStringLiteral(TIDEMARK_VERSION));
  QGuiApplication::setApplicationDisplayName(QStringLiteral("潮汐栏"));
  QGuiApplication::setDesktopFileName(QStringLiteral("org.tidemark.Tidemark"));
}

// Title bars and window switchers show the app's icon; set with the first window, as the orb
// has no title bar.
bool setWindowIcon(const Bundle& bundle) {
  QIcon icon;
  for (int side : {32, 64, 128})
    if (const std::string file = appIconFile(bundle, side); !file.empty())
      icon.addFile(QString::fromStdString(file));
  if (icon.isNull()) return false;
  QApplication::setWindowIcon(icon);
  return true;
}

}  // namespace

bool loadQtTranslations() {
  static QTranslator qtTexts;
  if (!qtTexts.load(QStringLiteral("qtbase_zh_CN"),
                    QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
    return false;
  QCoreApplication::installTranslator(&qtTexts);
  return true;
}

PlatformChoice choosePlatform(const std::function<const char*(const char*)>& environment) {
  const auto set = [&](const char* name) {
    const char* value = environment(name);
    return value && *value;
  };
  const char* session = environment("XDG_SESSION_TYPE");
  const bool wayland = set("WAYLAND_DISPLAY") || (session && std::string(session) == "wayland");
  if (!wayland) return {};
  // A platform the user chose is kept; on X11 the app still lives in a Wayland session.
  if (const char* chosen = environment("QT_QPA_PLATFORM"); chosen && *chosen)
    return {"", "", std::string(chosen).starts_with("xcb")};
  if (set("DISPLAY"))
    return {"xcb",
            "tidemark: Wayland session: running on X11 through XWayland, so the orb can stay "
            "above other windows and dock at a screen edge",
            true};
  return {"",
          "tidemark: Wayland session without XWayland: the orb cannot keep itself above other "
          "windows or dock at a screen edge, and " +
              bothKeys() +
              " do not work; install XWayland (Debian package xwayland) for all of it"};
}

bool hasDisplay() {
  return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM");
}

int runSelfTest(int& argc, char** argv) {
  // The checks build real widgets but never show them: without a display Qt draws off screen.
  if (!hasDisplay()) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication app(argc, argv);
  setIdentity();
  SelfTestEnvironment environment;
  environment.makeSuite = [](const std::string& name) -> std::unique_ptr<KeyValueStore> {
    return SettingsStore::suite(name);
  };
  environment.removeSuite = [](const std::string& name) { SettingsStore::removeSuite(name); };
  environment.bundle = applicationBundle();
  environment.start = SystemClock().now();
  environment.temporaryRoot = QDir::tempPath().toStdString();
  try {
    runAppModelChecks(environment);
    runNativeChecks(environment);
  } catch (const std::exception& error) {
    std::cerr << "Self-test failed: " << error.what() << "\n";
    return 1;
  }
  std::cout << "Native event-routing checks passed\n";
  std::cout << "All model and native checks passed\n";
  return 0;
}

namespace {

// A second start forwards to the first and ends; one that cannot reach it says what to do.
std::optional<int> exitForClaim(SingleInstance::Claim claim, qint64 holder) {
  switch (claim) {
    case SingleInstance::Claim::first:
      return std::nullopt;
    case SingleInstance::Claim::forwarded:
      std::cerr << "tidemark: already running; its orb is shown\n";
      return 0;
    case SingleInstance::Claim::unresponsive:
      std::cerr << "tidemark: another tidemark of yours is running";
      if (holder > 0) std::cerr << " (process " << holder << ")";
      std::cerr << " but does not answer; end it (";
      if (holder > 0) {
        std::cerr << "kill " << holder;
      } else {
        std::cerr << "pkill -x tidemark";
      }
      std::cerr << ") and start again\n";
      return 1;
  }
  return std::nullopt;
}

// In a Wayland session the global keys are the desktop's to bind: says how they are bound.
void tellWaylandKeys(bool gnomeKeys, bool gnomeInstalled) {
  if (gnomeInstalled) {
    std::cerr << "tidemark: " << bothKeys() << " are GNOME shortcuts that run tidemark --"
              << specOf(GlobalCommand::toggleOrb).option << " and --"
              << specOf(GlobalCommand::toggleMask).option << "\n";
    return;
  }
  std::cerr << "tidemark: no global keys in a Wayland session until the desktop binds them: "
               "bind tidemark --"
            << specOf(GlobalCommand::toggleOrb).option << " and tidemark --"
            << specOf(GlobalCommand::toggleMask).option << " in its keyboard settings"
            << (gnomeKeys ? " (or press 添加 GNOME 快捷键 in the settings, under 外观)" : "")
            << "\n";
}

// The commands as the user would type them, and GNOME's own bindings where they can be added.
SettingsView::DesktopKeys desktopKeys(bool wayland, bool gnomeKeys, const GnomeShortcuts& gnome,
                                      const QString& executable) {
  SettingsView::DesktopKeys keys;
  keys.wayland = wayland;
  // The bare name when it finds this program.
  if (QStandardPaths::findExecutable(QStringLiteral("tidemark")) != executable)
    keys.program = executable;
  if (gnomeKeys) {
    keys.gnomeInstalled = [&gnome] { return gnome.isInstalled(); };
    keys.addGnome = [&gnome] { return gnome.install(); };
  }
  return keys;
}

// Qt's own texts (standard buttons, file dialogs, a field's menu) show only in our windows: its
// translation is loaded with the first of them, not at start.
WindowContentFactory translatedOnFirstUse(const WindowContentFactory& content,
                                          const Bundle& bundle) {
  return [&content, &bundle](AppDelegate& delegate, AuxWindow key,
                             std::optional<SettingsSection> section) {
    static const bool translated = loadQtTranslations();
    static const bool iconSet = setWindowIcon(bundle);
    (void)translated;
    (void)iconSet;
    return content(delegate, key, section);
  };
}

// Nothing is asked of a session bus that does not answer, Qt included.
void leaveSilentBus(const char* address) {
  std::cerr << "tidemark: the session bus at " << address
            << " does not answer; running without the tray item's label, notifications and "
               "the desktop's motion setting\n";
  setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
}

// Two readings every start makes before its first frame, the font configuration (a parse of its
// files) and the exchanges' time zones (a scan of the zone folder), need no display: they are
// made on a second core while Qt loads its platform and connects to the display.
std::future<void> readAhead() {
  return std::async(std::launch::async, [] {
    loadFontConfiguration();
    loadExchangeZones();
  });
}

// Whether the session bus answers, asked on a thread with a deadline.
std::future<BusAnswer> askSessionBus(const char* busAddress) {
  return std::async(std::launch::async, [address = std::string(busAddress ? busAddress : "")] {
    return address.empty() ? BusAnswer::answered
                           : probeSessionBus(address, std::chrono::milliseconds(1000));
  });
}

// Where the pointer is, for the orb's menus and drags.
Point cursorPoint() {
  const QPoint p = QCursor::pos();
  return Point{double(p.x()), double(p.y())};
}

// A second start's requests, passed on by the one-instance channel.
void answerRequests(SingleInstance& instance, AppDelegate& delegate) {
  instance.onRequest = [&delegate](SingleInstance::Request request) {
    switch (request) {
      case SingleInstance::Request::show:
        return delegate.showOrb();
      case SingleInstance::Request::toggleOrb:
        return delegate.toggleOrb();
      case SingleInstance::Request::toggleMask:
        return delegate.toggleMask();
    }
  };
}

}  // namespace

int runDesktop(int& argc, char** argv, const CommandLine& line) {
  catchQuitSignals();
  // A session bus that takes the connection and never answers would hold every D-Bus call, Qt's
  // own too, for ever; it is asked meanwhile, with a deadline, before anything uses it.
  const char* busAddress = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  auto bus = askSessionBus(busAddress);
  const PlatformChoice choice = choosePlatform([](const char* name) { return std::getenv(name); });
  if (!choice.platform.empty()) setenv("QT_QPA_PLATFORM", choice.platform.c_str(), 1);
  if (!choice.message.empty()) std::cerr << choice.message << "\n";
  if (!hasDisplay()) {
    std::cerr << "tidemark: no display to show the orb on; tidemark --quotes prints the "
                 "watchlist's quotes instead\n";
    return 1;
  }
  const auto readings = readAhead();
  QApplication app(argc, argv);
  // Done by now on two cores. Ended here, before any way out: Qt's font database frees the
  // configuration it shares with the reading when the application object goes.
  readings.wait();
  setIdentity();
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setFont(QFont(QStringLiteral("Noto Sans CJK SC")));
  QString runtimeNotice;
  const QString runtime = SingleInstance::runtimeFolder(&runtimeNotice);
  if (!runtimeNotice.isEmpty()) std::cerr << runtimeNotice.toStdString() << "\n";
  SingleInstance instance(runtime.isEmpty() ? QString()
                                            : runtime + QStringLiteral("/tidemark.socket"));
  const SingleInstance::Claim claim = instance.claim();
  if (!instance.notice.isEmpty()) std::cerr << instance.notice.toStdString() << "\n";
  if (const auto exit = exitForClaim(claim, instance.holder)) return *exit;

  if (bus.get() == BusAnswer::silent) leaveSilentBus(busAddress);
  const auto signals = quitOnSignals();

  const Bundle bundle = applicationBundle();
  SystemClock clock;
  QtScheduler scheduler;
  auto store = SettingsStore::standard();
  LiveSources live(bundle, clock);
  // The image by its file too: daemons look names up only in the icon themes they know.
  DBusNotifier notifier(QDBusConnection::sessionBus(), QStringLiteral("潮汐栏"),
                        QString::fromStdString(appIconFile(bundle, 128)));
  AppModel model({*store, clock, scheduler, live.data, notifier, applicationSupportDirectory(),
                  line.endpoints, true, applicationCacheDirectory()},
                 std::nullopt, true, bundle);
  StoreNotices notices(model, store->fileName().toStdString(), std::cerr);
  auto windowSystem = makeWindowSystem();
  // Under Wayland an X11 grab hears keys only while a window of ours has the focus; the desktop
  // binds our toggles instead.
  auto hotKeys = makeGlobalHotKeys(!choice.wayland);
  const QString executable = QCoreApplication::applicationFilePath();
  const GnomeShortcuts gnome(executable);
  const bool gnomeKeys = choice.wayland && GnomeShortcuts::isGnomeDesktop() && gnome.isAvailable();
  const SettingsView::DesktopKeys keys = desktopKeys(choice.wayland, gnomeKeys, gnome, executable);
  const WindowContentFactory content = standardWindowContent(
      model, clock, [] { return Autostart::isEnabled(); },
      [executable](bool on) { return Autostart::setEnabled(on, executable); }, keys);
  const WindowContentFactory windows = translatedOnFirstUse(content, bundle);
  const std::string desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").toStdString();
  AppDelegate delegate(
      {model, *store, clock, scheduler, *windowSystem, *hotKeys, windows, qtScreens, cursorPoint,
       [labels = trayLabelsShown(desktops)] { return makeStatusNotifier(labels); },
       makeDesktopMotionSetting, choice.wayland, [&] { return gnomeKeys && gnome.isInstalled(); },
       orbWindowKind(choice.wayland, desktops)});
  delegate.onQuit = [] { QCoreApplication::quit(); };
  answerRequests(instance, delegate);
  delegate.launch();
  if (choice.wayland) tellWaylandKeys(gnomeKeys, gnomeKeys && gnome.isInstalled());
  const int status = app.exec();
  delegate.terminate();
  // The quotes and the state of the data, kept lazily, reach the disk on the way out, told
  // while the notices still listen.
  store->sync();
  return status;
}

}  // namespace tidemark
