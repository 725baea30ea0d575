#pragma once

#include <ostream>
#include <string>

#include "core/ChangeSignal.h"
#include "model/AppModel.h"

namespace tidemark {

// The lines the desktop app writes to standard error about the user's stored data.
std::string setAsideLine(const SetAsideRecord& record, const std::string& settingsFile);
std::string settingsWriteFailureLine(const StoreWriteFailure& failure);

// Says at once what the model set aside while it started, then, while it lives, names the
// settings file and the reason once at the start of each streak of failed saves.
class StoreNotices {
 public:
  StoreNotices(AppModel& model, const std::string& settingsFile, std::ostream& err);

 private:
  ChangeSignal::Subscription subscription_;
  bool told_ = false;
};

}  // namespace tidemark
