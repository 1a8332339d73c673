#pragma once

#include "OrvaneSyncApp/ViewModels/Results/ClipDecisions.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/ResultsView.h"

#include <QMainWindow>

#include <memory>
#include <optional>
#include <vector>

class QLabel;
class QSplitter;
class QStackedWidget;

namespace orvane::design {
class Banner;
}

namespace orvane::views {

class DropFrame;
class MainMenus;
class MulticamView;
class OutlineView;
class ReviewActions;
class ReviewKeys;
class ReviewView;
class ScanningView;
class SessionsPanel;
class StartView;
class WorkBar;

/// The window: the sessions at the left, and beside them the screen that fits the state of the work. Menus
/// and tools run commands of the table.
class MainWindow : public QMainWindow {
  public:
    explicit MainWindow(Desktop& desktop);
    ~MainWindow() override;

    /// Sets the folders and scans them.
    void scanFolders(const QStringList& paths);
    /// `path`: a project's file, or the folder of a session that was saved elsewhere.
    void openProject(const QString& path);
    /// Opens it as it was when the program ended. If it cannot be read, or if opening it ended the program
    /// the last time, the start page stays and says so.
    void openNewestSession();
    /// Opens one project, or folders. Anything else is reported, and nothing is scanned.
    void openPaths(const QStringList& paths);
    // The screens other than the first are made at the first request, so that the window appears sooner.
    ResultsView& results();
    ReviewView& review();
    /// Opens a clip at its clap.
    void openReview(const UUID& groupID);
    /// Opens the cameras side by side. Shows a message if there is only one.
    void openMulticam(const std::vector<UUID>& groupIDs);
    Desktop& desktop() { return desktop_; }
    /// True also while the folders are checked for being readable.
    bool isScanning() const;
    /// True while the newest session is read at the start.
    bool isOpeningNewest() const { return opening_.has_value(); }

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    MulticamView& multicam();
    void leavePlayers();
    void observe();
    void startScan();
    /// After a scan that removed decisions; offers to keep them or to undo the scan.
    void showLostBanner(const ClipDecisions& before, const SyncGroupList& clipsBefore);
    /// Gives the decisions of the clips before the scan to the clips of the scan.
    void keepDecisions(const ClipDecisions& before, const SyncGroupList& clipsBefore);
    /// Removes that message if the scan was undone.
    void forgetLostDecisions();
    /// Says how many clips were analysed with other settings than the present ones.
    void showOutdatedBanner();
    /// Shows what is wrong with the open session. If other clips were kept beside it, offers to explain how
    /// to see them.
    void showSessionProblem();
    /// If the scanned folders are those of a stored session, offers to open it.
    void offerKnownSession();
    /// While a scan runs, shows a message and returns true, because other folders would end the scan.
    bool refusesDuringScan();
    /// A message without an action. At the foot of the window while the banner offers to keep the decisions,
    /// which the user cannot call up again.
    void showNotice(design::Signal signal, const QString& what);
    /// For a message about the page and the clips in front: it is removed when these are left.
    void showPageBanner(design::Signal signal, const QString& what);
    /// Removes the banner if it still shows that text.
    void forget(QString& told);
    /// Removes messages about the earlier work after a session was opened.
    void leaveBannerOfOtherSession();
    void showOpenedBanner(const SessionInfo& session);
    void openProjectFile(const QString& path);
    void openCopyOfSession(const QString& path);
    /// Shows which parts of a project were not applied.
    void showProjectBanner();
    /// Folders that are named or dropped replace the session that is opened at the start.
    void stopOpening();
    /// Shows the start page while work is open.
    void prepareScan();
    /// Lists the folders on the start page, where the user starts the scan.
    void showFolders(const QStringList& cards, std::function<void()> then = {});
    /// The same together with the folders that were dropped before.
    void addDropped(const QStringList& cards);
    /// Puts the folders with picture before those with sound, by their contents.
    void orderCards();
    /// Shows which settings the folder of the opened session has changed.
    void showFolderSettingsBanner();
    /// Shows how many clips the loaded report has matched, with access to the rows that matched none.
    void showReportBanner();
    /// Makes this column the match setting, and applies the report to the clips again.
    void matchReportBy(const std::string& column);
    void showPage();
    /// Gives the keyboard to the screen in front; in the list, to its rows.
    void takeKeyboard();
    void showScreen(WorkScreen& screen);
    /// Back to the list, at the clip that was in view.
    void showResults();
    /// Escape: to the screen from which this one was opened.
    void goBack();
    /// Shows, beside a screen that opens with those clips, the clips that the list showed when it was left.
    void showListed(OutlineView& outline, const std::vector<UUID>& clips);
    void openSelected();
    void openCamerasOfSelected();
    /// The clips that menus and keys act on: the selection of the list, or the clip in view.
    std::vector<UUID> actedOn() const;
    void runForClips(std::string_view id);
    /// The resulting doubts are shown above the list.
    void listenToCards();
    /// Shows the result of the last sync with the metadata service.
    void showLockitBanner();
    /// After an analysis of several clips: shows what it could not read.
    void showAnalysisBanner();
    bool isPlayingScreen() const { return front_ != nullptr && front_->isPlaying(); }
    bool isInFront(const WorkScreen* screen) const { return screen != nullptr && front_ == screen; }
    /// The screen in front, otherwise the list.
    WorkScreen& shown() { return front_ != nullptr ? *front_ : results(); }
    void updateStatus();
    void updateActions();
    void restorePlaces();
    void keepOnScreen();

    Desktop& desktop_;
    SessionsPanel* sessions_;
    DropFrame* dropFrame_;
    StartView* start_;
    ScanningView* scanning_;
    ResultsView* results_ = nullptr;
    ReviewActions* reviewActions_;
    ReviewView* review_ = nullptr;
    MulticamView* multicam_ = nullptr;
    QStackedWidget* pages_;
    QSplitter* splitter_;
    design::Banner* banner_;
    QLabel* status_;
    WorkBar* work_;
    MainMenus* menus_;
    std::unique_ptr<ReviewKeys> keys_;
    WorkScreen* front_ = nullptr;                ///< the screen shown for open work; null: the list
    std::optional<ResultsView::Listing> listed_; ///< shown beside the screens that play
    std::optional<UUID> multicamFrom_;           ///< the clip whose review opened the cameras
    std::vector<UUID> multicamOfSelection_;      ///< the cameras last opened from the list
    bool isOpening_ = false;                     ///< one screen is being replaced by another
    bool areSessionsHidden_ = false;             ///< because a screen plays
    std::optional<UUID> sessionOfProject_;       ///< opened from the project's file, or last saved to it
    QString pageBanner_;                         ///< set by `showPageBanner`
    QString unsaved_;                            ///< the message that the session could not be saved
    QString lost_, outdated_;                    ///< set by `showLostBanner` and `showOutdatedBanner`
    std::optional<UUID> analysed_;               ///< first clip of the work when the last analysis began
    std::optional<platform::Task> scan_;
    std::optional<platform::Task> opening_; ///< opens the newest session, at the start
    bool isDropped_ = false;                ///< folders were dropped since the last scan
    bool wantsStart_ = false;               ///< the user asked for another scan while work is open
    platform::Subscription workObservation_;
    platform::Subscription sessionObservation_;
    platform::Subscription settingsObservation_;
    platform::Subscription reviewObservation_;
    platform::Subscription multicamObservation_;
    bool isUpdateScheduled_ = false;
    bool isLeavingScan_ = false; ///< because a session is opened instead
    bool wasAnalysing_ = false;
    int analysedClips_ = 0; ///< of the largest running analysis
};

} // namespace orvane::views
