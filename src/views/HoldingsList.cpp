#include "views/HoldingsList.h"

#include <QPainter>
#include <QPainterPath>

#include "core/NumberText.h"
#include "views/OrbPalette.h"
#include "views/TextStyle.h"
#include "views/Theme.h"

namespace tidemark {
namespace {

const QString hidden = QStringLiteral("••••");

QString q(const std::string& s) {
  return QString::fromStdString(s);
}

}  // namespace

std::vector<HoldingRow> holdingRows(const std::vector<HoldingLine>& lines, bool masked,
                                    QuoteStyle style) {
  std::vector<HoldingRow> rows;
  rows.reserve(lines.size());
  for (const HoldingLine& line : lines) {
    HoldingRow row{*line.holding, std::nullopt, line.watched, masked, style};
    if (line.quote) {
      QuoteSnapshot& q = row.quote.emplace();
      q.id = line.quote->id;
      q.market = line.quote->market;
      q.name = line.quote->name;
      q.price = line.quote->price;
      q.prevClose = line.quote->prevClose;
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

HoldingRowTexts holdingRowTexts(const HoldingRow& row) {
  const auto text = [&row](const std::string& s) { return row.masked ? hidden : q(s); };
  const Holding& h = row.holding;
  const auto& quote = row.quote;
  HoldingRowTexts t;
  t.title = q(h.symbolID + (quote && !quote->name.empty() ? "  " + quote->name : ""));
  t.figures = {{QStringLiteral("持有"), text(sharesText(h.shares))},
               {QStringLiteral("成本"), text(row.style.typed(h.symbolID, h.cost))}};
  if (!quote) {
    t.why = row.watched ? QStringLiteral("暂无行情") : QStringLiteral("不在自选中");
    return t;
  }
  const HoldingFigures f = holdingFigures(h, *quote);
  t.figures.insert(
      t.figures.end(),
      {{QStringLiteral("现价"), text(row.style.price(*quote))},
       {QStringLiteral("市值"), text(amountText(f.marketValue))},
       {QStringLiteral("今日盈亏"), text(profitText(f.dayProfit, f.dayProfitPct))},
       {QStringLiteral("持有盈亏"), text(profitText(f.totalProfit, f.totalProfitPct))}});
  if (!row.masked) {
    t.day = f.dayProfit;
    t.total = f.totalProfit;
  }
  return t;
}

void HoldingsListModel::setRows(std::vector<HoldingRow> rows) {
  const bool sameHoldings =
      rows.size() == rows_.size() && std::equal(rows.begin(), rows.end(), rows_.begin(),
                                                [](const HoldingRow& a, const HoldingRow& b) {
                                                  return a.holding.symbolID == b.holding.symbolID;
                                                });
  if (!sameHoldings) {
    beginResetModel();
    rows_ = std::move(rows);
    endResetModel();
    return;
  }
  for (size_t i = 0; i < rows.size(); ++i) {
    if (rows[i] == rows_[i]) continue;
    rows_[i] = std::move(rows[i]);
    const QModelIndex changed = index(int(i));
    Q_EMIT dataChanged(changed, changed);
  }
}

int HoldingsListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : int(rows_.size());
}

QVariant HoldingsListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= int(rows_.size())) return {};
  if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole && role != Qt::ToolTipRole)
    return {};
  const HoldingRowTexts t = holdingRowTexts(rows_[size_t(index.row())]);
  if (role != Qt::ToolTipRole) return t.title;
  QStringList parts{t.title};
  for (const auto& [caption, value] : t.figures) parts << caption + QStringLiteral(" ") + value;
  if (!t.why.isEmpty()) parts << t.why;
  return parts.join(QStringLiteral("\n"));
}

QSize HoldingRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
  return {option.rect.width(), rowHeight};
}

void HoldingRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index) const {
  const HoldingRowTexts row = holdingRowTexts(rows_.row(index.row()));
  const ThemeColors colors = themeColors(OrbPalette{model_.theme()});
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  const QRectF card = QRectF(option.rect).adjusted(0, 3, 0, -3);
  QPainterPath shape;
  shape.addRoundedRect(card, 10, 10);
  painter->fillPath(shape, qt(colors.raised));
  if (option.state & QStyle::State_Selected) painter->fillPath(shape, qt(colors.selection));
  if (option.state & QStyle::State_HasFocus) {
    painter->setPen(QPen(qt(colors.accentB), 1.5));
    painter->drawPath(shape);
  }

  // One line of text in a cell, shortened with "…" where it does not fit.
  const auto line = [&](const QRectF& cell, const QString& text, const QFont& font, QColor ink) {
    painter->setFont(font);
    painter->setPen(ink);
    const QString shown =
        QFontMetrics(font).elidedText(text, Qt::ElideRight, int(std::floor(cell.width())));
    painter->drawText(cell, Qt::AlignLeft | Qt::AlignVCenter, shown);
  };
  const QRectF inner = card.adjusted(12, 6, -12, -6);
  line({inner.left(), inner.top(), inner.width(), 22}, row.title, uiFont(13.5, QFont::DemiBold),
       qt(colors.ink));
  const QFont captionFont = uiFont(11.5), valueFont = uiFont(12.5, QFont::DemiBold);
  // Four figures a line, each a caption then its value.
  const double columnWidth = inner.width() / 4;
  for (size_t k = 0; k < row.figures.size(); ++k) {
    const auto& [caption, value] = row.figures[k];
    const bool profit = k >= 4;
    const double left = inner.left() + columnWidth * double(profit ? (k - 4) * 2 : k);
    const double top = inner.top() + 24 + (profit ? 24 : 0);
    const double width = profit ? columnWidth * 2 : columnWidth;
    const double captionWidth = QFontMetrics(captionFont).horizontalAdvance(caption) + 6;
    line({left, top, captionWidth, 22}, caption, captionFont, qt(colors.muted));
    QColor ink = qt(colors.ink);
    const std::optional<double>& sign = k == 4 ? row.day : k == 5 ? row.total : std::nullopt;
    if (sign) ink = qt(model_.quoteStyle().color(*sign));
    line({left + captionWidth, top, width - captionWidth - 8, 22}, value, valueFont, ink);
  }
  if (!row.why.isEmpty())
    line({inner.left() + columnWidth * 2, inner.top() + 24, columnWidth * 2, 22}, row.why,
         uiFont(12.5), qt(colors.muted));
  painter->restore();
}

}  // namespace tidemark
