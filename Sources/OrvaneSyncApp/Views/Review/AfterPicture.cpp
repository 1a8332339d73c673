#include "OrvaneSyncApp/Views/Review/AfterPicture.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace orvane::views {

namespace {

// Milliseconds.
constexpr int mostForPicture = 150; ///< for a file that is slow to open, or has no picture
constexpr int untilPainted = 8;     ///< once the picture is decoded

} // namespace

AfterPicture::AfterPicture(std::shared_ptr<VideoEngine> engine, std::function<void()> work, QObject* parent)
    : QObject(parent), engine_(std::move(engine)), work_(std::move(work)) {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, [this] { run(); });
    // Never removed: if a filter is removed while an event passes through the filters, the next filter misses
    // the event.
    QCoreApplication::instance()->installEventFilter(this);
    observation_ = engine_->onChange([this](VideoEngineField field) {
        const bool counts = field == VideoEngineField::picture || field == VideoEngineField::transport;
        const platform::Player* player = engine_->player();
        if (!isWaiting_ || !counts || engine_->transport().isLoading) return;
        if (player != nullptr && !player->picture()) return;
        isWaiting_ = false;
        timer_.start(untilPainted);
    });
}

void AfterPicture::schedule() {
    if (std::exchange(isScheduled_, true)) return;
    QMetaObject::invokeMethod(
        this, [this] { look(); }, Qt::QueuedConnection);
}

void AfterPicture::look() {
    if (!isScheduled_) return;
    if (!engine_->transport().isLoading) return run();
    isWaiting_ = true;
    timer_.start(mostForPicture);
}

bool AfterPicture::eventFilter(QObject*, QEvent* event) {
    const auto type = event->type();
    if (!isScheduled_) return false;
    if (type == QEvent::KeyPress || type == QEvent::MouseButtonPress || type == QEvent::Shortcut) run();
    return false;
}

void AfterPicture::run() {
    if (!std::exchange(isScheduled_, false)) return;
    isWaiting_ = false;
    timer_.stop();
    work_();
}

} // namespace orvane::views
