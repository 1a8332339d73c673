#pragma once

#include "OrvaneSyncApp/Views/ClipMenu.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

class QBoxLayout;
class QLineEdit;

namespace orvane::views {

class KeyOverlay;
class OutlineView;
class ReviewActions;
class WorkScreen;

/// What a screen of the open work asks of the window.
struct ScreenHost {
    ReviewActions* actions = nullptr;                                   ///< for the screens that play
    std::function<void()> showList;                                     ///< back to the list of clips
    std::function<void(const UUID& clip)> openReview;                   ///< one clip, at its clap
    std::function<void(const std::vector<UUID>& cameras)> openMulticam; ///< cameras beside each other
    std::function<void(const WorkScreen&)> clipsChanged; ///< it shows other clips, or others are selected
};

/// A screen of the open work, as the window, its menus and its keys see it: the list of clips, or a screen
/// that plays. Everything in which screens differ is declared here; the window does not distinguish them by
/// type. Its constructor takes the desktop and the host (`WorkScreens::get`).
class WorkScreen : public QWidget {
  public:
    WorkScreen(Desktop& desktop, ScreenHost host) : desktop_(desktop), host_(std::move(host)) {}

    /// Shows these clips. Called before the screen is brought to the front; if it then is not open
    /// (`isOpen`), the screen before it stays.
    virtual void open(const std::vector<UUID>& clips) = 0;
    /// False: it has no clip to show, and the list is shown instead.
    virtual bool isOpen() const { return true; }
    virtual bool isPlaying() const { return true; } ///< it gets the keys of the review, and the whole width
    /// The keys act on the clip in view, and not on several cameras together.
    virtual bool isOfOneClip() const { return false; }
    /// The clips that menus and keys act on.
    virtual std::vector<UUID> clips() const = 0;
    /// The clips that the list selects when the screen is left.
    virtual std::vector<UUID> seen() const { return clips(); }
    virtual QLineEdit* search() const = 0;
    /// The list of clips beside what it shows; null if there is none.
    virtual OutlineView* outlineBeside() const { return nullptr; }
    /// The widget that gets the keyboard when the screen is shown.
    virtual QWidget* keyboard() { return this; }
    /// The overlay that shows what each key does here; null if the screen has none.
    virtual KeyOverlay* keyOverlay() const { return nullptr; }
    /// The layout over the top of its picture for the window's banner, which moves nothing there. Null: the
    /// banner is beside the screen.
    virtual QBoxLayout* messages() const { return nullptr; }
    /// What a click or a key does here, for the status line.
    virtual QString hint() const { return {}; }
    /// Handles a key pressed over its picture in fullscreen. Returns whether it used the key.
    virtual bool handleFullscreen(const KeyEvent& /*event*/) { return false; }
    /// Plays the sound of the camera at that index, from 0. False if there is no such camera.
    virtual bool hear(std::size_t /*camera*/) { return false; }
    /// Called when it has come to the front.
    virtual void entered() {}
    /// Stops and releases what it plays.
    virtual void leave() {}
    /// Stores the positions of its parts for the next start.
    virtual void savePlaces() {}

    /// Runs a command for `clips`.
    void run(std::string_view command) const { ofClips_.run(command, clips()); }
    /// Asks for the clip's name.
    void rename(const UUID& clip) const { ofClips_.rename(clip); }

  protected:
    /// To be called when the screen shows other clips or none, or when other clips are selected.
    void noteClips() const {
        if (host_.clipsChanged) host_.clipsChanged(*this);
    }

    Desktop& desktop_;
    const ScreenHost host_;
    ClipMenu ofClips_{desktop_, this};
};

} // namespace orvane::views
