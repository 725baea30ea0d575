#include "views/OrbView.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>

#include <QDateTime>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>

#include "core/NumberText.h"
#include "views/Easing.h"
#include "views/Metrics.h"
#include "views/OrbLayout.h"
#include "views/Symbols.h"
#include "views/TextStyle.h"

namespace tidemark {
namespace {

// Milliseconds between frames: springs need the full rate; fades and the slow idle breathing
// look the same with fewer frames and cost far less.

struct RingItem {
  const char* label;
  const char* symbol;
};
// In the order of allRingCommands.
constexpr RingItem ringItems[ringButtonCount] = {
    {"刷新", "arrow.clockwise"},
    {"预警", "bell"},
    {"外观", "circle.lefthalf.filled"},
    {"遮蔽", "lock"},
    {"退出", "power"},
};

}  // namespace

OrbView::OrbView(AppModel& model, OrbWindowModel& windowModel, const Clock& clock,
                 std::function<void(RingCommand)> onAction, QWidget* parent)
    : QWidget(parent),
      model_(model),
      windowModel_(windowModel),
      clock_(clock),
      onAction_(std::move(onAction)),
      size_(0.4, 0.8, model.orbSize()),
      ticker_(clock, [this](double seconds) { return step(seconds); }) {
  resize(static_cast<int>(canvasSide), static_cast<int>(canvasSide));
  for (int k = 0; k < ringButtonCount; ++k) {
    auto* button = new RingButton(this, ringItems[k].label, ringItems[k].symbol);
    button->yieldsAt = [this, button](QPoint p) {
      return coreTest_ && coreTest_(button->mapTo(this, QPointF(p)));
    };
    QObject::connect(button, &QAbstractButton::clicked, this, [this, k] {
      if (onAction_) onAction_(allRingCommands[k]);
    });
    button->setLook(OrbPalette{model.theme()}, 0);
    ringButtons_.push_back(button);
  }
  seenUpdatedAt_ = model.updatedAt();
  seenActiveID_ = model.activeID();
  seenExpanded_ = expanded();
  radial_.snap(windowModel.radialOpen() ? 1 : 0);
  setMouseTracking(true);
  modelSubscription_ = model.subscribe([this] { scheduleRefresh(); });
  windowSubscription_ = windowModel.subscribe([this] { windowModelChanged(); });
  syncSatellites();
  layoutControls();
  setAccessibleName(QString::fromStdString(accessibilityText()));
  if (availableMotion()) ticker_.wake();
}

bool OrbView::expanded() const {
  return windowModel_.expanded() && !windowModel_.dockEdge() && !windowModel_.radialOpen();
}

bool OrbView::motionAllowed() const {
  return !model_.reduceMotion() && !systemCalm_;
}

void OrbView::setSystemCalm(bool calm) {
  if (systemCalm_ == calm) return;
  systemCalm_ = calm;
  scheduleRefresh();
  windowModelChanged();
}

bool OrbView::availableMotion() const {
  // Without a compositor the window is clipped to the sphere, which must then stand still.
  return motionAllowed() && compositing_ && !windowModel_.dragging() && !windowModel_.dockEdge();
}

void OrbView::setCompositing(bool on) {
  if (compositing_ == on) return;
  compositing_ = on;
  glowKey_.clear();
  sphereKey_.clear();
  faceKey_.clear();
  update();
  extentChanged();
  if (availableMotion()) ticker_.wake();
}

void OrbView::setBare(bool on) {
  if (bare_ == on) return;
  bare_ = on;
  glowKey_.clear();
  update();
  extentChanged();
}

bool OrbView::controlsOut() const {
  if (radial_.value() > 0.001 || radial_.target() > 0) return true;
  return std::any_of(satellites_.begin(), satellites_.end(), [](const Satellite& satellite) {
    return satellite.radius.value() > 0.601 || satellite.target > 0.601;
  });
}

double OrbView::drawnSize() const {
  return std::max(size_.value(), model_.orbSize());
}

std::string OrbView::accessibilityText() const {
  const QuoteSnapshot* quote = model_.activeQuote();
  if (!quote) return "暂无自选股，请打开自选管理添加";
  std::string text = quote->id + "，" + quote->name + "，" + quote->market + "，";
  if (model_.masked()) {
    text += "行情已遮蔽";
  } else {
    text +=
        "现价" + model_.quoteStyle().price(*quote) + "，涨跌幅" + percentText(quote->changePct());
  }
  return text + "，" + model_.sourceLabel() + "，" + std::string(label(model_.phase()));
}

void OrbView::ripple() {
  if (!motionAllowed()) return;
  ripples_.push_back(now());
  ticker_.wake();
}

void OrbView::scheduleRefresh() {
  // The model notifies once per property; one refresh per event-loop turn reads them all.
  satellitesStale_ = true;
  refreshes_.request();
}

void OrbView::modelChanged() {
  if (model_.updatedAt() != seenUpdatedAt_) {
    seenUpdatedAt_ = model_.updatedAt();
    animateTick();
  }
  if (model_.activeID() != seenActiveID_) {
    seenActiveID_ = model_.activeID();
    animateSwap();
  }
  if (motionAllowed()) {
    size_.setTarget(model_.orbSize());
  } else {
    size_.snap(model_.orbSize());
  }
  syncSatellites();
  layoutControls();
  setAccessibleName(QString::fromStdString(accessibilityText()));
  // A new quote changes the orb and the satellites folded round it: that square, unless the
  // controls stand out.
  if (controlsOut()) {
    update();
  } else {
    update(orbSquare());
  }
  if (size_.isMoving() || availableMotion()) ticker_.wake();
  extentChanged();
}

QRect OrbView::orbSquare() const {
  const double reach = size_.value() * (ripples_.empty() ? 0.9 : 1.0) + 4;
  return QRectF(canvasCenter.x - reach, canvasCenter.y - reach, 2 * reach, 2 * reach)
      .toAlignedRect();
}

void OrbView::windowModelChanged() {
  const bool spread = expanded();
  if (spread != seenExpanded_) {
    seenExpanded_ = spread;
    const double factor = spread ? 1.06 : 0.6;
    for (size_t i = 0; i < satellites_.size(); ++i) {
      Satellite& satellite = satellites_[i];
      satellite.target = factor;
      if (motionAllowed()) {
        satellite.startAt = now() + static_cast<double>(i) * 0.045;  // one by one
      } else {
        satellite.radius.snap(factor);
      }
    }
  }
  const double radial = windowModel_.radialOpen() ? 1 : 0;
  const double stretch = windowModel_.stretch();
  if (motionAllowed()) {
    radial_.setTarget(radial);
    // While dragging the stretch follows the pointer; released, it springs back.
    if (windowModel_.dragging()) {
      stretch_.snap(stretch);
    } else {
      stretch_.setTarget(stretch);
    }
  } else {
    radial_.snap(radial);
    stretch_.snap(stretch);
    for (Satellite& satellite : satellites_) satellite.radius.snap(satellite.target);
  }
  syncSatellites();
  layoutControls();
  update();
  ticker_.wake();
  extentChanged();
}

void OrbView::animateTick() {
  if (!motionAllowed()) return;
  ++pulseCount_;
  pulseStart_ = now();
  flashStart_ = now();
  ticker_.wake();
}

void OrbView::animateSwap() {
  if (!motionAllowed()) return;
  swap_.snap(1);
  swapAt_ = now() + 0.02;
  ticker_.wake();
}

bool OrbView::step(double seconds) {
  const double t = now();
  bool springs = false;
  for (Spring* spring : {&size_, &radial_, &stretch_}) {
    spring->advance(seconds);
    springs = springs || spring->isMoving();
  }
  // The core's texts slide back by a few points: the fades' frame rate is smooth enough.
  swap_.advance(seconds);
  if (swap_.target() == 1 && t >= swapAt_) swap_.setTarget(0);
  const bool controls = advanceSatellites(seconds, t) || radial_.isMoving() || size_.isMoving();
  springs = springs || controls;
  std::erase_if(ripples_, [t](double start) { return t - start > metrics::rippleSeconds; });
  const bool effects = !ripples_.empty() || t - pulseStart_ < pulseSeconds ||
                       t - flashStart_ < flashSeconds || swap_.isMoving();
  const bool idle = availableMotion();
  if (idle) idlePhase_ += seconds;
  ticker_.setInterval(frameInterval(springs, effects, t));
  // The window follows what moves, and once more when it has come to rest.
  if (springs || extentMoving_) extentChanged();
  extentMoving_ = springs;
  // Idle frames, and those of the flash while it holds, are drawn only when something moved by
  // a step; a frame after the springs and effects come to rest clears their last trace.
  const bool settled = framesMoving_ && !springs && !effects;
  framesMoving_ = springs || effects;
  if (controls) {
    layoutControls();
    update();
  } else if (springs || settled || !ripples_.empty() || pulse() > 0 || swap_.isMoving() ||
             flashStep() != shownFlash_ || idleLook() != shownIdle_) {
    // Only the orb and what spreads from it changed: repaint that square, not the canvas.
    update(orbSquare());
  }
  return springs || effects || idle;
}

bool OrbView::advanceSatellites(double seconds, double t) {
  bool moving = false;
  for (Satellite& satellite : satellites_) {
    if (t >= satellite.startAt) satellite.radius.setTarget(satellite.target);
    satellite.radius.advance(seconds);
    moving = moving || satellite.radius.isMoving() || satellite.radius.target() != satellite.target;
  }
  return moving;
}

int OrbView::frameInterval(bool springs, bool effects, double t) const {
  if (springs) return metrics::springFrameMs;
  // While the flash is held and nothing else moves, the next frame is the one its fall begins on.
  const double sinceFlash = t - flashStart_;
  const bool held = sinceFlash >= flashHeldFrom && sinceFlash < flashHeldUntil &&
                    ripples_.empty() && t - pulseStart_ >= pulseSeconds && !swap_.isMoving();
  if (held)
    return std::clamp(static_cast<int>(std::ceil((flashHeldUntil - sinceFlash) * 1000)),
                      metrics::effectFrameMs, metrics::idleFrameMs);
  return effects ? metrics::effectFrameMs : metrics::idleFrameMs;
}

SatellitePage OrbView::satellitePage() {
  if (satellitesStale_) syncSatellites();
  return page_;
}

void OrbView::syncSatellites() {
  satellitesStale_ = false;
  const std::vector<QuoteSnapshot> quotes = model_.watchedQuotes();
  std::optional<size_t> active;
  for (size_t i = 0; i < quotes.size() && !active; ++i)
    if (quotes[i].id == model_.activeID()) active = i;
  const SatellitePage page = tidemark::satellitePage(quotes.size(), active, model_.orbSize());
  const double factor = expanded() ? 1.06 : 0.6;
  if (page != page_) {
    // Another page is a new ring: it stands at once where the current one stands.
    page_ = page;
    satellites_.assign(page.count, Satellite{});
    for (Satellite& satellite : satellites_) {
      satellite.radius.snap(factor);
      satellite.target = factor;
    }
    hovered_.reset();
    pressed_.reset();
  }
  for (size_t i = 0; i < page.count; ++i) satellites_[i].quote = quotes[page.first + i];
}

std::vector<std::string> OrbView::satelliteIDs() const {
  std::vector<std::string> ids;
  for (const Satellite& satellite : satellites_) ids.push_back(satellite.quote.id);
  return ids;
}

QPointF OrbView::satelliteDot(size_t i) const {
  const Point p = orbitPoint(i, satellites_.size(), size_.value() * satellites_[i].radius.value());
  return {p.x, p.y};
}

double OrbView::satelliteCaptionOpacity(size_t i) const {
  return captionOpacity(satellites_[i].radius.value());
}

std::optional<size_t> OrbView::satelliteAt(QPointF p) const {
  // Docked or under the open ring menu the satellites take nothing.
  if (windowModel_.dockEdge() || windowModel_.radialOpen()) return std::nullopt;
  if (coreTest_ && coreTest_(p)) return std::nullopt;
  const size_t n = satellites_.size();
  std::optional<size_t> best;
  double bestDistance = 0;
  for (size_t i = 0; i < n; ++i) {
    if (!satelliteHitRect(i, n, model_.orbSize(), expanded()).contains({p.x(), p.y()})) continue;
    const Point dot = satelliteCenter(i, n, model_.orbSize(), expanded());
    const double d = std::hypot(dot.x - p.x(), dot.y - p.y());
    if (!best || d < bestDistance) best = i, bestDistance = d;
  }
  return best;
}

double OrbView::pulse() const {
  const double elapsed = now() - pulseStart_;
  return elapsed >= 0 && elapsed < pulseSeconds ? pulseProgress(elapsed) : 0;
}

double OrbView::flash() const {
  return flashLevel(now() - flashStart_);
}

int OrbView::flashStep() const {
  return static_cast<int>(std::lround(flash() * 16));
}

void OrbView::setHovered(std::optional<size_t> index) {
  if (hovered_ == index) return;
  hovered_ = index;
  if (index) {
    setCursor(Qt::PointingHandCursor);
  } else {
    unsetCursor();
  }
  update();
  extentChanged();
}

void OrbView::mousePressEvent(QMouseEvent* event) {
  // Only a satellite's press stays here; the core's and the empty canvas's go to the parent.
  pressed_.reset();
  if (event->button() == Qt::LeftButton) pressed_ = satelliteAt(event->position());
  if (!pressed_) return event->ignore();
  event->accept();
}

void OrbView::mouseMoveEvent(QMouseEvent* event) {
  setHovered(satelliteAt(event->position()));
  if (!pressed_) return event->ignore();
  event->accept();
}

void OrbView::mouseReleaseEvent(QMouseEvent* event) {
  if (!pressed_) return event->ignore();
  const auto released = satelliteAt(event->position());
  const auto pressed = std::exchange(pressed_, std::nullopt);
  event->accept();
  if (released == pressed && *pressed < satellites_.size())
    model_.select(satellites_[*pressed].quote.id);
}

void OrbView::leaveEvent(QEvent* event) {
  setHovered(std::nullopt);
  QWidget::leaveEvent(event);
}

bool OrbView::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    auto* help = static_cast<QHelpEvent*>(event);
    if (const auto i = satelliteAt(help->pos())) {
      QToolTip::showText(help->globalPos(), QString::fromStdString(satellites_[*i].quote.name),
                         this);
    } else {
      QToolTip::hideText();
      event->ignore();
    }
    return true;
  }
  return QWidget::event(event);
}

void OrbView::layoutControls() {
  const double s = size_.value();
  const OrbPalette palette{model_.theme()};
  for (int k = 0; k < ringButtonCount; ++k) {
    const Rect r = ringButtonHitRect(k, s);
    ringButtons_[k]->setGeometry(static_cast<int>(std::lround(r.x)),
                                 static_cast<int>(std::lround(r.y)), static_cast<int>(r.width),
                                 static_cast<int>(r.height));
    ringButtons_[k]->setLook(palette, radial_.value());
  }
}

}  // namespace tidemark
