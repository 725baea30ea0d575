#pragma once

#include <optional>
#include <string>
#include <vector>

#include <QAbstractListModel>
#include <QStringList>
#include <QStyledItemDelegate>

#include "core/Enums.h"
#include "model/AppModel.h"

namespace tidemark {

// What one holding's row shows, as numbers: compared on every refresh, so that a refresh of
// thousands of holdings repaints only the rows whose figures moved; their texts are made only
// for the rows painted.
struct HoldingRow {
  Holding holding;
  std::optional<QuoteSnapshot> quote;  // with a name, price and previous close
  bool watched = true;
  bool masked = false;
  QuoteStyle style;
  friend bool operator==(const HoldingRow& a, const HoldingRow& b) {
    const auto seen = [](const std::optional<QuoteSnapshot>& q) {
      return q ? std::tuple(true, q->name, q->price, q->prevClose)
               : std::tuple(false, std::string(), 0.0, 0.0);
    };
    return a.holding == b.holding && a.watched == b.watched && a.masked == b.masked &&
           a.style == b.style && seen(a.quote) == seen(b.quote);
  }
};

// The texts of a row.
struct HoldingRowTexts {
  QString title;  // "600519  贵州茅台"
  // Caption and value of each figure: 持有, 成本, 现价, 市值, then 今日盈亏 and 持有盈亏; only
  // the first two without a quote.
  std::vector<std::pair<QString, QString>> figures;
  QString why;                  // "暂无行情" or "不在自选中"; empty with a quote
  std::optional<double> day;    // the signs that colour today's and the total profit
  std::optional<double> total;  // (none while masked)
};
HoldingRowTexts holdingRowTexts(const HoldingRow& row);

// The rows of the holdings, in the model's order, with every figure masked when asked.
std::vector<HoldingRow> holdingRows(const std::vector<HoldingLine>& lines, bool masked,
                                    QuoteStyle style);

// The holdings as a list for a view that creates only the rows it shows.
class HoldingsListModel final : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;
  // Takes new rows: the same holdings in the same order change only the rows that differ; any
  // other change starts the list afresh.
  void setRows(std::vector<HoldingRow> rows);
  const HoldingRow& row(int index) const { return rows_[size_t(index)]; }
  const std::string& symbol(int index) const { return rows_[size_t(index)].holding.symbolID; }
  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  std::vector<HoldingRow> rows_;
};

// Paints a row as a card: the title, then the figures in columns, profits coloured by sign.
// Texts that do not fit end in "…"; none is cut.
class HoldingRowDelegate final : public QStyledItemDelegate {
 public:
  HoldingRowDelegate(const HoldingsListModel& rows, const AppModel& model, QObject* parent)
      : QStyledItemDelegate(parent), rows_(rows), model_(model) {}
  static constexpr int rowHeight = 86;
  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

 private:
  const HoldingsListModel& rows_;
  const AppModel& model_;
};

}  // namespace tidemark
