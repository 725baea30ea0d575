#pragma once

#include <functional>
#include <utility>

#include <QObject>
#include <QTimer>

namespace tidemark {

// Runs its work once in the next event-loop turn however often it was asked in this one: the
// model notifies once per property, and a view reads them all in one refresh. A member of the
// view it works for, which is also the context: nothing runs once the view is gone.
class OncePerTurn {
 public:
  OncePerTurn(QObject* context, std::function<void()> work)
      : context_(context), work_(std::move(work)) {}

  void request() {
    if (pending_) return;
    pending_ = true;
    QTimer::singleShot(0, context_, [this] {
      pending_ = false;
      work_();
    });
  }

 private:
  QObject* context_;
  std::function<void()> work_;
  bool pending_ = false;
};

}  // namespace tidemark
