#pragma once

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

#include <memory>
#include <type_traits>
#include <utility>

namespace orvane::views {

/// Runs what may wait on another thread, and `done` with what it gave on the interface thread, unless
/// `context` is gone by then. Neither may throw; the work owns all that it uses.
template <class Work, class Done>
void inBackground(QObject* context, Work work, Done done) {
    QThreadPool::globalInstance()->start(
        [alive = QPointer<QObject>(context), work = std::move(work), done = std::move(done)]() mutable {
            auto result = std::make_shared<std::invoke_result_t<Work&>>(work());
            // To the application, which outlives the pool's work: the context may go at any moment.
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [alive, result, done = std::move(done)]() mutable {
                    if (alive) done(std::move(*result));
                },
                Qt::QueuedConnection);
        });
}

} // namespace orvane::views
