#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QObject>

#include <cstdint>

class QFocusEvent;
class QKeyEvent;
class QWidget;

namespace orvane::views {

/// Passes the key events of the window and of its fullscreen picture to the screen that plays, before any
/// control or menu gets them. Text input has priority, and so has a control that was reached by Tab, for its
/// own keys. The screens do not use input methods, only text fields do; so no input method can hold back a
/// key of the review.
class ReviewKeys : public QObject {
  public:
    struct Screens {
        std::function<bool()> isInFront; ///< whether a screen that plays is in front
        /// Handles a key of the fullscreen picture. Returns whether it was handled; other keys are passed to
        /// the screen.
        std::function<bool(const KeyEvent&)> handleFullscreen;
        /// Handles the keys 1 to 9 if no action has them: `camera` is the place, from 0. Returns whether it
        /// was handled.
        std::function<bool(std::size_t camera)> hear;
        std::function<void()> leave;
        std::function<void()> takeKeyboard; ///< gives it to the screen itself, to none of its controls
    };
    /// `window` outlives this object.
    ReviewKeys(Desktop& desktop, QWidget& window, Screens screens);
    ~ReviewKeys() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    /// Returns whether the event was handled.
    bool handle(const QKeyEvent& event, bool isFullscreen);
    static void clearFieldFocus();
    bool isBound(const KeyEvent& event) const;
    /// If a control with the focus is disabled or hidden, gives the focus to the screen, not to the next
    /// control.
    void followFocus(const QObject& watched, const QFocusEvent& event);
    void noteElsewhere(const QKeyEvent& event);
    /// Whether the press belongs to an earlier screen or to a field: the key has been held since then, or
    /// this is the second press of a double press whose first one opened the clip.
    bool isOfAnotherScreen(const QKeyEvent& event) const;

    Desktop& desktop_;
    QWidget& window_;
    const Screens screens_;
    bool isFocusByTab_ = false;
    bool isHandedOver_ = false; ///< a control has lost the focus because it can no longer have it
    struct {
        int key = 0;
        std::uint64_t at = 0; ///< milliseconds of the window system; 0: not given
        bool isDown = false;
    } elsewhere_; ///< the last key that went down while another screen was in front, or Return in a field
};

} // namespace orvane::views
