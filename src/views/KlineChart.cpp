#include "views/KlineChart.h"

#include <algorithm>

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include "core/NumberText.h"
#include "views/TextStyle.h"

namespace tidemark {
namespace {

constexpr double legendHeight = 22, axisHeight = 20;
const QString masked = QStringLiteral("••••");

QString q(const std::string& s) {
  return QString::fromStdString(s);
}

QRectF qrect(const Rect& r) {
  return {r.x, r.y, r.width, r.height};
}

// The averages' colours: warm, cool and violet, readable on the dark and the light cards.
const QColor averageColors[3] = {QColor(0xF5, 0xA6, 0x23), QColor(0x3F, 0xA7, 0xF0),
                                 QColor(0xB0, 0x6A, 0xF2)};

}  // namespace

KlineChart::KlineChart(QWidget* parent) : QWidget(parent) {
  setMouseTracking(true);
  setMinimumHeight(150);
}

void KlineChart::show(KlineChartData data, const OrbPalette& palette) {
  if (data == data_ && palette.theme == palette_.theme && !stale_) return;
  data_ = std::move(data);
  palette_ = palette;
  const auto& bars = data_.bars;
  const size_t from = bars.size() > klineShownCount ? bars.size() - klineShownCount : 0;
  shown_.assign(bars.begin() + static_cast<std::ptrdiff_t>(from), bars.end());
  for (size_t k = 0; k < 3; ++k) {
    const auto all = movingAverage(bars, movingAverageSpans[k]);
    averages_[k].assign(all.begin() + static_cast<std::ptrdiff_t>(from), all.end());
  }
  if (hovered_ && *hovered_ >= shown_.size()) hovered_.reset();
  stale_ = true;
  update();
}

QRectF KlineChart::plotRect() const {
  return QRectF(0, legendHeight, width(), std::max(0.0, height() - legendHeight - axisHeight));
}

KlineFrame KlineChart::frame() const {
  const QRectF p = plotRect();
  return klineFrame(shown_, {p.x(), p.y(), p.width(), p.height()}, data_.cost);
}

QString KlineChart::legendText() const {
  QStringList parts;
  const size_t at = hovered_ ? *hovered_ : shown_.size() - 1;
  for (size_t k = 0; k < 3; ++k) {
    const auto& value = shown_.empty() ? std::nullopt : averages_[k][at];
    parts << QStringLiteral("MA%1 ").arg(movingAverageSpans[k]) +
                 (data_.masked ? masked
                  : value      ? q(priceText(*value, data_.digits))
                               : QStringLiteral("—"));
  }
  return parts.join(QStringLiteral("  "));
}

QStringList KlineChart::readoutParts() const {
  if (!hovered_ || *hovered_ >= shown_.size()) return {};
  const KlineBar& b = shown_[*hovered_];
  if (data_.masked) return {q(b.date), masked};
  const double base = *hovered_ > 0 ? shown_[*hovered_ - 1].close : b.open;
  return {q(b.date),
          q("开 " + priceText(b.open, data_.digits)),
          q("高 " + priceText(b.high, data_.digits)),
          q("低 " + priceText(b.low, data_.digits)),
          q("收 " + priceText(b.close, data_.digits)),
          q("涨跌 " + percentText((b.close - base) / base * 100)),
          q("量 " + volumeText(static_cast<int64_t>(b.volume)))};
}

QString KlineChart::readoutText() const {
  return readoutParts().join(QStringLiteral("  "));
}

QString KlineChart::costText() const {
  if (!data_.cost || data_.masked) return {};
  return q("成本 " + priceText(*data_.cost, std::max(data_.digits, typedDigits(*data_.cost))));
}

QString KlineChart::emptyText() const {
  if (!shown_.empty()) return {};
  return data_.loading ? QStringLiteral("正在载入K线…") : QStringLiteral("K线数据暂不可用");
}

void KlineChart::drawPicture() {
  const qreal scale = devicePixelRatioF();
  picture_ = QPixmap((QSizeF(size()) * scale).toSize());
  picture_.setDevicePixelRatio(scale);
  picture_.fill(Qt::transparent);
  stale_ = false;
  ++redraws_;
  QPainter painter(&picture_);
  painter.setRenderHint(QPainter::Antialiasing);
  const QColor muted = qt(palette_.muted());
  painter.setPen(QPen(qt(palette_.line()), 1));
  const KlineFrame f = frame();
  for (int i = 0; i <= 3; ++i) {
    const double y = f.prices.y + f.prices.height * i / 3;
    painter.drawLine(QPointF(f.prices.x, y), QPointF(f.prices.maxX(), y));
  }
  if (shown_.empty()) {
    painter.setFont(uiFont(13));
    painter.setPen(muted);
    painter.drawText(plotRect(), Qt::AlignCenter, emptyText());
    return;
  }
  const QuoteStyle style{data_.colors};
  const QColor rise = qt(style.color(1)), fall = qt(style.color(-1));
  const double w = candleWidth(f);
  for (size_t i = 0; i < shown_.size(); ++i) {
    const KlineBar& b = shown_[i];
    const QColor color = b.close >= b.open ? rise : fall;
    const double x = candleX(f, i);
    painter.setPen(QPen(color, 1));
    painter.drawLine(QPointF(x, priceY(f, b.high)), QPointF(x, priceY(f, b.low)));
    const double top = priceY(f, std::max(b.open, b.close));
    const double bottom = priceY(f, std::min(b.open, b.close));
    painter.fillRect(QRectF(x - w / 2, top, w, std::max(1.0, bottom - top)), color);
    QColor volume = color;
    volume.setAlphaF(0.55f);
    painter.fillRect(qrect(volumeBar(f, i, b.volume)), volume);
  }
  for (size_t k = 0; k < 3; ++k) {
    QPainterPath line;
    bool started = false;
    for (size_t i = 0; i < shown_.size(); ++i) {
      if (!averages_[k][i]) continue;
      const QPointF p(candleX(f, i), priceY(f, *averages_[k][i]));
      started ? line.lineTo(p) : line.moveTo(p);
      started = true;
    }
    painter.setPen(QPen(averageColors[k], 1.2));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(line);
  }
  if (data_.cost) {
    const double y = priceY(f, *data_.cost);
    painter.setPen(QPen(qt(palette_.ink()), 1, Qt::DashLine));
    painter.drawLine(QPointF(f.prices.x, y), QPointF(f.prices.maxX(), y));
    painter.setFont(uiFont(10.5));
    painter.drawText(QRectF(f.prices.x + 4, y - 16, f.prices.width, 14),
                     Qt::AlignLeft | Qt::AlignVCenter, costText());
  }
  // Date labels where a month (day candles) or a year begins; no figures while masked.
  if (data_.masked) return;
  painter.setFont(uiFont(10.5));
  painter.setPen(muted);
  double lastRight = -1e9;
  for (size_t i : klineDateLabels(shown_, data_.period)) {
    const QString label = q(shown_[i].date.substr(0, data_.period == KlinePeriod::day ? 7 : 4));
    const QRectF box(candleX(f, i) - 30, f.volumes.maxY() + 3, 60, axisHeight - 3);
    if (box.left() < std::max(lastRight + 4, 0.0) || box.right() > width()) continue;
    painter.drawText(box, Qt::AlignHCenter | Qt::AlignTop, label);
    lastRight = box.right();
  }
}

void KlineChart::paintEvent(QPaintEvent*) {
  // A new size is told by the picture's own.
  if (stale_ || picture_.size() != (QSizeF(size()) * devicePixelRatioF()).toSize()) drawPicture();
  QPainter painter(this);
  painter.drawPixmap(0, 0, picture_);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setFont(uiFont(10));
  painter.setPen(qt(palette_.muted()));
  const QRectF line(0, 0, width(), legendHeight - 4);
  if (!shown_.empty()) {
    // Each average's figure in its line's colour, the hovered period's while hovering.
    double x = 0;
    const QStringList parts = legendText().split(QStringLiteral("  "));
    for (qsizetype k = 0; k < parts.size() && k < 3; ++k) {
      painter.setPen(averageColors[k]);
      painter.drawText(line.adjusted(x, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter, parts[k]);
      x += painter.fontMetrics().horizontalAdvance(parts[k] + QStringLiteral("  "));
    }
  }
  if (!hovered_) return;
  const KlineFrame f = frame();
  const double x = candleX(f, *hovered_);
  painter.setPen(QPen(qt(palette_.muted()), 1, Qt::DashLine));
  painter.drawLine(QPointF(x, f.prices.y), QPointF(x, f.volumes.maxY()));
  if (!data_.masked) {
    const double y = priceY(f, shown_[*hovered_].close);
    painter.drawLine(QPointF(f.prices.x, y), QPointF(f.prices.maxX(), y));
  }
  drawReadout(painter, x);
}

void KlineChart::drawReadout(QPainter& painter, double crosshairX) {
  // The read-out is wider than the card: its parts go two to a row in a box on the side away
  // from the crosshair ("2026-10-16", "开 …  高 …", "低 …  收 …", "涨跌 …  量 …").
  const QStringList parts = readoutParts();
  QStringList rows{parts.value(0)};
  for (qsizetype i = 1; i < parts.size(); i += 2)
    rows << (i + 1 < parts.size() ? parts[i] + QStringLiteral("  ") + parts[i + 1] : parts[i]);
  painter.setFont(uiFont(10));
  const QFontMetricsF metrics = painter.fontMetrics();
  double textWidth = 0;
  for (const QString& row : rows) textWidth = std::max(textWidth, metrics.horizontalAdvance(row));
  const double pad = 5, rowHeight = metrics.height();
  const QRectF plot = plotRect();
  QRectF box(0, plot.top() + 2, textWidth + 2 * pad, rowHeight * double(rows.size()) + 2 * pad);
  box.moveLeft(crosshairX < width() / 2.0 ? width() - box.width() - 2 : 2);
  QColor fill = qt(palette_.elevated());
  fill.setAlphaF(0.92f);
  painter.setPen(QPen(qt(palette_.line()), 1));
  painter.setBrush(fill);
  painter.drawRoundedRect(box, 6, 6);
  painter.setPen(qt(palette_.ink()));
  for (qsizetype i = 0; i < rows.size(); ++i)
    painter.drawText(
        QRectF(box.left() + pad, box.top() + pad + rowHeight * double(i), textWidth + 1, rowHeight),
        Qt::AlignLeft | Qt::AlignVCenter, rows[i]);
}

void KlineChart::mouseMoveEvent(QMouseEvent* event) {
  const QRectF plot = plotRect();
  const QPointF p = event->position();
  std::optional<size_t> index;
  if (p.y() >= plot.top() && p.y() <= plot.bottom()) index = candleIndex(frame(), p.x());
  if (index == hovered_) return;
  hovered_ = index;
  update();
}

void KlineChart::leaveEvent(QEvent*) {
  if (!hovered_) return;
  hovered_.reset();
  update();
}

}  // namespace tidemark
