#include "views/Charts.h"

#include <QMouseEvent>
#include <QPainterPath>

#include "core/NumberText.h"
#include "views/ChartGeometry.h"
#include "views/TextStyle.h"

namespace tidemark {
namespace {

QPointF qpoint(Point p) {
  return {p.x, p.y};
}

QString text(std::string_view s) {
  return QString::fromUtf8(s.data(), qsizetype(s.size()));
}

constexpr double headerHeight = 44, axisHeight = 24;

}  // namespace

void paintPolarQuoteChart(QPainter& painter, const QRectF& canvas,
                          const std::vector<double>& values, const QColor& color,
                          const OrbPalette& palette) {
  const PolarChartGeometry g = polarChartGeometry(values, canvas.width(), canvas.height());
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(canvas.topLeft());
  painter.setBrush(Qt::NoBrush);
  const QPointF center = qpoint(g.center);
  painter.setPen(QPen(qt(withOpacity(palette.orbDeep(), 0.22)), 0.7));
  for (double radius : g.ringRadii) painter.drawEllipse(center, radius, radius);
  painter.setPen(QPen(qt(withOpacity(palette.orbDeep(), 0.35)), 0.8));
  for (const auto& tick : g.ticks) painter.drawLine(qpoint(tick.inner), qpoint(tick.outer));
  if (!g.points.empty()) {
    QPainterPath line(qpoint(g.points.front()));
    for (size_t i = 1; i < g.points.size(); ++i) line.lineTo(qpoint(g.points[i]));
    QPainterPath area = line;
    area.lineTo(center);
    area.closeSubpath();
    QColor fill = color;
    fill.setAlphaF(0.07f);
    painter.fillPath(area, fill);
    QColor stroke = color;
    stroke.setAlphaF(0.88f);
    painter.setPen(QPen(stroke, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(line);
  }
  painter.restore();
}

LinearQuoteChart::LinearQuoteChart(QWidget* parent) : QWidget(parent) {
  setMouseTracking(true);
  setMinimumHeight(150);
}

void LinearQuoteChart::show(const QuoteSnapshot& quote, std::vector<double> values, bool isReal,
                            bool masked, QuoteStyle style, const OrbPalette& palette) {
  if (values.size() != values_.size()) hoveredIndex_.reset();
  quote_ = quote;
  values_ = std::move(values);
  isReal_ = isReal;
  masked_ = masked;
  style_ = style;
  palette_ = palette;
  update();
}

QString LinearQuoteChart::captionText() const {
  if (masked_) return QStringLiteral("••••");
  return isReal_ ? QStringLiteral("实时分时 · 1 日") : QStringLiteral("示意走势 · 1 日");
}

QString LinearQuoteChart::readoutText() const {
  if (!hoveredIndex_ || *hoveredIndex_ >= values_.size()) return {};
  if (masked_) return QStringLiteral("••••");
  return QString::fromStdString(style_.price(quote_, values_[*hoveredIndex_]));
}

QString LinearQuoteChart::volumeReadout() const {
  return QStringLiteral("成交量 ") +
         (masked_ ? QStringLiteral("••••") : QString::fromStdString(volumeText(quote_.volume)));
}

QRectF LinearQuoteChart::plotRect() const {
  return QRectF(0, headerHeight, width(), std::max(0.0, height() - headerHeight - axisHeight));
}

void LinearQuoteChart::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF plot = plotRect();
  const QColor ink = qt(palette_.ink()), muted = qt(palette_.muted());
  const QColor trend = qt(style_.color(quote_.changePct()));

  // Title over the source caption on the left, the read-out on the right.
  painter.setFont(uiFont(14, QFont::Bold));
  painter.setPen(ink);
  painter.drawText(QRectF(0, 0, width(), 20), Qt::AlignLeft | Qt::AlignVCenter,
                   QStringLiteral("标准分时辅助"));
  painter.setFont(uiFont(11.5));
  painter.setPen(muted);
  painter.drawText(QRectF(0, 20, width(), 16), Qt::AlignLeft | Qt::AlignVCenter, captionText());
  const QString readout = readoutText();
  painter.setPen(readout.isEmpty() ? muted : trend);
  painter.setFont(
      uiFont(readout.isEmpty() ? 12 : 15, readout.isEmpty() ? QFont::Normal : QFont::Bold));
  painter.drawText(QRectF(0, 0, width(), 20), Qt::AlignRight | Qt::AlignVCenter,
                   readout.isEmpty() ? volumeReadout() : readout);

  // Quarter lines, then the line with a soft fill in the trend colour.
  painter.setPen(QPen(qt(palette_.line()), 1));
  for (int i = 0; i <= 4; ++i) {
    const double y = plot.top() + plot.height() * i / 4;
    painter.drawLine(QPointF(plot.left(), y), QPointF(plot.right(), y));
  }
  const Rect area{plot.x(), plot.y(), plot.width(), plot.height()};
  const std::vector<Point> points = linearChartPoints(values_, area);
  if (points.size() >= 2) {
    QPainterPath line(qpoint(points.front()));
    for (size_t i = 1; i < points.size(); ++i) line.lineTo(qpoint(points[i]));
    QPainterPath fill = line;
    fill.lineTo(plot.right(), plot.bottom());
    fill.lineTo(plot.left(), plot.bottom());
    fill.closeSubpath();
    QLinearGradient shade(plot.topLeft(), plot.bottomLeft());
    QColor top = trend, bottom = trend;
    top.setAlphaF(0.22f);
    bottom.setAlphaF(0.0f);
    shade.setColorAt(0, top);
    shade.setColorAt(1, bottom);
    painter.fillPath(fill, shade);
    painter.setPen(QPen(trend, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(line);
  }
  if (hoveredIndex_ && *hoveredIndex_ < points.size()) {
    const QPointF p = qpoint(points[*hoveredIndex_]);
    painter.setPen(QPen(muted, 1, Qt::DashLine));
    painter.drawLine(QPointF(p.x(), plot.top()), QPointF(p.x(), plot.bottom()));
    painter.setPen(Qt::NoPen);
    painter.setBrush(trend);
    painter.drawEllipse(p, 4, 4);
  }

  painter.setFont(uiFont(11));
  painter.setPen(muted);
  const QRectF axis(0, plot.bottom() + 4, width(), axisHeight - 4);
  const auto labels = marketTimes(quote_.market);
  painter.drawText(axis, Qt::AlignLeft | Qt::AlignTop, text(labels[0]));
  painter.drawText(axis, Qt::AlignHCenter | Qt::AlignTop, text(labels[1]));
  painter.drawText(axis, Qt::AlignRight | Qt::AlignTop, text(labels[2]));
}

void LinearQuoteChart::mouseMoveEvent(QMouseEvent* event) {
  const QRectF plot = plotRect();
  const QPointF p = event->position();
  std::optional<size_t> index;
  if (p.y() >= plot.top() && p.y() <= plot.bottom())
    index =
        linearChartIndex(p.x(), values_.size(), {plot.x(), plot.y(), plot.width(), plot.height()});
  if (index != hoveredIndex_) {
    hoveredIndex_ = index;
    update();
  }
}

void LinearQuoteChart::leaveEvent(QEvent*) {
  if (!hoveredIndex_) return;
  hoveredIndex_.reset();
  update();
}

}  // namespace tidemark
