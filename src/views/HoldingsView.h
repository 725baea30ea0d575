#pragma once

#include <string>
#include <vector>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidget>

#include "core/ChangeSignal.h"
#include "model/AppModel.h"
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
  // Adds or replaces the holding the form describes; a refusal is shown under the form.
  void submit();
  // Fills the form with a holding, to change it.
  void edit(const std::string& symbol);
  QString message() const { return message_->text(); }
  // Every text the section shows, in order.
  QStringList shownTexts() const;

 private:
  void refresh();
  void fillSymbols();
  QWidget* summaryCard(const HoldingsTotal& total, QWidget* parent);
  QWidget* row(const AppModel::HoldingLine& line, QWidget* parent);

  AppModel& model_;
  QVBoxLayout* summaries_;
  QVBoxLayout* rows_;
  QLabel* empty_;
  QComboBox* symbol_;
  QLineEdit* shares_;
  QLineEdit* cost_;
  QPushButton* submit_;
  QLabel* message_;
  ProductSwitch* tray_;
  std::string shown_;  // what the summaries and rows were last built from
  ChangeSignal::Subscription subscription_;
  OncePerTurn refreshes_{this, [this] { refresh(); }};
};

}  // namespace tidemark
