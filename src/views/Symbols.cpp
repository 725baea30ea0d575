#include "views/Symbols.h"

#include <algorithm>
#include <array>

#include <QPainterPath>

namespace tidemark {
namespace {

// Paths are laid out on a 24 × 24 grid and scaled into the box, centred.
QPainterPath arc(QPointF centre, double radius, double startDegrees, double sweepDegrees) {
  QPainterPath path;
  const QRectF box(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
  path.arcMoveTo(box, startDegrees);
  path.arcTo(box, startDegrees, sweepDegrees);
  return path;
}

QPainterPath lockBody() {
  QPainterPath path;
  path.addRoundedRect(QRectF(5, 10.5, 14, 10.5), 2.2, 2.2);
  return path;
}

QPainterPath bellBody() {
  QPainterPath path;
  path.moveTo(12, 3.5);
  path.cubicTo(8, 3.5, 6.5, 6.5, 6.5, 10);
  path.lineTo(6.5, 14);
  path.lineTo(4.5, 17);
  path.lineTo(19.5, 17);
  path.lineTo(17.5, 14);
  path.lineTo(17.5, 10);
  path.cubicTo(17.5, 6.5, 16, 3.5, 12, 3.5);
  path.closeSubpath();
  path.addEllipse(QPointF(12, 19.5), 2, 2);
  return path;
}

// An arrowhead at `tip`, pointing along `direction` degrees (0 = right, 90 = down).
QPainterPath arrowHead(QPointF tip, double direction) {
  QPainterPath path;
  path.moveTo(-3.2, -2.6);
  path.lineTo(0, 0);
  path.lineTo(-3.2, 2.6);
  QTransform t;
  t.translate(tip.x(), tip.y());
  t.rotate(direction);
  return t.map(path);
}

}  // namespace

const std::initializer_list<std::string_view>& symbolNames() {
  static const std::initializer_list<std::string_view> names{"lock.fill",
                                                             "bell.badge.fill",
                                                             "arrow.triangle.2.circlepath",
                                                             "checkmark",
                                                             "clock",
                                                             "exclamationmark.triangle",
                                                             "wifi.slash",
                                                             "arrow.clockwise",
                                                             "bell",
                                                             "circle.lefthalf.filled",
                                                             "lock",
                                                             "power",
                                                             "xmark.circle.fill",
                                                             "magnifyingglass"};
  return names;
}

namespace {

// A symbol's drawing on a 24 × 24 grid: lines stroked at `width` and areas filled.
struct Glyph {
  QPainterPath stroked, filled;
  double width = 2;
};

// The lock's shackle, with the short straight ends that meet its body.
void addShackle(QPainterPath& path) {
  path.addPath(arc(QPointF(12, 10), 4.5, 0, 180));
  path.moveTo(7.5, 10);
  path.lineTo(7.5, 10.5);
  path.moveTo(16.5, 10);
  path.lineTo(16.5, 10.5);
}

using GlyphBuilder = void (*)(Glyph&);
const std::array<std::pair<std::string_view, GlyphBuilder>, 14> glyphs{{
    {"lock.fill",
     [](Glyph& g) {
       addShackle(g.stroked);
       g.filled.addPath(lockBody());
     }},
    {"lock",
     [](Glyph& g) {
       addShackle(g.stroked);
       g.stroked.addPath(lockBody());
     }},
    {"bell.badge.fill",
     [](Glyph& g) {
       g.filled.addPath(bellBody());
       g.filled.addEllipse(QPointF(18.5, 5.5), 3.2, 3.2);
     }},
    {"bell", [](Glyph& g) { g.stroked.addPath(bellBody()); }},
    {"arrow.triangle.2.circlepath",
     [](Glyph& g) {
       g.stroked.addPath(arc(QPointF(12, 12), 7.5, 20, 150));
       g.stroked.addPath(arrowHead(QPointF(5.1, 9.2), 100));
       g.stroked.addPath(arc(QPointF(12, 12), 7.5, 200, 150));
       g.stroked.addPath(arrowHead(QPointF(18.9, 14.8), 280));
     }},
    {"checkmark",
     [](Glyph& g) {
       g.stroked.moveTo(5, 12.5);
       g.stroked.lineTo(10, 17.5);
       g.stroked.lineTo(19, 6.5);
       g.width = 2.6;
     }},
    {"clock",
     [](Glyph& g) {
       g.stroked.addEllipse(QPointF(12, 12), 8.5, 8.5);
       g.stroked.moveTo(12, 7);
       g.stroked.lineTo(12, 12);
       g.stroked.lineTo(15.5, 14);
     }},
    {"exclamationmark.triangle",
     [](Glyph& g) {
       g.stroked.moveTo(12, 3.5);
       g.stroked.lineTo(21, 19.5);
       g.stroked.lineTo(3, 19.5);
       g.stroked.closeSubpath();
       g.stroked.moveTo(12, 9);
       g.stroked.lineTo(12, 13.5);
       g.filled.addEllipse(QPointF(12, 16.6), 1.2, 1.2);
     }},
    {"wifi.slash",
     [](Glyph& g) {
       for (double radius : {4.0, 8.0, 12.0})
         g.stroked.addPath(arc(QPointF(12, 19), radius, 45, 90));
       g.filled.addEllipse(QPointF(12, 19), 1.6, 1.6);
       g.stroked.moveTo(4, 4);
       g.stroked.lineTo(20, 20);
     }},
    {"arrow.clockwise",
     [](Glyph& g) {
       // From the upper right, clockwise round the bottom and over the top, where the head sits at
       // 80° and points along the arc's clockwise tangent (10° below the horizontal).
       g.stroked.addPath(arc(QPointF(12, 12.5), 7.5, 20, -300));
       g.stroked.addPath(arrowHead(QPointF(12 + 7.5 * 0.17365, 12.5 - 7.5 * 0.98481), 10));
     }},
    {"circle.lefthalf.filled",
     [](Glyph& g) {
       g.stroked.addEllipse(QPointF(12, 12), 8.5, 8.5);
       g.filled.moveTo(12, 3.5);
       g.filled.arcTo(QRectF(3.5, 3.5, 17, 17), 90, 180);
       g.filled.closeSubpath();
     }},
    {"power",
     [](Glyph& g) {
       g.stroked.addPath(arc(QPointF(12, 13), 7.5, 60, -300));
       g.stroked.moveTo(12, 3);
       g.stroked.lineTo(12, 11.5);
     }},
    {"magnifyingglass",
     [](Glyph& g) {
       g.stroked.addEllipse(QPointF(10.5, 10.5), 6, 6);
       g.stroked.moveTo(15, 15);
       g.stroked.lineTo(20, 20);
       g.width = 2.2;
     }},
    {"xmark.circle.fill",
     [](Glyph& g) {
       QPainterPath disc;
       disc.addEllipse(QPointF(12, 12), 9.5, 9.5);
       QPainterPath cross;
       cross.moveTo(8.5, 8.5);
       cross.lineTo(15.5, 15.5);
       cross.moveTo(15.5, 8.5);
       cross.lineTo(8.5, 15.5);
       QPainterPathStroker stroker;
       stroker.setWidth(2.2);
       stroker.setCapStyle(Qt::RoundCap);
       g.filled.addPath(disc.subtracted(stroker.createStroke(cross)));
     }},
}};

}  // namespace

bool drawSymbol(QPainter& painter, std::string_view name, const QRectF& box, const QColor& color,
                bool bold) {
  const auto entry = std::find_if(glyphs.begin(), glyphs.end(),
                                  [name](const auto& glyph) { return glyph.first == name; });
  if (entry == glyphs.end()) return false;
  Glyph g;
  entry->second(g);
  const auto& [stroked, filled, width] = g;

  const double side = std::min(box.width(), box.height());
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(box.center().x() - side / 2, box.center().y() - side / 2);
  painter.scale(side / 24, side / 24);
  painter.setPen(
      QPen(color, bold ? width * 1.4 : width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(Qt::NoBrush);
  painter.drawPath(stroked);
  painter.setPen(Qt::NoPen);
  painter.setBrush(color);
  painter.drawPath(filled);
  painter.restore();
  return true;
}

}  // namespace tidemark
