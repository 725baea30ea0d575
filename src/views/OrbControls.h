#pragma once

#include <functional>
#include <string>

#include <QAbstractButton>

#include "core/QuoteSnapshot.h"
#include "views/OrbPalette.h"

namespace tidemark {

// One watchlist entry around the orb: a dot in the quote's colour and, when spread out, a caption
// with the code and the change. Its geometry is the satellite's hit rectangle; the dot sits 12
// above the rectangle's centre.
class SatelliteButton final : public QAbstractButton {
 public:
  explicit SatelliteButton(QWidget* parent);
  void show(const QuoteSnapshot& quote, bool selected, bool masked, bool showLabel,
            const OrbPalette& palette);
  const std::string& quoteID() const { return quote_.id; }
  // Points the button leaves to the widget below it (the orb's core).
  std::function<bool(QPoint)> yieldsAt;

 protected:
  void paintEvent(QPaintEvent*) override;
  bool hitButton(const QPoint& p) const override {
    return !(yieldsAt && yieldsAt(p)) && rect().contains(p);
  }
  void enterEvent(QEnterEvent*) override;
  void leaveEvent(QEvent*) override;

 private:
  QuoteSnapshot quote_;
  bool selected_ = false, masked_ = false, showLabel_ = false, hovered_ = false;
  OrbPalette palette_;
};

// One of the five ring-menu items: a round button with a symbol over its label; `appearance`
// (0…1) scales it up from 0.2 and fades it in.
class RingButton final : public QAbstractButton {
 public:
  RingButton(QWidget* parent, std::string label, std::string symbol);
  void setLook(const OrbPalette& palette, double appearance);
  std::function<bool(QPoint)> yieldsAt;

 protected:
  void paintEvent(QPaintEvent*) override;
  bool hitButton(const QPoint& p) const override {
    return !(yieldsAt && yieldsAt(p)) && rect().contains(p);
  }

 private:
  std::string label_, symbol_;
  OrbPalette palette_;
  double appearance_ = 0;
};

}  // namespace tidemark
