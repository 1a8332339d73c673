#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <cstddef>
#include <vector>

class QLineEdit;

namespace orvane::views {

class KeyOverlay;

/// A screen of the open work, as the window, its menus and its keys see it: the list of clips, or a screen
/// that plays. Everything in which screens differ is declared here; the window does not distinguish them by
/// type.
class WorkScreen : public QWidget {
  public:
    using QWidget::QWidget;

    virtual bool isPlaying() const { return true; } ///< it gets the keys of the review, and the whole width
    /// The clips that menus and keys act on.
    virtual std::vector<UUID> clips() const = 0;
    /// The clips that the list selects when the screen is left.
    virtual std::vector<UUID> seen() const { return clips(); }
    virtual QLineEdit* search() const = 0;
    /// The widget that gets the keyboard when the screen is shown.
    virtual QWidget* keyboard() { return this; }
    /// The overlay that shows what each key does here; null if the screen has none.
    virtual KeyOverlay* keyOverlay() const { return nullptr; }
    /// Handles a key pressed over its picture in fullscreen. Returns whether it used the key.
    virtual bool handleFullscreen(const KeyEvent& /*event*/) { return false; }
    /// Plays the sound of the camera at that index, from 0. False if there is no such camera.
    virtual bool hear(std::size_t /*camera*/) { return false; }
    /// Stops and releases what it plays.
    virtual void leave() {}
};

} // namespace orvane::views
