#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QObject>

class QKeyEvent;
class QWidget;

namespace orvane::views {

/// Hands the key events of the window, and of its picture in fullscreen, to the screen that plays, before any
/// control or menu gets them. Text that is typed comes first, and so does the control that was reached by
/// Tab, for the keys that it has itself. Nothing here takes input methods: only text fields do, so that none
/// holds back a key of the review.
class ReviewKeys : public QObject {
  public:
    struct Screens {
        std::function<bool()> isInFront; ///< one that plays
        /// A key of the picture in fullscreen. Whether it is used up; the others are the screen's.
        std::function<bool(const KeyEvent&)> handleFullscreen;
        std::function<void()> leave;
    };
    /// `window` outlives it.
    ReviewKeys(Desktop& desktop, QWidget& window, Screens screens);
    ~ReviewKeys() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    /// Whether the event is used up.
    bool handle(const QKeyEvent& event, bool isFullscreen);
    static void leaveField();
    bool isBound(const KeyEvent& event) const;

    Desktop& desktop_;
    QWidget& window_;
    const Screens screens_;
    bool isFocusByTab_ = false;
};

} // namespace orvane::views
