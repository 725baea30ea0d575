// Renders the app's scalable icon to PNG files at the build, for the places that take only
// bitmaps: window icons, a notification's image and icon themes without an SVG loader.
//   render-icon ICON.svg OUTPUT-FOLDER SIZE...  →  OUTPUT-FOLDER/<SIZE>.png

#include <cstdio>

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: render-icon ICON.svg OUTPUT-FOLDER SIZE...\n");
    return 2;
  }
  QSvgRenderer svg(QString::fromLocal8Bit(argv[1]));
  if (!svg.isValid()) {
    std::fprintf(stderr, "render-icon: cannot read %s\n", argv[1]);
    return 1;
  }
  const QDir folder(QString::fromLocal8Bit(argv[2]));
  if (!QDir().mkpath(folder.path())) {
    std::fprintf(stderr, "render-icon: cannot make %s\n", argv[2]);
    return 1;
  }
  for (int i = 3; i < argc; ++i) {
    const int side = QString::fromLatin1(argv[i]).toInt();
    if (side <= 0) {
      std::fprintf(stderr, "render-icon: not a size: %s\n", argv[i]);
      return 2;
    }
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    svg.render(&painter);
    painter.end();
    const QString file = folder.filePath(QString::number(side) + QStringLiteral(".png"));
    if (!image.save(file, "PNG")) {
      std::fprintf(stderr, "render-icon: cannot write %s\n", qPrintable(file));
      return 1;
    }
  }
  return 0;
}
