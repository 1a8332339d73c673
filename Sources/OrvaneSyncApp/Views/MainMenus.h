#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/MenuScreens.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <map>
#include <optional>
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

/// The menus and tools of the window. Each entry runs a command of the table, or shows something.
class MainMenus : public QObject {
  public:
    using Screens = MenuScreens;
    MainMenus(Desktop& desktop, QMainWindow& window, ReviewActions& review, Screens screens);

    /// After the work, the selection or the screen has changed.
    void update();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void takeBack(std::string_view id);
    void leaveMenuBar();
    /// Where the menu bar keeps the keyboard and shows no menu: Qt leaves it there after a second menu.
    void returnKeyboard();
    bool isQuittingOverSheet(const QObject& watched, const QEvent& event) const;
    void quit();
    /// An entry of a menu that runs no row of the table by itself.
    struct OwnEntry {
        int order; ///< among those of the table, as theirs
        QAction* action;
    };
    /// The entries of the rows that are in a menu.
    void makeCommands();
    /// What the window does for a row that it does not just run: it asks for a place or an answer, or shows
    /// something; by the command.
    std::map<std::string_view, std::function<void()>> actsOfWindow();
    void makeFile();
    void makeEdit();
    void makeClip();
    void makeAudio();
    void makeReview(ReviewActions& review);
    void makeView();
    void makeHelp();
    void makeTools();
    /// Lays the entries of the table and those of the window's own into a menu.
    void fill(QMenu* menu, commands::Menu which, std::vector<OwnEntry> entries);
    QAction* ownEntry(const QString& title, std::function<void()> act, const QString& help = {});
    QMenu* addMenu(const QString& title);
    /// The entry of a row of the table, which has one.
    QAction* of(std::string_view id) const;
    void run(const commands::Command& row);
    /// The actions of menus that have a key of the user's choice.
    void showKeys();
    void listScreens(QMenu* menu);
    void openProject();
    void saveProject();
    void loadReport();
    void writeReview();
    void applyReview();
    bool agrees(const Question& question);
    void analyse(const JSON& mode); ///< as the setting holds it
    void exportClip();
    /// Of a file that is there, and of one that is to be written; nothing when the user thinks again.
    std::optional<QString> chosenFile(const QString& caption, const QString& filter);
    std::optional<QString> placeFor(const QString& caption, const QString& filter, const QString& name);
    /// `then` is called when the command has ended well.
    void runWithPath(std::string_view id, const QString& path, std::string_view argument = "path",
                     bool overwrites = false, std::function<void()> then = {});
    void tellSaved(const QString& path);
    bool applies(std::string_view id, const std::vector<UUID>& clips) const;

    Desktop& desktop_;
    QMainWindow& window_;
    const Screens screens_;
    std::map<std::string_view, QAction*> ofCommands_;
    std::vector<QAction*> ofAnalysisModes_;
    std::vector<QAction*> filters_;
    QAction* scan_ = nullptr;
    QAction* find_ = nullptr;
    QAction* rename_ = nullptr;
    QAction* resync_ = nullptr; ///< of the tools: the chosen clips, or all where none is chosen
    QAction* review_ = nullptr;
    QAction* results_ = nullptr;
    QAction* introduction_ = nullptr;
    QAction* keys_ = nullptr;
    QAction* quit_ = nullptr;
    QAction* listen_ = nullptr;
    platform::Subscription bindings_;
};

} // namespace orvane::views
