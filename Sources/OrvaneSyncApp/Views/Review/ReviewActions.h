#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QObject>

#include <map>

class QAction;
class QMenu;

namespace orvane::views {

/// An action for every function that has a key on the screens that play, with the present key in menus and
/// tooltips. The key presses themselves are read from the window's key events, because K and the keys held
/// with it are more than shortcuts.
class ReviewActions : public QObject {
  public:
    explicit ReviewActions(Desktop& desktop, QObject* parent = nullptr);

    /// An action of the screens; file and undo commands of the menus are not included.
    QAction* action(KeyAction action) const { return actions_.at(action); }
    /// Shows and hides the sync lens.
    QAction* lens() const { return lens_; }
    /// Moves the playhead to the first frame of the clip.
    QAction* toStart() const { return toStart_; }
    /// Everything except nudges and decisions about the sync, which are in the sync menu.
    void fillPlayback(QMenu& menu) const;
    void fillSync(QMenu& menu) const;
    /// To be called when a screen that plays is in front or is left; `isReview`: it shows one clip.
    void setInFront(bool isInFront, bool isReview);

  private:
    /// An action with a fixed key.
    QAction* fixed(const char* key, const QString& name, const QString& help);
    void makeFixed();
    void goTo(double seconds);
    void showKeys();
    void showLockTitle();
    void showEnabled();

    Desktop& desktop_;
    std::map<KeyAction, QAction*> actions_;
    QAction *lens_, *putOnFrame_, *toStart_, *toEnd_;
    QString lockTitle_; ///< for the clip in view
    bool isInFront_ = false, isReview_ = false;
    platform::Subscription bindings_, ofEngine_, ofReview_, ofWork_;
};

} // namespace orvane::views
