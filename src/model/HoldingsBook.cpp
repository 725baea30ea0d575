#include "model/HoldingsBook.h"

#include <algorithm>

namespace tidemark {

const Holding* HoldingsBook::find(const std::string& symbol) const {
  for (const Holding& h : list_)
    if (h.symbolID == symbol) return &h;
  return nullptr;
}

std::optional<std::string> HoldingsBook::set(const std::string& symbol, double shares,
                                             double cost) {
  if (auto problem = holdingProblem(shares, cost)) return problem;
  const auto same = [&](const Holding& h) { return h.symbolID == symbol; };
  if (auto it = std::find_if(list_.begin(), list_.end(), same); it != list_.end()) {
    *it = Holding{symbol, shares, cost};
  } else if (list_.size() >= maxHoldingsCount) {
    return "持仓最多 " + std::to_string(maxHoldingsCount) + " 项";
  } else {
    list_.push_back(Holding{symbol, shares, cost});
  }
  return std::nullopt;
}

bool HoldingsBook::remove(const std::string& symbol) {
  return std::erase_if(list_, [&](const Holding& h) { return h.symbolID == symbol; }) > 0;
}

bool HoldingsBook::setShowsDayProfitInTray(bool on) {
  if (showsDayProfitInTray_ == on) return false;
  showsDayProfitInTray_ = on;
  return true;
}

void HoldingsBook::restore(HoldingsBackup record) {
  list_ = std::move(record.holdings);
  showsDayProfitInTray_ = record.showsDayProfitInTray;
}

HoldingsBackup HoldingsBook::record(Date at) const {
  return HoldingsBackup{1, at, list_, showsDayProfitInTray_};
}

bool HoldingsBook::matches(std::string_view storedBytes) const {
  size_t dropped = 0;
  const auto stored = holdingsBackupFromBytes(storedBytes, &dropped);
  return stored && dropped == 0 && stored->holdings == list_ &&
         stored->showsDayProfitInTray == showsDayProfitInTray_;
}

}  // namespace tidemark
