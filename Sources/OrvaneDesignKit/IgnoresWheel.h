#pragma once

#include <QWheelEvent>

namespace orvane::design {

/// A control whose value the wheel never changes, with or without focus: the wheel scrolls the page around
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
