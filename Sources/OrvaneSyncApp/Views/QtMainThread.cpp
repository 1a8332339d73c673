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

/// The receiver of everything that is posted: what waits when it goes is dropped with it. Work is handed over
/// under a lock of our own, as the thread sanitizer does not see those of Qt; an event a piece keeps its
/// order among the other events.
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
        // Rounded up: never before its time.
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
    QObject receiver_; ///< goes first, with the events for what waits
};

} // namespace

std::shared_ptr<platform::MainThread> qtMainThread() { return std::make_shared<QtMainThread>(); }

} // namespace orvane::views
