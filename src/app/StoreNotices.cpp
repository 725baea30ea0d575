#include "app/StoreNotices.h"

#include "model/StoreKeys.h"

namespace tidemark {

std::string setAsideLine(const SetAsideRecord& r, const std::string& settingsFile) {
  const bool preferences = r.record == storeKeys::preferences;
  std::string line = "tidemark: could not read ";
  if (preferences) {
    line += "the stored settings";
  } else if (r.record == storeKeys::holdings) {
    line += "the stored holdings";
  } else if (r.record.ends_with("holdings.json")) {
    line += "the holdings file " + r.record;
  } else if (r.record == storeKeys::alerts) {
    line += "the stored alerts";
  } else if (r.record.ends_with("alerts.json")) {
    line += "the alerts file " + r.record;
  } else {
    line += "the watchlist file " + r.record;
  }
  line += " (" + r.problem + ")";
  if (r.keptAs.empty())
    return line + " nor move it aside (" + r.failure + "); it is left as it is and not written\n";
  line += "; kept as " + r.keptAs;
  if (preferences || r.record == storeKeys::holdings || r.record == storeKeys::alerts)
    line += " in " + settingsFile;
  if (preferences) line += "; the defaults are used";
  return line + "\n";
}

std::string settingsWriteFailureLine(const StoreWriteFailure& failure) {
  return "tidemark: settings cannot be saved: " + failure.path + ": " + failure.reason +
         "; changes last until tidemark quits\n";
}

StoreNotices::StoreNotices(AppModel& model, const std::string& settingsFile, std::ostream& err) {
  for (const auto& record : model.setAsideRecords()) err << setAsideLine(record, settingsFile);
  err.flush();
  subscription_ = model.subscribe([&model, &err, this] {
    const auto& failure = model.settingsWriteFailure();
    if (failure && !told_) err << settingsWriteFailureLine(*failure) << std::flush;
    told_ = failure.has_value();
  });
}

}  // namespace tidemark
