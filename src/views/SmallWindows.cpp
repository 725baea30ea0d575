#include "views/SmallWindows.h"

#include <charconv>
#include <cmath>

#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "core/NumberText.h"
#include "views/AlertTexts.h"
#include "views/OrbPalette.h"
#include "views/TextStyle.h"
#include "views/Theme.h"

namespace tidemark {
namespace {

// Plain text for the price field: no thousands separators, two decimals or the more typed.
QString editable(double price) {
  return QString::number(price, 'f', std::max(2, typedDigits(price)));
}

}  // namespace

std::optional<double> parseTypedNumber(std::string input) {
  std::erase(input, ',');
  std::string_view text(input);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  double value = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (!std::isfinite(value)) return std::nullopt;
  return value;
}

std::optional<double> parseAlertPrice(std::string input) {
  auto value = parseTypedNumber(std::move(input));
  if (!value || !(*value > 0)) return std::nullopt;
  return value;
}

namespace {

// The watched securities to choose from, the active one chosen.
QComboBox* watchedSymbols(const AppModel& model, QWidget* parent) {
  auto* box = new QComboBox(parent);
  int active = 0;
  for (const QuoteSnapshot& q : model.watchedQuotes()) {
    box->addItem(QString::fromStdString(q.id + "  " + q.name), QString::fromStdString(q.id));
    if (q.id == model.activeID()) active = box->count() - 1;
  }
  box->setCurrentIndex(active);
  return box;
}

}  // namespace

AlertEditorView::AlertEditorView(AppModel& model, std::function<void()> close,
                                 std::function<void()> openAll, QWidget* parent)
    : QWidget(parent), model_(model), close_(std::move(close)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(24, 8, 24, 24);
  layout->setSpacing(12);
  layout->addWidget(
      themedLabel(QString::fromUtf8("价格预警"), TextRole::plain, 22, QFont::Bold, this));
  layout->addWidget(
      themedLabel(QString::fromUtf8("行情达到条件时，灵球会显示提醒脉冲并发送桌面通知。"),
                  TextRole::secondary, 12, QFont::Normal, this));

  symbol_ = watchedSymbols(model, this);
  // The editor opens on the security the orb shows; the primary alert's target and direction
  // come with it only when that alert watches the same security.
  const PriceAlertRule& primary = model.alertRule();
  const bool onActive = primary.symbolID && *primary.symbolID == model.activeID();
  layout->addWidget(symbol_);
  currentCaption_ =
      themedLabel(QStringLiteral("当前价格"), TextRole::muted, 12, QFont::Normal, this);
  layout->addWidget(currentCaption_);
  current_ = themedLabel(QString(), TextRole::plain, 20, QFont::Bold, this);
  current_->setWordWrap(false);
  layout->addWidget(current_);
  QObject::connect(symbol_, &QComboBox::currentIndexChanged, this, [this] {
    showCurrent();
    showOthers();
  });

  // Two pills: the chosen direction carries the accent in every theme.
  direction_ = new QButtonGroup(this);
  auto* directions = new QHBoxLayout;
  directions->setSpacing(8);
  for (const auto& [text, id] : {std::pair{"价格达到或高于", 1}, std::pair{"价格达到或低于", 0}}) {
    auto* choice = new ProductPill(QString::fromUtf8(text), this);
    choice->setCheckable(true);
    QObject::connect(choice, &QPushButton::toggled, choice,
                     [choice](bool on) { choice->setSelected(on); });
    direction_->addButton(choice, id);
    directions->addWidget(choice);
  }
  directions->addStretch();
  layout->addLayout(directions);
  setAbove(onActive ? primary.above : true);

  input_ = new QLineEdit(this);
  if (model.masked()) {
    input_->setPlaceholderText(QStringLiteral("目标价格已遮蔽"));
  } else {
    input_->setPlaceholderText(QStringLiteral("输入大于 0 的价格"));
    if (onActive && primary.price) input_->setText(editable(*primary.price));
  }
  layout->addWidget(input_);
  message_ = themedLabel(QString::fromUtf8(""), TextRole::error, 12, QFont::Normal, this);
  layout->addWidget(message_);
  QObject::connect(input_, &QLineEdit::textChanged, this, [this](const QString& text) {
    const bool wrong = !text.isEmpty() && !parseAlertPrice(text.toStdString());
    message_->setText(wrong ? QStringLiteral("请输入有效且大于 0 的数字。") : QString());
  });
  QObject::connect(input_, &QLineEdit::returnPressed, this, [this] { save(); });

  auto* buttons = new QHBoxLayout;
  auto* clearButton = new QPushButton(QStringLiteral("清除提醒"), this);
  auto* saveButton = new QPushButton(QStringLiteral("保存提醒"), this);
  saveButton->setDefault(true);
  saveButton->setProperty("primary", true);
  QObject::connect(clearButton, &QPushButton::clicked, this, [this] { clear(); });
  QObject::connect(saveButton, &QPushButton::clicked, this, [this] { save(); });
  buttons->addWidget(clearButton);
  buttons->addStretch();
  buttons->addWidget(saveButton);
  layout->addLayout(othersBlock(std::move(openAll)));
  layout->addStretch();
  layout->addLayout(buttons);
  showCurrent();
  showOthers();
  subscription_ = model.subscribe([this] { showOthers(); });
}

QLayout* AlertEditorView::othersBlock(std::function<void()> openAll) {
  auto* block = new QVBoxLayout;
  others_ = themedLabel(QString(), TextRole::secondary, 12, QFont::Normal, this);
  block->addWidget(others_);
  auto* all = new QPushButton(QStringLiteral("管理全部提醒"), this);
  all->setProperty("flat", true);
  QObject::connect(all, &QPushButton::clicked, this, [openAll = std::move(openAll)] {
    if (openAll) openAll();
  });
  auto* allRow = new QHBoxLayout;
  allRow->addWidget(all);
  allRow->addStretch();
  block->addLayout(allRow);
  return block;
}

void AlertEditorView::showOthers() {
  const std::string symbol = symbol_->currentData().toString().toStdString();
  QStringList lines;
  for (const auto& [rule, state] : model_.alertList()) {
    if (rule.symbolID != symbol || rule.id == primaryAlertID) continue;
    const std::string condition = model_.masked()
                                      ? std::string(label(rule.kind)) + " ••••"
                                      : conditionText(rule, model_.quoteStyle().precision);
    lines << QString::fromStdString(condition + " · " + repeatText(rule) + " · " +
                                    alertStateText(rule, state));
  }
  others_->setText(lines.isEmpty() ? QString()
                                   : QStringLiteral("此标的的其他提醒\n") + lines.join(u'\n'));
  others_->setVisible(!lines.isEmpty());
}

void AlertEditorView::setAbove(bool above) {
  direction_->button(above ? 1 : 0)->setChecked(true);
}

void AlertEditorView::showEvent(QShowEvent*) {
  input_->setFocus(Qt::OtherFocusReason);
}

void AlertEditorView::showCurrent() {
  const QuoteSnapshot* quote = model_.quote(symbol_->currentData().toString().toStdString());
  currentCaption_->setVisible(!model_.masked());
  if (model_.masked()) {
    current_->setText(QStringLiteral("当前价格已遮蔽"));
  } else {
    current_->setText(quote ? QString::fromStdString(model_.quoteStyle().price(*quote))
                            : QStringLiteral("—"));
  }
}

void AlertEditorView::save() {
  const auto value = parseAlertPrice(input_->text().toStdString());
  if (!value) return;
  model_.setAlert(symbol_->currentData().toString().toStdString(), *value,
                  direction_->checkedId() == 1);
  if (close_) close_();
}

void AlertEditorView::clear() {
  model_.clearAlert();
  if (close_) close_();
}

OnboardingView::OnboardingView(AppModel& model, std::function<void()> close, QWidget* parent)
    : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(32, 8, 32, 28);
  layout->setSpacing(14);
  layout->addWidget(
      themedLabel(QString::fromUtf8("欢迎来到岚舟"), TextRole::plain, 26, QFont::Bold, this));
  layout->addWidget(themedLabel(QString::fromUtf8("让行情安静地浮在桌面，\n需要时，轻触一颗灵球。"),
                                TextRole::secondary, 14, QFont::Normal, this));
  struct Step {
    const char* gesture;
    const char* title;
    const char* detail;
  };
  const Step steps[] = {
      {"单击灵球", "展开自选股卫星", nullptr},
      {"双击灵球", "查看圆形详情和标准分时", nullptr},
      {"右键 · 外观 · 自选管理", "打开自选管理", "添加、排序并保存自选股"},
      {"拖动灵球", "拖到屏幕边缘", "磁吸为安静的半圆舷窗"},
  };
  for (const Step& step : steps) {
    auto* card = new QFrame(this);
    card->setProperty("rowcard", true);
    auto* row = new QVBoxLayout(card);
    row->setContentsMargins(14, 8, 14, 10);
    row->setSpacing(2);
    row->addWidget(
        themedLabel(QString::fromUtf8(step.gesture), TextRole::accent, 11, QFont::DemiBold));
    row->addWidget(themedLabel(QString::fromUtf8(step.title), TextRole::plain, 15, QFont::Bold));
    if (step.detail)
      row->addWidget(
          themedLabel(QString::fromUtf8(step.detail), TextRole::muted, 12, QFont::Normal));
    layout->addWidget(card);
  }
  layout->addWidget(
      themedLabel(QString::fromUtf8("当前可使用本地快照，或在设置中切换腾讯 / 新浪公开行情。"),
                  TextRole::muted, 12, QFont::Normal, this));
  layout->addStretch();
  auto* start = new QPushButton(QStringLiteral("开始探索"), this);
  start->setMinimumHeight(38);
  start->setDefault(true);
  start->setProperty("primary", true);
  QObject::connect(start, &QPushButton::clicked, this, [&model, close = std::move(close)] {
    model.setOnboardingSeen(true);
    if (close) close();
  });
  layout->addWidget(start);
}

}  // namespace tidemark
