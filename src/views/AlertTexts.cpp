#include "views/AlertTexts.h"

#include <QDateTime>

namespace tidemark {

std::string alertStateText(const AlertRule& rule, AlertState state) {
  if (state != AlertState::triggered || !rule.triggeredAt) return std::string(label(state));
  const auto at =
      QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(rule.triggeredAt->unixSeconds() * 1000));
  // A daily rule shows as fired only on the date it fired; a once rule stays fired.
  if (rule.repeat == AlertRepeat::daily)
    return "今日已触发 " + at.toString(QStringLiteral("HH:mm")).toStdString();
  return "已触发 " + at.toString(QStringLiteral("MM-dd HH:mm")).toStdString();
}

}  // namespace tidemark
