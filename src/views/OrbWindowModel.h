#pragma once

#include <optional>
#include <string>

#include "core/ChangeSignal.h"
#include "views/OrbLayout.h"

namespace tidemark {

// The orb panel's own state, written by the shell and drawn by the orb view. Every assignment
// that changes a value notifies the subscribers.
class OrbWindowModel {
 public:
  std::optional<DockEdge> dockEdge() const { return dockEdge_; }
  std::optional<DockEdge> previewEdge() const { return previewEdge_; }
  bool expanded() const { return expanded_; }
  bool radialOpen() const { return radialOpen_; }
  bool dragging() const { return dragging_; }
  double stretch() const { return stretch_; }
  double dragAngle() const { return dragAngle_; }
  bool forcedObserve() const { return forcedObserve_; }
  const std::optional<std::string>& hint() const { return hint_; }

  void setDockEdge(std::optional<DockEdge> v) { assign(dockEdge_, v); }
  void setPreviewEdge(std::optional<DockEdge> v) { assign(previewEdge_, v); }
  void setExpanded(bool v) { assign(expanded_, v); }
  void setRadialOpen(bool v) { assign(radialOpen_, v); }
  void setDragging(bool v) { assign(dragging_, v); }
  void setStretch(double v) { assign(stretch_, v); }
  void setDragAngle(double v) { assign(dragAngle_, v); }
  void setForcedObserve(bool v) { assign(forcedObserve_, v); }
  void setHint(std::optional<std::string> v) { assign(hint_, std::move(v)); }

  [[nodiscard]] ChangeSignal::Subscription subscribe(std::function<void()> handler) {
    return changed_.subscribe(std::move(handler));
  }

 private:
  template <class T>
  void assign(T& field, T value) {
    if (field == value) return;
    field = std::move(value);
    changed_.notify();
  }

  std::optional<DockEdge> dockEdge_, previewEdge_;
  bool expanded_ = false, radialOpen_ = false, dragging_ = false;
  double stretch_ = 0, dragAngle_ = 0;
  bool forcedObserve_ = false;
  std::optional<std::string> hint_;
  ChangeSignal changed_;
};

}  // namespace tidemark
