#pragma once

#include <string_view>

#include <QColor>
#include <QPainter>
#include <QRectF>

namespace tidemark {

// The small pictograms of the orb, the ring menu and the windows, drawn as vector paths and
// named after the symbols they stand for ("lock.fill", "bell", "arrow.clockwise", ...). Draws
// nothing and answers false for an unknown name. Bold symbols have heavier strokes.
bool drawSymbol(QPainter& painter, std::string_view name, const QRectF& box, const QColor& color,
                bool bold = false);

// Every name drawSymbol knows.
const std::initializer_list<std::string_view>& symbolNames();

}  // namespace tidemark
