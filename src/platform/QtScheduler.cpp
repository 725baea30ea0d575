#include "platform/QtScheduler.h"

#include <chrono>
#include <cmath>

#include <QPointer>
#include <QTimer>

namespace tidemark {

Date SystemClock::now() const {
  using namespace std::chrono;
  const auto since = system_clock::now().time_since_epoch();
  return Date::fromUnix(duration<double>(since).count());
}

void QtScheduler::post(std::function<void()> work) {
  QMetaObject::invokeMethod(&context_, std::move(work), Qt::QueuedConnection);
}

TimerHandle QtScheduler::after(double seconds, std::function<void()> work) {
  return start(seconds, false, std::move(work));
}

TimerHandle QtScheduler::every(double seconds, std::function<void()> work) {
  return start(seconds, true, std::move(work));
}

TimerHandle QtScheduler::start(double seconds, bool repeating, std::function<void()> work) {
  auto* timer = new QTimer(&context_);
  timer->setSingleShot(!repeating);
  QObject::connect(timer, &QTimer::timeout, timer, [timer, repeating, work = std::move(work)] {
    if (!repeating) timer->deleteLater();
    work();
  });
  timer->start(static_cast<int>(std::lround(std::max(0.0, seconds) * 1000)));
  return TimerHandle([guard = QPointer<QTimer>(timer)] {
    // A fired one-shot timer is inactive and already on its way out.
    if (guard && guard->isActive()) {
      guard->stop();
      guard->deleteLater();
    }
  });
}

}  // namespace tidemark
