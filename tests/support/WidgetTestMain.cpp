// gtest's main with a widget application on Qt's off-screen platform: real widgets and real
// event delivery, no display needed.

#include <gtest/gtest.h>

#include <QApplication>
#include <QFont>

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  // Times read as they are written in the tests.
  qputenv("TZ", "UTC");
  QApplication app(argc, argv);
  // The interface font of the real app.
  QApplication::setFont(QFont(QStringLiteral("Noto Sans CJK SC")));
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
