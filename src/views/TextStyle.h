#pragma once

#include <algorithm>
#include <cmath>

#include <QFont>

namespace tidemark {

// The interface font at a size in logical pixels (the points of the design). Chinese text needs
// the simplified-Chinese cut, named explicitly so the process locale cannot pick another one.
inline QFont uiFont(double size, QFont::Weight weight = QFont::Normal) {
  QFont font(QStringLiteral("Noto Sans CJK SC"));
  font.setPixelSize(std::max(1, static_cast<int>(std::lround(size))));
  font.setWeight(weight);
  return font;
}

}  // namespace tidemark
