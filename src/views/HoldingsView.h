#pragma once

#include <optional>
#include <string>
#include <vector>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidget>

#include "core/ChangeSignal.h"
#include "model/AppModel.h"
#include "views/HoldingsList.h"
#include "views/OncePerTurn.h"
#include "views/Theme.h"

namespace tidemark {

// The settings section "持仓盈亏": a summary card per currency, a row per holding with today's
// and the total profit, the form that adds or edits one, and the tray switch. Every figure
// follows the quotes; masked, every figure reads "••••".
class HoldingsView final : public QWidget {
 public:
  explicit HoldingsView(AppModel& model, QWidget* parent = nullptr);

  QComboBox& symbol() { return *symbol_; }
  QLineEdit& shares() { return *shares_; }
  QLineEdit& cost() { return *cost_; }
  // Saves the holding the form describes; a refusal is shown under the form. Adding a security
  // already held asks first whether to replace or merge it.
  void submit();
  // Answers that question: replace the holding, merge into it (cost weighted) or neither.
  enum class Conflict { replace, merge, cancel };
  void resolve(Conflict answer);
  // Fills the form with a holding, to change it.
  void edit(const std::string& symbol);
  QString message() const { return message_->text(); }
  QWidget& question() { return *question_; }
  // Every text the section shows, in order, the rows' painted ones included.
  QStringList shownTexts() const;
  QListView& list() { return *list_; }
  // Selects the row of a holding, as a click on it does.
  void selectRow(const std::string& symbol);

 private:
  // The cards of the page, top to bottom.
  QWidget* listCard();
  QWidget* formCard();
  QWidget* trayCard();
  void refresh();
  void fillSymbols();
  void fillForm();
  void showMessage(const QString& text);
  void save(const std::string& symbol, double shares, double cost);
  void moveToUnheld();
  // The cards of the totals: one per currency, and one of them all in yuan.
  QWidget* figuresCard(const QString& title, double dayProfit,
                       const std::optional<double>& dayProfitPct, double totalProfit,
                       const std::optional<double>& totalProfitPct, double marketValue,
                       const QString& note, QWidget* parent);
  QWidget* yuanCard(const YuanTotal& total, QWidget* parent);
  // The rates' time as the user's clock shows it; none for the demonstration's fixed rates.
  static QString ratesClock(const YuanTotal& total);
  QWidget* summaryCard(const HoldingsTotal& total, QWidget* parent);
  std::string selectedSymbol() const;
  void showEvent(QShowEvent* event) override;

  AppModel& model_;
  QVBoxLayout* summaries_;
  HoldingsListModel* rows_;
  QListView* list_;
  QPushButton* editRow_;
  QPushButton* removeRow_;
  QLabel* empty_;
  QComboBox* symbol_;
  QLineEdit* shares_;
  QLineEdit* cost_;
  QPushButton* submit_;
  QLabel* message_;
  QWidget* question_;
  QLabel* questionText_;
  // The holding being edited, and the texts the form was filled with: a field left as filled
  // keeps the stored number exactly, whatever digits the form showed of it.
  std::optional<Holding> editing_;
  QString filledShares_, filledCost_;
  bool formMasked_ = false;
  // An add of a security already held, waiting for the answer to the question.
  std::optional<Holding> pending_;
  ProductSwitch* tray_;
  std::string shown_;  // what the summary cards were last built from
  std::vector<std::pair<std::string, std::string>> offered_;  // the picker's codes and names
  ChangeSignal::Subscription subscription_;
  OncePerTurn refreshes_{this, [this] { refresh(); }};
};

}  // namespace tidemark
