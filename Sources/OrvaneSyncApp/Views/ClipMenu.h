#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"

#include <functional>
#include <string_view>
#include <vector>

class QMenu;
class QWidget;

namespace orvane::views {

/// What can be done with the clips that a list shows, the same in each of its lists. `of` is the list: sheets
/// and messages open over its window. Interface thread.
class ClipMenu {
  public:
    ClipMenu(Desktop& desktop, QWidget* of) : desktop_(desktop), of_(of) {}
    /// Called with the clips after an entry ran.
    std::function<void(const std::vector<UUID>& clips)> whenDone;

    /// Adds the entries for these clips: for one clip also its recordings. `clips` is not empty.
    void fill(QMenu& menu, const std::vector<UUID>& clips) const;
    void run(std::string_view command, const std::vector<UUID>& clips) const;
    /// Asks for the clip's name.
    void rename(const UUID& clip) const;

  private:
    /// Locks or unlocks several clips, and says which.
    void lock(const std::vector<UUID>& clips) const;
    void addRecordings(QMenu& menu, const UUID& clip) const;
    void done(const std::vector<UUID>& clips) const {
        if (whenDone) whenDone(clips);
    }

    Desktop& desktop_;
    QWidget* of_;
};

} // namespace orvane::views
