#pragma once

#include <optional>
#include <vector>

#include <QColor>
#include <QPainter>
#include <QWidget>

#include "core/QuoteStyle.h"
#include "views/OrbPalette.h"

namespace tidemark {

// The polar intraday chart: guide rings, clock ticks and the day's line wound round the centre,
// drawn into `canvas`.
void paintPolarQuoteChart(QPainter& painter, const QRectF& canvas,
                          const std::vector<double>& values, const QColor& color,
                          const OrbPalette& palette);

// The standard intraday chart with its captions, time axis and a hover read-out.
class LinearQuoteChart final : public QWidget {
 public:
  explicit LinearQuoteChart(QWidget* parent = nullptr);

  void show(const QuoteSnapshot& quote, std::vector<double> values, bool isReal, bool masked,
            QuoteStyle style, const OrbPalette& palette);
  std::optional<size_t> hoveredIndex() const { return hoveredIndex_; }
  // The texts as drawn, for the read-out and the captions.
  QString captionText() const;
  QString readoutText() const;
  QString volumeReadout() const;
  QRectF plotRect() const;

 protected:
  void paintEvent(QPaintEvent*) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent*) override;

 private:
  QuoteSnapshot quote_;
  std::vector<double> values_;
  bool isReal_ = false;
  bool masked_ = false;
  QuoteStyle style_;
  OrbPalette palette_;
  std::optional<size_t> hoveredIndex_;
};

}  // namespace tidemark
