#include "shell/AppDelegate.h"

#include <cmath>

#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QStyleHints>

#include "core/GlobalCommands.h"
#include "core/Market.h"
#include "core/NumberText.h"
#include "views/DetailView.h"
#include "views/Metrics.h"
#include "views/MiniOrb.h"
#include "views/OrbPalette.h"
#include "views/SettingsView.h"
#include "views/SmallWindows.h"
#include "views/StatusTitle.h"
#include "views/Theme.h"

namespace tidemark {
namespace {

constexpr const char* usageHint = "单击展开卫星 · 双击详情 · 右键快捷操作";

// The tooltip's line of keys: "Ctrl+Alt+Space 显示/隐藏 · Ctrl+Alt+M 遮蔽".
std::string keyLine() {
  std::string line;
  for (const GlobalCommandSpec& command : globalCommands)
    line +=
        (line.empty() ? "" : " · ") + std::string(command.keys) + " " + std::string(command.brief);
  return line;
}

// The orb's hint when the settings cannot be saved.
constexpr const char* settingsWriteFailureHint = "设置无法保存 · 重启后更改将丢失";

std::string maskHint(bool masked) {
  return masked ? "行情数字已遮蔽" : "已恢复行情数字";
}

// Left and right presses in any window of ours, with their times.
class PressWatcher final : public QObject {
 public:
  explicit PressWatcher(std::function<void(Point, unsigned long)> pressed)
      : pressed_(std::move(pressed)) {}

 protected:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::MouseButtonPress && object->isWidgetType()) {
      const auto* press = static_cast<QMouseEvent*>(event);
      const QPointF p = press->globalPosition();
      if (press->button() == Qt::LeftButton || press->button() == Qt::RightButton)
        pressed_({p.x(), p.y()}, press->timestamp());
    }
    return false;
  }

 private:
  std::function<void(Point, unsigned long)> pressed_;
};

}  // namespace

WindowContentFactory standardWindowContent(
    AppModel& model, const Clock& clock, std::function<bool()> autostartEnabled,
    std::function<std::optional<std::string>(bool on)> setAutostart,
    SettingsView::DesktopKeys keys) {
  return
      [&model, &clock, autostartEnabled = std::move(autostartEnabled),
       setAutostart = std::move(setAutostart), keys = std::move(keys)](
          AppDelegate& d, AuxWindow key, std::optional<SettingsSection> section) -> WindowContent {
        if (key == AuxWindow::guide)
          return {new OnboardingView(model, [&d] { d.windows().close(AuxWindow::guide); })};
        if (key == AuxWindow::alert)
          return {new AlertEditorView(
              model, [&d] { d.windows().close(AuxWindow::alert); },
              [&d] { d.openSettings(SettingsSection::alerts); })};
        if (key == AuxWindow::settings) {
          SettingsView::Actions actions;
          actions.openGuide = [&d] { d.windows().open(AuxWindow::guide); };
          actions.openAlert = [&d] { d.windows().open(AuxWindow::alert); };
          actions.close = [&d] { d.windows().close(AuxWindow::settings); };
          actions.autostartEnabled = autostartEnabled;
          actions.setAutostart = setAutostart;
          actions.keys = keys;
          actions.keys.changed = [&d] { d.desktopKeysChanged(); };
          auto* settings = new SettingsView(model, clock, std::move(actions),
                                            section.value_or(SettingsSection::appearance));
          return {settings, settings};
        }
        return {};
      };
}

AppDelegate::AppDelegate(Dependencies dependencies) : deps_(std::move(dependencies)) {
  windows_ = std::make_unique<WindowRegistry>(WindowRegistry::Host{
      .model = deps_.model,
      .windowSystem = deps_.windowSystem,
      .content =
          [this](AuxWindow key, std::optional<SettingsSection> section) {
            return deps_.windowContent ? deps_.windowContent(*this, key, section) : WindowContent{};
          },
      .orbPlace = [this] { return orbPlace(); },
      .tellSettings = [this](SettingsView& settings) { tellSettings(settings); },
      .dialogs = deps_.windowKind.tiling,
  });
  surface_ = std::make_unique<OrbSurface>(OrbSurface::Host{
      .windowModel = windowModel_,
      .model = deps_.model,
      .windowSystem = deps_.windowSystem,
      .clock = deps_.clock,
      .mouseLocation = deps_.mouseLocation,
      .windowKind = deps_.windowKind,
      .waylandSession = deps_.waylandSession,
      .ownsWindow = [this](const QWidget* top) { return windows_->owns(top); },
  });
  motion_ = std::make_unique<OrbMotion>(OrbMotion::Host{
      windowModel_, deps_.model, deps_.defaults, deps_.clock, deps_.screens, deps_.mouseLocation,
      [this] { return panel_ != nullptr; }, [this] { return surface_->origin(); },
      [this](Point to) { surface_->moveOrigin(to); }});
  tray_ = std::make_unique<TrayPresenter>(TrayPresenter::Host{
      .model = deps_.model,
      .notifier = deps_.statusNotifier,
      .tooltip = [this] { return tooltip(); },
      .orbShown = [this] { return surface_->shown(); },
      .observing = [this] { return windowModel_.forcedObserve(); },
      .pixelRatio = [this] { return panel_ ? panel_->devicePixelRatioF() : qreal(1); },
      .toggleOrb = [this] { toggleOrb(); },
      .openSettings = [this] { openSettings(SettingsSection::appearance); },
      .openAlert = [this] { windows_->open(AuxWindow::alert); },
      .openGuide = [this] { windows_->open(AuxWindow::guide); },
      .refresh = [this] { refresh(); },
      .toggleMask = [this] { toggleMask(); },
      .toggleObserve = [this] { toggleObserve(); },
      .centerOrb = [this] { centerOrb(); },
      .quit =
          [this] {
            if (onQuit) onQuit();
          },
  });
}

void AppDelegate::centerOrb() {
  motion_->center();
  if (panel_) {
    surface_->setShown(true);
    panel_->raise();
  }
  motion_->save();
}

AppDelegate::~AppDelegate() {
  terminate();
}

void AppDelegate::launch() {
  auto* self = this;
  panel_ = std::make_unique<OrbPanel>(
      deps_.model, windowModel_, deps_.clock,
      [self](RingCommand command) { self->ringAction(command); }, deps_.windowKind.managed);
  OrbContentView& content = panel_->content();
  content.orbView().setBare(!deps_.windowKind.inputShapeHonoured);
  wireOrbEvents(content);

  // The tray item is made once the orb is on screen, so that neither its registration nor the
  // tray host's reading of it comes before the first frame; a second at most.
  content.orbView().onFirstPaint = [self] { self->statusItem(); };
  statusItemWork_ = deps_.scheduler.after(1, [self] { self->statusItem(); });

  surface_->attach(*panel_);
  motion_->restore();
  surface_->applyWindowGeometry();
  surface_->setShown(true);
  panel_->raise();

  watchScreens();
  subscriptions_.push_back(deps_.model.subscribe([self] { self->scheduleSynchronize(); }));
  subscriptions_.push_back(
      windowModel_.subscribe([self] { self->surface_->applyWindowGeometry(); }));
  synchronize();
  watchPresses();

  if (deps_.motionSetting) motionSetting_ = deps_.motionSetting();
  if (motionSetting_) {
    motionSetting_->watch([self](bool calm) { self->setSystemCalm(calm); });
    setSystemCalm(motionSetting_->calm());
  }
  installKeys();
  if (!deps_.model.onboardingSeen()) windows_->open(AuxWindow::guide);
}

void AppDelegate::wireOrbEvents(OrbContentView& content) {
  auto* self = this;
  content.onClick = [self] { self->scheduleClick(); };
  // Beside the orb, as a press on another window.
  content.onOutsidePress = [self] {
    self->clickWork_.cancel();
    self->windowModel_.setRadialOpen(false);
    self->windowModel_.setExpanded(false);
  };
  content.onDoubleClick = [self] {
    self->clickWork_.cancel();
    self->windowModel_.setExpanded(false);
    self->openSettings(SettingsSection::detail);
  };
  content.onRightClick = [self] {
    self->clickWork_.cancel();
    self->windowModel_.setExpanded(false);
    if (self->windowModel_.dockEdge()) self->motion_->undock(170);
    self->surface_->moveOrigin(clampedOrigin(self->screens(), self->surface_->origin(), 170));
    self->windowModel_.setRadialOpen(!self->windowModel_.radialOpen());
    self->panel_->activateWindow();
    self->panel_->content().setFocus();
    self->motion_->save();
  };
  content.onHeld = [self](bool held) { self->surface_->setHeld(held); };
  content.onDragStart = [self] {
    self->clickWork_.cancel();
    self->motion_->startDrag();
  };
  content.onDragMove = [self](QPointF p) { self->motion_->moveDrag({p.x(), p.y()}); };
  content.onDragEnd = [self] { self->motion_->endDrag(); };
  panel_->onKey = [self](int key) { return self->handleKey(key); };
  // Focus taken elsewhere closes the ring menu, also where presses in other programs go unseen
  // (Wayland's own windows); not where the orb's window keeps no focus (wlroots), which would
  // close it as the click that opened it ends.
  panel_->onDeactivated = [self] {
    if (self->deps_.windowKind.focusKept) self->windowModel_.setRadialOpen(false);
  };
}

void AppDelegate::watchScreens() {
  auto* self = this;
  // Screens come and go; every change re-settles the orb once the dust has settled.
  const auto watch = [self](QScreen* screen) {
    for (auto signal : {&QScreen::geometryChanged, &QScreen::availableGeometryChanged})
      self->screenConnections_.push_back(QObject::connect(
          screen, signal, self->panel_.get(), [self] { self->motion_->screensChanged(); }));
  };
  for (QScreen* screen : QGuiApplication::screens()) watch(screen);
  if (auto* app = qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
    screenConnections_.push_back(QObject::connect(app, &QGuiApplication::screenAdded, panel_.get(),
                                                  [self, watch](QScreen* screen) {
                                                    watch(screen);
                                                    self->motion_->screensChanged();
                                                  }));
    screenConnections_.push_back(QObject::connect(app, &QGuiApplication::screenRemoved,
                                                  panel_.get(),
                                                  [self] { self->motion_->screensChanged(); }));
  }
}

void AppDelegate::watchPresses() {
  auto* self = this;
  // A press anywhere else closes the ring menu: in other applications and on the desktop, then
  // in our own windows.
  deps_.windowSystem.watchPointerPresses(
      [self](unsigned long time) { self->pressedSomewhere(time); });
  pressWatcher_ = std::make_unique<PressWatcher>([self](Point p, unsigned long time) {
    self->lastOwnPress_ = time;
    self->pressedAt(p);
  });
  QCoreApplication::instance()->installEventFilter(pressWatcher_.get());
}

void AppDelegate::installKeys() {
  auto* self = this;
  desktopKeysBound_ = deps_.desktopKeysBound && deps_.desktopKeysBound();
  deps_.hotKeys.install([self](int id) {
    if (id == specOf(GlobalCommand::toggleOrb).hotKeyId) self->toggleOrb();
    if (id == specOf(GlobalCommand::toggleMask).hotKeyId) self->toggleMask();
  });
  keysInstalled_ = true;
  // A key another program holds is named, and asked for again every few seconds until it is ours.
  if (!unavailableKeys().empty()) {
    synchronize();
    keysRetry_ = deps_.scheduler.every(3, lifeline_.guard([self] {
      if (!self->deps_.hotKeys.retry()) return;
      self->synchronize();
      self->windows_->tellSettings();
      if (self->unavailableKeys().empty()) self->keysRetry_.cancel();
    }));
  }
}

StatusItem& AppDelegate::statusItem() {
  return tray_->item([this] { synchronize(); });
}

void AppDelegate::terminate() {
  if (!panel_) return;
  motion_->save();
  surface_->stop();
  motion_->stop();
  keysRetry_.cancel();
  statusItemWork_.cancel();
  panel_->content().orbView().onFirstPaint = nullptr;
  for (const auto& connection : screenConnections_) QObject::disconnect(connection);
  screenConnections_.clear();
  subscriptions_.clear();
  pressWatcher_.reset();
  // The windows' views read the model, which does not outlive the delegate.
  windows_->closeAll();
}

void AppDelegate::pressedAt(Point global) {
  if (!windowModel_.radialOpen() || !panel_) return;
  const Point o = surface_->origin();
  const QPointF p(global.x - o.x, global.y - o.y);
  if (!panel_->isVisible() || !panel_->content().isInteractive(p))
    windowModel_.setRadialOpen(false);
}

void AppDelegate::pressedSomewhere(unsigned long time) {
  // A press on a window of ours reaches us twice: from the window system, which knows no place,
  // and as the window's own event, which does. That one may come a moment later, and the pointer
  // may have moved on meanwhile (a right click on the orb, then straight to the ring), so the
  // verdict waits for it; a press it matches was judged there.
  pressVerdicts_[time] = deps_.scheduler.after(0.1, lifeline_.guard([this, time] {
    if (time != lastOwnPress_) pressedAt(deps_.mouseLocation());
    pressVerdicts_.erase(time);
  }));
}

void AppDelegate::setSystemCalm(bool calm) {
  systemCalm_ = calm;
  if (panel_) panel_->content().orbView().setSystemCalm(calm);
  windows_->tellSettings();
}

void AppDelegate::tellSettings(SettingsView& settings) {
  settings.setSystemCalm(systemCalm_);
  const std::string keys = unavailableKeys();
  settings.setShortcutNotice(keys.empty() ? QString()
                                          : QString::fromStdString(keys) +
                                                QStringLiteral("，释放后会自动启用。"));
}

void AppDelegate::scheduleSynchronize() {
  // The model notifies once per property; one synchronize per event-loop turn reads them all.
  if (synchronizePending_) return;
  synchronizePending_ = true;
  deps_.scheduler.post(lifeline_.guard([this] {
    synchronizePending_ = false;
    synchronize();
  }));
}

std::string AppDelegate::statusTitle() const {
  return trayTitleText(deps_.model);
}

std::string AppDelegate::unavailableKeys() const {
  if (!keysInstalled_ || !deps_.hotKeys.canHold()) return "";
  std::string keys;
  for (const GlobalCommandSpec& command : globalCommands)
    if (!deps_.hotKeys.holds(command.hotKeyId))
      keys += (keys.empty() ? "" : "、") + std::string(command.keys);
  return keys.empty() ? "" : keys + " 已被其他程序占用";
}

void AppDelegate::desktopKeysChanged() {
  desktopKeysBound_ = deps_.desktopKeysBound && deps_.desktopKeysBound();
  synchronize();
}

std::string AppDelegate::tooltip() const {
  const AppModel& m = deps_.model;
  // Under Wayland the keys are there only once the desktop's own shortcuts run our toggles.
  const bool bound = !deps_.waylandSession || desktopKeysBound_;
  std::string text = "岚舟 · " + m.sourceLabel() + "\n左键显示/隐藏灵球 · 右键管理和设置\n" +
                     (bound ? keyLine() : "全局快捷键未绑定 · 见设置 › 外观 › 快捷键");
  if (const std::string keys = unavailableKeys(); !keys.empty()) text += "\n" + keys;
  if (m.masked()) return text + "\n行情已遮蔽";
  if (const QuoteSnapshot* quote = m.activeQuote()) {
    text += "\n" + quote->name + "  " + quote->currency() + m.quoteStyle().price(*quote);
    const ExtendedQuote* extended = m.extras().extended(quote->id);
    const auto session = extendedSessionLabel(m.marketStateOf(marketLabel(Market::usShare)));
    if (extended && session)
      text +=
          extendedTooltipText(*session, *extended, m.quoteStyle().price(*quote, extended->price));
    else if (const auto state = m.marketStateOf(quote->market))
      text += " · " + std::string(stateText(*state));
  }
  if (const auto days = dayProfitTexts(m.holdingsTotals()); !days.empty()) {
    text += "\n今日盈亏 ";
    for (size_t i = 0; i < days.size(); ++i) text += (i ? " · " : "") + days[i];
  }
  return text;
}

void AppDelegate::synchronize() {
  AppModel& m = deps_.model;
  motion_->sizeChanged();
  tray_->update();
  // Told once while settings cannot be saved; a later good save ends the streak.
  if (m.settingsWriteFailure() && !toldSaveFailure_) showHint(settingsWriteFailureHint);
  toldSaveFailure_ = m.settingsWriteFailure().has_value();
  const bool exclude = m.masked();
  if (panel_) deps_.windowSystem.setExcludedFromCapture(*panel_, exclude);
  windows_->setExcludedFromCapture(exclude);
  applyTheme(m.theme());
  surface_->applyWindowGeometry();
}

void AppDelegate::showHint(const std::string& text) {
  hintWork_.cancel();
  windowModel_.setHint(text);
  hintWork_ = deps_.scheduler.after(
      metrics::hintSeconds, lifeline_.guard([this] { windowModel_.setHint(std::nullopt); }));
}

void AppDelegate::showOrb() {
  if (!panel_) return;
  if (!surface_->shown()) return toggleOrb();
  panel_->raise();
  showHint(usageHint);
}

void AppDelegate::toggleOrb() {
  if (!panel_) return;
  surface_->setShown(!surface_->shown());
  if (surface_->shown()) {
    panel_->raise();
    showHint(usageHint);
  }
  scheduleSynchronize();  // the tray menu names what a click does now
}

void AppDelegate::toggleMask() {
  deps_.model.setMasked(!deps_.model.masked());
  showHint(maskHint(deps_.model.masked()));
}

void AppDelegate::refresh() {
  deps_.model.refresh();
  showHint("正在刷新" + deps_.model.sourceLabel());
}

void AppDelegate::toggleObserve() {
  windowModel_.setForcedObserve(!windowModel_.forcedObserve());
  surface_->observeChanged();
  windowModel_.setRadialOpen(false);
}

void AppDelegate::scheduleClick() {
  if (windowModel_.radialOpen()) {
    windowModel_.setRadialOpen(false);
    return;
  }
  clickWork_.cancel();
  const double interval = QGuiApplication::styleHints()->mouseDoubleClickInterval() / 1000.0;
  clickWork_ = deps_.scheduler.after(interval, lifeline_.guard([this] { toggleBloom(); }));
}

void AppDelegate::toggleBloom() {
  AppModel& m = deps_.model;
  windowModel_.setRadialOpen(false);
  if (windowModel_.dockEdge()) motion_->undock(m.orbSize() * 1.8);
  windowModel_.setExpanded(!windowModel_.expanded());
  if (windowModel_.expanded()) {
    surface_->moveOrigin(clampedOrigin(screens(), surface_->origin(), m.orbSize() * 1.8));
    if (panel_) panel_->content().orbView().ripple();
  }
  if (m.watchlist().empty()) showHint("暂无自选 · 请在设置中的自选管理添加");
  motion_->save();
}

void AppDelegate::ringAction(RingCommand command) {
  windowModel_.setRadialOpen(false);
  switch (command) {
    case RingCommand::refresh:
      refresh();
      break;
    case RingCommand::alert:
      windows_->open(AuxWindow::alert);
      break;
    case RingCommand::appearance:
      openSettings(SettingsSection::appearance);
      break;
    case RingCommand::mask:
      toggleMask();
      break;
    case RingCommand::quit:
      if (onQuit) onQuit();
      break;
  }
}

bool AppDelegate::handleKey(int key) {
  AppModel& m = deps_.model;
  switch (key) {
    case Qt::Key_R:
      refresh();
      return true;
    case Qt::Key_1:
    case Qt::Key_2:
    case Qt::Key_3:
      m.setOrbSize(orbSizes[size_t(key - Qt::Key_1)]);
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
      toggleBloom();
      return true;
    case Qt::Key_M:
      toggleMask();
      return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
      m.cycleActive();  // both arrows step the same way
      return true;
    case Qt::Key_Escape:
      clickWork_.cancel();
      windowModel_.setRadialOpen(false);
      windowModel_.setExpanded(false);
      if (windowModel_.dockEdge()) motion_->save(motion_->undock(m.orbSize() / 2 + 16));
      return true;
    default:
      return false;
  }
}

std::optional<OrbPlace> AppDelegate::orbPlace() const {
  const auto all = screens();
  if (!panel_) return std::nullopt;
  const Point c = centerOfOrigin(surface_->origin());
  const auto edge = windowModel_.dockEdge();
  const auto index = edge ? dockedScreen(all, c, *edge) : nearestScreen(all, c);
  if (!index) return std::nullopt;
  return OrbPlace{all[*index].visibleFrame, c, deps_.model.orbSize()};
}

}  // namespace tidemark
