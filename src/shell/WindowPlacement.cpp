#include "shell/WindowPlacement.h"

#include <algorithm>

namespace tidemark {
namespace {

// Title bar and borders the window manager adds around the window's own size.
constexpr double frameWidth = 8, frameHeight = 36;

Rect fitted(const Rect& area, WindowRequest r) {
  const double w = std::min(r.width, std::max(area.width - frameWidth, 1.0));
  const double h = std::min(r.height, std::max(area.height - frameHeight, 1.0));
  return {0, 0, w, h};
}

double clampInto(double v, double low, double high) {
  return std::max(low, std::min(v, high));
}

}  // namespace

Rect centredWindow(const Rect& visibleFrame, WindowRequest request) {
  Rect r = fitted(visibleFrame, request);
  r.x = visibleFrame.midX() - (r.width + frameWidth) / 2;
  r.y = visibleFrame.midY() - (r.height + frameHeight) / 2;
  return r;
}

Rect windowBesideOrb(const Rect& visibleFrame, Point orbCenter, double orbSize,
                     WindowRequest request) {
  Rect r = fitted(visibleFrame, request);
  // The sphere's glow reaches 0.8 of its size from the centre; a little air beyond it.
  const double reach = orbSize * 0.8 + 12;
  const double outerWidth = r.width + frameWidth, outerHeight = r.height + frameHeight;
  if (orbCenter.x + reach + outerWidth <= visibleFrame.maxX()) {
    r.x = orbCenter.x + reach;
  } else if (orbCenter.x - reach - outerWidth >= visibleFrame.minX()) {
    r.x = orbCenter.x - reach - outerWidth;
  } else {
    return centredWindow(visibleFrame, request);
  }
  r.y = clampInto(orbCenter.y - outerHeight / 2, visibleFrame.minY(),
                  visibleFrame.maxY() - outerHeight);
  return r;
}

}  // namespace tidemark
