#pragma once

#include <functional>
#include <optional>
#include <vector>

#include <QTimer>

#include "core/Clock.h"
#include "core/KeyValueStore.h"
#include "model/AppModel.h"
#include "shell/DockGeometry.h"
#include "views/OrbWindowModel.h"

namespace tidemark {

// The orb's movement on the desktop: the drag with its stretch, the throw and its glide, docking
// on a screen edge, and the position kept in the store.
class OrbMotion {
 public:
  static constexpr const char* positionKey = "tidemark.orb.position.v2";

  struct Host {
    OrbWindowModel& windowModel;
    const AppModel& model;
    KeyValueStore& defaults;  // the standard store: the position lives there
    const Clock& clock;
    std::function<std::vector<Screen>()> screens;
    std::function<Point()> mouseLocation;
    // Whether the orb has its window yet; nothing is moved or kept before.
    std::function<bool()> placed;
    // Where the orb's canvas stands (its top left), and moving it there.
    std::function<Point()> origin;
    std::function<void(Point)> moveOrigin;
  };

  explicit OrbMotion(Host host);

  void startDrag();
  void moveDrag(Point proposed);
  // A fast enough release within reach of an edge throws the orb; otherwise it settles at once.
  void endDrag();
  void stop() { glideTimer_.stop(); }
  // Docks on the nearest edge within reach (or the forced one), or keeps the orb on the screen.
  void settle(std::optional<DockEdge> forced);
  // Off the edge by `margin`; the orb's new centre.
  Point undock(double margin);
  // Whole, in the middle of the screen under the pointer.
  void center();
  // A docked orb stays on its edge; a free one is kept on the screens.
  void screensChanged();
  // A docked orb of a new size sits on its edge again.
  void sizeChanged();
  void save(std::optional<Point> center = std::nullopt);
  // Where the orb stood last time, when that is still on a screen; otherwise centred.
  void restore();

 private:
  void glideStep();

  Host host_;
  QTimer glideTimer_;
  Point lastMouse_;
  Date lastMouseDate_;
  Vector velocity_;
  std::optional<double> lastDockedSize_;
};

}  // namespace tidemark
