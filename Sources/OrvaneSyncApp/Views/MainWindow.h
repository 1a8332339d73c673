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

/// The window: sessions at the left, beside them the screen that the state of the work asks for. Menus and
/// tools run commands of the table.
class MainWindow : public QMainWindow {
  public:
    explicit MainWindow(Desktop& desktop);
    ~MainWindow() override;

    /// Sets the folders and scans them.
    void scanFolders(const QStringList& paths);
    void openProject(const QString& path);
    /// As it was left. Where it cannot be read, or its opening ended the program the last time, the start
    /// page stays and says so.
    void openNewestSession();
    /// One project, or folders. Anything else is reported, and nothing is scanned.
    void openPaths(const QStringList& paths);
    // The screens behind the first one are made when they are first asked for: the window is there sooner.
    ResultsView& results();
    ReviewView& review();
    /// Opens a clip on its clap.
    void openReview(const UUID& groupID);
    /// Opens the cameras beside each other. Says so where there are not several.
    void openMulticam(const std::vector<UUID>& groupIDs);
    Desktop& desktop() { return desktop_; }
    /// Also while it is looked at whether the folders can be read.
    bool isScanning() const;
    /// While the newest session is read at the start.
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
    /// After a scan that took decisions away, with the way back.
    void showLostBanner(const ClipDecisions& lost);
    /// Where the folders that are scanned are those of a session.
    void offerKnownSession();
    /// Says so where a scan runs, which other folders would end.
    bool refusesDuringScan();
    /// What the page and the clips in front are about: it goes when these are left.
    void showPageBanner(design::Signal signal, const QString& what);
    /// Takes the banner away where it still says that.
    void forget(QString& told);
    /// Where a session was opened, what was said of the work before goes.
    void leaveBannerOfOtherSession();
    void showOpenedBanner(const SessionInfo& session);
    /// What a project does not bring.
    void showProjectBanner();
    /// What is named or dropped takes the place of the session that the start opens.
    void stopOpening();
    /// The start page over open work.
    void prepareScan();
    /// On the start screen, to be scanned from there.
    void showFolders(const QStringList& cards, std::function<void()> then = {});
    /// The same with those that were dropped before.
    void addDropped(const QStringList& cards);
    /// Puts those of the picture before those of the sound, by what they hold.
    void orderCards();
    /// Of the session that was opened: which settings its folder has changed.
    void showFolderSettingsBanner();
    /// How many clips the report that was loaded has found, with the way to what it has not.
    void showReportBanner();
    void showPage();
    /// To the screen in front; of the list its rows have it.
    void takeKeyboard();
    void showScreen(WorkScreen& screen);
    /// Back to the list, on the clip that was in view.
    void showResults();
    /// Escape: to the screen that this one was opened from.
    void goBack();
    /// The clips beside a screen that opens with those: what the list showed when it was left.
    void showListed(OutlineView& outline, const std::vector<UUID>& clips);
    void openSelected();
    void openCamerasOfSelected();
    /// What menus and keys act on: the selection of the list, or the clip in view.
    std::vector<UUID> actedOn() const;
    void runForClips(std::string_view id);
    /// Doubts that come of it stand above the list.
    void listenToCards();
    /// What came of the last sync with the metadata service.
    void showLockitBanner();
    /// When an analysis of several clips has ended: what it could not hear.
    void showAnalysisBanner();
    bool isPlayingScreen() const { return front_ != nullptr && front_->isPlaying(); }
    bool isInFront(const WorkScreen* screen) const { return screen != nullptr && front_ == screen; }
    /// The list, unless another screen is in front.
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
    WorkScreen* front_ = nullptr;                ///< that is shown of work that is there; null: the list
    std::optional<ResultsView::Listing> listed_; ///< beside the screens that play
    std::optional<UUID> multicamFrom_;           ///< the clip whose review opened the cameras
    std::vector<UUID> multicamOfSelection_;      ///< the cameras last opened from the list
    bool isOpening_ = false;                     ///< one screen gives way to another
    bool areSessionsHidden_ = false;             ///< by a screen that plays
    std::optional<UUID> sessionOfProject_; ///< that was opened from the project's file, or last saved to it
    QString pageBanner_;                   ///< as `showPageBanner`
    QString unsaved_;                      ///< that the session could not be saved
    std::optional<platform::Task> scan_;
    std::optional<platform::Task> opening_; ///< of the newest session, at the start
    bool isDropped_ = false;                ///< folders were, since the last scan
    bool wantsStart_ = false;               ///< the user asked for another scan over open work
    platform::Subscription workObservation_;
    platform::Subscription sessionObservation_;
    platform::Subscription reviewObservation_;
    platform::Subscription multicamObservation_;
    bool isUpdateScheduled_ = false;
    bool isLeavingScan_ = false; ///< for a session that is opened in its place
    bool wasAnalysing_ = false;
    int analysedClips_ = 0; ///< of the largest analysis under way
};

} // namespace orvane::views
