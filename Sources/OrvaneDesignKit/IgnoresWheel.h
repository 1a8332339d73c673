#pragma once

#include <QWheelEvent>

namespace orvane::design {

/// A control whose value no wheel changes, whether or not it has the focus: the wheel scrolls the page around
/// it.
template <class Control>
class IgnoresWheel : public Control {
  public:
    template <class... Arguments>
    explicit IgnoresWheel(Arguments... arguments) : Control(arguments...) {
        this->setFocusPolicy(Qt::StrongFocus);
    }

  protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

} // namespace orvane::design
