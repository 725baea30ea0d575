#include "platform/QtScheduler.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>

#include <QPointer>
#include <QSocketNotifier>
#include <QTimer>

namespace tidemark {

// A wall-clock timer set to the end of time, which the kernel cancels, waking its descriptor,
// whenever the wall clock is set or the system resumes; armed again after each.
class QtScheduler::ClockWatch {
 public:
  explicit ClockWatch(const ChangeSignal& jumps)
      : fd_(::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC)) {
    if (fd_ < 0 || !arm()) return;  // without it a jump is noticed at the next planned wake-up
    notifier_ = std::make_unique<QSocketNotifier>(fd_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this, &jumps] {
      uint64_t expirations = 0;
      // A cancelled timer reads ECANCELED and stays readable until armed again.
      const bool cancelled =
          ::read(fd_, &expirations, sizeof expirations) < 0 && errno == ECANCELED;
      arm();
      if (cancelled) jumps.notify();
    });
  }
  ~ClockWatch() {
    notifier_.reset();
    if (fd_ >= 0) ::close(fd_);
  }
  ClockWatch(const ClockWatch&) = delete;
  ClockWatch& operator=(const ClockWatch&) = delete;

 private:
  bool arm() const {
    itimerspec never{};
    never.it_value.tv_sec = std::numeric_limits<time_t>::max() / 2;
    return ::timerfd_settime(fd_, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &never, nullptr) ==
           0;
  }

  int fd_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

QtScheduler::QtScheduler() = default;
QtScheduler::~QtScheduler() = default;

ChangeSignal::Subscription QtScheduler::whenClockJumps(std::function<void()> work) {
  if (!clockWatch_) clockWatch_ = std::make_unique<ClockWatch>(clockJumps_);
  return clockJumps_.subscribe(std::move(work));
}

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
