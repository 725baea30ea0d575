#pragma once

#include <functional>

#include <QGridLayout>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QVariantAnimation>
#include <QWidget>

#include "core/ChangeSignal.h"
#include "model/AppModel.h"
#include "views/Charts.h"

namespace tidemark {

// A round button that shows one symbol, e.g. the close mark of a window heading.
class SymbolButton final : public QPushButton {
 public:
  SymbolButton(const char* symbol, const QString& toolTip, QWidget* parent = nullptr);

 protected:
  void paintEvent(QPaintEvent*) override;

 private:
  const char* symbol_;
};

// The large circular detail: the active quote's price and change over a polar intraday chart,
// growing into place when it appears and shrinking away when it closes.
class DetailOrb final : public QWidget {
 public:
  DetailOrb(AppModel& model, std::function<void()> close, QWidget* parent = nullptr);

  void setSystemReduceMotion(bool on) { systemReduceMotion_ = on; }
  bool systemReduceMotion() const { return systemReduceMotion_; }
  bool appeared() const { return appeared_; }
  bool closing() const { return closing_; }
  // Shrinks the orb away, then closes; at once when motion is reduced.
  void animateClose();
  // 0 hidden … 1 in place.
  double presence() const { return presence_; }

  // The texts as drawn.
  QString priceDisplay() const;
  QString changeDisplay() const;
  QString chartLabel() const;

  QSize sizeHint() const override { return {480, 480}; }
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override { return width; }

 protected:
  void showEvent(QShowEvent*) override;
  void hideEvent(QHideEvent*) override;
  void paintEvent(QPaintEvent*) override;

 private:
  bool motionAllowed() const { return !model_.reduceMotion() && !systemReduceMotion_; }
  void animateTo(double target, int milliseconds, QEasingCurve curve);

  AppModel& model_;
  std::function<void()> close_;
  bool systemReduceMotion_ = false;
  bool appeared_ = false;
  bool closing_ = false;
  double presence_ = 0;
  QVariantAnimation animation_;
  QImage sphere_;
  QString sphereKey_;
};

// The detail window's content: heading with close button, the detail orb, the linear chart and
// the quote's figures with a way to the alert editor. Asks for the active quote's intraday
// series whenever it is shown or the active quote changes.
class DetailView final : public QWidget {
 public:
  DetailView(AppModel& model, std::function<void()> close, std::function<void()> onAlert,
             QWidget* parent = nullptr);

  DetailOrb& orb() { return *orb_; }
  LinearQuoteChart& chart() { return *chart_; }
  // Every text of the figures panel, in order.
  QStringList figureTexts() const;

 protected:
  void showEvent(QShowEvent*) override;

 private:
  void refresh();

  AppModel& model_;
  DetailOrb* orb_;
  LinearQuoteChart* chart_;
  QLabel* name_;
  QGridLayout* figures_;
  std::vector<QLabel*> values_;
  std::string requestedFor_;
  ChangeSignal::Subscription subscription_;
  bool refreshPending_ = false;
};

}  // namespace tidemark
