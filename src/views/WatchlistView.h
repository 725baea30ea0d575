#pragma once

#include <string>
#include <vector>

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>

#include "core/ChangeSignal.h"
#include "core/Clock.h"
#include "model/AppModel.h"
#include "views/OncePerTurn.h"
#include "views/WatchlistRules.h"

namespace tidemark {

// The watchlist manager: the user's list with filters, sorts and row actions on one side; the
// quotes not yet watched and a search of the current data source on the other. Every change goes
// through the model, which saves it at once.
class WatchlistView final : public QWidget {
 public:
  // Rows built at most; the rest of a long list is found by search and filters.
  static constexpr size_t shownRowLimit = 200;

  WatchlistView(AppModel& model, const Clock& clock, QWidget* parent = nullptr);

  const WatchlistFilters& filters() const { return filters_; }
  // Chooses an option of a picker by its text ("market", "status", "change", "sort").
  void choose(const std::string& picker, const std::string& option);
  void setSearch(const std::string& text);
  void submitSearch();
  Date statusClock() const { return statusClock_; }
  // While the source is asked only every five minutes, a row is current for as long plus the
  // heartbeat's allowance.
  double grace() const { return model_.quietRefresh() ? AppModel::staleAfter : 0; }
  const std::vector<WatchlistEntry>& rows() const { return rows_; }

  // Every text the view shows, in order, for checks of what a user sees.
  QStringList shownTexts() const;

 protected:
  void showEvent(QShowEvent*) override;
  void hideEvent(QHideEvent*) override;

 private:
  QLayout* listColumn();
  QGridLayout* pickerGrid();
  QWidget* addingCard();
  void scheduleRefresh();
  void refresh();
  void fillRows();
  void fillCandidates();
  // The row's "盘前 +0.47%" while a US security has a trade of the current extended session.
  std::optional<std::string> extendedText(const std::string& symbol) const;
  QWidget* rowFor(const WatchlistEntry& entry, bool active);
  // The offer to add the code the search did not find, as it stands.
  QWidget* codeOffer(const std::string& code);
  QWidget* candidateFor(const QuoteSnapshot& quote, bool fromSearch, bool watched);

  AppModel& model_;
  const Clock& clock_;
  WatchlistFilters filters_;
  Date statusClock_;
  std::vector<WatchlistEntry> rows_;
  QLabel* heading_;
  std::vector<QComboBox*> pickers_;
  QVBoxLayout* rowsLayout_;
  QWidget* rowsHost_;
  QLabel* emptyTitle_;
  QLabel* emptyHint_;
  QLineEdit* search_;
  QProgressBar* busy_;
  QLabel* busyText_;
  QLabel* searchMessage_;
  QLabel* full_;
  QVBoxLayout* resultsLayout_;
  QVBoxLayout* candidatesLayout_;
  QLabel* noCandidates_;
  QTimer clockTimer_;
  ChangeSignal::Subscription subscription_;
  OncePerTurn refreshes_{this, [this] { refresh(); }};
  std::string shownRows_, shownCandidates_;
};

}  // namespace tidemark
