#pragma once

#include <QWheelEvent>

namespace orvane::design {

/// A control that changes its value by the wheel only while it has the keyboard: a wheel over a page scrolls
/// the page, and changes no value below the pointer.
template <class Control>
class WheelNeedsFocus : public Control {
  public:
    template <class... Arguments>
    explicit WheelNeedsFocus(Arguments... arguments) : Control(arguments...) {
        this->setFocusPolicy(Qt::StrongFocus);
    }

  protected:
    void wheelEvent(QWheelEvent* event) override {
        if (this->hasFocus())
            Control::wheelEvent(event);
        else
            event->ignore();
    }
};

} // namespace orvane::design
