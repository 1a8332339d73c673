#include "OrvaneSyncApp/Views/QtMainThread.h"

#include "Platform/InterfaceThread.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <deque>
#include <mutex>

namespace orvane::views {

namespace {

class QtTimer : public platform::Timer {
  public:
    void cancel() override { isCancelled_ = true; }
    bool isCancelled() const { return isCancelled_; }

  private:
    std::atomic<bool> isCancelled_ = false;
};

/// Posts work to the interface thread. Work that is still waiting when this is destroyed is discarded. The
/// work is passed on under our own lock, because the thread sanitizer does not see the locks of Qt; one event
/// for each piece of work keeps the order among all events.
class QtMainThread : public platform::MainThread {
  public:
    void post(std::function<void()> work) override {
        {
            const std::lock_guard lock(mutex_);
            waiting_.push_back(std::move(work));
        }
        QMetaObject::invokeMethod(
            &receiver_, [this] { platform::runAsInterfaceWork(taken()); }, Qt::QueuedConnection);
    }
    std::shared_ptr<platform::Timer> after(std::chrono::nanoseconds delay,
                                           std::function<void()> work) override {
        auto timer = std::make_shared<QtTimer>();
        // Rounded up, so that the timer is never early.
        const auto wait =
            std::chrono::ceil<std::chrono::milliseconds>(std::max(delay, std::chrono::nanoseconds(0)));
        auto begin = [this, timer, wait, work = std::move(work)] {
            QTimer::singleShot(wait, Qt::PreciseTimer, &receiver_, [timer, work] {
                if (!timer->isCancelled()) platform::runAsInterfaceWork(work);
            });
        };
        if (isCurrent())
            begin();
        else
            post(std::move(begin));
        return timer;
    }
    bool isCurrent() const override { return QThread::currentThread() == receiver_.thread(); }

  private:
    std::function<void()> taken() {
        const std::lock_guard lock(mutex_);
        auto work = std::move(waiting_.front());
        waiting_.pop_front();
        return work;
    }

    std::mutex mutex_;
    std::deque<std::function<void()>> waiting_;
    QObject receiver_; ///< destroyed first, together with the events of the waiting work
};

} // namespace

std::shared_ptr<platform::MainThread> qtMainThread() { return std::make_shared<QtMainThread>(); }

} // namespace orvane::views
