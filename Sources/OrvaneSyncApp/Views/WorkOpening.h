#pragma once

#include "OrvaneSyncApp/ViewModels/Results/ClipDecisions.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <optional>

namespace orvane::views {

class ScanningView;
class StartView;
class WorkBanner;
class WorkScreens;

/// What brings work into the window: folders that are scanned, projects, sessions, and what is dropped. The
/// results and the reasons for refusals are shown in the banner.
class WorkOpening : public QObject {
  public:
    /// All arguments outlive this object.
    WorkOpening(Desktop& desktop, WorkBanner& banner, WorkScreens& screens, StartView& start,
                ScanningView& scanning);

    /// Called when another page may have to be shown.
    std::function<void()> whenPageChanged;

    /// Sets the folders and scans them.
    void scanFolders(const QStringList& paths);
    /// `path`: a project's file, or the folder of a session that was saved elsewhere.
    void openProject(const QString& path);
    /// Opens one project, or folders. Anything else is reported, and nothing is scanned.
    void openPaths(const QStringList& paths);
    /// Opens a project, loads a report, or lists folders for the next scan.
    void drop(const QStringList& paths);
    /// What `drop` does with these paths.
    static QString dropText(const QStringList& paths);
    /// Opens the newest session as it was when the program ended. If it cannot be read, or if opening it
    /// ended the program the last time, the start page stays and says so.
    void openNewestSession();
    /// Stops the opening of the newest session. Folders that are named or dropped replace it.
    void stop();
    /// Scans the folders of the work. If one of them is not there, asks first, because its clips would leave
    /// the work.
    void startScan();
    /// Scans the folders of the work and this one.
    void addCard(const QString& path);
    /// While a scan runs, shows a message and returns true, because other folders would end the scan.
    bool refusesDuringScan();
    /// Shows the start page while work is open.
    void prepareScan();
    void leaveStart() { isStartWanted_ = false; }
    /// Whether the user asked for the start page while work is open.
    bool isStartWanted() const { return isStartWanted_; }
    /// True also while the folders are checked for being readable.
    bool isScanning() const;
    bool isOpeningNewest() const { return opening_.has_value(); }

  private:
    void sessionChanged();
    void beginScan();
    /// The clips, and what was decided about them, when a scan began.
    struct BeforeScan {
        ClipDecisions decisions;
        WorkFiles work;
        bool isMatchedAlike = false; ///< the scan matches by the same corrections
    };
    void scanEnded(const std::exception_ptr& raised, const BeforeScan& before);
    /// If the scanned folders are those of a stored session, offers to open it.
    void offerKnownSession();
    void openProjectFile(const QString& path);
    void openCopyOfSession(const QString& path);
    void loadReport(const QString& path);
    /// Lists the folders on the start page, where the user starts the scan.
    void showFolders(const QStringList& cards, std::function<void()> then = {});
    /// The same together with the folders that were dropped before.
    void addDropped(const QStringList& cards);
    /// Puts the folders with picture before those with sound, by their contents.
    void orderCards();
    bool isStartShown() const;

    Desktop& desktop_;
    WorkBanner& banner_;
    WorkScreens& screens_;
    StartView& start_;
    ScanningView& scanning_;
    std::optional<platform::Task> scan_;
    std::optional<platform::Task> opening_; ///< opens the newest session, at the start
    bool isCheckingCards_ = false;          ///< before a scan of open work
    bool isStartWanted_ = false;
    bool isDropped_ = false;     ///< folders were dropped since the last scan
    bool isLeavingScan_ = false; ///< because a session is opened instead
    platform::Subscription ofSessions_;
};

} // namespace orvane::views
