#include "model/SelfTest.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <random>

#include "core/ManualScheduler.h"
#include "model/AppModel.h"
#include "sources/UnavailableDataSource.h"

namespace tidemark {
namespace {

std::string uniqueSuffix() {
  std::random_device device;
  char buffer[48];
  std::snprintf(buffer, sizeof buffer, "%d.%08x", static_cast<int>(::getpid()), device());
  return buffer;
}

// Removes a folder tree when the run ends, however it ends.
struct TemporaryFolder {
  std::filesystem::path path;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
};

struct SuiteRemoval {
  std::function<void(const std::string&)> remove;
  std::string name;
  ~SuiteRemoval() {
    if (remove) remove(name);
  }
};

void check(bool holds, const char* text) {
  if (!holds) throw ModelError::failedCheck(text);
}

class Checks {
 public:
  Checks(KeyValueStore& store, const std::filesystem::path& folder, const Bundle& bundle,
         Date start)
      : store_(store), folder_(folder), bundle_(bundle), clock_(start), scheduler_(clock_) {}

  void run() {
    auto model = makeModel(folder_ / "watchlist.json");
    AppModel& m = *model;
    checkWatchlistEditing(m);
    checkAlerts(m);
    const std::vector<std::string> order{"NVDA", "600519", "00700"};
    checkPersistence(m, order);
    checkTransfer(m);
    checkFreshness(m);
    checkFailedFileWrite();
    next();
    checkReset(m, order);
  }

 private:
  // Defaults, the trend, adding, moving, removing and the rotation past unquoted symbols.
  void checkWatchlistEditing(AppModel& m) {
    bool defaults = m.watchlist() == AppModel::defaultWatchlist() && m.activeID() == "600519" &&
                    m.watchedQuotes().size() == AppModel::defaultWatchlist().size();
    check(defaults, "默认行情或自选不正确");
    next();

    const QuoteSnapshot active = *m.activeQuote();
    const auto trend = active.trend();
    check(trend.size() == 60 && trend.front() == active.prevClose &&
              std::abs(trend.back() - active.price) <= 1e-9 * std::max(1.0, active.price) &&
              trend == active.trend(),
          "趋势辅助图错误");
    next();

    m.add("00700");
    check(std::count(m.watchlist().begin(), m.watchlist().end(), "00700") == 1 &&
              m.watchlist().size() == AppModel::defaultWatchlist().size(),
          "重复添加未去重");
    next();

    m.move("000858", -4);
    check(m.watchlist() == std::vector<std::string>{"000858", "600519", "00700", "NVDA", "03033"},
          "自选排序失败");
    next();

    m.select("000858");
    m.remove("000858");
    check(m.activeID() == "600519" && m.watchlist().front() == "600519",
          "删除当前股票后未选择下一项");
    next();

    // Two of the four symbols have no quote.
    m.setWatchlist({"600519", "399999", "00700", "99999"});
    m.select("600519");
    m.cycleActive();
    const std::string first = m.activeID();
    m.cycleActive();
    check(first == "00700" && m.activeID() == "600519", "轮播被没有行情的自选标的卡住");
    m.setWatchlist(AppModel::defaultWatchlist());
    next();
  }

  void checkAlerts(AppModel& m) {
    const double moutai = m.quote("600519")->price;
    m.setAlert("600519", moutai * 0.99, true);
    check(m.alertRule().triggered, "价格预警未触发");
    next();

    // A threshold the other symbol's price would cross, but this one's does not.
    m.setAlert("600519", moutai * 0.7, false);
    m.select("00700");
    check(!m.alertRule().triggered && m.alertRule().symbolID == "600519" && m.alertQuote() &&
              m.alertQuote()->id == "600519",
          "切换股票后错误地把原预警阈值应用到另一标的");
    m.clearAlert();
    next();
  }

  // The choices and the watchlist survive a restart, an empty list included.
  void checkPersistence(AppModel& m, const std::vector<std::string>& order) {
    m.setTheme(AppTheme::aurora);
    m.setRefreshInterval(5.0);
    m.setOrbSize(132);
    m.setMasked(true);
    m.setMenuDensity(MenuDensity::full);
    m.setAutoRotate(false);
    m.setOrbShowsName(true);
    m.setWatchlist(order);
    {
      auto second = makeModel(folder_ / "watchlist.json");
      check(second->theme() == AppTheme::aurora && second->refreshInterval() == 5.0 &&
                second->orbSize() == 132 && second->masked() &&
                second->menuDensity() == MenuDensity::full && !second->autoRotate() &&
                second->orbShowsName(),
            "偏好未持久化");
      check(second->watchlist() == order, "自选顺序未持久化");
    }
    next();

    m.setWatchlist({});
    bool emptied = m.activeID().empty() && !m.activeQuote() && m.watchedQuotes().empty();
    {
      auto reopened = makeModel(folder_ / "watchlist.json");
      emptied = emptied && reopened->watchlist().empty() && reopened->activeID().empty();
    }
    check(emptied, "空自选仍显示旧标的");
    next();
  }

  // Export and import keep the order; a bad import changes nothing.
  void checkTransfer(AppModel& m) {
    const std::vector<std::string> exported{"03033", "600519", "NVDA"};
    m.setWatchlist(exported);
    m.exportWatchlist(folder_ / "export.json");
    m.setWatchlist({"00700"});
    m.importWatchlist(folder_ / "export.json");
    check(m.watchlist() == exported, "导入导出未保留顺序");
    next();

    std::ofstream(folder_ / "invalid.json") << R"({"symbols":["UNKNOWN"]})";
    bool rejected = false;
    try {
      m.importWatchlist(folder_ / "invalid.json");
    } catch (const ModelError& error) {
      rejected = error.kind() == ModelError::Kind::invalidImport;
    }
    check(rejected && m.watchlist() == exported &&
              makeModel(folder_ / "watchlist.json")->watchlist() == exported,
          "无效导入未拒绝或损坏现有数据");
    next();
  }

  // Neither a simulated phase nor a shipped snapshot passes for fresh data.
  void checkFreshness(AppModel& m) {
    const Date stamp = m.updatedAt();
    bool untouched = true;
    for (QuotePhase phase : allCases<QuotePhase>()) {
      m.simulatePhase(phase);
      untouched = untouched && m.updatedAt() == stamp;
    }
    check(untouched, "状态变化伪造了快照时间");
    next();

    m.setSourceMode(SourceMode::staticJSON);
    const double age = clock_.now() - m.updatedAt();
    // A shipped snapshot predates the moment it is shown; one stamped now or later poses as
    // live data.
    check(m.updatedAt() < clock_.now() &&
              m.phase() == (age > AppModel::staleAfter ? QuotePhase::stale : QuotePhase::live),
          "静态快照刷新伪造实时数据");
    m.setSourceMode(SourceMode::mock);
    next();
  }

  // Clearing the preferences restores every default and keeps the watchlist, an empty one too.
  void checkReset(AppModel& m, const std::vector<std::string>& order) {
    m.setWatchlist(order);
    m.select("00700");
    m.setTheme(AppTheme::rose);
    m.setReduceMotion(true);
    m.setRefreshInterval(0);
    m.setSourceMode(SourceMode::staticJSON);
    m.setMasked(true);
    m.setOrbSize(72);
    m.setMenuDensity(MenuDensity::percent);
    m.setOnboardingSeen(true);
    m.setAlert("600519", 1.0e7, true);
    m.resetPreferences();
    const auto isDefault = [](const AppModel& a) {
      return a.theme() == AppTheme::dark && !a.reduceMotion() && a.refreshInterval() == 2.6 &&
             a.sourceMode() == SourceMode::mock && !a.masked() && a.orbSize() == 96 &&
             a.autoRotate() && a.menuDensity() == MenuDensity::iconOnly && !a.orbShowsName() &&
             !a.onboardingSeen() && !a.alertRule().price && a.alertRule().above &&
             !a.alertRule().triggered && !a.alertRule().symbolID;
    };
    check(isDefault(m) && isDefault(*makeModel(folder_ / "watchlist.json")), "偏好重置失败");
    next();

    check(m.watchlist() == order && m.activeID() == "00700", "清除偏好丢失自选顺序或当前标的");
    next();

    m.setWatchlist({});
    m.resetPreferences();
    check(m.watchlist().empty() && makeModel(folder_ / "watchlist.json")->watchlist().empty(),
          "清除偏好把空自选重置成默认列表");
  }

  std::unique_ptr<AppModel> makeModel(const std::filesystem::path& watchlistFile) {
    return std::make_unique<AppModel>(
        ModelDependencies{store_, clock_, scheduler_, source_, notifier_, std::nullopt},
        watchlistFile, false, bundle_);
  }

  // Each check happens a second after the previous one, so saved lists have distinct times.
  void next() { clock_.advance(1); }

  // The file keeps an older list when writing it fails; the store's newer one must win.
  void checkFailedFileWrite() {
    const auto lists = folder_ / "lists";
    const auto file = lists / "watchlist.json";
    const std::vector<std::string> older{"600519", "00700"};
    const std::vector<std::string> newer{"00700", "NVDA", "600519"};
    auto writer = makeModel(file);
    writer->setWatchlist(older);
    next();

    // While the folder is replaced by a plain file, no watchlist file can be written there.
    std::filesystem::rename(lists, folder_ / "lists.away");
    std::ofstream(lists) << "blocked";
    writer->setWatchlist(newer);
    std::filesystem::remove(lists);
    std::filesystem::rename(folder_ / "lists.away", lists);

    check(makeModel(file)->watchlist() == newer, "文件写入失败后旧文件覆盖了最新自选");
  }

  KeyValueStore& store_;
  std::filesystem::path folder_;
  const Bundle& bundle_;
  ManualClock clock_;
  ManualScheduler scheduler_;
  UnavailableDataSource source_;  // the checks never go to the network
  NullNotifier notifier_;
};

}  // namespace

void runAppModelChecks(const SelfTestEnvironment& environment) {
  const std::string suffix = uniqueSuffix();
  TemporaryFolder folder{environment.temporaryRoot / ("tidemark-self-test-" + suffix)};
  SuiteRemoval removal{environment.removeSuite, "tidemark.self-test." + suffix};
  // Declared after the removal, so the store is closed before its suite is deleted.
  std::unique_ptr<KeyValueStore> store =
      environment.makeSuite ? environment.makeSuite(removal.name) : nullptr;
  std::error_code error;
  std::filesystem::create_directories(folder.path, error);
  check(store != nullptr && !error, "无法创建测试偏好");
  Checks(*store, folder.path, environment.bundle, environment.start).run();
}

}  // namespace tidemark
