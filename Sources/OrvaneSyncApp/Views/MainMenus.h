#pragma once

#include "OrvaneSyncApp/Views/FileActions.h"
#include "OrvaneSyncApp/Views/MenuBarKeys.h"
#include "OrvaneSyncApp/Views/MenuParts.h"

#include <QObject>
#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

class QAction;
class QMainWindow;
class QMenu;

namespace orvane {
struct Question;
}

namespace orvane::views {

class ReviewActions;

/// The menus and tools of the window. Each entry runs a command of the table, or opens something in the
/// window.
class MainMenus : public QObject {
  public:
    MainMenus(Desktop& desktop, QMainWindow& window, ReviewActions& review, MenuParts parts);

    /// To be called after the work, the selection or the screen has changed.
    void update();
    /// A key has changed nothing: an undo that comes next would take back what was done before, and says so.
    void noteRefusedKey() { isKeyRefused_ = true; }

  private:
    void takeBack(std::string_view id);
    /// An entry of a menu that runs no command of the table directly.
    struct OwnEntry {
        int order; ///< place among the entries of the table, on their scale
        QAction* action;
    };
    /// Makes the entries of the commands that are in a menu.
    void makeCommands();
    /// What the window does for a command before or instead of running it (asks for a place or an answer, or
    /// opens something), by command.
    std::map<std::string_view, std::function<void()>> actsOfWindow();
    void makeFile();
    void makeEdit();
    void makeClip();
    void makeAudio();
    void makeReview(ReviewActions& review);
    void makeView();
    void makeHelp();
    void makeTools();
    /// Adds the entries of the table and the window's own entries to a menu.
    void fill(QMenu* menu, commands::Menu which, std::vector<OwnEntry> entries);
    QAction* ownEntry(const QString& title, std::function<void()> act, const QString& help = {});
    QMenu* addMenu(const QString& title);
    /// The entry of a command of the table; it must have one.
    QAction* of(std::string_view id) const;
    void run(const commands::Command& row);
    /// Shows the user's keys in the entries that have one.
    void showKeys();
    /// The screens of the desktop.
    void listScreens(QMenu* menu);
    void renameClips();
    void listenToCards();
    void compareSound();
    /// The selected clips, if these are several; none means all clips.
    std::vector<UUID> clipsToCompare() const;
    bool agrees(const Question& question);
    void analyse(const JSON& mode); ///< in the form of the setting
    /// Enables the entries of those commands of one clip that apply to at least one of these clips.
    void enableForClips(const std::vector<UUID>& clips);

    Desktop& desktop_;
    QMainWindow& window_;
    const MenuParts parts_;
    FileActions files_;
    std::unique_ptr<MenuBarKeys> keysOfBar_;
    std::map<std::string_view, QAction*> ofCommands_;
    std::vector<QAction*> ofAnalysisModes_;
    std::vector<QAction*> filters_;
    QAction* scan_ = nullptr;
    QAction* scanAgain_ = nullptr;
    QAction* addCard_ = nullptr;
    QAction* find_ = nullptr;
    QAction* fullscreen_ = nullptr; ///< the menu of the screens
    QAction* rename_ = nullptr;
    QAction* resync_ = nullptr; ///< in the tools: the selected clips, or all if none is selected
    QAction* review_ = nullptr;
    QAction* results_ = nullptr;
    QAction* introduction_ = nullptr;
    QAction* keys_ = nullptr;
    QAction* quit_ = nullptr;
    QAction* listen_ = nullptr;
    QAction* compare_ = nullptr;
    bool isKeyRefused_ = false; ///< and nothing has changed since
    platform::Subscription bindings_;
};

} // namespace orvane::views
