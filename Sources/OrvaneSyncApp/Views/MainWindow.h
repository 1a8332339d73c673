#pragma once

#include "OrvaneSyncApp/Views/WorkOpening.h"
#include "OrvaneSyncApp/Views/WorkScreens.h"

#include <QMainWindow>
#include <QString>

#include <memory>
#include <optional>
#include <tuple>
#include <vector>

class QLabel;
class QSplitter;

namespace orvane::views {

class MainMenus;
class ReviewKeys;
class ReviewView;
class SessionsPanel;
class WorkBanner;
class WorkBar;

/// The window: the sessions at the left, and beside them the page that fits the state of the work: the start
/// page, the progress of a scan, or the screen in front (`WorkScreens`) below the messages (`WorkBanner`).
/// Menus and tools run commands of the table.
class MainWindow : public QMainWindow {
  public:
    explicit MainWindow(Desktop& desktop);
    ~MainWindow() override;

    Desktop& desktop() { return desktop_; }
    void scanFolders(const QStringList& paths) { opening_->scanFolders(paths); }
    void addCard(const QString& path) { opening_->addCard(path); }
    void openProject(const QString& path) { opening_->openProject(path); }
    void openNewestSession() { opening_->openNewestSession(); }
    void openPaths(const QStringList& paths) { opening_->openPaths(paths); }
    bool isScanning() const { return opening_->isScanning(); }
    bool isOpeningNewest() const { return opening_->isOpeningNewest(); }
    ResultsView& results() { return screens_->list(); }
    ReviewView& review();
    void openReview(const UUID& groupID) { screens_->openReview(groupID); }
    void openMulticam(const std::vector<UUID>& groupIDs) { screens_->openMulticam(groupIDs); }

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void makeParts();
    void connectParts();
    void makeKeys();
    void observe();
    /// Shows the page that fits the state of the work.
    void showPage();
    void placeBanner(QWidget& page);
    void frontChanged();
    /// Shows the open work, if the start page is in front of it.
    void showWork();
    /// Gives the keyboard to the screen in front; in the list, to its rows.
    void takeKeyboard();
    void updateStatus();
    /// What a brief message may describe: the clips in front, and whether each is locked and has sound.
    using BriefState = std::vector<std::tuple<UUID, bool, bool>>;
    BriefState briefState() const;
    /// Hides a brief message about a state that has changed.
    void hideBriefIfPast();
    void updateTitle();
    void updateActions();
    void restorePlaces();
    void keepOnScreen();

    Desktop& desktop_;
    QSplitter* splitter_;
    SessionsPanel* sessions_;
    WorkBanner* banner_;
    QStackedWidget* pages_;
    StartView* start_;
    ScanningView* scanning_;
    QLabel* status_;
    WorkBar* work_;
    ReviewActions* reviewActions_;
    MainMenus* menus_;
    std::unique_ptr<WorkScreens> screens_;
    std::unique_ptr<WorkOpening> opening_;
    std::unique_ptr<ReviewKeys> keys_;
    QString brief_;                        ///< the last brief message
    BriefState briefState_;                ///< when it was shown
    bool areSessionsHidden_ = false;       ///< because a screen plays
    bool isUpdateScheduled_ = false;       ///< the update after changes of the work
    std::optional<UUID> sessionOfProject_; ///< opened from the project's file, or last saved to it
    platform::Subscription ofWork_, ofSessions_;
};

} // namespace orvane::views
