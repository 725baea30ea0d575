#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QImage>
#include <QPainter>
#include <QWidget>

#include "core/Clock.h"
#include "model/AppModel.h"
#include "views/FrameTicker.h"
#include "views/OncePerTurn.h"
#include "views/OrbControls.h"
#include "views/OrbPalette.h"
#include "views/OrbWindowModel.h"
#include "views/Spring.h"

namespace tidemark {

// The glow around the orb (unless left out) and the shaded sphere of size s, centred at c, with
// its drop shadow below it (unless left out: the shadow reaches 0.84 s from the centre).
void paintOrbSphere(QPainter& painter, QPointF c, double s, const OrbPalette& palette, Color trend,
                    bool offline, bool glow = true, bool shadow = true);
// The glow and the shadow alone, reaching 0.84 s from c.
void paintOrbGlow(QPainter& painter, QPointF c, double s, const OrbPalette& palette, Color trend,
                  bool offline);

// The floating orb: the sphere with the active quote, its range ring and state badge, the
// satellites of the watchlist and the ring menu. It fills the 460 × 460 panel canvas with the orb
// in the middle; it only draws and animates, the shell routes the gestures.
class OrbView final : public QWidget {
 public:
  OrbView(AppModel& model, OrbWindowModel& windowModel, const Clock& clock,
          std::function<void(RingCommand)> onAction, QWidget* parent = nullptr);

  // The satellites are spread only when free and the ring menu is closed.
  bool expanded() const;
  // Idle breathing and drift run only then.
  bool availableMotion() const;
  // Neither the model's switch nor the desktop's asks for calm.
  bool motionAllowed() const;
  // The desktop's own reduce-motion setting.
  void setSystemCalm(bool calm);
  bool systemCalm() const { return systemCalm_; }
  // Whether a compositor blends the window. Without one only paintedRegion() shows, so the glows
  // and the idle drift are left out.
  void setCompositing(bool on);
  bool compositing() const { return compositing_; }
  // The window is kept to the orb itself (the desktop ignores input shapes): the glows and the
  // pulse of a fresh quote, which reach past it, are left out.
  void setBare(bool on);
  // Satellites or ring buttons away from the sphere, or on their way.
  bool controlsOut() const;
  // The sphere's size now or the one it is heading for, whichever is larger.
  double drawnSize() const;
  // The hint's capsule while a hint shows.
  std::optional<Rect> hintRect() const;
  // What is drawn, the glows left out, in this view's coordinates.
  QRegion paintedRegion() const;
  // Called whenever the extent of what is drawn may have changed: each frame of a moving
  // control or size, once when they come to rest, and on every change of state.
  std::function<void()> onExtentChanged;
  // Called once, on the turn after the orb was first painted (its frame already on screen).
  std::function<void()> onFirstPaint;
  // The text a screen reader speaks for the orb.
  std::string accessibilityText() const;
  // What the core shows: the label (code or name), the price and the change, as painted; masked,
  // the figures are bullets.
  struct CoreTexts {
    QString label, price, change;
    friend bool operator==(const CoreTexts&, const CoreTexts&) = default;
  };
  CoreTexts coreTexts() const;
  // Presses at points where this answers true belong to the orb's core, not to the controls
  // around it (in this view's coordinates).
  void setCoreTest(std::function<bool(QPointF)> test) { coreTest_ = std::move(test); }
  // An expanding ring after a tap on the orb.
  void ripple();
  // Whether any animation still needs frames (tests and the idle-cost check read it).
  bool isAnimating() const { return ticker_.isRunning(); }
  FrameTicker& ticker() { return ticker_; }
  const std::vector<RingButton*>& ringButtons() const { return ringButtons_; }

  // The satellites standing round the orb now: the page of the watchlist that fits.
  SatellitePage satellitePage();
  std::vector<std::string> satelliteIDs() const;
  // Where satellite i of the page is drawn at this frame (its dot), in this view's coordinates.
  QPointF satelliteDot(std::size_t i) const;
  double satelliteCaptionOpacity(std::size_t i) const;
  // The satellite whose target holds p, the nearest dot first; none where the core takes p.
  std::optional<std::size_t> satelliteAt(QPointF p) const;
  // The short effects of a fresh quote and of a new active symbol at this moment.
  double pulse() const;  // 0...1 while the ring leaves the rim, else 0
  double flash() const;
  double swapOffset() const { return swap_.value(); }
  int pulseCount() const { return pulseCount_; }

 protected:
  void paintEvent(QPaintEvent*) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  bool event(QEvent* event) override;

 private:
  void modelChanged();
  void windowModelChanged();
  void animateTick();
  void animateSwap();
  bool step(double seconds);
  // Advances the satellites' springs; whether any of them still moves toward its place.
  bool advanceSatellites(double seconds, double t);
  // The next frame's delay in milliseconds.
  int frameInterval(bool springs, bool effects, double t) const;
  void layoutControls();
  void syncSatellites();
  void scheduleRefresh();
  void paintBody(QPainter& painter);
  // The hint below the orb and the dashed ring where it would dock, around the centre `c`.
  void paintOverlays(QPainter& painter, const OrbPalette& palette, QPointF c, double s) const;
  // The square the orb, its glow and the folded satellites are drawn in.
  QRect orbSquare() const;
  // How each satellite is drawn this frame: its look, and the sprite of one without a caption
  // (those the cache lacks are drawn first, together).
  struct SatelliteFrame {
    SatelliteLook look;
    const QImage* sprite = nullptr;
  };
  std::vector<SatelliteFrame> satelliteFrames();
  void paintSatellites(QPainter& painter, bool behind, const std::vector<SatelliteFrame>& frames);
  void setHovered(std::optional<std::size_t> index);
  SatelliteLook satelliteLook(std::size_t i) const;
  void extentChanged() {
    if (onExtentChanged) onExtentChanged();
  }
  double now() const { return clock_.now().sinceReference; }

  AppModel& model_;
  OrbWindowModel& windowModel_;
  const Clock& clock_;
  std::function<void(RingCommand)> onAction_;
  std::function<bool(QPointF)> coreTest_;
  ChangeSignal::Subscription modelSubscription_, windowSubscription_;

  Spring size_;
  Spring radial_{0.45, 0.75};
  Spring swap_{0.5, 0.65};
  Spring stretch_{0.5, 0.7};
  struct Satellite {
    QuoteSnapshot quote;
    Spring radius{0.55, 0.68};  // as a factor of the orb's size
    double startAt = 0;         // when it starts moving to its new radius
    double target = 0;
  };
  std::vector<Satellite> satellites_;
  SatellitePage page_;
  bool satellitesStale_ = false;  // the model changed since the page was taken
  std::optional<std::size_t> hovered_, pressed_;
  std::vector<RingButton*> ringButtons_;
  bool systemCalm_ = false;
  bool compositing_ = true;
  bool bare_ = false;
  bool glows() const { return compositing_ && !bare_; }
  bool extentMoving_ = false;
  bool framesMoving_ = false;

  int pulseCount_ = 0;
  double pulseStart_ = -1e9, flashStart_ = -1e9, swapAt_ = -1e9;
  std::vector<double> ripples_;  // start times
  double idlePhase_ = 0;

  // The ring and the badge, or the core's texts.
  void paintFace(QPainter& painter, QPointF c, double s, bool core) const;
  std::string faceKey(double s) const;
  // The idle motion at this moment, in the steps it is drawn in: the drift in whole device
  // pixels and the glow's breathing as its opacity.
  struct IdleLook {
    QPointF drift;
    double glow = 1;
    friend bool operator==(const IdleLook&, const IdleLook&) = default;
  };
  IdleLook idleLook() const;
  IdleLook shownIdle_;
  // The flash in the sixteenth steps it is drawn in.
  int flashStep() const;
  int shownFlash_ = 0;
  // The orb is drawn once into layers and reused for every frame: the glow (redrawn for another
  // direction too), the sphere (only for another theme or size), the ring with the badge, and the
  // core's texts.
  void renderLayers(double s);
  std::string glowKey_, sphereKey_, faceKey_;
  QImage glowCache_, bodyCache_, faceCache_, coreCache_, flashCache_;
  std::map<std::string, QImage> satelliteSprites_;
  OncePerTurn refreshes_{this, [this] { modelChanged(); }};
  Date seenUpdatedAt_;
  std::string seenActiveID_;
  bool seenExpanded_ = false;
  FrameTicker ticker_;
};

}  // namespace tidemark
