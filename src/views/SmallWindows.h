#pragma once

#include <functional>
#include <optional>
#include <string>

#include <QButtonGroup>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QWidget>

#include "core/ChangeSignal.h"
#include "model/AppModel.h"

namespace tidemark {

// A number as typed: thousands separators and a leading "+" allowed, otherwise a plain number
// from the first character to the last, finite.
std::optional<double> parseTypedNumber(std::string input);
// The target price as typed: such a number above 0.
std::optional<double> parseAlertPrice(std::string input);

// Sets or clears the one price alert: which security, which direction, what price.
class AlertEditorView final : public QWidget {
 public:
  // `openAll` opens the settings on every alert.
  AlertEditorView(AppModel& model, std::function<void()> close, std::function<void()> openAll = {},
                  QWidget* parent = nullptr);

  QComboBox& symbol() { return *symbol_; }
  QLineEdit& price() { return *input_; }
  QLabel& message() { return *message_; }
  QLabel& current() { return *current_; }
  QLabel& others() { return *others_; }
  void setAbove(bool above);
  void save();
  void clear();

 protected:
  void showEvent(QShowEvent*) override;

 private:
  void showCurrent();
  // The chosen symbol's alerts besides the one edited here, and the way to all of them.
  QLayout* othersBlock(std::function<void()> openAll);
  void showOthers();

  AppModel& model_;
  std::function<void()> close_;
  QComboBox* symbol_;
  QLabel* currentCaption_;
  QLabel* current_;
  QButtonGroup* direction_;
  QLineEdit* input_;
  QLabel* message_;
  QLabel* others_;
  ChangeSignal::Subscription subscription_;
};

// The first-run guide: what the orb's gestures do; "开始探索" records that it has been seen.
class OnboardingView final : public QWidget {
 public:
  OnboardingView(AppModel& model, std::function<void()> close, QWidget* parent = nullptr);
};

}  // namespace tidemark
