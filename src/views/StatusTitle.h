#pragma once

#include <string>

#include "core/NumberText.h"
#include "model/AppModel.h"

namespace tidemark {

// The text beside the tray icon at a menu density; nothing when masked.
inline std::string statusTitleText(const AppModel& model, MenuDensity density) {
  if (model.masked() || density == MenuDensity::iconOnly) return "";
  const QuoteSnapshot* quote = model.activeQuote();
  if (!quote) return " 暂无自选";
  if (density == MenuDensity::percent) return " " + percentText(quote->changePct());
  return " " + quote->id + "  " + model.quoteStyle().price(*quote) + "  " +
         percentText(quote->changePct());
}

// The text beside the tray icon: today's profit of the first currency held when the holdings'
// switch asks for it and a holding has a quote, else the title of the menu density.
inline std::string trayTitleText(const AppModel& model) {
  if (model.showsDayProfitInTray() && !model.masked()) {
    const auto days = dayProfitTexts(model.holdingsTotals());
    if (!days.empty()) return " 今日 " + days.front();
  }
  return statusTitleText(model, model.menuDensity());
}

}  // namespace tidemark
