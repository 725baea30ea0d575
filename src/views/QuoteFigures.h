#pragma once

#include <utility>
#include <vector>

#include <QGridLayout>
#include <QLabel>
#include <QString>

#include "core/QuoteStyle.h"

namespace tidemark {

// The figures beyond the price a quote's feed gave, as the detail shows them: caption and text of
// each one known, in order ("今开", "成交额", "换手率", "市盈率", "涨停", "跌停", "52周高",
// "52周低", "行情时间"); the texts in bullets while masked. An unknown figure is left out.
std::vector<std::pair<QString, QString>> fullerFigures(const QuoteSnapshot& quote,
                                                       const QuoteStyle& style, bool masked);

// Those figures as tiles, a caption over its value, three to a row (the quote's time takes two);
// laid out again only when which figures are known changes.
class FullerFiguresGrid final : public QGridLayout {
 public:
  FullerFiguresGrid();
  void show(const std::vector<std::pair<QString, QString>>& figures);
  // The texts shown, caption and value in turn.
  QStringList shownTexts() const;

 private:
  static constexpr int columns = 3;
  std::vector<std::pair<QLabel*, QLabel*>> cells_;
  QStringList captions_;  // of the figures laid out
};

}  // namespace tidemark
