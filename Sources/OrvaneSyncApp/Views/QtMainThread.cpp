#include "OrvaneSyncApp/Views/QtMainThread.h"

#include "Platform/InterfaceThread.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>

namespace orvane::views {

namespace {

class QtTimer : public platform::Timer {
  public:
    void cancel() override { isCancelled_ = true; }
    bool isCancelled() const { return isCancelled_; }

  private:
    std::atomic<bool> isCancelled_ = false;
};

/// The receiver of everything that is posted: what waits when it goes is dropped with it.
class QtMainThread : public platform::MainThread {
  public:
    void post(std::function<void()> work) override {
        QMetaObject::invokeMethod(
            &receiver_, [work = std::move(work)] { platform::runAsInterfaceWork(work); },
            Qt::QueuedConnection);
    }
    std::shared_ptr<platform::Timer> after(std::chrono::nanoseconds delay,
                                           std::function<void()> work) override {
        auto timer = std::make_shared<QtTimer>();
        // Rounded up: never before its time.
        const auto wait =
            std::chrono::ceil<std::chrono::milliseconds>(std::max(delay, std::chrono::nanoseconds(0)));
        const auto begin = [this, timer, wait, work = std::move(work)] {
            QTimer::singleShot(wait, Qt::PreciseTimer, &receiver_, [timer, work] {
                if (!timer->isCancelled()) platform::runAsInterfaceWork(work);
            });
        };
        if (isCurrent())
            begin();
        else
            QMetaObject::invokeMethod(&receiver_, begin, Qt::QueuedConnection);
        return timer;
    }
    bool isCurrent() const override { return QThread::currentThread() == receiver_.thread(); }

  private:
    QObject receiver_;
};

} // namespace

std::shared_ptr<platform::MainThread> qtMainThread() { return std::make_shared<QtMainThread>(); }

} // namespace orvane::views
