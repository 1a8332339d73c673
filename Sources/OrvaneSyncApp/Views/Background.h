#pragma once

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

#include <memory>
#include <type_traits>
#include <utility>

namespace orvane::views {

/// Runs `work`, which may block, on another thread, then `done` with its result on the interface thread.
/// `done` is not called if `context` was destroyed before. Neither may throw; `work` owns all that it uses.
template <class Work, class Done>
void inBackground(QObject* context, Work work, Done done) {
    QThreadPool::globalInstance()->start(
        [alive = QPointer<QObject>(context), work = std::move(work), done = std::move(done)]() mutable {
            auto result = std::make_shared<std::invoke_result_t<Work&>>(work());
            // Posted to the application, because the context may be destroyed at any moment; the application
            // outlives the work of the pool.
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [alive, result, done = std::move(done)]() mutable {
                    if (alive) done(std::move(*result));
                },
                Qt::QueuedConnection);
        });
}

} // namespace orvane::views
