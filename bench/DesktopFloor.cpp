// Floors for scripts/measure-desktop: the least a window like the orb's costs on the same display,
// in memory, CPU and time to first paint. One window of the orb's canvas size, chosen by mode:
//   window    a translucent always-on-top window painting a filled circle once
//   cjk       the same with one line of Chinese text, which loads the CJK font
//   animated  the orb's idle frame at its cadence: cached sphere and digits drawn scaled by the
//             breathing at sub-pixel drifted positions, every 150 ms
//   cached    the same cadence drawing unscaled images at whole pixels (the breathing is the
//             glow's opacity), skipping frames that would not change
// Prints "first paint at <epoch ms> ms" to stderr on its first paint, as the app does.
// Usage: desktop_floor window|cjk|animated|cached

#include <cmath>
#include <cstdio>
#include <numbers>

#include <QApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QImage>
#include <QPainter>
#include <QRadialGradient>
#include <QTimer>
#include <QWidget>

namespace {

constexpr int side = 208, orb = 96, frameMs = 150;
constexpr double pi = std::numbers::pi;
constexpr double glowRadius = 0.86 * orb + 2;

enum class Mode { window, cjk, animated, cached };

QFont cjkFont() {
  QFont font(QStringLiteral("Noto Sans CJK SC"));
  font.setPixelSize(14);
  return font;
}

// A transparent square image of the glow's diameter with fill(painter, centre) drawn in it.
template <typename Fill>
QImage layer(Fill fill) {
  const int size = static_cast<int>(std::ceil(2 * glowRadius));
  QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
  painter.setPen(Qt::NoPen);
  fill(painter, QPointF(glowRadius, glowRadius));
  return image;
}

void paintGlow(QPainter& painter, QPointF c) {
  QRadialGradient glow(c, glowRadius);
  glow.setColorAt(0.4, QColor(120, 130, 220, 90));
  glow.setColorAt(1, Qt::transparent);
  painter.setBrush(glow);
  painter.drawEllipse(c, glowRadius, glowRadius);
}

void paintSphere(QPainter& painter, QPointF c) {
  QRadialGradient body(c + QPointF(-0.2 * orb, -0.26 * orb), 1.08 * orb);
  body.setColorAt(0, QColor(0xF7F8FF));
  body.setColorAt(0.46, QColor(0xC8CFEE));
  body.setColorAt(0.76, QColor(0x8189BD));
  body.setColorAt(1, QColor(0x4A5080));
  painter.setBrush(body);
  painter.drawEllipse(c, orb / 2.0, orb / 2.0);
}

void paintDigits(QPainter& painter, QPointF c) {
  QFont font = painter.font();
  font.setPixelSize(15);
  font.setBold(true);
  painter.setFont(font);
  painter.setPen(QColor(0x1A1D2E));
  painter.drawText(QRectF(c.x() - orb / 2.0, c.y() - 10, orb, 20), Qt::AlignCenter,
                   QStringLiteral("1,688.00"));
}

class Floor : public QWidget {
 public:
  explicit Floor(Mode mode) : mode_(mode) {
    setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::Tool);
    setAttribute(Qt::WA_TranslucentBackground);
    resize(side, side);
    // Side by side along the bottom of the screen, clear of the app's orb and of each other.
    move(24 + 216 * static_cast<int>(mode), 560);
    if (mode_ == Mode::window || mode_ == Mode::cjk) return;
    if (mode_ == Mode::animated) {
      sphere_ = layer([](QPainter& p, QPointF c) {
        paintGlow(p, c);
        paintSphere(p, c);
      });
    } else {
      glow_ = layer(paintGlow);
      sphere_ = layer(paintSphere);
    }
    digits_ = layer(paintDigits);
    clock_.start();
    connect(&timer_, &QTimer::timeout, this, &Floor::tick);
    timer_.start(frameMs);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF centre(side / 2.0, side / 2.0);
    if (mode_ == Mode::window || mode_ == Mode::cjk) {
      painter.setPen(Qt::NoPen);
      painter.setBrush(QColor(0x8189BD));
      painter.drawEllipse(centre, orb / 2.0, orb / 2.0);
      if (mode_ == Mode::cjk) {
        painter.setFont(cjkFont());
        painter.setPen(Qt::white);
        painter.drawText(QRectF(0, side - 40, side, 24), Qt::AlignCenter,
                         QStringLiteral("贵州茅台 1,688.00"));
      }
    } else if (mode_ == Mode::animated) {
      painter.setRenderHint(QPainter::SmoothPixmapTransform);
      const double breath = 1 + 0.012 * std::sin(2 * pi * seconds_ / 4.2);
      const double half = glowRadius * breath;
      const QRectF frame(centre + drift() - QPointF(half, half), QSizeF(2 * half, 2 * half));
      painter.drawImage(frame, sphere_);
      painter.drawImage(frame, digits_);
    } else {
      const QPoint at = QPoint(side / 2, side / 2) + shown_.offset - sphere_.rect().center();
      painter.setOpacity(shown_.glowLevel / double(glowLevels));
      painter.drawImage(at, glow_);
      painter.setOpacity(1);
      painter.drawImage(at, sphere_);
      painter.drawImage(at, digits_);
    }
    static bool reported = false;
    if (!reported) {
      reported = true;
      std::fprintf(stderr, "first paint at %lld ms\n",
                   static_cast<long long>(QDateTime::currentMSecsSinceEpoch()));
    }
  }

 private:
  // The cached frame: the drift snapped to whole pixels, the glow's opacity in a few steps.
  static constexpr int glowLevels = 16;
  struct Shown {
    QPoint offset;
    int glowLevel = glowLevels;
    bool operator==(const Shown&) const = default;
  };

  QPointF drift() const {
    return {1.5 * std::sin(2 * pi * seconds_ / 5.3), 1.2 * std::cos(2 * pi * seconds_ / 6.1)};
  }

  void tick() {
    seconds_ = clock_.elapsed() / 1000.0;
    if (mode_ == Mode::animated) return update();
    const double breath = 0.5 + 0.5 * std::sin(2 * pi * seconds_ / 4.2);
    const Shown next{drift().toPoint(),
                     static_cast<int>(std::lround(glowLevels * (0.75 + 0.25 * breath)))};
    if (next == shown_) return;
    shown_ = next;
    update();
  }

  Mode mode_;
  QImage glow_, sphere_, digits_;
  QTimer timer_;
  QElapsedTimer clock_;
  double seconds_ = 0;
  Shown shown_;
};

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  const QString name = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
  Mode mode;
  if (name == QStringLiteral("window")) {
    mode = Mode::window;
  } else if (name == QStringLiteral("cjk")) {
    mode = Mode::cjk;
  } else if (name == QStringLiteral("animated")) {
    mode = Mode::animated;
  } else if (name == QStringLiteral("cached")) {
    mode = Mode::cached;
  } else {
    std::fprintf(stderr, "usage: desktop_floor window|cjk|animated|cached\n");
    return 2;
  }
  Floor floor(mode);
  floor.show();
  return app.exec();
}
