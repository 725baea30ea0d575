#include "views/DetailView.h"

#include <QDateTime>
#include <QPainter>
#include <QResizeEvent>
#include <QTimer>
#include <QVBoxLayout>

#include "core/Market.h"
#include "core/NumberText.h"
#include "views/Metrics.h"
#include "views/OrbView.h"
#include "views/Symbols.h"
#include "views/TextStyle.h"
#include "views/Theme.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;

const QString hidden = QStringLiteral("••••");

// The sphere's share of the orb's frame: the chart's outer ticks reach just inside its rim.
constexpr double sphereShare = 0.86;
// The figures beside the orb need this much width; the card's content is this much narrower.
constexpr int sideWidth = 248, figuresCardMargins = 32;

QString timeText(Date date) {
  if (date.sinceReference == 0) return QStringLiteral("—");
  return QDateTime::fromMSecsSinceEpoch(qint64(date.unixSeconds() * 1000))
      .toString(QStringLiteral("MM-dd HH:mm:ss"));
}

}  // namespace

SymbolButton::SymbolButton(const char* symbol, const QString& toolTip, QWidget* parent)
    : QPushButton(parent), symbol_(symbol) {
  setToolTip(toolTip);
  setAccessibleName(toolTip);
  setFixedSize(30, 30);
  setCursor(Qt::PointingHandCursor);
  setFlat(true);
}

void SymbolButton::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  QColor colour = palette().color(QPalette::WindowText);
  colour.setAlphaF(underMouse() ? 0.95f : 0.6f);
  drawSymbol(painter, symbol_, QRectF(rect()).adjusted(3, 3, -3, -3), colour);
}

DetailOrb::DetailOrb(AppModel& model, std::function<void()> close, QWidget* parent)
    : QWidget(parent), model_(model), close_(std::move(close)) {
  setFixedSize(side, side);
  QObject::connect(&animation_, &QVariantAnimation::valueChanged, this, [this](const QVariant& v) {
    presence_ = v.toDouble();
    update();
    // The glow round the frame grows and fades with the orb.
    if (parentWidget()) parentWidget()->update();
  });
  // The window is told to close when the orb has shrunk all the way, not by a clock of its own
  // that could run out a frame early.
  QObject::connect(&animation_, &QVariantAnimation::finished, this, [this] {
    if (closing_ && presence_ <= 0 && close_) close_();
  });
}

void DetailOrb::animateTo(double target, int milliseconds, const QEasingCurve& curve) {
  animation_.stop();
  if (!motionAllowed() || !isVisible()) {
    presence_ = target;
    update();
    return;
  }
  animation_.setStartValue(presence_);
  animation_.setEndValue(target);
  animation_.setDuration(milliseconds);
  animation_.setEasingCurve(curve);
  animation_.start();
}

void DetailOrb::showEvent(QShowEvent*) {
  closing_ = false;
  appeared_ = true;
  animateTo(1, 420, QEasingCurve::OutBack);
}

void DetailOrb::hideEvent(QHideEvent*) {
  // The next opening grows the orb in again.
  animation_.stop();
  appeared_ = false;
  presence_ = 0;
}

void DetailOrb::animateClose() {
  closing_ = true;
  if (!motionAllowed()) {
    if (close_) close_();
    return;
  }
  appeared_ = false;
  animateTo(0, 200, QEasingCurve::InCubic);
  // Not animated (hidden): already gone.
  if (animation_.state() != QAbstractAnimation::Running && close_) close_();
}

QString DetailOrb::priceDisplay() const {
  const QuoteSnapshot* quote = model_.activeQuote();
  if (model_.masked()) return QStringLiteral("••••••");
  return quote ? QString::fromStdString(model_.quoteStyle().price(*quote)) : QStringLiteral("--");
}

QString DetailOrb::changeDisplay() const {
  const QuoteSnapshot* quote = model_.activeQuote();
  if (model_.masked()) return QStringLiteral("••••%");
  return quote ? QString::fromStdString(percentText(quote->changePct())) : QString();
}

QString DetailOrb::chartLabel() const {
  const QuoteSnapshot* quote = model_.activeQuote();
  return QString::fromStdString((quote ? quote->name : std::string()) + "极坐标分时图");
}

void DetailOrb::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::TextAntialiasing);
  const OrbPalette palette{model_.theme()};
  const QuoteSnapshot* quote = model_.activeQuote();
  const double change = quote ? quote->changePct() : 0;
  const Color trend = model_.quoteStyle().color(change);

  const double side = DetailOrb::side;
  const QPointF c(width() / 2.0, height() / 2.0);
  painter.setOpacity(std::clamp(presence_, 0.0, 1.0));
  painter.translate(c);
  painter.scale(0.3 + 0.7 * presence_, 0.3 + 0.7 * presence_);
  painter.translate(-c);

  // The sphere fills most of the frame; it changes only with the size, the theme and the trend's
  // colour. Its shadow would reach past the frame: the detail view's glow stands in for it.
  const qreal ratio = devicePixelRatioF();
  const QString key = QStringLiteral("%1/%2/%3/%4")
                          .arg(side)
                          .arg(int(model_.theme()))
                          .arg(qt(trend).rgba())
                          .arg(ratio);
  if (key != sphereKey_) {
    sphereKey_ = key;
    sphere_ = QImage(QSize(int(std::ceil(side * ratio)), int(std::ceil(side * ratio))),
                     QImage::Format_ARGB32_Premultiplied);
    sphere_.setDevicePixelRatio(ratio);
    sphere_.fill(Qt::transparent);
    QPainter layer(&sphere_);
    layer.setRenderHint(QPainter::Antialiasing);
    const QPointF mid(side / 2, side / 2);
    paintOrbSphere(layer, mid, side * sphereShare, palette, trend, false, false, false);
  }
  painter.drawImage(QPointF(c.x() - side / 2, c.y() - side / 2), sphere_);
  const QRectF face(c.x() - side / 2, c.y() - side / 2, side, side);
  const std::vector<double> values =
      quote ? model_.intraday().prices(*quote) : std::vector<double>{};
  paintPolarQuoteChart(painter, face, values, qt(trend), palette);

  painter.setPen(qt(trend));
  QFont big = uiFont(44 * side / 480, QFont::Black);
  big.setStyleHint(QFont::Monospace);
  big.setLetterSpacing(QFont::AbsoluteSpacing, -1.5 * side / 480);
  painter.setFont(big);
  const double line = 54 * side / 480;
  painter.drawText(QRectF(face.left(), c.y() - line * 0.8, face.width(), line), Qt::AlignCenter,
                   priceDisplay());
  painter.setFont(uiFont(18 * side / 480, QFont::DemiBold));
  painter.drawText(QRectF(face.left(), c.y() + line * 0.25, face.width(), line * 0.6),
                   Qt::AlignCenter, changeDisplay());
  painter.setPen(qt(palette.orbText()));
  painter.setFont(uiFont(12 * side / 480, QFont::Medium));
  painter.drawText(QRectF(face.left(), c.y() - side * 0.3, face.width(), 20 * side / 480),
                   Qt::AlignCenter, chartLabel());
}

void DetailView::addFigures(QGridLayout* tiles) {
  // The quote's figures in rows beside the charts; the holding's in tiles under the orb, a
  // caption over its value.
  const char* names[] = {"今开",     "昨收", "最高", "最低", "成交量",   "更新时间", "数据源",
                         "交易状态", "提醒", "持有", "成本", "今日盈亏", "持有盈亏"};
  int row = 0;
  for (const char* name : names) {
    const bool held = size_t(row) >= holdingRows;
    auto* caption = themedLabel(QString::fromUtf8(name), TextRole::muted, 12.5);
    caption->setWordWrap(false);
    captions_.push_back(caption);
    auto* value = themedLabel(QString(), TextRole::plain, 13.5, QFont::DemiBold);
    value->setWordWrap(false);
    values_.push_back(value);
    if (held) {
      const int column = row - int(holdingRows);
      tiles->addWidget(caption, 0, column, Qt::AlignTop);
      tiles->addWidget(value, 1, column, Qt::AlignTop);
      tiles->setColumnStretch(column, 1);
    } else {
      figures_->addWidget(caption, row, 0);
      figures_->addWidget(value, row, 1);
    }
    ++row;
  }
}

DetailView::DetailView(AppModel& model, std::function<void()> close, std::function<void()> onAlert,
                       QWidget* parent)
    : QWidget(parent), model_(model) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(metrics::windowMargins);
  layout->setSpacing(14);
  auto* heading = new ProductHeading(QStringLiteral("圆形详情 · 螺旋分时"),
                                     QStringLiteral("时间绕圆心铺开，价格沿半径起伏。"), this);
  orb_ = new DetailOrb(model, std::move(close), this);
  auto* closeButton = new SymbolButton("xmark.circle.fill", QStringLiteral("关闭"), heading);
  QObject::connect(closeButton, &QPushButton::clicked, this, [this] { orb_->animateClose(); });
  heading->addTrailing(closeButton);
  layout->addWidget(heading);

  body_ = new QBoxLayout(QBoxLayout::LeftToRight);
  body_->setSpacing(16);
  // The orb, and under it the holding's figures while the active security is held.
  auto* orbColumn = new QVBoxLayout;
  orbColumn->setSpacing(0);
  orbColumn->addWidget(orb_, 0, Qt::AlignHCenter);
  auto* holdingCard = new ProductCard(QString(), this);
  holding_ = holdingCard;
  holding_->setFixedWidth(DetailOrb::side);
  auto* tiles = new QGridLayout;
  tiles->setHorizontalSpacing(12);
  tiles->setVerticalSpacing(2);
  holdingCard->content().setContentsMargins(16, 10, 16, 10);
  holdingCard->content().addLayout(tiles);
  orbColumn->addWidget(holding_, 0, Qt::AlignHCenter);
  body_->addLayout(orbColumn);
  body_->setAlignment(orbColumn, Qt::AlignTop | Qt::AlignHCenter);
  side_ = new QWidget(this);
  auto* side = new QVBoxLayout(side_);
  side->setContentsMargins(0, 0, 0, 0);
  side->setSpacing(12);
  auto* chartCard = new ProductCard(QString(), side_);
  charts_ = new DetailCharts(model_, chartCard);
  chartCard->content().addWidget(charts_);
  side->addWidget(chartCard, 1);

  auto* figuresCard = new ProductCard(QStringLiteral("行情要点"), side_);
  name_ = themedLabel(QString(), TextRole::plain, 15, QFont::Bold, figuresCard);
  name_->setWordWrap(false);
  figuresCard->content().addWidget(name_);
  extended_ = themedLabel(QString(), TextRole::plain, 13, QFont::DemiBold, figuresCard);
  extended_->setWordWrap(false);
  extended_->hide();
  figuresCard->content().addWidget(extended_);
  figures_ = new QGridLayout;
  figures_->setHorizontalSpacing(14);
  figures_->setVerticalSpacing(2);
  figures_->setColumnStretch(1, 1);
  addFigures(tiles);
  figuresCard->content().addLayout(figures_);
  fuller_ = new FullerFiguresGrid;
  figuresCard->content().addLayout(fuller_);
  auto* alert = new QPushButton(QStringLiteral("设置价格预警"), figuresCard);
  alert->setProperty("primary", true);
  QObject::connect(alert, &QPushButton::clicked, this, [onAlert = std::move(onAlert)] {
    if (onAlert) onAlert();
  });
  figuresCard->content().addWidget(alert);
  side->addWidget(figuresCard);
  side_->setFixedWidth(sideWidth);
  // The side runs the body's height: what the figures leave goes to the charts.
  body_->addWidget(side_, 0);
  body_->addStretch(1);
  layout->addLayout(body_, 1);
  setMinimumWidth(DetailOrb::side + layout->contentsMargins().left() +
                  layout->contentsMargins().right());

  subscription_ = model.subscribe([this] { refreshes_.request(); });
  refresh();
}

void DetailView::showEvent(QShowEvent*) {
  requestedFor_.clear();
  refresh();
}

bool DetailView::figuresBeside() const {
  return body_->direction() == QBoxLayout::LeftToRight;
}

void DetailView::resizeEvent(QResizeEvent*) {
  const QMargins m = layout()->contentsMargins();
  const bool beside =
      width() >= m.left() + DetailOrb::side + body_->spacing() + sideWidth + m.right();
  body_->setDirection(beside ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
  // Below the orb the figures take the orb's width.
  side_->setFixedWidth(beside ? sideWidth : DetailOrb::side);
  fitName();
}

void DetailView::fitName() {
  // The code and market go on a line of their own when the card is too narrow for one line
  // ("恒生科技指数  hkHSTECH · 港股指数").
  const auto& [name, code] = securityName_;
  if (code.isEmpty()) return name_->setText(name);
  const int room = side_->maximumWidth() - figuresCardMargins;
  const bool fits = name_->fontMetrics().horizontalAdvance(name + u"  "_s + code) <= room;
  name_->setText(name + (fits ? u"  "_s : u"\n"_s) + code);
}

void DetailView::paintEvent(QPaintEvent*) {
  // The orb's glow, round its frame and under the cards beside it, fading out before it reaches
  // the window's edge; it grows and fades in with the orb.
  const double presence = std::clamp(orb_->presence(), 0.0, 1.0);
  if (presence <= 0) return;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const OrbPalette palette{model_.theme()};
  const QPointF c = QRectF(orb_->geometry()).center();
  const double rim = DetailOrb::side * sphereShare / 2 * (0.3 + 0.7 * presence);
  const double reach = rim + glowReach;
  QRadialGradient glow(c, reach);
  glow.setColorAt(0, qt(palette.halo()));
  glow.setColorAt(rim / reach, qt(palette.halo()));
  glow.setColorAt(1, Qt::transparent);
  painter.setOpacity(presence);
  painter.setPen(Qt::NoPen);
  painter.setBrush(glow);
  painter.drawEllipse(c, reach, reach);
}

void DetailView::showExtended(const QuoteSnapshot& quote) {
  // Beside the regular price, never instead of it: P/L and alerts keep the regular one.
  const ExtendedQuote* extended = model_.extras().extended(quote.id);
  const auto session = extendedSessionLabel(model_.marketStateOf(marketLabel(Market::usShare)));
  extended_->setVisible(extended && session);
  if (!extended || !session) return;
  const bool masked = model_.masked();
  extended_->setText(
      masked ? QString::fromStdString(*session) + QStringLiteral(" ") + hidden
             : QString::fromStdString(extendedDetailText(
                   *session, *extended, model_.quoteStyle().price(quote, extended->price))));
  extended_->setStyleSheet(masked ? QString()
                                  : QStringLiteral("color: ") +
                                        qt(model_.quoteStyle().color(extended->changePct)).name());
}

void DetailView::showAlerts(const std::string& symbol) {
  // The symbol's alerts that are on, the primary one included; the row only when there are any.
  size_t on = 0;
  for (const auto& [rule, state] : model_.alertList())
    on += rule.symbolID == symbol && rule.enabled && state != AlertState::dormant;
  values_[alertRow]->setText(QString::number(on) + QStringLiteral(" 条"));
  captions_[alertRow]->setVisible(on > 0);
  values_[alertRow]->setVisible(on > 0);
}

QStringList DetailView::figureTexts() const {
  QStringList texts{name_->text()};
  if (extended_->isVisibleTo(this)) texts << extended_->text();
  for (const QLabel* value : values_)
    if (value->isVisibleTo(this)) texts << value->text();
  return texts + fuller_->shownTexts();
}

void DetailView::showHolding(const std::optional<QuoteSnapshot>& quote) {
  const Holding* held = quote ? model_.holding(quote->id) : nullptr;
  holding_->setVisible(held != nullptr);
  if (!held) return;
  const bool masked = model_.masked();
  const HoldingFigures f = holdingFigures(*held, *quote);
  const auto show = [&](size_t i, const std::string& text, std::optional<double> sign) {
    values_[i]->setText(masked ? hidden : QString::fromStdString(text));
    values_[i]->setStyleSheet(masked || !sign ? QString()
                                              : QStringLiteral("color: ") +
                                                    qt(model_.quoteStyle().color(*sign)).name());
  };
  show(holdingRows, sharesText(held->shares), std::nullopt);
  show(holdingRows + 1, model_.quoteStyle().typed(held->symbolID, held->cost), std::nullopt);
  // The amount over its percentage: a large position's figures are wider than the panel.
  show(holdingRows + 2, signedAmountText(f.dayProfit) + "\n" + percentText(f.dayProfitPct),
       f.dayProfit);
  show(holdingRows + 3,
       signedAmountText(f.totalProfit) + "\n" +
           (f.totalProfitPct ? percentText(*f.totalProfitPct) : "—"),
       f.totalProfit);
}

void DetailView::refresh() {
  const QuoteSnapshot* quote = model_.activeQuote();
  const bool masked = model_.masked();
  // Asked again when the source changes: only live sources have intraday series.
  if (quote && isVisible() &&
      requestedFor_ != quote->id + std::string(rawValue(model_.sourceMode()))) {
    requestedFor_ = quote->id + std::string(rawValue(model_.sourceMode()));
    model_.fetchIntraday(*quote);
    quote = model_.activeQuote();  // a synchronous answer may have replaced the quotes
  }
  if (!quote) {
    securityName_ = {QStringLiteral("暂无自选"), QString()};
    fitName();
    for (QLabel* value : values_) value->setText(QStringLiteral("—"));
    fuller_->show({});
    showAlerts({});
    showHolding(std::nullopt);
    charts_->show(nullptr, {}, false);
    orb_->update();
    return;
  }
  const bool real = model_.intraday().hasReal(*quote);
  std::vector<double> series = model_.intraday().prices(*quote);
  securityName_ = {QString::fromStdString(quote->name),
                   QString::fromStdString(quote->id + " · " + quote->market)};
  fitName();
  const auto figure = [&](double value) {
    return masked ? hidden : QString::fromStdString(model_.quoteStyle().price(*quote, value));
  };
  // The day's open as the feed gave it, else the first price of a real series; none otherwise.
  auto fuller = fullerFigures(*quote, model_.quoteStyle(), masked);
  const bool feedOpen = !fuller.empty() && fuller.front().first == u"今开"_s;
  const bool seriesOpen = real && !series.empty();
  values_[0]->setText(feedOpen     ? fuller.front().second
                      : seriesOpen ? figure(series.front())
                                   : QString());
  captions_[0]->setVisible(feedOpen || seriesOpen);
  values_[0]->setVisible(feedOpen || seriesOpen);
  if (feedOpen) fuller.erase(fuller.begin());
  fuller_->show(fuller);
  values_[1]->setText(figure(quote->prevClose));
  values_[2]->setText(figure(quote->high));
  values_[3]->setText(figure(quote->low));
  values_[4]->setText(masked ? hidden : QString::fromStdString(volumeText(quote->volume)));
  values_[5]->setText(masked ? hidden : timeText(quote->updatedAt));
  values_[6]->setText(QString::fromStdString(sourceLabel({*quote}, model_.sourceMode())));
  const auto state = model_.marketStateOf(quote->market);
  values_[7]->setText(state ? QString::fromUtf8(stateText(*state)) : QStringLiteral("—"));
  showExtended(*quote);
  showAlerts(quote->id);
  showHolding(*quote);
  charts_->show(quote, std::move(series), real);
  orb_->update();
}

}  // namespace tidemark
