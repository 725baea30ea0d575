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
#include "views/OrbLayout.h"
#include "views/Symbols.h"
#include "views/TextStyle.h"

namespace tidemark {
namespace {

constexpr double pi = std::numbers::pi;
constexpr double rippleSeconds = 1.15;
// Milliseconds between frames: springs need the full rate; fades and the slow idle breathing
// look the same with fewer frames and cost far less.
constexpr int springRate = 16, effectRate = 50, idleRate = 150;

struct RingItem {
  const char* label;
  const char* symbol;
};
constexpr RingItem ringItems[ringButtonCount] = {
    {"刷新", "arrow.clockwise"},
    {"预警", "bell"},
    {"外观", "circle.lefthalf.filled"},
    {"遮蔽", "lock"},
    {"退出", "power"},
};

QRectF toQ(const Rect& r) {
  return QRectF(r.x, r.y, r.width, r.height);
}

const char* badgeSymbol(const AppModel& model) {
  if (model.masked()) return "lock.fill";
  if (model.alertTriggered()) return "bell.badge.fill";
  switch (model.phase()) {
    case QuotePhase::loading:
      return "arrow.triangle.2.circlepath";
    case QuotePhase::live:
      return "checkmark";
    case QuotePhase::stale:
      return "clock";
    case QuotePhase::degraded:
      return "exclamationmark.triangle";
    case QuotePhase::offline:
      return "wifi.slash";
  }
  return "checkmark";
}

const char* edgeWord(DockEdge edge) {
  switch (edge) {
    case DockEdge::left:
      return "左";
    case DockEdge::right:
      return "右";
    case DockEdge::top:
      return "上";
    case DockEdge::bottom:
      return "下";
  }
  return "";
}

QColor faded(const Color& color, double opacity) {
  return qt(withOpacity(color, color.opacity * opacity));
}

}  // namespace

// The glow around the orb and the shaded sphere, centred at c.
void paintOrbSphere(QPainter& painter, QPointF c, double s, const OrbPalette& palette, Color trend,
                    bool offline, bool glow, bool shadow) {
  // 1. Glow: the halo, then a tint of the quote's direction.
  if (glow) {
    QRadialGradient halo(c, 0.75 * s);
    halo.setColorAt(0.3 / 0.75, qt(palette.halo()));
    halo.setColorAt(0.72 / 0.75, Qt::transparent);
    halo.setColorAt(1, Qt::transparent);
    painter.setPen(Qt::NoPen);
    painter.setBrush(halo);
    painter.drawEllipse(c, 0.75 * s, 0.75 * s);
    QRadialGradient tint(c, 0.8 * s);
    tint.setColorAt(0, Qt::transparent);
    tint.setColorAt(0.32 / 0.8, faded(trend, offline ? 0 : 0.2));
    tint.setColorAt(0.78 / 0.8, Qt::transparent);
    tint.setColorAt(1, Qt::transparent);
    painter.setBrush(tint);
    painter.drawEllipse(c, 0.8 * s, 0.8 * s);
  }

  // 2. The sphere: shadow, body, rim and inner shading.
  const QRectF sphere(c.x() - s / 2, c.y() - s / 2, s, s);
  {
    painter.setPen(Qt::NoPen);
    if (shadow) {
      QRadialGradient below(c + QPointF(0, 0.12 * s), s / 2 + 0.22 * s);
      below.setColorAt(0, qt(palette.halo()));
      below.setColorAt((s / 2) / (s / 2 + 0.22 * s), qt(palette.halo()));
      below.setColorAt(1, Qt::transparent);
      painter.setBrush(below);
      painter.drawEllipse(c + QPointF(0, 0.12 * s), s / 2 + 0.22 * s, s / 2 + 0.22 * s);
    }

    QRadialGradient body(sphere.topLeft() + QPointF(0.3 * s, 0.24 * s), 1.08 * s);
    body.setColorAt(0, qt(palette.orbLit()));
    body.setColorAt(0.46, qt(palette.orbMid()));
    body.setColorAt(0.76, qt(palette.orbShade()));
    body.setColorAt(1, qt(palette.orbDeep()));
    painter.setBrush(body);
    painter.drawEllipse(sphere);
    painter.save();
    QPainterPath clip;
    clip.addEllipse(sphere);
    painter.setClipPath(clip, Qt::IntersectClip);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(faded(palette.orbDeep(), 0.25), 0.08 * s));
    painter.drawEllipse(sphere.translated(-0.03 * s, -0.04 * s));
    painter.restore();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(faded(palette.orbLit(), 0.35), 1));
    painter.drawEllipse(sphere);
  }
}

OrbView::OrbView(AppModel& model, OrbWindowModel& windowModel, const Clock& clock,
                 std::function<void(int)> onAction, QWidget* parent)
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
      if (onAction_) onAction_(k);
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
  return motionAllowed() && !windowModel_.dragging() && !windowModel_.dockEdge();
}

std::string OrbView::accessibilityText() const {
  const QuoteSnapshot* quote = model_.activeQuote();
  if (!quote) return "暂无自选股，请打开自选管理添加";
  std::string text = quote->id + "，" + quote->name + "，" + quote->market + "，";
  if (model_.masked()) {
    text += "行情已遮蔽";
  } else {
    text += "现价" + priceText(quote->price) + "，涨跌幅" + percentText(quote->changePct());
  }
  return text + "，" + model_.sourceLabel() + "，" + std::string(model_.phaseLabel());
}

void OrbView::ripple() {
  if (!motionAllowed()) return;
  ripples_.push_back(now());
  ticker_.wake();
}

void OrbView::scheduleRefresh() {
  // The model notifies once per property; one refresh per event-loop turn reads them all.
  satellitesStale_ = true;
  if (refreshPending_) return;
  refreshPending_ = true;
  QMetaObject::invokeMethod(
      this, [this] { modelChanged(); }, Qt::QueuedConnection);
}

void OrbView::modelChanged() {
  refreshPending_ = false;
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
  update();
  if (size_.isMoving() || availableMotion()) ticker_.wake();
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
  bool controls = radial_.isMoving() || size_.isMoving();
  for (Satellite& satellite : satellites_) {
    if (t >= satellite.startAt) satellite.radius.setTarget(satellite.target);
    satellite.radius.advance(seconds);
    const bool moving =
        satellite.radius.isMoving() || satellite.radius.target() != satellite.target;
    controls = controls || moving;
  }
  springs = springs || controls;
  std::erase_if(ripples_, [t](double start) { return t - start > rippleSeconds; });
  const bool effects = !ripples_.empty() || t - pulseStart_ < pulseSeconds ||
                       t - flashStart_ < flashSeconds || swap_.isMoving();
  const bool idle = availableMotion();
  if (idle) idlePhase_ += seconds;
  ticker_.setInterval(springs ? springRate : effects ? effectRate : idleRate);
  if (controls) {
    layoutControls();
    update();
  } else {
    // Only the orb and what spreads from it changed: repaint that square, not the canvas.
    const double reach = size_.value() * (ripples_.empty() ? 0.9 : 1.0) + 4;
    update(QRectF(canvasCenter.x - reach, canvasCenter.y - reach, 2 * reach, 2 * reach)
               .toAlignedRect());
  }
  return springs || effects || idle;
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

void OrbView::setHovered(std::optional<size_t> index) {
  if (hovered_ == index) return;
  hovered_ = index;
  if (index) {
    setCursor(Qt::PointingHandCursor);
  } else {
    unsetCursor();
  }
  update();
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

void OrbView::paintSatellites(QPainter& painter, bool behind) const {
  const OrbPalette palette{model_.theme()};
  for (size_t i = 0; i < satellites_.size(); ++i) {
    const Satellite& satellite = satellites_[i];
    if (drawnBehindSphere(satellite.radius.value()) != behind) continue;
    SatelliteLook look;
    look.selected = satellite.quote.id == model_.activeID();
    look.masked = model_.masked();
    look.hovered = hovered_ == i;
    look.captionOpacity = captionOpacity(satellite.radius.value());
    paintSatellite(painter, satelliteDot(i), satellite.quote, look, palette);
  }
}

void OrbView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  paintBody(painter);
  // For start-up measurements only: the wall-clock time of the first painted orb.
  static bool reported = false;
  if (!reported && qEnvironmentVariableIsSet("TIDEMARK_REPORT_FIRST_PAINT")) {
    reported = true;
    std::fprintf(stderr, "first paint at %lld ms\n",
                 static_cast<long long>(QDateTime::currentMSecsSinceEpoch()));
  }
}

void OrbView::paintFace(QPainter& painter, QPointF c, double s, bool core) const {
  const OrbPalette palette{model_.theme()};
  const QuoteSnapshot* quote = model_.activeQuote();
  const Color trend = quoteColor(quote ? quote->changePct() : 0);
  const bool offline = model_.phase() == QuotePhase::offline;
  const QRectF sphere(c.x() - s / 2, c.y() - s / 2, s, s);
  // 3. The day's range: a track and an arc from the top, clockwise, ending in a dot.
  if (!core) {
    painter.save();
    painter.setOpacity(offline ? 0.2 : 1);
    const double radius = s / 2 - 0.06 * s;
    const QRectF ring(c.x() - radius, c.y() - radius, 2 * radius, 2 * radius);
    painter.setPen(QPen(faded(palette.orbDeep(), 0.28), 1.6));
    painter.drawEllipse(ring);
    const double progress =
        quote ? rangeProgress(quote->price, quote->low, quote->high, true) : 0.5;
    QPen arcPen(QBrush(palette.aurora(ring)), 0.026 * s, Qt::SolidLine, Qt::RoundCap);
    painter.setPen(arcPen);
    painter.drawArc(ring, 90 * 16, static_cast<int>(std::lround(-progress * 360 * 16)));
    const double end = pi / 2 - progress * 2 * pi;
    const QPointF dot(c.x() + radius * std::cos(end), c.y() - radius * std::sin(end));
    painter.setPen(Qt::NoPen);
    painter.setBrush(qt(trend));
    painter.drawEllipse(dot, 0.045 * s / 2, 0.045 * s / 2);
    painter.restore();
  }

  // 4. The core: label, price and change.
  if (core) {
    painter.save();
    const QColor text = qt(palette.orbText());
    const bool masked = model_.masked();
    if (quote) {
      painter.setFont(uiFont(0.105 * s, QFont::Black));
      painter.setPen(text);
      const std::string label = model_.orbShowsName() ? quote->name : quote->id;
      painter.drawText(QRectF(sphere.x(), c.y() - 0.3 * s, s, 0.14 * s), Qt::AlignCenter,
                       QString::fromStdString(label));
    }
    const std::string price = masked ? "••••" : quote ? priceText(quote->price) : "—";
    QFont priceFont = uiFont(0.185 * s, QFont::Black);
    priceFont.setLetterSpacing(QFont::AbsoluteSpacing, -0.4);
    const QString priceString = QString::fromStdString(price);
    const double fits = 0.78 * s;
    const double wide = QFontMetricsF(priceFont).horizontalAdvance(priceString);
    if (wide > fits) priceFont.setPixelSize(std::max(1, static_cast<int>(0.185 * s * fits / wide)));
    painter.setFont(priceFont);
    painter.setPen(quote && !masked ? qt(trend) : text);
    painter.drawText(QRectF(sphere.x(), c.y() - 0.13 * s, s, 0.24 * s), Qt::AlignCenter,
                     priceString);
    // Masking hides the number, not its direction; without a quote the change reads as none.
    const QString percent =
        QString::fromStdString(masked ? "••••" : percentText(quote ? quote->changePct() : 0));
    const QFont percentFont = uiFont(0.095 * s, QFont::Bold);
    const double w = QFontMetricsF(percentFont).horizontalAdvance(percent) + 0.08 * s;
    const QRectF capsule(c.x() - w / 2, c.y() + 0.12 * s, w, 0.13 * s);
    painter.setPen(Qt::NoPen);
    painter.setBrush(faded(trend, 0.15));
    painter.drawRoundedRect(capsule, capsule.height() / 2, capsule.height() / 2);
    painter.setFont(percentFont);
    painter.setPen(qt(trend));
    painter.drawText(capsule, Qt::AlignCenter, percent);
    painter.restore();
  }

  // 5. The state badge, low on the sphere where its light colour stands out.
  if (!core) {
    const double side = 0.095 * s;
    drawSymbol(painter, badgeSymbol(model_),
               QRectF(c.x() - side / 2, c.y() + 0.3 * s - side / 2, side, side),
               qt(palette.orbLit()), true);
  }
}

std::string OrbView::faceKey(double s) const {
  // Everything the sphere and its face are drawn from.
  const QuoteSnapshot* q = model_.activeQuote();
  std::string key = std::to_string(static_cast<int>(model_.theme())) + "|" + std::to_string(s) +
                    "|" + std::to_string(devicePixelRatioF()) + "|" + badgeSymbol(model_) + "|" +
                    std::to_string(model_.masked()) + std::to_string(model_.orbShowsName()) +
                    std::to_string(static_cast<int>(model_.phase()));
  if (q)
    key += "|" + q->id + "|" + q->name + "|" + std::to_string(q->price) + "|" +
           std::to_string(q->prevClose) + "|" + std::to_string(q->high) + "|" +
           std::to_string(q->low);
  return key;
}

void OrbView::paintBody(QPainter& painter) {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::TextAntialiasing);
  const OrbPalette palette{model_.theme()};
  const QuoteSnapshot* quote = model_.activeQuote();
  const Color trend = quoteColor(quote ? quote->changePct() : 0);
  const bool offline = model_.phase() == QuotePhase::offline;
  const double s = size_.value();
  const double t = now();

  if (auto edge = windowModel_.dockEdge())
    painter.setClipRect(toQ(dockClip(edge, Rect{0, 0, canvasSide, canvasSide})));

  // Idle breathing and a slight drift, only while nothing else holds the orb still.
  QPointF c(canvasCenter.x, canvasCenter.y);
  double breath = 1;
  if (availableMotion()) {
    breath = 1 + 0.012 * std::sin(2 * pi * idlePhase_ / 4.2);
    c += QPointF(1.5 * std::sin(2 * pi * idlePhase_ / 5.3),
                 1.2 * std::cos(2 * pi * idlePhase_ / 6.1));
  }

  painter.save();
  // A fast drag stretches the orb along its direction of travel.
  const double stretch = stretch_.value();
  painter.translate(c);
  painter.rotate(windowModel_.dragAngle());
  painter.scale(breath * (1 + stretch), breath * (1 - stretch * 0.5));
  painter.rotate(-windowModel_.dragAngle());
  painter.translate(-c);

  // The orb changes only when the model does, so it is drawn once into two images, the sphere
  // with its ring and the core's texts, and reused for every frame of the idle motion, the fades
  // and the core springing into place after a new symbol.
  const double glowRadius = 0.86 * s + 2;
  const QRectF frame(c.x() - glowRadius, c.y() - glowRadius, 2 * glowRadius, 2 * glowRadius);
  std::string key = faceKey(s);
  if (key != cacheKey_ || sphereCache_.isNull()) {
    cacheKey_ = std::move(key);
    const double ratio = devicePixelRatioF();
    const int side = static_cast<int>(std::ceil(2 * glowRadius * ratio));
    const QPointF centre(glowRadius, glowRadius);
    for (QImage* image : {&sphereCache_, &coreCache_}) {
      if (image->width() != side || image->devicePixelRatio() != ratio) {
        *image = QImage(QSize(side, side), QImage::Format_ARGB32_Premultiplied);
        image->setDevicePixelRatio(ratio);
      }
      image->fill(Qt::transparent);
      QPainter layer(image);
      layer.setRenderHint(QPainter::Antialiasing);
      layer.setRenderHint(QPainter::TextAntialiasing);
      if (image == &sphereCache_) paintOrbSphere(layer, centre, s, palette, trend, offline);
      paintFace(layer, centre, s, image == &coreCache_);
    }
  }
  paintSatellites(painter, true);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawImage(frame, sphereCache_);
  const double swap = swap_.value();
  painter.save();
  painter.setOpacity(1 - 0.6 * swap);
  painter.drawImage(frame.translated(0, 0.12 * s * swap), coreCache_);
  painter.restore();
  const QRectF sphere(c.x() - s / 2, c.y() - s / 2, s, s);
  if (const double f = flash(); f > 0) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(faded(palette.orbLit(), 0.22 * f));
    painter.drawEllipse(sphere);
  }

  // Ripples and the pulse of a fresh quote spread from the rim.
  painter.setBrush(Qt::NoBrush);
  for (double start : ripples_) {
    const double f = easeOut((t - start) / rippleSeconds);
    painter.setPen(QPen(faded(palette.auroraA(), 0.85 * (1 - f)), 1.5));
    painter.drawEllipse(c, s / 2 * (1 + 0.95 * f), s / 2 * (1 + 0.95 * f));
  }
  if (const double f = pulse(); f > 0) {
    painter.setPen(QPen(faded(trend, 0.5 * (1 - f)), 2));
    painter.drawEllipse(c, s / 2 + 0.18 * s * f, s / 2 + 0.18 * s * f);
  }

  painter.restore();
  paintSatellites(painter, false);

  // A transient hint below the orb, clear of the spread satellites; beside a docked half-disc,
  // on its visible side.
  if (const auto& hint = windowModel_.hint()) {
    const QFont font = uiFont(11, QFont::DemiBold);
    const QString text = QString::fromStdString(*hint);
    const double w = QFontMetricsF(font).horizontalAdvance(text) + 24;
    QPointF at(c.x(), c.y() + 1.35 * s);
    switch (windowModel_.dockEdge().value_or(DockEdge::bottom)) {
      case DockEdge::left:
        at = QPointF(c.x() + s / 2 + 12 + w / 2, c.y());
        break;
      case DockEdge::right:
        at = QPointF(c.x() - s / 2 - 12 - w / 2, c.y());
        break;
      case DockEdge::top:
        at = QPointF(c.x(), c.y() + s / 2 + 24);
        break;
      case DockEdge::bottom:
        if (windowModel_.dockEdge()) at = QPointF(c.x(), c.y() - s / 2 - 24);
        break;
    }
    const QRectF capsule(at.x() - w / 2, at.y() - 12, w, 24);
    painter.setPen(QPen(qt(palette.line()), 1));
    painter.setBrush(qt(palette.surface()));
    painter.drawRoundedRect(capsule, 12, 12);
    painter.setFont(font);
    painter.setPen(qt(palette.ink()));
    painter.drawText(capsule, Qt::AlignCenter, text);
  }

  // Where the orb would dock if released now.
  if (auto edge = windowModel_.previewEdge()) {
    // 4 on, 3 off: the pattern counts in pen widths, and only flat caps keep it so.
    QPen dashed(qt(palette.auroraA()), 2, Qt::CustomDashLine, Qt::FlatCap);
    dashed.setDashPattern({2, 1.5});
    painter.setPen(dashed);
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(c, s / 2 + 6, s / 2 + 6);
    painter.setFont(uiFont(9));
    painter.setPen(qt(palette.ink()));
    painter.drawText(QRectF(c.x() - 60, c.y() + s / 2 + 24 - 8, 120, 16), Qt::AlignCenter,
                     QString::fromStdString(std::string("吸附") + edgeWord(*edge) + "边"));
  }
}

}  // namespace tidemark
