#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <cstddef>
#include <vector>

class QLineEdit;

namespace orvane::views {

class KeyOverlay;

/// A screen of the open work as the window, its menus and its keys see it: the list of clips, or one that
/// plays. What differs between screens is said here; the window asks none of them by its kind.
class WorkScreen : public QWidget {
  public:
    using QWidget::QWidget;

    virtual bool isPlaying() const { return true; } ///< it takes the keys of the review, and the room
    /// What menus and keys act on.
    virtual std::vector<UUID> clips() const = 0;
    /// What the list selects when the screen is left.
    virtual std::vector<UUID> seen() const { return clips(); }
    virtual QLineEdit* search() const = 0;
    /// What has the keyboard when the screen comes to the front.
    virtual QWidget* keyboard() { return this; }
    /// Shows what each key does here; null where the screen has none of its own.
    virtual KeyOverlay* keyOverlay() const { return nullptr; }
    /// A key of its picture in fullscreen. Whether it is used up.
    virtual bool handleFullscreen(const KeyEvent& /*event*/) { return false; }
    /// Hears the camera of that place, from 0. False where there is none.
    virtual bool hear(std::size_t /*camera*/) { return false; }
    /// Lets go of what it plays.
    virtual void leave() {}
};

} // namespace orvane::views
