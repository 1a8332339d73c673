#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QObject>

#include <cstdint>

class QFocusEvent;
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
        /// The keys 1 to 9, where no action has them: the camera of that place, from 0. Whether it is used
        /// up.
        std::function<bool(std::size_t camera)> hear;
        std::function<void()> leave;
        std::function<void()> takeKeyboard; ///< the screen itself, no control of it
    };
    /// `window` outlives it.
    ReviewKeys(Desktop& desktop, QWidget& window, Screens screens);
    ~ReviewKeys() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    /// Whether the event is used up.
    bool handle(const QKeyEvent& event, bool isFullscreen);
    static void clearFieldFocus();
    bool isBound(const KeyEvent& event) const;
    /// A control that greys or hides itself under the keyboard gives it to the screen, not to its neighbour.
    void followFocus(const QObject& watched, const QFocusEvent& event);
    void noteElsewhere(const QKeyEvent& event);
    /// Whether the press belongs to one of another screen: the key is held since then, or was pressed twice,
    /// of which the first opened the review.
    bool isOfAnotherScreen(const QKeyEvent& event) const;

    Desktop& desktop_;
    QWidget& window_;
    const Screens screens_;
    bool isFocusByTab_ = false;
    bool isHandedOver_ = false; ///< a control that cannot have the focus has lost it
    struct {
        int key = 0;
        std::uint64_t at = 0; ///< milliseconds of the window system; 0: it gives none
        bool isDown = false;
    } elsewhere_; ///< the last key that went down while another screen was in front
};

} // namespace orvane::views
