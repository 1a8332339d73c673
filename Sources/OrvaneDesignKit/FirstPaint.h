#pragma once

#include <QEvent>
#include <QObject>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <utility>

namespace orvane::design {

/// Calls once when a window has been painted and nothing else waits to be done: from then on it takes keys
/// and clicks at once. Belongs to the window. In the header alone, so that a program of Qt alone can measure
/// the same.
class FirstPaint final : public QObject {
  public:
    FirstPaint(QWidget& window, std::function<void()> done) : QObject(&window), done_(std::move(done)) {
        window.installEventFilter(this);
    }
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            QTimer::singleShot(0, this, [this] { done_(); });
        }
        return false;
    }

  private:
    const std::function<void()> done_;
};

} // namespace orvane::design
