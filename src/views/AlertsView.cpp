#include "views/AlertsView.h"

#include <QGridLayout>
#include <QHBoxLayout>

#include "core/Market.h"
#include "core/NumberText.h"
#include "model/MarketSessions.h"
#include "views/AlertTexts.h"
#include "views/Metrics.h"
#include "views/SmallWindows.h"
#include "views/TextStyle.h"

namespace tidemark {
namespace {

QString q(const std::string& s) {
  return QString::fromStdString(s);
}

QString q(std::string_view s) {
  return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

}  // namespace

AlertsView::AlertsView(AppModel& model, const Clock& clock, QWidget* parent)
    : QWidget(parent), model_(model), clock_(clock) {
  auto* page = new QVBoxLayout(this);
  page->setContentsMargins(metrics::pageMargins);
  page->setSpacing(metrics::pageSpacing);
  page->addWidget(new ProductHeading(
      QStringLiteral("价格提醒 · 本地保存"),
      QStringLiteral("价格与涨跌幅到达时通知你；每日提醒在下一个交易日再次生效。"), this));
  page->addWidget(listCard());
  page->addWidget(formCard());
  page->addStretch();
  subscription_ = model.subscribe([this] { refreshes_.request(); });
  refresh();
}

QWidget* AlertsView::listCard() {
  auto* card = new ProductCard(QStringLiteral("提醒"), this);
  paused_ = new ProductSwitch(QStringLiteral("暂停全部提醒"), card);
  QObject::connect(paused_, &QCheckBox::toggled, this,
                   [this](bool on) { model_.setAlertsPaused(on); });
  card->content().addWidget(paused_);
  empty_ = themedLabel(QStringLiteral("还没有提醒 · 为自选设置价格和涨跌幅提醒"), TextRole::muted,
                       13, QFont::Normal, card);
  card->content().addWidget(empty_);
  rows_ = new QVBoxLayout;
  rows_->setSpacing(6);
  card->content().addLayout(rows_);
  return card;
}

QWidget* AlertsView::formCard() {
  auto* form = new ProductCard(QStringLiteral("添加提醒"), this);
  auto* fields = new QGridLayout;
  fields->setHorizontalSpacing(10);
  fields->setVerticalSpacing(8);
  symbol_ = new QComboBox(form);
  symbol_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  symbol_->setMinimumContentsLength(8);
  kind_ = new QComboBox(form);
  for (AlertKind k : allCases<AlertKind>()) kind_->addItem(q(label(k)));
  value_ = new QLineEdit(form);
  repeat_ = new QComboBox(form);
  for (AlertRepeat r : allCases<AlertRepeat>()) repeat_->addItem(q(label(r)));
  const std::pair<const char*, QWidget*> inputs[] = {
      {"标的", symbol_}, {"条件", kind_}, {"数值", value_}, {"重复", repeat_}};
  int column = 0;
  for (const auto& [caption, input] : inputs) {
    input->setAccessibleName(QString::fromUtf8(caption));
    auto* label =
        themedLabel(QString::fromUtf8(caption), TextRole::secondary, 12.5, QFont::Normal, form);
    label->setWordWrap(false);
    fields->addWidget(label, 0, column);
    fields->addWidget(input, 1, column);
    fields->setColumnStretch(column, column == 0 ? 2 : 1);
    ++column;
  }
  auto* add = new QPushButton(QStringLiteral("添加提醒"), form);
  add->setProperty("primary", true);
  fields->addWidget(add, 1, column);
  form->content().addLayout(fields);
  message_ = themedLabel(QString(), TextRole::error, 12, QFont::Normal, form);
  message_->hide();
  form->content().addWidget(message_);
  hint_ = themedLabel(QStringLiteral("当前价已满足条件，保存后会立即提醒"), TextRole::warning, 12,
                      QFont::Normal, form);
  hint_->hide();
  form->content().addWidget(hint_);
  QObject::connect(add, &QPushButton::clicked, this, [this] { submit(); });
  QObject::connect(value_, &QLineEdit::returnPressed, this, [this] { submit(); });
  QObject::connect(value_, &QLineEdit::textChanged, this, [this] { updateHint(); });
  for (QComboBox* box : {symbol_, kind_})
    QObject::connect(box, &QComboBox::currentIndexChanged, this, [this] { updateHint(); });
  QObject::connect(kind_, &QComboBox::currentIndexChanged, this, [this] {
    value_->setPlaceholderText(isChangeKind(allCases<AlertKind>()[size_t(kind_->currentIndex())])
                                   ? QStringLiteral("涨跌幅 %")
                                   : QStringLiteral("价格"));
  });
  value_->setPlaceholderText(QStringLiteral("价格"));
  return form;
}

std::optional<AlertRule> AlertsView::formRule() const {
  const auto value = parseTypedNumber(value_->text().toStdString());
  if (!value || symbol_->currentIndex() < 0) return std::nullopt;
  AlertRule rule;
  rule.symbolID = symbol_->currentData().toString().toStdString();
  rule.kind = allCases<AlertKind>()[size_t(std::max(0, kind_->currentIndex()))];
  rule.threshold = *value;
  rule.repeat = allCases<AlertRepeat>()[size_t(std::max(0, repeat_->currentIndex()))];
  return rule;
}

void AlertsView::updateHint() {
  const auto rule = formRule();
  const QuoteSnapshot* quote = rule ? model_.quote(rule->symbolID) : nullptr;
  // A change counts only while its market trades, as the evaluation has it.
  const bool fires =
      quote && !alertThresholdProblem(rule->kind, rule->threshold) &&
      meetsCondition(*rule, *quote) &&
      (!isChangeKind(rule->kind) || isAwake(exchangeOf(feedMarket(rule->symbolID)), clock_.now()));
  hint_->setVisible(fires);
}

void AlertsView::submit() {
  auto rule = formRule();
  // Text that is no number at all is refused as the model refuses a number out of range.
  if (!rule) {
    rule = AlertRule{};
    rule->symbolID = symbol_->currentData().toString().toStdString();
    rule->kind = allCases<AlertKind>()[size_t(std::max(0, kind_->currentIndex()))];
  }
  if (auto refused = model_.addAlert(*rule)) {
    message_->setText(q(*refused));
    message_->show();
    return;
  }
  message_->clear();
  message_->hide();
  value_->clear();
  hint_->hide();
}

void AlertsView::fillSymbols() {
  std::vector<std::string> offered;
  for (const std::string& id : model_.watchlist()) offered.push_back(id);
  if (offered == offered_) return;
  offered_ = std::move(offered);
  const QString chosen = symbol_->currentData().toString();
  const QSignalBlocker quiet(symbol_);
  symbol_->clear();
  for (const std::string& id : offered_) {
    const QuoteSnapshot* quote = model_.quote(id);
    symbol_->addItem(q(id + "  " + (quote ? quote->name : std::string())).trimmed(), q(id));
  }
  const int again = symbol_->findData(chosen);
  symbol_->setCurrentIndex(again >= 0 ? again : 0);
}

QWidget* AlertsView::ruleRow(const AlertRule& rule, AlertState state, QWidget* parent) {
  auto* row = new QWidget(parent);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(12, 0, 0, 0);
  layout->setSpacing(10);
  // Masked, the thresholds are figures like any other.
  const QString condition = model_.masked() ? q(label(rule.kind)) + QStringLiteral(" ••••")
                                            : q(conditionText(rule, model_.quoteStyle().precision));
  auto* text = themedLabel(condition, TextRole::plain, 13, QFont::Medium, row);
  text->setWordWrap(false);
  layout->addWidget(text, 2);
  layout->addWidget(themedLabel(q(repeatText(rule)), TextRole::muted, 12, QFont::Normal, row), 1);
  auto* stateText = themedLabel(q(alertStateText(rule, state)),
                                state == AlertState::triggered ? TextRole::accent : TextRole::muted,
                                12, QFont::Normal, row);
  stateText->setWordWrap(false);
  layout->addWidget(stateText, 2);
  auto* on = new ProductSwitch(QString(), row);
  on->setAccessibleName(QStringLiteral("启用 ") + condition);
  on->setChecked(rule.enabled);
  // The primary alert is on while it exists; it is changed in the alert editor.
  on->setEnabled(rule.id != primaryAlertID);
  QObject::connect(on, &QCheckBox::toggled, this,
                   [this, id = rule.id](bool checked) { model_.setAlertEnabled(id, checked); });
  layout->addWidget(on);
  auto* remove = new QPushButton(QStringLiteral("删除"), row);
  remove->setProperty("flat", true);
  remove->setAccessibleName(QStringLiteral("删除 ") + condition);
  QObject::connect(remove, &QPushButton::clicked, this,
                   [this, id = rule.id] { model_.removeAlert(id); });
  layout->addWidget(remove);
  return row;
}

void AlertsView::refresh() {
  fillSymbols();
  {
    const QSignalBlocker quiet(paused_);
    paused_->setChecked(model_.alertBook().paused());
  }
  updateHint();
  const auto list = model_.alertList();
  // Rebuilt only when a rule, its state or the mask changed, not on every refresh of a price.
  std::string shown =
      (model_.masked() ? "masked" : "") + std::to_string(int(model_.quoteStyle().precision));
  for (const auto& [rule, state] : list)
    shown += rule.id + (rule.enabled ? "+" : "-") + std::string(rawValue(state)) +
             std::to_string(rule.triggeredAt ? rule.triggeredAt->sinceReference : 0) + ";";
  for (const auto& [rule, state] : list)
    if (const QuoteSnapshot* quote = model_.quote(rule.symbolID)) shown += quote->name;
  if (shown == shown_) return;
  shown_ = std::move(shown);
  while (QLayoutItem* item = rows_->takeAt(0)) {
    delete item->widget();
    delete item;
  }
  empty_->setVisible(list.empty());
  // Grouped by symbol, in the order the first rule of each was set.
  std::vector<std::string> symbols;
  for (const auto& [rule, state] : list)
    if (std::find(symbols.begin(), symbols.end(), rule.symbolID) == symbols.end())
      symbols.push_back(rule.symbolID);
  auto* parent = rows_->parentWidget();
  for (const std::string& symbol : symbols) {
    const QuoteSnapshot* quote = model_.quote(symbol);
    std::vector<QWidget*> added{
        themedLabel(q(symbol + "  " + (quote ? quote->name : std::string())), TextRole::secondary,
                    12.5, QFont::DemiBold, parent)};
    for (const auto& [rule, state] : list)
      if (rule.symbolID == symbol) added.push_back(ruleRow(rule, state, parent));
    // Shown with the page at once, not a turn of the event loop later.
    for (QWidget* widget : added) {
      rows_->addWidget(widget);
      widget->setVisible(true);
    }
  }
}

QStringList AlertsView::shownTexts() const {
  return tidemark::shownTexts(this);
}

}  // namespace tidemark
