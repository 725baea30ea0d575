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
#include "core/Clock.h"
#include "model/AppModel.h"
#include "views/OncePerTurn.h"
#include "views/Theme.h"

namespace tidemark {

// The settings section "价格提醒": every alert grouped by symbol with its condition, repeat and
// state, a switch and a delete button each; the form that adds one, with the model's refusals in
// words and a hint when it would fire at once; and the switch that pauses them all.
class AlertsView final : public QWidget {
 public:
  AlertsView(AppModel& model, const Clock& clock, QWidget* parent = nullptr);

  QComboBox& symbol() { return *symbol_; }
  QComboBox& kind() { return *kind_; }
  QLineEdit& value() { return *value_; }
  QComboBox& repeat() { return *repeat_; }
  // Adds the rule the form describes; a refusal is shown under the form.
  void submit();
  QString message() const { return message_->text(); }
  QString hint() const { return hint_->isVisible() ? hint_->text() : QString(); }
  // Every text the section shows, in order.
  QStringList shownTexts() const;

 private:
  QWidget* listCard();
  QWidget* formCard();
  void refresh();
  void fillSymbols();
  void updateHint();
  // The rule the form describes, when its value is a number.
  std::optional<AlertRule> formRule() const;
  QWidget* ruleRow(const AlertRule& rule, AlertState state, QWidget* parent);

  AppModel& model_;
  const Clock& clock_;
  QVBoxLayout* rows_;
  QLabel* empty_;
  ProductSwitch* paused_;
  QComboBox* symbol_;
  QComboBox* kind_;
  QLineEdit* value_;
  QComboBox* repeat_;
  QLabel* message_;
  QLabel* hint_;
  std::string shown_;  // what the rows were last built from
  std::vector<std::string> offered_;
  ChangeSignal::Subscription subscription_;
  OncePerTurn refreshes_{this, [this] { refresh(); }};
};

}  // namespace tidemark
