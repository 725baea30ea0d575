#include "views/UnsplitFills.h"

#include <QSemaphore>
#include <QThread>
#include <QThreadPool>

namespace tidemark {

void paintUnsplit(const std::function<void()>& paint) {
  QThreadPool* pool = QThreadPool::globalInstance();
  if (!pool || pool->contains(QThread::currentThread())) {
    paint();
    return;
  }
  QSemaphore done;
  pool->start([&] {
    paint();
    done.release();
  });
  done.acquire();
}

}  // namespace tidemark
