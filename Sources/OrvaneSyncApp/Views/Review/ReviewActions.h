#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <QObject>

#include <map>

class QAction;
class QMenu;

namespace orvane::views {

/// An action for everything that a key does on the screens that play, with the key that it has at present in
/// menus and tooltips. The keys themselves come from the window's key events, as K and those held with it
/// are more than shortcuts.
class ReviewActions : public QObject {
  public:
    explicit ReviewActions(Desktop& desktop, QObject* parent = nullptr);

    /// Of the screens; those of the menus for files and undo are not among them.
    QAction* action(KeyAction action) const { return actions_.at(action); }
    /// Shows and hides the sync lens.
    QAction* lens() const { return lens_; }
    /// Everything but nudges and what is decided about the sync: those are the sync menu's.
    void fillPlayback(QMenu& menu) const;
    void fillSync(QMenu& menu) const;
    /// A screen that plays is in front; `isReview`: of one clip.
    void setInFront(bool isInFront, bool isReview);

  private:
    void showKeys();
    void showEnabled();

    Desktop& desktop_;
    std::map<KeyAction, QAction*> actions_;
    QAction* lens_;
    bool isInFront_ = false, isReview_ = false;
    platform::Subscription bindings_, ofEngine_, ofReview_, ofWork_;
};

} // namespace orvane::views
