#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/QuoteSnapshot.h"
#include "model/Holdings.h"

namespace tidemark {

// A holding with its security's quote (none when it has none, or is no longer watched).
struct HoldingLine {
  const Holding* holding;
  const QuoteSnapshot* quote;
  bool watched;
};

// What the user holds, one entry a symbol in the order entered, with the switch that puts the
// day's profit in the tray: the list's own rules and its stored record. Which symbols may be held
// (watched, no index) is the model's to say.
class HoldingsBook {
 public:
  const std::vector<Holding>& list() const { return list_; }
  bool showsDayProfitInTray() const { return showsDayProfitInTray_; }
  const Holding* find(const std::string& symbol) const;

  // Replaces the symbol's holding or adds one; refused in words for numbers out of range or past
  // maxHoldingsCount entries.
  std::optional<std::string> set(const std::string& symbol, double shares, double cost);
  // Whether there was one to remove.
  bool remove(const std::string& symbol);
  // Whether it changed.
  bool setShowsDayProfitInTray(bool on);
  void replace(std::vector<Holding> list) { list_ = std::move(list); }
  void restore(HoldingsBackup record);

  // The stored record, stamped `at`.
  HoldingsBackup record(Date at) const;
  // Whether these stored bytes read whole to exactly this book.
  bool matches(std::string_view storedBytes) const;

 private:
  std::vector<Holding> list_;
  bool showsDayProfitInTray_ = false;
};

}  // namespace tidemark
