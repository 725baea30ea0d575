#pragma once

#include <QFont>

namespace tidemark {

// The interface font at a size in logical pixels (the points of the design). Latin letters,
// digits and signs come from the built-in figures' font, cut from the CJK font's own Latin glyphs;
// Chinese text from the simplified-Chinese cut, named explicitly so the process locale cannot pick
// another one. The orb's figures thus never load the large CJK font.
QFont uiFont(double size, QFont::Weight weight = QFont::Normal);

}  // namespace tidemark
