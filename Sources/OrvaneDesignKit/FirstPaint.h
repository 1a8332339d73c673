#pragma once

#include <QEvent>
#include <QObject>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <utility>

namespace orvane::design {

/// Calls once when a window has been painted and the loop has no other work: from then on it handles keys and
/// clicks at once. Belongs to the window. Header only, so that a plain Qt program can measure the same.
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
