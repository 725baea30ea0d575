// The orb view's painting: the sphere and its face, the satellites, the hint and the dock preview,
// and the region all of it covers.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <numbers>
#include <vector>

#include <QDateTime>
#include <QPainter>
#include <QPainterPath>
#include <QTimer>

#include "core/NumberText.h"
#include "views/Easing.h"
#include "views/Metrics.h"
#include "views/OrbLayout.h"
#include "views/OrbView.h"
#include "views/Symbols.h"
#include "views/TextStyle.h"
#include "views/UnsplitFills.h"

namespace tidemark {
namespace {

constexpr double pi = std::numbers::pi;

QRectF toQ(const Rect& r) {
  return QRectF(r.x, r.y, r.width, r.height);
}

const char* badgeSymbol(const AppModel& model) {
  if (model.masked()) return "lock.fill";
  if (model.alertRule().triggered) return "bell.badge.fill";
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

namespace {

// The halo, then a tint of the quote's direction.
void paintHalo(QPainter& painter, QPointF c, double s, const OrbPalette& palette, Color trend,
               bool offline) {
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

// The pulse and ripple rings, stroked whole in one hand-over (see paintUnsplit).
void strokeRing(QPainter& painter, QPointF c, double r, const QPen& pen) {
  painter.save();
  painter.setPen(pen);
  painter.setBrush(Qt::NoBrush);
  paintUnsplit([&] { painter.drawEllipse(c, r, r); });
  painter.restore();
}

void paintShadow(QPainter& painter, QPointF c, double s, const OrbPalette& palette) {
  QRadialGradient below(c + QPointF(0, 0.12 * s), s / 2 + 0.22 * s);
  below.setColorAt(0, qt(palette.halo()));
  below.setColorAt((s / 2) / (s / 2 + 0.22 * s), qt(palette.halo()));
  below.setColorAt(1, Qt::transparent);
  painter.setPen(Qt::NoPen);
  painter.setBrush(below);
  painter.drawEllipse(c + QPointF(0, 0.12 * s), s / 2 + 0.22 * s, s / 2 + 0.22 * s);
}

// The sphere: body, rim and inner shading.
void paintBall(QPainter& painter, QPointF c, double s, const OrbPalette& palette) {
  const QRectF sphere(c.x() - s / 2, c.y() - s / 2, s, s);
  painter.setPen(Qt::NoPen);
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

// The radius of the day range's track and arc.
double rangeRadius(double s) {
  return s / 2 - 0.06 * s;
}

// The day range's track, drawn with the sphere: a whole ring is the costliest stroke of the face
// (Qt's raster engine hands its spans to a thread pool), and it does not move with the price.
void paintTrack(QPainter& painter, QPointF c, double s, const OrbPalette& palette, bool offline) {
  painter.save();
  painter.setOpacity(offline ? 0.2 : 1);
  const double radius = rangeRadius(s);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(faded(palette.orbDeep(), 0.28), 1.6));
  paintUnsplit(
      [&] { painter.drawEllipse(QRectF(c.x() - radius, c.y() - radius, 2 * radius, 2 * radius)); });
  painter.restore();
}

// A square layer of the orb reaching `radius` from its centre, which falls on a whole device
// pixel: idle frames draw it unscaled, pixel for pixel. Returns the centre in the layer.
QPointF clearLayer(QImage& image, double radius, double ratio) {
  const int half = static_cast<int>(std::ceil(radius * ratio));
  if (image.width() != 2 * half || image.devicePixelRatio() != ratio) {
    image = QImage(QSize(2 * half, 2 * half), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
  }
  image.fill(Qt::transparent);
  return QPointF(half / ratio, half / ratio);
}

// At a point, not into a rectangle: unscaled, Qt's raster engine then blends the rows directly
// instead of handing them to its thread pool as spans.
void drawLayer(QPainter& painter, const QImage& image, QPointF c) {
  const double half = image.width() / image.devicePixelRatio() / 2;
  painter.drawImage(QPointF(c.x() - half, c.y() - half), image);
}

}  // namespace

void paintOrbGlow(QPainter& painter, QPointF c, double s, const OrbPalette& palette, Color trend,
                  bool offline) {
  paintHalo(painter, c, s, palette, trend, offline);
  paintShadow(painter, c, s, palette);
}

void paintOrbSphere(QPainter& painter, QPointF c, double s, const OrbPalette& palette, Color trend,
                    bool offline, bool glow, bool shadow) {
  if (glow) paintHalo(painter, c, s, palette, trend, offline);
  if (shadow) paintShadow(painter, c, s, palette);
  paintBall(painter, c, s, palette);
}

std::optional<Rect> OrbView::hintRect() const {
  const auto& hint = windowModel_.hint();
  if (!hint) return std::nullopt;
  const double textWidth =
      QFontMetricsF(uiFont(11, QFont::DemiBold)).horizontalAdvance(QString::fromStdString(*hint));
  return hintCapsule(size_.value(), windowModel_.dockEdge(), textWidth);
}

QRegion OrbView::paintedRegion() const {
  QRegion region = discRegion({canvasCenter.x, canvasCenter.y}, size_.value() / 2 + 1);
  for (size_t i = 0; i < satellites_.size(); ++i)
    region += satelliteRegion(satelliteDot(i), satellites_[i].quote, satelliteLook(i));
  for (const RingButton* button : ringButtons_)
    region += button->paintedRegion().translated(button->pos());
  if (const auto hint = hintRect()) region += roundedRegion(toQ(hint->insetBy(-1)), 12);
  if (windowModel_.previewEdge()) {
    const double r = size_.value() / 2 + 6;
    region += discRegion({canvasCenter.x, canvasCenter.y}, r + 2) -
              discRegion({canvasCenter.x, canvasCenter.y}, r - 2);
  }
  if (auto edge = windowModel_.dockEdge())
    region &= toQ(dockClip(edge, Rect{0, 0, canvasSide, canvasSide})).toAlignedRect();
  return region;
}

SatelliteLook OrbView::satelliteLook(size_t i) const {
  const Satellite& satellite = satellites_[i];
  SatelliteLook look;
  look.selected = satellite.quote.id == model_.activeID();
  look.masked = model_.masked();
  look.colors = model_.quoteStyle().colors;
  look.hovered = hovered_ == i;
  look.captionOpacity = captionOpacity(satellite.radius.value());
  look.glow = glows();
  return look;
}

std::vector<OrbView::SatelliteFrame> OrbView::satelliteFrames() {
  const double ratio = devicePixelRatioF();
  std::vector<SatelliteFrame> frames(satellites_.size());
  std::vector<std::string> keys(satellites_.size());
  for (size_t i = 0; i < satellites_.size(); ++i) {
    frames[i].look = satelliteLook(i);
    if (frames[i].look.captionOpacity <= 0.001)
      keys[i] = satelliteSpriteKey(satellites_[i].quote, frames[i].look, ratio);
  }
  std::map<std::string, size_t> missing;  // a sprite not drawn yet → a satellite that shows it
  const auto findMissing = [&](bool afresh) {
    if (afresh) satelliteSprites_.clear();
    for (size_t i = 0; i < keys.size(); ++i)
      if (!keys[i].empty() && !satelliteSprites_.contains(keys[i])) missing.emplace(keys[i], i);
  };
  findMissing(false);
  // At most 64 are kept: a full cache starts again.
  if (!missing.empty() && satelliteSprites_.size() + missing.size() > 64) findMissing(true);
  if (!missing.empty()) {
    // New prices bring several new sizes at once: drawn together, in one hand-over.
    std::vector<QImage> made;
    paintUnsplit([&] {
      for (const auto& [key, i] : missing)
        made.push_back(satelliteSprite(satellites_[i].quote, frames[i].look, ratio));
    });
    auto image = made.begin();
    for (const auto& [key, i] : missing) satelliteSprites_.emplace(key, std::move(*image++));
  }
  for (size_t i = 0; i < satellites_.size(); ++i)
    if (!keys[i].empty()) frames[i].sprite = &satelliteSprites_.at(keys[i]);
  return frames;
}

void OrbView::paintSatellites(QPainter& painter, bool behind,
                              const std::vector<SatelliteFrame>& frames) {
  const OrbPalette palette{model_.theme()};
  const double ratio = devicePixelRatioF();
  for (size_t i = 0; i < satellites_.size(); ++i) {
    const Satellite& satellite = satellites_[i];
    if (drawnBehindSphere(satellite.radius.value()) != behind) continue;
    const QPointF dot = satelliteDot(i);
    const QImage* sprite = frames[i].sprite;
    if (!sprite) {
      paintSatellite(painter, dot, satellite.quote, frames[i].look, palette);
      continue;
    }
    // Without a caption, from a sprite drawn unscaled at whole pixels.
    const double half = sprite->width() / ratio / 2;
    painter.drawImage(QPointF(std::round(dot.x() * ratio) / ratio - half,
                              std::round(dot.y() * ratio) / ratio - half),
                      *sprite);
  }
}

void OrbView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  paintBody(painter);
  if (onFirstPaint) QTimer::singleShot(0, this, std::exchange(onFirstPaint, nullptr));
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
  const Color trend = model_.quoteStyle().color(quote ? quote->changePct() : 0);
  const bool offline = model_.phase() == QuotePhase::offline;
  const QRectF sphere(c.x() - s / 2, c.y() - s / 2, s, s);
  // 3. The day's range: an arc from the top, clockwise, ending in a dot, over the track the
  // sphere's layer holds.
  if (!core) {
    painter.save();
    painter.setOpacity(offline ? 0.2 : 1);
    const double radius = rangeRadius(s);
    const QRectF ring(c.x() - radius, c.y() - radius, 2 * radius, 2 * radius);
    const double progress =
        quote ? rangeProgress(quote->price, quote->low, quote->high, true) : 0.5;
    QPen arcPen(QBrush(palette.aurora(ring)), 0.026 * s, Qt::SolidLine, Qt::RoundCap);
    painter.setPen(arcPen);
    paintUnsplit([&] {
      painter.drawArc(ring, 90 * 16, static_cast<int>(std::lround(-progress * 360 * 16)));
    });
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
    const CoreTexts texts = coreTexts();
    if (quote) {
      painter.setFont(uiFont(0.105 * s, QFont::Black));
      painter.setPen(text);
      painter.drawText(QRectF(sphere.x(), c.y() - 0.3 * s, s, 0.14 * s), Qt::AlignCenter,
                       texts.label);
    }
    QFont priceFont = uiFont(0.185 * s, QFont::Black);
    priceFont.setLetterSpacing(QFont::AbsoluteSpacing, -0.4);
    const QString& priceString = texts.price;
    const double fits = 0.78 * s;
    const double wide = QFontMetricsF(priceFont).horizontalAdvance(priceString);
    if (wide > fits) priceFont.setPixelSize(std::max(1, static_cast<int>(0.185 * s * fits / wide)));
    painter.setFont(priceFont);
    painter.setPen(quote && !masked ? qt(trend) : text);
    painter.drawText(QRectF(sphere.x(), c.y() - 0.13 * s, s, 0.24 * s), Qt::AlignCenter,
                     priceString);
    // Masking hides the number, not its direction; without a quote the change reads as none.
    const QString& percent = texts.change;
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
                    std::to_string(static_cast<int>(model_.phase())) +
                    std::to_string(compositing_) +
                    std::to_string(static_cast<int>(model_.quoteStyle().colors)) +
                    std::to_string(static_cast<int>(model_.quoteStyle().precision));
  if (q)
    key += "|" + q->id + "|" + q->name + "|" + std::to_string(q->price) + "|" +
           std::to_string(q->prevClose) + "|" + std::to_string(q->high) + "|" +
           std::to_string(q->low);
  return key;
}

OrbView::IdleLook OrbView::idleLook() const {
  if (!availableMotion()) return {};
  const double ratio = devicePixelRatioF();
  const auto whole = [ratio](double v) { return std::round(v * ratio) / ratio; };
  IdleLook look;
  look.drift = {whole(1.5 * std::sin(2 * pi * idlePhase_ / 5.3)),
                whole(1.2 * std::cos(2 * pi * idlePhase_ / 6.1))};
  // Breathing: the glow swells and fades in steps of a twentieth.
  look.glow = 0.9 + 0.1 * std::round(2 * std::sin(2 * pi * idlePhase_ / 4.2)) / 2;
  return look;
}

void OrbView::renderLayers(double s) {
  const OrbPalette palette{model_.theme()};
  const QuoteSnapshot* quote = model_.activeQuote();
  const Color trend = model_.quoteStyle().color(quote ? quote->changePct() : 0);
  const bool offline = model_.phase() == QuotePhase::offline;
  const double ratio = devicePixelRatioF();
  const auto layer = [](QImage& image) {
    auto painter = std::make_unique<QPainter>(&image);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setRenderHint(QPainter::TextAntialiasing);
    return painter;
  };
  // The sphere stays through new prices and other securities; only its glow takes the
  // direction's colour. The face and the texts follow every price.
  const std::string sphere = std::to_string(static_cast<int>(model_.theme())) + "|" +
                             std::to_string(s) + "|" + std::to_string(ratio) + "|" +
                             std::to_string(offline);
  if (std::string glow = sphere + "|" + qt(trend).name(QColor::HexArgb).toStdString() + "|" +
                         std::to_string(glows());
      glow != glowKey_) {
    glowKey_ = std::move(glow);
    if (glows()) {
      const QPointF centre = clearLayer(glowCache_, 0.86 * s + 2, ratio);
      // Its gradient discs are large fills: handed over whole (see paintUnsplit).
      paintUnsplit([&] { paintOrbGlow(*layer(glowCache_), centre, s, palette, trend, offline); });
    } else {
      glowCache_ = QImage();
    }
  }
  if (sphere != sphereKey_ || bodyCache_.isNull()) {
    sphereKey_ = sphere;
    const QPointF centre = clearLayer(bodyCache_, s / 2 + 1, ratio);
    paintBall(*layer(bodyCache_), centre, s, palette);
    paintTrack(*layer(bodyCache_), centre, s, palette, offline);
    // The flash of a fresh quote: the sphere's disc in its lit colour, drawn at the flash's level.
    clearLayer(flashCache_, s / 2 + 1, ratio);
    auto flash = layer(flashCache_);
    flash->setPen(Qt::NoPen);
    flash->setBrush(qt(palette.orbLit()));
    flash->drawEllipse(centre, s / 2, s / 2);
  }
  std::string face = faceKey(s);
  if (face != faceKey_ || faceCache_.isNull()) {
    faceKey_ = std::move(face);
    for (QImage* image : {&faceCache_, &coreCache_}) {
      const QPointF centre = clearLayer(*image, s / 2 + 1, ratio);
      paintFace(*layer(*image), centre, s, image == &coreCache_);
    }
  }
}

void OrbView::paintOverlays(QPainter& painter, const OrbPalette& palette, QPointF c,
                            double s) const {
  // A transient hint below the orb, clear of the spread satellites; beside a docked half-disc,
  // on its visible side.
  if (const auto capsuleRect = hintRect()) {
    const QRectF capsule =
        toQ(*capsuleRect).translated(c - QPointF(canvasCenter.x, canvasCenter.y));
    painter.setPen(QPen(qt(palette.line()), 1));
    painter.setBrush(qt(palette.surface()));
    painter.drawRoundedRect(capsule, 12, 12);
    painter.setFont(uiFont(11, QFont::DemiBold));
    painter.setPen(qt(palette.ink()));
    painter.drawText(capsule, Qt::AlignCenter, QString::fromStdString(*windowModel_.hint()));
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

void OrbView::paintBody(QPainter& painter) {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::TextAntialiasing);
  const OrbPalette palette{model_.theme()};
  const QuoteSnapshot* quote = model_.activeQuote();
  const Color trend = model_.quoteStyle().color(quote ? quote->changePct() : 0);
  const double s = size_.value();
  const double t = now();

  if (auto edge = windowModel_.dockEdge())
    painter.setClipRect(toQ(dockClip(edge, Rect{0, 0, canvasSide, canvasSide})));

  // Idle breathing and a slight drift, only while nothing else holds the orb still.
  const IdleLook look = idleLook();
  shownIdle_ = look;
  const QPointF c = QPointF(canvasCenter.x, canvasCenter.y) + look.drift;
  renderLayers(s);
  const std::vector<SatelliteFrame> satellites = satelliteFrames();
  paintSatellites(painter, true, satellites);

  painter.save();
  // A fast drag stretches the orb along its direction of travel; at rest the layers are drawn
  // unscaled at whole pixels, which is what keeps an idle frame cheap.
  if (const double stretch = stretch_.value(); stretch != 0) {
    painter.translate(c);
    painter.rotate(windowModel_.dragAngle());
    painter.scale(1 + stretch, 1 - stretch * 0.5);
    painter.rotate(-windowModel_.dragAngle());
    painter.translate(-c);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
  }
  if (!glowCache_.isNull()) {
    painter.setOpacity(look.glow);
    drawLayer(painter, glowCache_, c);
    painter.setOpacity(1);
  }
  drawLayer(painter, bodyCache_, c);
  drawLayer(painter, faceCache_, c);
  const double swap = swap_.value();
  painter.save();
  painter.setOpacity(1 - 0.6 * swap);
  drawLayer(painter, coreCache_, c + QPointF(0, 0.12 * s * swap));
  painter.restore();
  shownFlash_ = flashStep();
  if (shownFlash_ > 0) {
    painter.save();
    painter.setOpacity(0.22 * shownFlash_ / 16);
    drawLayer(painter, flashCache_, c);
    painter.restore();
  }

  // Ripples and the pulse of a fresh quote spread from the rim.
  for (double start : ripples_) {
    const double f = easeOut((t - start) / metrics::rippleSeconds);
    strokeRing(painter, c, s / 2 * (1 + 0.95 * f),
               QPen(faded(palette.auroraA(), 0.85 * (1 - f)), 1.5));
  }
  if (const double f = pulse(); f > 0 && !bare_)
    strokeRing(painter, c, s / 2 + 0.18 * s * f, QPen(faded(trend, 0.5 * (1 - f)), 2));

  painter.restore();
  paintSatellites(painter, false, satellites);

  paintOverlays(painter, palette, c, s);
}

OrbView::CoreTexts OrbView::coreTexts() const {
  const QuoteSnapshot* quote = model_.activeQuote();
  const bool masked = model_.masked();
  CoreTexts t;
  if (quote) t.label = QString::fromStdString(model_.orbShowsName() ? quote->name : quote->id);
  t.price = QString::fromStdString(masked  ? "••••"
                                   : quote ? model_.quoteStyle().price(*quote)
                                           : "—");
  // Masking hides the number, not its direction; without a quote the change reads as none.
  t.change = QString::fromStdString(masked ? "••••" : percentText(quote ? quote->changePct() : 0));
  return t;
}

}  // namespace tidemark
