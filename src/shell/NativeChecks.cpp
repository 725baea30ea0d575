#include "shell/NativeChecks.h"

#include <unistd.h>

#include <random>
#include <stdexcept>

#include "core/ManualScheduler.h"
#include "shell/OrbContentView.h"
#include "sources/UnavailableDataSource.h"

namespace tidemark {
namespace {

void check(bool holds, const std::string& message) {
  if (!holds) throw std::runtime_error(message);
}

struct Cleanup {
  std::function<void(const std::string&)> removeSuite;
  std::string name;
  std::filesystem::path folder;
  ~Cleanup() {
    if (removeSuite) removeSuite(name);
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }
};

}  // namespace

void runNativeChecks(const SelfTestEnvironment& environment) {
  std::random_device device;
  const std::string name =
      "tidemark-" + std::to_string(::getpid()) + "-" + std::to_string(device());
  Cleanup cleanup{environment.removeSuite, name, environment.temporaryRoot / name};
  std::unique_ptr<KeyValueStore> store =
      environment.makeSuite ? environment.makeSuite(name) : nullptr;
  std::error_code error;
  std::filesystem::create_directories(cleanup.folder, error);
  check(store && !error, "无法创建测试偏好");

  ManualClock clock(environment.start);
  ManualScheduler scheduler(clock);
  UnavailableDataSource source;
  NullNotifier notifier;
  AppModel model({*store, clock, scheduler, source, notifier, std::nullopt},
                 cleanup.folder / "watchlist.json", false, environment.bundle);
  // Controls stand at their resting places at once; the rules are about where they rest.
  model.setReduceMotion(true);
  OrbWindowModel windowModel;
  OrbContentView content(model, windowModel, clock, {});
  content.resize(static_cast<int>(canvasSide), static_cast<int>(canvasSide));

  const QPointF c(canvasCenter.x, canvasCenter.y);
  const double size = model.orbSize();
  check(content.hitTest(c) == &content, "Orb core must receive click/drag directly");
  check(content.hitTest({5, 5}) == nullptr, "Transparent corners must not capture events");
  check(content.isInteractive(c + QPointF(0, -size * 0.6)),
        "Collapsed satellite pearls must remain interactive");

  windowModel.setExpanded(true);
  const QPointF expanded = c + QPointF(0, -size * 1.06 + 12);
  check(content.isInteractive(expanded),
        "Expanded satellite hit target must match ViewLayer position");
  QWidget* target = content.hitTest(expanded);
  check(target != nullptr && target != &content,
        "Satellite events must reach the hosting view, not the core drag handler");

  windowModel.setExpanded(false);
  for (DockEdge edge : allDockEdges()) {
    windowModel.setDockEdge(edge);
    const QPointF toVisible = edge == DockEdge::left    ? QPointF(40, 0)
                              : edge == DockEdge::right ? QPointF(-40, 0)
                              : edge == DockEdge::top   ? QPointF(0, 40)
                                                        : QPointF(0, -40);
    const std::string raw(rawValue(edge));
    check(content.isInteractive(c + toVisible), "Dock " + raw + " must preserve visible drag area");
    check(!content.isInteractive(c - toVisible), "Dock " + raw + " must reject hidden half");

    // The clip keeps exactly the half facing away from the edge, however far it is probed.
    const Rect clip = dockClip(edge, Rect{0, 0, 100, 100});
    const Point inside{50 + toVisible.x() / 2, 50 + toVisible.y() / 2};
    const Point hidden{50 - toVisible.x() / 2, 50 - toVisible.y() / 2};
    const Point far{50 + toVisible.x() * 125, 50 + toVisible.y() * 125};
    check(clip.contains(inside) && !clip.contains(hidden) && !clip.contains(far) &&
              clip.width * clip.height == 5000,
          "Dock mask must show exactly a half-plane");
  }

  windowModel.setDockEdge(std::nullopt);
  windowModel.setRadialOpen(true);
  for (int k = 0; k < ringButtonCount; ++k) {
    const Point p = ringButtonCenter(k, size);
    check(content.isInteractive({p.x, p.y}), "Radial controls must receive events");
  }
  for (QPointF corner : {QPointF(1, 1), QPointF(459, 1), QPointF(1, 459), QPointF(459, 459)})
    check(content.hitTest(corner) == nullptr, "Radial must not block the transparent outer window");
}

}  // namespace tidemark
