#include "views/TextStyle.h"

#include <algorithm>
#include <cmath>

#include <QFontDatabase>
#include <QResource>
#include <QStringList>

namespace tidemark {

QFont uiFont(double size, QFont::Weight weight) {
  // Registered at the first use, before anything is measured or drawn.
  static const bool figures = [] {
    bool loaded = true;
    for (const char* file : {":/fonts/figures-regular.otf", ":/fonts/figures-bold.otf"}) {
      // Read in place from the program's own pages: the data lives as long as the program.
      const QResource resource{QLatin1String(file)};
      const QByteArray data =
          resource.compressionAlgorithm() == QResource::NoCompression
              ? QByteArray::fromRawData(reinterpret_cast<const char*>(resource.data()),
                                        static_cast<qsizetype>(resource.size()))
              : resource.uncompressedData();
      loaded = QFontDatabase::addApplicationFontFromData(data) >= 0 && loaded;
    }
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
