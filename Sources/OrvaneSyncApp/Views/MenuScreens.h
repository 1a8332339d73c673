#pragma once

#include "OrvaneSyncCore/Models/UUID.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <string_view>
#include <vector>

class QWidget;

namespace orvane::views {

/// What the menus ask of the screens.
struct MenuScreens {
    std::function<std::vector<UUID>()> clips; ///< that commands for clips act on
    std::function<void(std::string_view)> runForClips;
    std::function<void()> renameClip, openReview, openMulticam, showResults, newScan, showIntroduction,
        leaveStart, find, showKeys;
    std::function<void(int choice)> showFilter; ///< of the list, in the order of `ResultsView::filterTitles`
    std::function<void(const QString& path)> openProject;
    std::function<void(const QString& what)> tell; ///< that asks for nothing
    std::function<void(const QStringList& paths)> openPaths;
    std::function<void()> takeKeyboard;                     ///< the screen in front
    std::function<void()> listenToCards, syncLockitNetwork; ///< both take long
    std::function<bool()> isListening;                      ///< to the cards
    std::function<bool()> isPlaying;                        ///< a screen that plays is in front
    QWidget* sessions;                                      ///< that can be hidden
};

} // namespace orvane::views
