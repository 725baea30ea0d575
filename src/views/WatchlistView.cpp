#include "views/WatchlistView.h"

#include <unordered_set>

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QScrollArea>

#include "core/Market.h"
#include "core/NumberText.h"
#include "views/DetailView.h"
#include "views/Metrics.h"
#include "views/TextStyle.h"
#include "views/Theme.h"

namespace tidemark {
namespace {

QString q(const std::string& s) {
  return QString::fromStdString(s);
}

QPushButton* flatButton(const QString& text, const QString& tip, QWidget* parent) {
  auto* button = new QPushButton(text, parent);
  button->setProperty("flat", true);
  button->setToolTip(tip);
  button->setCursor(Qt::PointingHandCursor);
  return button;
}

}  // namespace

WatchlistView::WatchlistView(AppModel& model, const Clock& clock, QWidget* parent)
    : QWidget(parent), model_(model), clock_(clock), statusClock_(clock.now()) {
  auto* page = new QVBoxLayout(this);
  page->setContentsMargins(metrics::windowMargins);
  page->setSpacing(14);
  page->addWidget(new ProductHeading(QStringLiteral("自选管理 · 本地保存"),
                                     QStringLiteral("添加、删除和排序会自动保存，卫星环同步更新。"),
                                     this));
  auto* layout = new QHBoxLayout;
  layout->setSpacing(16);
  page->addLayout(layout, 1);
  layout->addLayout(listColumn(), 3);
  layout->addWidget(addingCard(), 2);

  clockTimer_.setInterval(1000);
  // Only the rows' statuses age; the candidates do not depend on the clock.
  QObject::connect(&clockTimer_, &QTimer::timeout, this, [this] {
    statusClock_ = clock_.now();
    fillRows();
  });
  subscription_ = model.subscribe([this] { scheduleRefresh(); });
  refresh();
}

// The user's list: its heading, the pickers, and the rows or in their place the empty states.
QLayout* WatchlistView::listColumn() {
  auto* left = new QVBoxLayout;
  left->setSpacing(10);
  auto* top = new QHBoxLayout;
  heading_ = themedLabel(QString(), TextRole::plain, 16, QFont::Bold, this);
  heading_->setWordWrap(false);
  top->addWidget(heading_, 1);
  auto* restore = new QPushButton(QStringLiteral("恢复默认自选"), this);
  QObject::connect(restore, &QPushButton::clicked, this,
                   [this] { model_.setWatchlist(AppModel::defaultWatchlist()); });
  top->addWidget(restore);
  left->addLayout(top);
  left->addLayout(pickerGrid());

  rowsHost_ = new QWidget;
  rowsLayout_ = new QVBoxLayout(rowsHost_);
  rowsLayout_->setContentsMargins(metrics::listMargins);
  rowsLayout_->setSpacing(6);
  emptyTitle_ = themedLabel(QString(), TextRole::plain, 15, QFont::DemiBold, rowsHost_);
  emptyHint_ = themedLabel(QString(), TextRole::muted, 12.5, QFont::Normal, rowsHost_);
  emptyTitle_->setAlignment(Qt::AlignCenter);
  emptyHint_->setAlignment(Qt::AlignCenter);
  emptyTitle_->setContentsMargins(0, 36, 0, 0);
  rowsLayout_->addWidget(emptyTitle_);
  rowsLayout_->addWidget(emptyHint_);
  rowsLayout_->addStretch();
  left->addWidget(scrollingArea(rowsHost_, this), 1);
  return left;
}

// The four pickers that filter and sort the rows, two by two.
QGridLayout* WatchlistView::pickerGrid() {
  auto* pickers = new QGridLayout;
  pickers->setHorizontalSpacing(10);
  pickers->setVerticalSpacing(8);
  const std::vector<std::string>* options[] = {&watchlistMarkets(), &watchlistStatuses(),
                                               &watchlistChanges(), &watchlistSortOrders()};
  const char* captions[] = {"市场", "状态", "涨跌", "排序"};
  for (const auto* list : options) {
    auto* box = new QComboBox(this);
    box->setAccessibleName(QString::fromUtf8(captions[pickers_.size()]));
    for (const std::string& option : *list) box->addItem(q(option));
    // Wide enough for its longest choice, which is no wider than the column.
    box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    box->setMinimumContentsLength(0);
    QObject::connect(box, &QComboBox::currentIndexChanged, this, [this, box](int chosen) {
      if (chosen < 0) return;
      const size_t picker =
          size_t(std::find(pickers_.begin(), pickers_.end(), box) - pickers_.begin());
      tidemark::choose(filters_, picker, size_t(chosen));
      refresh();
    });
    const int row = int(pickers_.size() / 2), column = int(pickers_.size() % 2) * 2;
    auto* caption =
        themedLabel(QString::fromUtf8(captions[pickers_.size()]), TextRole::muted, 12.5);
    caption->setWordWrap(false);
    pickers->addWidget(caption, row, column);
    pickers->addWidget(box, row, column + 1);
    pickers_.push_back(box);
  }
  pickers->setColumnStretch(1, 1);
  pickers->setColumnStretch(3, 1);
  return pickers;
}

// Adding: a search of the data source, then the quotes already at hand.
QWidget* WatchlistView::addingCard() {
  auto* card = new ProductCard(QStringLiteral("添加标的"), this);
  card->setMinimumWidth(272);
  card->setMaximumWidth(340);
  auto* searchRow = new QHBoxLayout;
  searchRow->setSpacing(6);
  search_ = new QLineEdit(card);
  search_->setPlaceholderText(QStringLiteral("搜索名称、代码或市场"));
  search_->setClearButtonEnabled(true);
  QObject::connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
    filters_.search = text.toStdString();
    // A cleared search takes its results with it, and any answer still on its way.
    if (text.trimmed().isEmpty()) model_.searchSource(std::string());
    refresh();
  });
  QObject::connect(search_, &QLineEdit::returnPressed, this, [this] { submitSearch(); });
  auto* go = new SymbolButton("magnifyingglass", QStringLiteral("从当前数据源搜索"), card);
  QObject::connect(go, &QPushButton::clicked, this, [this] { submitSearch(); });
  searchRow->addWidget(search_, 1);
  searchRow->addWidget(go);
  card->content().addLayout(searchRow);
  auto* busyRow = new QHBoxLayout;
  busy_ = new QProgressBar(card);
  busy_->setRange(0, 0);
  busy_->setTextVisible(false);
  busy_->setFixedWidth(60);
  busyText_ =
      themedLabel(QStringLiteral("正在查询数据源…"), TextRole::muted, 12, QFont::Normal, card);
  busyText_->setWordWrap(false);
  busyRow->addWidget(busy_);
  busyRow->addWidget(busyText_, 1);
  card->content().addLayout(busyRow);
  searchMessage_ = themedLabel(QString(), TextRole::warning, 12, QFont::Normal, card);
  card->content().addWidget(searchMessage_);
  // What the model refuses at the limit, said before anyone tries.
  full_ = themedLabel(QStringLiteral("自选最多 %1 个标的").arg(AppModel::maxWatchlistLength),
                      TextRole::warning, 12, QFont::Normal, card);
  card->content().addWidget(full_);

  auto* lists = new QWidget;
  auto* listsLayout = new QVBoxLayout(lists);
  listsLayout->setContentsMargins(metrics::listMargins);
  listsLayout->setSpacing(6);
  resultsLayout_ = new QVBoxLayout;
  resultsLayout_->setSpacing(6);
  listsLayout->addLayout(resultsLayout_);
  listsLayout->addWidget(themedLabel(QStringLiteral("加入后即可显示在灵球卫星环中。"),
                                     TextRole::muted, 12, QFont::Normal));
  noCandidates_ =
      themedLabel(QStringLiteral("暂无可选行情"), TextRole::secondary, 13, QFont::Normal);
  listsLayout->addWidget(noCandidates_);
  candidatesLayout_ = new QVBoxLayout;
  candidatesLayout_->setSpacing(6);
  listsLayout->addLayout(candidatesLayout_);
  listsLayout->addStretch();
  card->content().addWidget(scrollingArea(lists, card), 1);
  return card;
}

void WatchlistView::choose(const std::string& picker, const std::string& option) {
  const char* names[] = {"market", "status", "change", "sort"};
  for (size_t i = 0; i < pickers_.size(); ++i)
    if (picker == names[i]) pickers_[i]->setCurrentText(q(option));
}

void WatchlistView::setSearch(const std::string& text) {
  search_->setText(q(text));
}

void WatchlistView::submitSearch() {
  model_.searchSource(search_->text().toStdString());
}

void WatchlistView::showEvent(QShowEvent*) {
  statusClock_ = clock_.now();
  clockTimer_.start();
  refresh();
}

void WatchlistView::hideEvent(QHideEvent*) {
  clockTimer_.stop();
}

void WatchlistView::scheduleRefresh() {
  // A closed window is kept; it catches up when it is shown again.
  if (isVisible()) refreshes_.request();
}

void WatchlistView::refresh() {
  fillRows();
  fillCandidates();
}

QWidget* WatchlistView::rowFor(const WatchlistEntry& entry, bool active) {
  const bool masked = model_.masked();
  auto* row = new QFrame;
  row->setProperty("rowcard", true);
  auto* lines = new QVBoxLayout(row);
  lines->setContentsMargins(12, 8, 8, 6);
  lines->setSpacing(2);

  // The code and name over the market and status, the price over the change.
  auto* first = new QHBoxLayout;
  first->setSpacing(10);
  first->addWidget(
      elidedLabel(q(entry.symbol + "  " + (entry.quote ? entry.quote->name : "")),
                  active ? TextRole::accent : TextRole::plain, 14, QFont::DemiBold, row),
      1);
  auto* second = new QHBoxLayout;
  second->setSpacing(4);
  second->addWidget(
      elidedLabel(q(entry.market + " · " +
                    std::string(label(quoteStatus(entry.quote ? &*entry.quote : nullptr,
                                                  statusClock_, grace())))),
                  TextRole::muted, 11.5, QFont::Normal, row),
      1);
  // A US security's pre- or post-market change, beside the regular session's figures.
  if (const auto extended = extendedText(entry.symbol)) {
    auto* late = themedLabel(q(*extended), TextRole::plain, 11.5, QFont::Medium, row);
    late->setWordWrap(false);
    if (!masked) {
      QPalette colours = late->palette();
      colours.setColor(
          QPalette::WindowText,
          qt(model_.quoteStyle().color(model_.extras().extended(entry.symbol)->changePct)));
      late->setPalette(colours);
    }
    second->addWidget(late);
  }
  if (entry.quote) {
    auto* price =
        themedLabel(masked ? QStringLiteral("••••") : q(model_.quoteStyle().price(*entry.quote)),
                    TextRole::plain, 14, QFont::DemiBold, row);
    auto* pct =
        themedLabel(masked ? QStringLiteral("••••") : q(percentText(entry.quote->changePct())),
                    TextRole::plain, 12, QFont::Medium, row);
    QPalette colours = pct->palette();
    colours.setColor(QPalette::WindowText, qt(model_.quoteStyle().color(entry.quote->changePct())));
    pct->setPalette(colours);
    for (QLabel* figure : {price, pct}) {
      figure->setWordWrap(false);
      figure->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    first->addWidget(price);
    first->addWidget(pct);
  }
  lines->addLayout(first);

  // The actions, on the second line's right.
  const std::string symbol = entry.symbol;
  auto* select = flatButton(active ? QStringLiteral("当前") : QStringLiteral("设为当前标的"),
                            QStringLiteral("设为当前标的"), row);
  select->setEnabled(!active);
  QObject::connect(select, &QPushButton::clicked, this, [this, symbol] { model_.select(symbol); });
  auto* up = flatButton(QStringLiteral("↑"), QStringLiteral("上移"), row);
  QObject::connect(up, &QPushButton::clicked, this, [this, symbol] { model_.move(symbol, -1); });
  auto* down = flatButton(QStringLiteral("↓"), QStringLiteral("下移"), row);
  QObject::connect(down, &QPushButton::clicked, this, [this, symbol] { model_.move(symbol, 1); });
  auto* remove = flatButton(QStringLiteral("移除"), QStringLiteral("从自选中移除"), row);
  QObject::connect(remove, &QPushButton::clicked, this, [this, symbol] { model_.remove(symbol); });
  for (QPushButton* b : {select, up, down, remove}) second->addWidget(b);
  lines->addLayout(second);
  return row;
}

std::optional<std::string> WatchlistView::extendedText(const std::string& symbol) const {
  const ExtendedQuote* extended = model_.extras().extended(symbol);
  const auto session = extendedSessionLabel(model_.marketStateOf(marketLabel(Market::usShare)));
  if (!extended || !session) return std::nullopt;
  return model_.masked() ? *session + " ••••" : extendedRowText(*session, *extended);
}

void WatchlistView::fillRows() {
  rows_ = visibleEntries(model_.watchlist(), model_.quotes(), filters_, statusClock_, grace());
  heading_->setText(QStringLiteral("我的自选 · %1").arg(model_.watchlist().size()));
  // A long list shows its first rows; search and filters find the others. The rows are built
  // anew only when something they show changed: the clock's tick every second rarely changes a
  // status.
  const size_t count = std::min(rows_.size(), shownRowLimit);
  const QuoteStyle style = model_.quoteStyle();
  std::string shown = (model_.masked() ? "masked|" : "|") + std::to_string(rows_.size()) + "|" +
                      std::to_string(int(style.colors)) + std::to_string(int(style.precision));
  for (size_t i = 0; i < count; ++i) {
    const WatchlistEntry& e = rows_[i];
    shown += e.symbol + (e.symbol == model_.activeID() ? "*" : "") + e.market +
             std::string(label(quoteStatus(e.quote ? &*e.quote : nullptr, statusClock_, grace()))) +
             "|";
    if (e.quote)
      shown += e.quote->name + std::to_string(e.quote->price) + "/" +
               std::to_string(e.quote->prevClose) + "|";
    if (const auto extended = extendedText(e.symbol)) shown += *extended + "|";
  }
  if (shown != shownRows_) {
    shownRows_ = std::move(shown);
    // The empty states stay first, where the rows would stand.
    clearLayout(rowsLayout_, 2);
    for (size_t i = 0; i < count; ++i)
      rowsLayout_->addWidget(rowFor(rows_[i], rows_[i].symbol == model_.activeID()));
    if (count < rows_.size())
      rowsLayout_->addWidget(
          themedLabel(QStringLiteral("显示前 %1 个，共 %2 个 · 用搜索或筛选找到其余的")
                          .arg(count)
                          .arg(rows_.size()),
                      TextRole::muted, 12, QFont::Normal));
    rowsLayout_->addStretch();
  }

  QString title, hint;
  if (model_.watchlist().empty()) {
    title = QStringLiteral("当前没有自选股");
    hint = QStringLiteral("从右侧添加，开始构建你的星系。");
  } else if (rows_.empty()) {
    WatchlistFilters marketOnly;
    marketOnly.market = filters_.market;
    const bool marketEmpty = filters_.market && visibleEntries(model_.watchlist(), model_.quotes(),
                                                               marketOnly, statusClock_, grace())
                                                    .empty();
    title = marketEmpty ? QStringLiteral("当前市场还没有自选股") : QStringLiteral("没有匹配的标的");
  }
  emptyTitle_->setText(title);
  emptyHint_->setText(hint);
  emptyTitle_->setVisible(!title.isEmpty());
  emptyHint_->setVisible(!hint.isEmpty());
}

QWidget* WatchlistView::candidateFor(const QuoteSnapshot& quote, bool fromSearch, bool watched) {
  auto* row = new QFrame;
  row->setProperty("rowcard", true);
  auto* line = new QHBoxLayout(row);
  line->setContentsMargins(10, 6, 6, 6);
  line->setSpacing(6);
  line->addWidget(
      elidedLabel(q(quote.id + "  " + quote.name), TextRole::plain, 13, QFont::Medium, row), 1);
  auto* market = themedLabel(q(quote.market), TextRole::muted, 11.5, QFont::Normal, row);
  market->setWordWrap(false);
  line->addWidget(market);
  if (watched) {
    // Found again: the search says it is there already.
    auto* there = themedLabel(QStringLiteral("已在自选"), TextRole::muted, 12, QFont::Normal, row);
    there->setWordWrap(false);
    line->addWidget(there);
    return row;
  }
  auto* add = flatButton(QStringLiteral("加入"), QStringLiteral("加入自选"), row);
  add->setProperty("pill", true);
  add->setEnabled(model_.watchlist().size() < AppModel::maxWatchlistLength);
  QObject::connect(add, &QPushButton::clicked, this, [this, quote, fromSearch] {
    if (fromSearch)
      model_.addSearchResult(quote);
    else
      model_.add(quote.id);
  });
  line->addWidget(add);
  return row;
}

QWidget* WatchlistView::codeOffer(const std::string& code) {
  auto* row = new QFrame;
  row->setProperty("rowcard", true);
  auto* line = new QHBoxLayout(row);
  line->setContentsMargins(10, 6, 6, 6);
  line->setSpacing(6);
  auto* hint =
      themedLabel(QStringLiteral("名称随首个行情显示"), TextRole::muted, 12, QFont::Normal, row);
  hint->setWordWrap(false);
  line->addWidget(hint, 1);
  auto* add =
      flatButton(QStringLiteral("添加代码 ") + q(code), QStringLiteral("按原样加入自选"), row);
  add->setProperty("pill", true);
  add->setEnabled(AppModel::maxWatchlistLength > model_.watchlist().size());
  QObject::connect(add, &QPushButton::clicked, this, [this] { model_.addCode(); });
  line->addWidget(add);
  return row;
}

void WatchlistView::fillCandidates() {
  const bool searching = model_.search().isSearching();
  busy_->setVisible(searching);
  busyText_->setVisible(searching);
  const auto& message = model_.search().message();
  searchMessage_->setText(message ? q(*message) : QString());
  searchMessage_->setVisible(message.has_value());

  const std::unordered_set<std::string_view> watchedIDs(model_.watchlist().begin(),
                                                        model_.watchlist().end());
  const auto watched = [&](const std::string& id) { return watchedIDs.contains(id); };
  // The candidates show codes, names and markets only; new prices leave them as they are. A
  // search shows what it found, watched or not; the quotes at hand only what can be added.
  std::vector<const QuoteSnapshot*> results, candidates;
  std::unordered_set<std::string_view> found;
  std::string shown;
  for (const QuoteSnapshot& quote : model_.search().results()) {
    results.push_back(&quote);
    found.insert(quote.id);
    shown += quote.id + quote.name + quote.market + (watched(quote.id) ? "*|" : "|");
  }
  // A full code the search did not find can be added as it stands.
  const auto code = codeToAdd(model_.search(), model_.watchlist());
  if (code) shown += "+" + *code;
  shown += "#";
  // A quote the search found is offered there, not twice.
  for (const QuoteSnapshot& quote : model_.quotes()) {
    if (watched(quote.id) || found.contains(quote.id)) continue;
    candidates.push_back(&quote);
    shown += quote.id + quote.name + quote.market + "|";
  }
  noCandidates_->setVisible(candidates.empty());
  const bool full = model_.watchlist().size() >= AppModel::maxWatchlistLength;
  full_->setVisible(full);
  shown += full ? "full" : "";
  if (shown == shownCandidates_) return;
  shownCandidates_ = std::move(shown);
  clearLayout(resultsLayout_);
  for (const QuoteSnapshot* quote : results)
    resultsLayout_->addWidget(candidateFor(*quote, true, watched(quote->id)));
  if (code) resultsLayout_->addWidget(codeOffer(*code));
  clearLayout(candidatesLayout_);
  for (const QuoteSnapshot* quote : candidates)
    candidatesLayout_->addWidget(candidateFor(*quote, false, false));
}

QStringList WatchlistView::shownTexts() const {
  return tidemark::shownTexts(this);
}

}  // namespace tidemark
