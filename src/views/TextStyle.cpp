#include "views/TextStyle.h"

#include <algorithm>
#include <cmath>

#include <QFontDatabase>
#include <QStringList>

namespace tidemark {

QFont uiFont(double size, QFont::Weight weight) {
  // Registered at the first use, before anything is measured or drawn.
  static const bool figures = [] {
    bool loaded = true;
    for (const char* file : {":/fonts/figures-regular.otf", ":/fonts/figures-bold.otf"})
      loaded = QFontDatabase::addApplicationFont(QLatin1String(file)) >= 0 && loaded;
    return loaded;
  }();
  QFont font;
  if (figures) {
    font.setFamilies(
        QStringList{QStringLiteral("Tidemark Figures"), QStringLiteral("Noto Sans CJK SC")});
  } else {
    font.setFamily(QStringLiteral("Noto Sans CJK SC"));
  }
  font.setPixelSize(std::max(1, static_cast<int>(std::lround(size))));
  font.setWeight(weight);
  return font;
}

}  // namespace tidemark
