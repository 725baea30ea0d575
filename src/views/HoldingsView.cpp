#include "views/HoldingsView.h"

#include <unordered_set>

#include <QDateTime>
#include <QGridLayout>
#include <QHBoxLayout>

#include "core/NumberText.h"
#include "views/Metrics.h"
#include "views/SmallWindows.h"
#include "views/TextStyle.h"

namespace tidemark {
namespace {

const QString hidden = QStringLiteral("••••");

QString q(const std::string& s) {
  return QString::fromStdString(s);
}

// A caption over its figure, the figure in `ink` when one is given.
QWidget* figure(const QString& caption, const QString& value, QWidget* parent,
                std::optional<Color> ink = std::nullopt) {
  auto* box = new QWidget(parent);
  auto* layout = new QVBoxLayout(box);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(1);
  auto* top = themedLabel(caption, TextRole::muted, 11.5, QFont::Normal, box);
  top->setWordWrap(false);
  auto* number = themedLabel(value, TextRole::plain, 13.5, QFont::DemiBold, box);
  number->setWordWrap(false);
  if (ink) number->setStyleSheet(QStringLiteral("color: ") + qt(*ink).name());
  layout->addWidget(top);
  layout->addWidget(number);
  return box;
}

}  // namespace

HoldingsView::HoldingsView(AppModel& model, QWidget* parent) : QWidget(parent), model_(model) {
  auto* page = new QVBoxLayout(this);
  page->setContentsMargins(metrics::pageMargins);
  page->setSpacing(metrics::pageSpacing);
  page->addWidget(new ProductHeading(
      QStringLiteral("持仓盈亏 · 本地保存"),
      QStringLiteral("录入持有数量和成本价，今日盈亏与持有盈亏随行情刷新。"), this));

  summaries_ = new QVBoxLayout;
  summaries_->setSpacing(10);
  page->addLayout(summaries_);

  page->addWidget(listCard());
  page->addWidget(formCard());
  page->addWidget(trayCard());
  page->addStretch();

  subscription_ = model.subscribe([this] { refreshes_.request(); });
  refresh();
}

QWidget* HoldingsView::listCard() {
  auto* list = new ProductCard(QStringLiteral("持仓"), this);
  empty_ = themedLabel(QStringLiteral("还没有持仓 · 在这里录入持有数量和成本价"), TextRole::muted,
                       13, QFont::Normal, list);
  list->content().addWidget(empty_);
  // A view that creates only the rows it shows: thousands of holdings cost what a screenful does.
  rows_ = new HoldingsListModel(this);
  list_ = new QListView(list);
  list_->setModel(rows_);
  list_->setItemDelegate(new HoldingRowDelegate(*rows_, model_, list_));
  list_->setUniformItemSizes(true);
  list_->setFrameShape(QFrame::NoFrame);
  list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  list_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
  list_->setSelectionMode(QAbstractItemView::SingleSelection);
  list_->setAccessibleName(QStringLiteral("持仓列表"));
  list_->viewport()->setAutoFillBackground(false);
  list_->setStyleSheet(QStringLiteral("QListView { background: transparent; }"));
  list->content().addWidget(list_);
  auto* rowActions = new QHBoxLayout;
  rowActions->setSpacing(6);
  editRow_ = new QPushButton(QStringLiteral("编辑"), list);
  editRow_->setToolTip(QStringLiteral("编辑所选持仓"));
  removeRow_ = new QPushButton(QStringLiteral("删除"), list);
  removeRow_->setToolTip(QStringLiteral("删除所选持仓"));
  rowActions->addWidget(themedLabel(QStringLiteral("选中一行后编辑或删除；双击一行编辑。"),
                                    TextRole::muted, 12, QFont::Normal, list));
  rowActions->addStretch();
  rowActions->addWidget(editRow_);
  rowActions->addWidget(removeRow_);
  list->content().addLayout(rowActions);
  QObject::connect(editRow_, &QPushButton::clicked, this, [this] { edit(selectedSymbol()); });
  QObject::connect(removeRow_, &QPushButton::clicked, this,
                   [this] { model_.removeHolding(selectedSymbol()); });
  QObject::connect(list_, &QListView::doubleClicked, this,
                   [this](const QModelIndex& index) { edit(rows_->symbol(index.row())); });
  // A new set of holdings (one added or deleted) resets the list and, silently, its choice.
  const auto chosenChanged = [this] {
    const bool chosen = !selectedSymbol().empty();
    editRow_->setEnabled(chosen);
    removeRow_->setEnabled(chosen);
  };
  QObject::connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, this,
                   chosenChanged);
  QObject::connect(rows_, &QAbstractItemModel::modelReset, this, chosenChanged);
  editRow_->setEnabled(false);
  removeRow_->setEnabled(false);
  return list;
}

QWidget* HoldingsView::formCard() {
  auto* form = new ProductCard(QStringLiteral("添加持仓"), this);
  auto* fields = new QGridLayout;
  fields->setHorizontalSpacing(10);
  fields->setVerticalSpacing(8);
  symbol_ = new QComboBox(form);
  symbol_->setAccessibleName(QStringLiteral("标的"));
  symbol_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  symbol_->setMinimumContentsLength(8);
  shares_ = new QLineEdit(form);
  shares_->setPlaceholderText(QStringLiteral("持有数量"));
  shares_->setAccessibleName(QStringLiteral("持有数量"));
  cost_ = new QLineEdit(form);
  cost_->setPlaceholderText(QStringLiteral("成本价"));
  cost_->setAccessibleName(QStringLiteral("成本价"));
  const std::pair<const char*, QWidget*> inputs[] = {
      {"标的", symbol_}, {"持有数量", shares_}, {"成本价", cost_}};
  int column = 0;
  for (const auto& [caption, input] : inputs) {
    auto* label =
        themedLabel(QString::fromUtf8(caption), TextRole::secondary, 12.5, QFont::Normal, form);
    label->setWordWrap(false);
    fields->addWidget(label, 0, column);
    fields->addWidget(input, 1, column);
    fields->setColumnStretch(column, column == 0 ? 2 : 1);
    ++column;
  }
  submit_ = new QPushButton(QStringLiteral("添加持仓"), form);
  submit_->setProperty("primary", true);
  fields->addWidget(submit_, 1, column);
  form->content().addLayout(fields);
  message_ = themedLabel(QString(), TextRole::error, 12, QFont::Normal, form);
  message_->hide();
  form->content().addWidget(message_);
  question_ = new QWidget(form);
  auto* asks = new QHBoxLayout(question_);
  asks->setContentsMargins(0, 0, 0, 0);
  asks->setSpacing(6);
  questionText_ = themedLabel(QString(), TextRole::plain, 12.5, QFont::Normal, question_);
  questionText_->setWordWrap(false);
  asks->addWidget(questionText_);
  for (const auto& [label, answer] : {std::pair{"替换", Conflict::replace},
                                      {"合并（按成本加权）", Conflict::merge},
                                      {"取消", Conflict::cancel}}) {
    auto* button = new QPushButton(QString::fromUtf8(label), question_);
    button->setProperty("flat", true);
    QObject::connect(button, &QPushButton::clicked, this, [this, a = answer] { resolve(a); });
    asks->addWidget(button);
  }
  asks->addStretch();
  question_->hide();
  form->content().addWidget(question_);
  QObject::connect(submit_, &QPushButton::clicked, this, [this] { submit(); });
  for (QLineEdit* input : {shares_, cost_})
    QObject::connect(input, &QLineEdit::returnPressed, this, [this] { submit(); });
  return form;
}

QWidget* HoldingsView::trayCard() {
  auto* tray = new ProductCard(QStringLiteral("托盘"), this);
  tray_ = new ProductSwitch(QStringLiteral("托盘显示今日盈亏"), tray);
  QObject::connect(tray_, &QCheckBox::toggled, this,
                   [this](bool on) { model_.setShowsDayProfitInTray(on); });
  tray->content().addWidget(tray_);
  tray->content().addWidget(themedLabel(
      QStringLiteral("打开后，托盘图标旁的文字显示第一种货币的今日盈亏；遮蔽时不显示。"),
      TextRole::muted, 12));
  return tray;
}

void HoldingsView::fillSymbols() {
  // Indices are watched, never held.
  std::vector<std::pair<std::string, std::string>> offered;
  for (const QuoteSnapshot& quote : model_.watchedQuotes())
    if (!quote.isIndex()) offered.emplace_back(quote.id, quote.name);
  // Refilled only when the securities on offer changed, not on every refresh of their prices.
  if (offered == offered_) return;
  offered_ = std::move(offered);
  const QString chosen = symbol_->currentData().toString();
  const QSignalBlocker quiet(symbol_);
  symbol_->clear();
  for (const auto& [id, name] : offered_) symbol_->addItem(q(id + "  ").append(q(name)), q(id));
  const int again = symbol_->findData(chosen);
  symbol_->setCurrentIndex(again >= 0 ? again : 0);
}

void HoldingsView::showMessage(const QString& text) {
  message_->setText(text);
  message_->setVisible(!text.isEmpty());
}

void HoldingsView::submit() {
  pending_.reset();
  question_->hide();
  // The form shows bullets while masked; nothing typed blind is saved.
  if (model_.masked()) return showMessage(QStringLiteral("遮蔽时不能编辑持仓"));
  const std::string symbol = symbol_->currentData().toString().toStdString();
  const bool sameHolding = editing_ && editing_->symbolID == symbol;
  const auto typed = [&](const QLineEdit* field, const QString& filled, double stored) {
    if (sameHolding && field->text() == filled) return std::optional(stored);
    return parseTypedNumber(field->text().toStdString());
  };
  // Text that is no number at all is refused as the model refuses a number out of range.
  const double shares = typed(shares_, filledShares_, editing_ ? editing_->shares : 0).value_or(0);
  const double cost = typed(cost_, filledCost_, editing_ ? editing_->cost : 0).value_or(-1);
  if (!sameHolding && model_.holding(symbol)) {
    if (auto refused = holdingProblem(shares, cost)) return showMessage(q(*refused));
    pending_ = Holding{symbol, shares, cost};
    questionText_->setText(QStringLiteral("已持有 %1 ·").arg(q(symbol)));
    question_->show();
    return;
  }
  save(symbol, shares, cost);
}

void HoldingsView::resolve(Conflict answer) {
  question_->hide();
  const auto pending = std::exchange(pending_, std::nullopt);
  if (!pending || answer == Conflict::cancel) return;
  if (model_.masked()) return showMessage(QStringLiteral("遮蔽时不能编辑持仓"));
  const Holding* held = model_.holding(pending->symbolID);
  Holding chosen = *pending;
  if (answer == Conflict::merge && held)
    chosen = mergedHolding(*held, pending->shares, pending->cost);
  save(chosen.symbolID, chosen.shares, chosen.cost);
}

void HoldingsView::save(const std::string& symbol, double shares, double cost) {
  if (auto refused = model_.setHolding(symbol, shares, cost)) return showMessage(q(*refused));
  showMessage(QString());
  const bool added = !editing_;
  editing_.reset();
  filledShares_.clear();
  filledCost_.clear();
  shares_->clear();
  cost_->clear();
  submit_->setText(QStringLiteral("添加持仓"));
  if (added) moveToUnheld();
}

void HoldingsView::moveToUnheld() {
  // On to the next security not held yet, so that the next add cannot overwrite this one.
  std::unordered_set<std::string> held;
  for (const Holding& h : model_.holdings()) held.insert(h.symbolID);
  const int count = symbol_->count();
  for (int step = 1; step < count; ++step) {
    const int index = (symbol_->currentIndex() + step) % count;
    if (!held.contains(symbol_->itemData(index).toString().toStdString())) {
      symbol_->setCurrentIndex(index);
      return;
    }
  }
}

void HoldingsView::edit(const std::string& symbol) {
  const Holding* holding = model_.holding(symbol);
  if (!holding) return;
  const int index = symbol_->findData(q(symbol));
  if (index >= 0) symbol_->setCurrentIndex(index);
  editing_ = *holding;
  pending_.reset();
  question_->hide();
  showMessage(QString());
  fillForm();
  submit_->setText(QStringLiteral("保存持仓"));
  shares_->setFocus();
}

void HoldingsView::fillForm() {
  formMasked_ = model_.masked();
  if (!editing_) return;
  filledShares_ = formMasked_ ? hidden : q(editableNumberText(editing_->shares));
  filledCost_ = formMasked_ ? hidden : q(editableNumberText(editing_->cost));
  shares_->setText(filledShares_);
  cost_->setText(filledCost_);
}

QWidget* HoldingsView::summaryCard(const HoldingsTotal& total, QWidget* parent) {
  return figuresCard(
      q(total.currency), total.dayProfit, total.dayProfitPct, total.totalProfit,
      total.totalProfitPct, total.marketValue,
      total.missing > 0 ? QStringLiteral("（%1 项暂无行情）").arg(total.missing) : QString(),
      parent);
}

QWidget* HoldingsView::yuanCard(const YuanTotal& total, QWidget* parent) {
  return figuresCard(QStringLiteral("折合人民币"), total.dayProfit, total.dayProfitPct,
                     total.totalProfit, total.totalProfitPct, total.marketValue,
                     q(ratesText(total, ratesClock(total).toStdString())), parent);
}

QString HoldingsView::ratesClock(const YuanTotal& total) {
  if (total.demonstration) return QString();
  return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(total.ratesAt.unixSeconds() * 1000))
      .toString(QStringLiteral("HH:mm"));
}

QWidget* HoldingsView::figuresCard(const QString& title, double dayProfit,
                                   const std::optional<double>& dayProfitPct, double totalProfit,
                                   const std::optional<double>& totalProfitPct, double marketValue,
                                   const QString& note, QWidget* parent) {
  auto* card = new ProductCard(title, parent);
  const bool masked = model_.masked();
  const auto text = [&](const std::string& s) { return masked ? hidden : q(s); };
  const auto ink = [&](double sign) {
    return masked ? std::nullopt : std::optional(model_.quoteStyle().color(sign));
  };
  auto* line = new QHBoxLayout;
  line->setSpacing(14);
  line->addWidget(figure(QStringLiteral("今日盈亏"), text(profitText(dayProfit, dayProfitPct)),
                         card, ink(dayProfit)));
  line->addWidget(figure(QStringLiteral("持有盈亏"), text(profitText(totalProfit, totalProfitPct)),
                         card, ink(totalProfit)));
  line->addWidget(figure(QStringLiteral("持仓市值"), text(amountText(marketValue)), card));
  line->addStretch();
  card->content().addLayout(line);
  if (!note.isEmpty())
    card->content().addWidget(themedLabel(note, TextRole::muted, 12, QFont::Normal, card));
  return card;
}

std::string HoldingsView::selectedSymbol() const {
  const QModelIndex current = list_->currentIndex();
  return current.isValid() ? rows_->symbol(current.row()) : std::string();
}

void HoldingsView::selectRow(const std::string& symbol) {
  for (int i = 0; i < rows_->rowCount(); ++i)
    if (rows_->symbol(i) == symbol) list_->setCurrentIndex(rows_->index(i));
}

void HoldingsView::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  refresh();
}

void HoldingsView::refresh() {
  // Nothing is worked out for a section nobody looks at; it catches up when it is shown.
  if (!isVisible()) return;
  fillSymbols();
  // A holding being edited is shown again in bullets when masked, and in figures after.
  if (formMasked_ != model_.masked()) fillForm();
  {
    const QSignalBlocker quiet(tray_);
    tray_->setChecked(model_.showsDayProfitInTray());
  }
  const auto lines = model_.holdingLines();
  const std::string chosen = selectedSymbol();
  rows_->setRows(holdingRows(lines, model_.masked(), model_.quoteStyle()));
  if (!chosen.empty() && selectedSymbol() != chosen) selectRow(chosen);
  const int shownRows = std::min(rows_->rowCount(), 6);
  list_->setFixedHeight(shownRows * HoldingRowDelegate::rowHeight + 2);
  list_->setVisible(shownRows > 0);
  empty_->setVisible(model_.holdings().empty());

  // The cards, one per currency, are rebuilt only when something they show changed.
  const auto totals = model_.holdingsTotals(lines);
  std::string shown = std::to_string(model_.masked()) + std::to_string(int(model_.theme())) +
                      std::to_string(int(model_.quoteStyle().colors));
  for (const HoldingsTotal& t : totals)
    shown += "|" + t.currency + std::to_string(t.marketValue) + std::to_string(t.dayProfit) +
             std::to_string(t.totalProfit) + std::to_string(t.missing) +
             std::to_string(t.dayProfitPct.value_or(-1e300)) +
             std::to_string(t.totalProfitPct.value_or(-1e300));
  // The yuan card needs a foreign currency and a rate for each; its time reads in minutes.
  auto yuan = model_.yuanTotal(totals);
  if (yuan && yuan->rates.empty()) yuan.reset();
  if (yuan)
    shown += "|CNY" + std::to_string(yuan->marketValue) + std::to_string(yuan->dayProfit) +
             std::to_string(yuan->totalProfit) + ratesClock(*yuan).toStdString();
  if (shown == shown_) return;
  shown_ = std::move(shown);
  clearLayout(summaries_);
  // Shown at once, not on a later turn as a layout would.
  for (const HoldingsTotal& total : totals) {
    QWidget* card = summaryCard(total, this);
    summaries_->addWidget(card);
    card->show();
  }
  if (yuan) {
    QWidget* card = yuanCard(*yuan, this);
    summaries_->addWidget(card);
    card->show();
  }
}

QStringList HoldingsView::shownTexts() const {
  QStringList texts = tidemark::shownTexts(this);
  // The rows are painted, not labels: their texts follow the list's place among the rest.
  QStringList rows;
  for (int i = 0; i < rows_->rowCount() && list_->isVisible(); ++i) {
    const HoldingRowTexts row = holdingRowTexts(rows_->row(i));
    rows << row.title;
    for (const auto& [caption, value] : row.figures) rows << caption << value;
    if (!row.why.isEmpty()) rows << row.why;
  }
  const qsizetype at = texts.indexOf(QStringLiteral("选中一行后编辑或删除；双击一行编辑。"));
  for (qsizetype k = 0; k < rows.size(); ++k) texts.insert(at < 0 ? texts.size() : at + k, rows[k]);
  return texts;
}

}  // namespace tidemark
