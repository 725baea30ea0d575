#pragma once

#include <optional>
#include <string>
#include <vector>

#include <QPixmap>
#include <QStringList>
#include <QWidget>

#include "core/Kline.h"
#include "core/QuoteStyle.h"
#include "views/KlineGeometry.h"
#include "views/OrbPalette.h"

namespace tidemark {

// What the candle chart shows: the series with today's period already merged, oldest first (the
// averages are taken over all of it, the last 120 periods drawn), the holding's cost, and the
// states that replace the figures.
struct KlineChartData {
  std::vector<KlineBar> bars;
  KlinePeriod period = KlinePeriod::day;
  std::optional<double> cost;
  bool masked = false;
  bool loading = false;
  RiseColors colors = RiseColors::redRises;
  int digits = 2;  // of the prices; the cost keeps the more it was typed with
  friend bool operator==(const KlineChartData&, const KlineChartData&) = default;
};

// Day, week or month candles with MA5/10/20, volume, date labels, a dashed cost line and a hover
// crosshair. The chart itself is a cached picture, drawn again only when the data, the size or
// the theme changes; the crosshair is drawn over it.
class KlineChart final : public QWidget {
 public:
  explicit KlineChart(QWidget* parent = nullptr);

  void show(KlineChartData data, const OrbPalette& palette);

  // The texts as drawn: the averages' legend, the hovered period's read-out, the cost line's
  // label and the empty state.
  QString legendText() const;
  QString readoutText() const;
  QStringList readoutParts() const;  // the read-out's date and figures, each with its caption
  QString costText() const;
  QString emptyText() const;
  std::optional<size_t> hoveredIndex() const { return hovered_; }
  // Where the candles stand now; empty frame without periods.
  KlineFrame frame() const;
  size_t redraws() const { return redraws_; }

 protected:
  void paintEvent(QPaintEvent*) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent*) override;

 private:
  void drawPicture();
  void drawReadout(QPainter& painter, double crosshairX);
  QRectF plotRect() const;
  // The shown periods, and the averages beside each.
  std::vector<KlineBar> shown_;
  std::array<std::vector<std::optional<double>>, 3> averages_;
  KlineChartData data_;
  OrbPalette palette_;
  QPixmap picture_;
  bool stale_ = true;
  size_t redraws_ = 0;
  std::optional<size_t> hovered_;
};

}  // namespace tidemark
