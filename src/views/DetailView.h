#pragma once

#include <functional>

#include <QBoxLayout>
#include <QGridLayout>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QVariantAnimation>
#include <QWidget>

#include "core/ChangeSignal.h"
#include "model/AppModel.h"
#include "views/Charts.h"
#include "views/DetailCharts.h"
#include "views/OncePerTurn.h"
#include "views/QuoteFigures.h"

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

  // The orb's frame; its glow is the detail view's to paint, around the frame.
  static constexpr int side = 480;

 protected:
  void showEvent(QShowEvent*) override;
  void hideEvent(QHideEvent*) override;
  void paintEvent(QPaintEvent*) override;

 private:
  bool motionAllowed() const { return !model_.reduceMotion() && !systemReduceMotion_; }
  void animateTo(double target, int milliseconds, const QEasingCurve& curve);

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
  LinearQuoteChart& chart() { return charts_->linear(); }
  DetailCharts& charts() { return *charts_; }
  // Every text of the figures panel, in order.
  QStringList figureTexts() const;
  // Beside the orb, or below it where the view is too narrow for both.
  bool figuresBeside() const;
  // The glow round the orb reaches this far past the sphere's rim.
  static constexpr int glowReach = 50;

 protected:
  void showEvent(QShowEvent*) override;
  void resizeEvent(QResizeEvent*) override;
  void paintEvent(QPaintEvent*) override;

 private:
  void refresh();
  // The captions and values of the quote's figures, in rows beside the charts, and of the
  // holding's, in `tiles` under the orb.
  void addFigures(QGridLayout* tiles);

  AppModel& model_;
  DetailOrb* orb_;
  DetailCharts* charts_;
  QBoxLayout* body_;
  QWidget* side_;
  QWidget* holding_;  // the card of the holding's figures
  QLabel* extended_ = nullptr;
  QLabel* name_;
  std::pair<QString, QString> securityName_;  // the name, and the code with the market
  void fitName();
  QGridLayout* figures_;
  FullerFiguresGrid* fuller_;  // the figures only some feeds give
  std::vector<QLabel*> captions_;
  // The figures from this one on are the holding's.
  static constexpr size_t alertRow = 8, holdingRows = 9;
  void showHolding(const std::optional<QuoteSnapshot>& quote);
  // The US pre- or post-market trade of the current session, under the name.
  void showExtended(const QuoteSnapshot& quote);
  void showAlerts(const std::string& symbol);
  std::vector<QLabel*> values_;
  std::string requestedFor_;
  ChangeSignal::Subscription subscription_;
  OncePerTurn refreshes_{this, [this] { refresh(); }};
};

}  // namespace tidemark
