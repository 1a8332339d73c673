#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncCore/Services/Network/LockitRecords.h"

#include <QWidget>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QMenu;
class QTreeWidget;
class QTreeWidgetItem;

namespace orvane::views {

class Remark;

/// Day and time in the short form of the language.
QString dayText(Date date);

/// The stored sessions in their folders, in the order of the first list. A double click or Return opens a
/// session; it is renamed in place, dragged into a folder, and deleted with the Delete key. Also shows a
/// badge with the LockitNetwork project of each folder, and the presets.
class SessionsPanel : public QWidget {
  public:
    explicit SessionsPanel(Desktop& desktop, QWidget* parent = nullptr);

    /// Called if a session was opened here, or if the open one was opened again.
    std::function<void()> whenOpenWorkIsWanted;

  private:
    class Tree;

    void fill();
    void showHowToOpen();
    std::vector<SessionInfo> inOrder();
    void makeRows(const std::vector<SessionInfo>& sessions);
    void showSession(const SessionInfo& session, QTreeWidgetItem& item);
    QTreeWidgetItem* addFolder(const std::string& name);
    void addSession(const SessionInfo& session, QTreeWidgetItem* folder);
    /// Null if there is none.
    QTreeWidgetItem* itemWith(int role, const QString& value) const;
    void open(QTreeWidgetItem* item);
    void rename(QTreeWidgetItem* item);
    void renamed(QTreeWidgetItem* item);
    void move(const QString& session, const std::optional<std::string>& folder);
    void showMenu(const QPoint& position);
    void addSessionActions(QMenu& menu, QTreeWidgetItem* item);
    void addFolderActions(QMenu& menu, QTreeWidgetItem* item);
    void askForFolder();
    void askToDeleteSession(const QString& id);
    void askToDeleteFolder(const std::string& folder);
    void keepProjects(const std::vector<LockitProject>& loaded);
    void restoreProjects();
    void pickProject(const std::string& folder, QWidget* below);
    QString badgeOf(const std::string& folder);
    /// Runs a command; if it is refused, the reason is shown below the list.
    void run(std::string_view id, JSON arguments, Desktop::Done done = {});

    Desktop& desktop_;
    Tree* tree_;
    QLabel* howToOpen_; ///< below the sessions, where another one than the open one is selected
    QLabel* empty_;
    Remark* problem_;
    std::vector<UUID> order_;                    ///< of the sessions
    std::vector<std::string> shape_;             ///< the folders and sessions for which the rows were made
    std::optional<UUID> shownOpen_;              ///< the session that the rows show as open
    std::map<std::string, QPushButton*> badges_; ///< by folder name
    bool isFilling_ = false;
    bool isFillAsked_ = false;                    ///< the list was to be filled while a name was typed
    std::vector<LockitProject> projects_;         ///< as they were loaded last, in this run or an earlier one
    std::shared_ptr<LockitOAuthService> account_; ///< null until a folder has a project
    platform::Subscription observation_;
    platform::Subscription accountObservation_;
};

} // namespace orvane::views
