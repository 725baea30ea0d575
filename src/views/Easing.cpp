#include "views/Easing.h"

#include <algorithm>

#include <QEasingCurve>
#include <QPointF>

namespace tidemark {
namespace {

QEasingCurve bezier(double x1, double y1, double x2, double y2) {
  QEasingCurve curve(QEasingCurve::BezierSpline);
  curve.addCubicBezierSegment(QPointF(x1, y1), QPointF(x2, y2), QPointF(1, 1));
  return curve;
}

}  // namespace

double easeOut(double t) {
  static const QEasingCurve curve = bezier(0, 0, 0.58, 1);
  return curve.valueForProgress(std::clamp(t, 0.0, 1.0));
}

double easeInOut(double t) {
  static const QEasingCurve curve = bezier(0.42, 0, 0.58, 1);
  return curve.valueForProgress(std::clamp(t, 0.0, 1.0));
}

double pulseProgress(double elapsed) {
  return easeOut(elapsed / pulseSeconds);
}

double flashLevel(double elapsed) {
  if (elapsed < 0 || elapsed >= flashSeconds) return 0;
  if (elapsed < flashHeldFrom) return easeInOut(elapsed / flashHeldFrom);
  if (elapsed < flashHeldUntil) return 1;
  return 1 - easeOut((elapsed - flashHeldUntil) / (flashSeconds - flashHeldUntil));
}

}  // namespace tidemark
