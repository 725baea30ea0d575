#include "app/Previews.h"

#include <unistd.h>

#include <functional>
#include <iostream>

#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <QVBoxLayout>

#include "app/DesktopApp.h"
#include "app/Environment.h"
#include "core/FileIO.h"
#include "platform/QtScheduler.h"
#include "platform/SettingsStore.h"
#include "sources/UnavailableDataSource.h"
#include "views/DetailView.h"
#include "views/OrbView.h"
#include "views/SettingsView.h"
#include "views/SmallWindows.h"
#include "views/Theme.h"
#include "views/WatchlistView.h"

namespace tidemark {
namespace {

// The settings window's sections, in their order, as the file names call them.
constexpr const char* sectionSlugs[] = {"appearance", "detail", "watchlist", "holdings",
                                        "alerts",     "source", "privacy"};

constexpr QSize orbSize(460, 460), detailSize(980, 680), settingsSize(960, 740),
    watchlistSize(940, 650), onboardingSize(480, 600), alertSize(420, 540);

// Hosts the view in an off-screen window of the given size, lets queued work settle for 0.2 s
// and writes what it shows.
void render(QWidget* view, QSize size, const std::filesystem::path& file) {
  std::unique_ptr<QWidget> window(new QWidget(nullptr, Qt::FramelessWindowHint));
  window->setAttribute(Qt::WA_DontShowOnScreen);
  window->setAutoFillBackground(true);
  auto* layout = new QVBoxLayout(window.get());
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(view);
  window->resize(size);
  window->show();
  QEventLoop settle;
  QTimer::singleShot(200, &settle, &QEventLoop::quit);
  settle.exec();
  window->grab().save(QString::fromStdString(file.string()), "PNG");
}

// The orb over its theme's backdrop.
class OrbPreview final : public QWidget {
 public:
  OrbPreview(AppModel& model, OrbWindowModel& windowModel, const Clock& clock)
      : orb_(new OrbView(model, windowModel, clock, {}, this)) {
    setAutoFillBackground(true);
    orb_->resize(orbSize);
  }

 private:
  OrbView* orb_;
};

}  // namespace

std::vector<PreviewFile> previewFiles() {
  std::vector<PreviewFile> files;
  for (AppTheme theme : allCases<AppTheme>()) {
    const std::string suffix(rawValue(theme));
    files.push_back({"orb-" + suffix, orbSize.width(), orbSize.height()});
    files.push_back({"detail-" + suffix, detailSize.width(), detailSize.height()});
    files.push_back({"detail-kline-" + suffix, detailSize.width(), detailSize.height()});
    files.push_back({"settings-" + suffix, settingsSize.width(), settingsSize.height()});
    files.push_back({"watchlist-" + suffix, watchlistSize.width(), watchlistSize.height()});
  }
  // The settings window as it opens, on each of its sections.
  for (AppTheme theme : allCases<AppTheme>())
    for (const char* slug : sectionSlugs)
      files.push_back({std::string("settings-") + slug + "-" + std::string(rawValue(theme)),
                       settingsSize.width(), settingsSize.height()});
  files.push_back({"onboarding", onboardingSize.width(), onboardingSize.height()});
  files.push_back({"alert", alertSize.width(), alertSize.height()});
  files.push_back({"orb-collapsed", orbSize.width(), orbSize.height()});
  files.push_back({"orb-radial", orbSize.width(), orbSize.height()});
  for (DockEdge edge : allDockEdges())
    files.push_back({"orb-dock-" + std::string(rawValue(edge)), orbSize.width(), orbSize.height()});
  files.push_back({"alert-masked", alertSize.width(), alertSize.height()});
  files.push_back({"detail-masked", detailSize.width(), detailSize.height()});
  files.push_back({"detail-kline-masked", detailSize.width(), detailSize.height()});
  return files;
}

void renderPreviews(AppModel& model, const Clock& clock, const std::filesystem::path& directory) {
  std::error_code ignored;
  std::filesystem::create_directories(directory, ignored);
  model.setRefreshInterval(0);
  model.setReduceMotion(true);
  model.setAutoRotate(false);
  // Holdings in two currencies, one of them at a loss, for the section and the detail.
  model.setHolding("600519", 100, 1500.5);
  model.setHolding("00700", 200, 380);
  // Alerts on two symbols: the single one of the editor, one that has fired, one switched off.
  model.setAlert("600519", 1500, true);
  const auto addAlert = [&](const char* symbol, AlertKind kind, double threshold,
                            AlertRepeat repeat) {
    model.addAlert(AlertRule{"", symbol, kind, threshold, repeat, true, std::nullopt});
  };
  addAlert("600519", AlertKind::changeDown, 5, AlertRepeat::daily);
  addAlert("600519", AlertKind::priceBelow, 1500, AlertRepeat::once);
  addAlert("00700", AlertKind::changeUp, 3, AlertRepeat::daily);
  if (!model.alertBook().rules().empty())
    model.setAlertEnabled(model.alertBook().rules().back().id, false);
  OrbWindowModel windowModel;
  const auto file = [&](const std::string& name) { return directory / (name + ".png"); };
  const auto orb = [&](const std::string& name) {
    render(new OrbPreview(model, windowModel, clock), orbSize, file(name));
  };
  const auto detail = [&](const std::string& name) {
    render(new DetailView(model, {}, {}), detailSize, file(name));
  };
  const auto editor = [&](const std::string& name) {
    render(new AlertEditorView(model, {}), alertSize, file(name));
  };
  const auto settings = [&](SettingsSection section) {
    SettingsView::Actions actions;
    actions.autostartEnabled = [] { return false; };
    actions.setAutostart = [](bool) { return std::nullopt; };
    return new SettingsView(model, clock, std::move(actions), section);
  };

  windowModel.setExpanded(true);
  for (AppTheme theme : allCases<AppTheme>()) {
    model.setTheme(theme);
    applyTheme(theme);
    const std::string suffix(rawValue(theme));
    orb("orb-" + suffix);
    detail("detail-" + suffix);
    // The held security's day candles, its cost line among them.
    model.setDetailChart(KlinePeriod::day);
    detail("detail-kline-" + suffix);
    model.setDetailChart(std::nullopt);
    render(new WatchlistView(model, clock), watchlistSize, file("watchlist-" + suffix));
    for (size_t i = 0; i < std::size(sectionSlugs); ++i)
      render(settings(SettingsView::sections().at(i)), settingsSize,
             file(std::string("settings-") + sectionSlugs[i] + "-" + suffix));
    // The window as it opens, on its first section. A folder that takes no files was already
    // passed over by render().
    std::error_code ignored;
    std::filesystem::copy_file(file("settings-appearance-" + suffix), file("settings-" + suffix),
                               std::filesystem::copy_options::overwrite_existing, ignored);
  }
  const AppTheme first = allCases<AppTheme>().front();
  model.setTheme(first);
  applyTheme(first);
  render(new OnboardingView(model, {}), onboardingSize, file("onboarding"));
  editor("alert");
  windowModel.setExpanded(false);
  orb("orb-collapsed");
  windowModel.setRadialOpen(true);
  orb("orb-radial");
  windowModel.setRadialOpen(false);
  for (DockEdge edge : allDockEdges()) {
    windowModel.setDockEdge(edge);
    orb("orb-dock-" + std::string(rawValue(edge)));
  }
  windowModel.setDockEdge(std::nullopt);
  model.setMasked(true);
  editor("alert-masked");
  detail("detail-masked");
  model.setDetailChart(KlinePeriod::month);
  detail("detail-kline-masked");
  model.setDetailChart(std::nullopt);
}

int runRenderPreviews(int& argc, char** argv, const std::filesystem::path& directory) {
  // A folder that cannot take the files is told before anything is drawn.
  std::error_code error, ignored;
  std::filesystem::create_directories(directory, error);
  const auto probe = directory / ".tidemark-preview-probe";
  if (!error) error = writeFileAtomically(probe, "");
  std::filesystem::remove(probe, ignored);
  if (error) {
    std::cerr << "tidemark: cannot write the previews into " << directory.string() << ": "
              << error.message() << "\n";
    return 1;
  }
  if (!hasDisplay()) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  // The off-screen platform warns about every window it cannot size; nothing is wrong.
  static const QtMessageHandler standard = qInstallMessageHandler(nullptr);
  qInstallMessageHandler(
      [](QtMsgType type, const QMessageLogContext& context, const QString& text) {
        if (!text.contains(QLatin1String("propagateSizeHints"))) standard(type, context, text);
      });
  QApplication app(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("tidemark"));
  QApplication::setFont(QFont(QStringLiteral("Noto Sans CJK SC")));
  const std::string pid = std::to_string(::getpid());
  const std::string suiteName = "tidemark.preview." + pid;
  auto store = SettingsStore::suite(suiteName);
  if (!store) {
    std::cerr << "tidemark: cannot create the preview settings " << suiteName << "\n";
    return 1;
  }
  const std::filesystem::path watchlistFile = "/tmp/tidemark-preview-" + pid + "-watchlist.json";
  {
    SystemClock clock;
    QtScheduler scheduler;
    UnavailableDataSource source;
    NullNotifier notifier;
    AppModel model({*store, clock, scheduler, source, notifier, std::nullopt}, watchlistFile, false,
                   applicationBundle());
    renderPreviews(model, clock, directory);
  }
  store.reset();
  SettingsStore::removeSuite(suiteName);
  std::filesystem::remove(watchlistFile, ignored);
  std::cout << "Rendered previews: " << directory.string() << "\n";
  return 0;
}

}  // namespace tidemark
