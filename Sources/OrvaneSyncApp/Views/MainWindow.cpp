#include "OrvaneSyncApp/Views/MainWindow.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/ViewModels/Results/ListeningTexts.h"
#include "OrvaneSyncApp/Views/DropFrame.h"
#include "OrvaneSyncApp/Views/Inspector/OutlineView.h"
#include "OrvaneSyncApp/Views/Leaving.h"
#include "OrvaneSyncApp/Views/MainMenus.h"
#include "OrvaneSyncApp/Views/MatchAgain.h"
#include "OrvaneSyncApp/Views/RecentPlaces.h"
#include "OrvaneSyncApp/Views/ResultsView.h"
#include "OrvaneSyncApp/Views/Review/KeyOverlay.h"
#include "OrvaneSyncApp/Views/Review/MulticamView.h"
#include "OrvaneSyncApp/Views/Review/ReviewActions.h"
#include "OrvaneSyncApp/Views/Review/ReviewKeys.h"
#include "OrvaneSyncApp/Views/Review/ReviewView.h"
#include "OrvaneSyncApp/Views/ScanningView.h"
#include "OrvaneSyncApp/Views/SessionsPanel.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/StartView.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncApp/Views/WorkBar.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>

namespace orvane::views {

using namespace design;

namespace {

constexpr QSize smallest{1024, 640};
constexpr QSize usualWindow{1440, 800};
constexpr QSize windowFrame{0, 40}; // of the window manager's frame
constexpr int sessionsWidth = 230;

} // namespace

MainWindow::MainWindow(Desktop& desktop) : desktop_(desktop) {
    setWindowTitle(QStringLiteral("OrvaneSync"));
    setMinimumSize(smallest);
    resize(usualWindow.boundedTo(screen()->availableGeometry().size() - windowFrame).expandedTo(smallest));
    setAcceptDrops(true);

    auto* centre = new QWidget;
    auto* column = new QVBoxLayout(centre);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(banner_ = new Banner);
    pages_ = new QStackedWidget;
    pages_->addWidget(start_ = new StartView(
                          desktop, [this] { startScan(); },
                          [this] {
                              wantsStart_ = false;
                              showPage();
                              updateActions();
                          }));
    pages_->addWidget(scanning_ = new ScanningView(desktop));
    reviewActions_ = new ReviewActions(desktop, this);
    column->addWidget(pages_, 1);
    splitter_ = new QSplitter;
    splitter_->addWidget(sessions_ = new SessionsPanel(desktop));
    sessions_->whenOpenWorkIsWanted = [this] {
        wantsStart_ = false;
        showResults();
        showPage();
        updateActions();
        takeKeyboard();
    };
    splitter_->addWidget(centre);
    splitter_->setStretchFactor(1, 1);
    splitter_->setChildrenCollapsible(false);
    splitter_->setSizes({sessionsWidth, usualWindow.width() - sessionsWidth});
    setCentralWidget(splitter_);
    dropFrame_ = new DropFrame(this);
    // The help text of a menu entry covers it while the entry is marked.
    statusBar()->addWidget(status_ = design::facts({}));
    status_->setWordWrap(false);
    status_->setContentsMargins(space::tight, 0, 0, 0);
    statusBar()->addPermanentWidget(work_ = new WorkBar(desktop));
    work_->whenChanged = [this] { updateActions(); };

    MainMenus::Screens screens;
    screens.clips = [this] { return actedOn(); };
    screens.runForClips = [this](std::string_view id) { runForClips(id); };
    screens.renameClip = [this] {
        const auto clips = actedOn();
        if (clips.size() == 1)
            results().rename(clips.front());
        else if (!clips.empty())
            showBatchRenamer(desktop_, this, clips);
    };
    screens.openReview = [this] { openSelected(); };
    screens.openMulticam = [this] { openCamerasOfSelected(); };
    screens.showResults = [this] { showResults(); };
    screens.newScan = [this] { prepareScan(); };
    screens.showIntroduction = [this] {
        prepareScan();
        start_->showWelcome();
    };
    screens.leaveStart = [this] { wantsStart_ = false; };
    screens.isListening = [this] { return desktop_.controller().derivedDoubts().listening().has_value(); };
    screens.find = [this] {
        QLineEdit* field = shown().search();
        field->setFocus(Qt::ShortcutFocusReason);
        field->selectAll();
    };
    screens.showFilter = [this](int choice) {
        showResults();
        results().showFilter(choice);
    };
    screens.isPlaying = [this] { return isPlayingScreen(); };
    screens.showKeys = [this] {
        if (KeyOverlay* keys = shown().keyOverlay()) keys->open();
    };
    screens.openProject = [this](const QString& path) { openProject(path); };
    screens.tell = [this](const QString& what) { showPageBanner(Signal::none, what); };
    screens.openPaths = [this](const QStringList& paths) { openPaths(paths); };
    screens.takeKeyboard = [this] { takeKeyboard(); };
    screens.listenToCards = [this] { listenToCards(); };
    screens.syncLockitNetwork = [this] {
        work_->run("syncLockitNetwork", tr("LockitNetwork is asked about the clips…"));
    };
    screens.sessions = sessions_;
    menus_ = new MainMenus(desktop_, *this, *reviewActions_, std::move(screens));
    ReviewKeys::Screens playing;
    playing.isInFront = [this] {
        const KeyOverlay* keys = isPlayingScreen() ? front_->keyOverlay() : nullptr;
        return isPlayingScreen() && !(keys != nullptr && keys->isVisible());
    };
    playing.handleFullscreen = [this](const KeyEvent& event) { return shown().handleFullscreen(event); };
    playing.hear = [this](std::size_t camera) { return shown().hear(camera); };
    playing.leave = [this] { goBack(); };
    playing.takeKeyboard = [this] { takeKeyboard(); };
    keys_ = std::make_unique<ReviewKeys>(desktop_, *this, std::move(playing));
    observe();
    reviewActions_->setInFront(false, false);
    restorePlaces();
    showPage();
    updateActions();
    updateStatus();
    if (pages_->currentWidget() == start_) start_->setFocus(); // so that a folder can be typed at once
}

void MainWindow::observe() {
    desktop_.whenRefused = [this](const QString& why) { showPageBanner(Signal::missing, why); };
    desktop_.showBriefly = [this](const QString& why) {
        showToast(this, why);
        // A message beside a change tells what a key did.
        if (!isUpdateScheduled_) menus_->noteRefusedKey();
    };
    desktop_.whenScanWanted = [this] {
        if (desktop_.isEnabled("startScan")) startScan();
    };
    workObservation_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::progress) return;
        if (field == ImportField::project) sessionOfProject_ = desktop_.sessions().currentSessionId();
        if (field == ImportField::lockit) showLockitBanner();
        if (field == ImportField::report) showReportBanner();
        if (field == ImportField::smartAudio) showAnalysisBanner();
        if (field == ImportField::undoState) forgetLostDecisions();
        // Many fields change together; the window is updated once, after all have changed.
        if (std::exchange(isUpdateScheduled_, true)) return;
        QMetaObject::invokeMethod(
            this,
            [this] {
                isUpdateScheduled_ = false;
                showPage();
                updateActions();
                updateStatus();
            },
            Qt::QueuedConnection);
    });
    sessionObservation_ = desktop_.sessions().onChange([this](SessionField field) {
        if (field == SessionField::problem) showSessionProblem();
        if (field == SessionField::lastSaveError && desktop_.sessions().lastSaveError())
            banner_->show(Signal::missing,
                          unsaved_ =
                              tr("The session could not be saved: %1. It is tried again every 5 seconds.")
                                  .arg(whyNotSaved(*desktop_.sessions().lastSaveError())));
        if (field == SessionField::lastSaveError && !desktop_.sessions().lastSaveError()) forget(unsaved_);
        if (field == SessionField::settingsOfFolder) showFolderSettingsBanner();
        // The user had asked for the start page of another session.
        if (field == SessionField::currentSessionId) {
            wantsStart_ = false;
            leaveBannerOfOtherSession();
            if (results_ != nullptr) results_->restoreListing(); // the work has its clips already
        }
        updateStatus();
    });
    settingsObservation_ = desktop_.settings().onChange(
        [self = QPointer(this), main = desktop_.mainThread()](const std::string& key) {
            if (key.starts_with("smartAudio."))
                main->post([self] {
                    if (self) self->showOutdatedBanner();
                });
        });
    // If a clip is removed from the work, its screen is closed.
    reviewObservation_ = desktop_.players().review()->onChange([this] {
        if (isInFront(review_) && !isOpening_ && !review_->clip()) showResults();
    });
    multicamObservation_ = desktop_.players().multicam()->bag().onChange([this] {
        if (isInFront(multicam_) && !desktop_.players().multicam()->isOpen()) showResults();
    });
}

MainWindow::~MainWindow() {
    desktop_.whenRefused = desktop_.showBriefly = nullptr;
    desktop_.whenScanWanted = nullptr;
    front_ = nullptr;
    leavePlayers();
}

ResultsView& MainWindow::results() {
    if (results_ != nullptr) return *results_;
    pages_->addWidget(results_ = new ResultsView(desktop_));
    results_->restorePlaces();
    results_->whenSelectionChanged = [this] {
        forget(pageBanner_);
        updateActions();
        updateStatus();
    };
    results_->openMulticam = [this] { openCamerasOfSelected(); };
    // The review takes keys only after the key press that opens a clip has ended, because Return has another
    // meaning there.
    connect(
        results_->table(), &QTableView::activated, this, [this] { openSelected(); }, Qt::QueuedConnection);
    return *results_;
}

ReviewView& MainWindow::review() {
    if (review_ == nullptr) {
        pages_->addWidget(review_ = new ReviewView(desktop_, *reviewActions_, [this] { showResults(); }));
        review_->openTake = [this](const std::vector<UUID>& cameras) { openMulticam(cameras); };
        review_->whenMoved = [this] {
            forget(pageBanner_);
            updateActions();
            // Saved here too, so that it is restored even if the program is ended from outside.
            if (results_ != nullptr) results_->saveListing(review_->clip());
        };
        review_->outline().whenAllWanted = [this] { listed_.reset(); };
    }
    return *review_;
}

MulticamView& MainWindow::multicam() {
    if (multicam_ == nullptr) {
        pages_->addWidget(multicam_ = new MulticamView(
                              desktop_, *reviewActions_, [this] { showResults(); },
                              [this](const UUID& clip) { openReview(clip); }));
        multicam_->openTake = [this](const std::vector<UUID>& cameras) { openMulticam(cameras); };
        multicam_->outline().whenAllWanted = [this] { listed_.reset(); };
    }
    return *multicam_;
}

void MainWindow::leavePlayers() {
    if (review_ != nullptr) review_->leave();
    if (multicam_ != nullptr) multicam_->leave();
}

void MainWindow::openReview(const UUID& groupID) {
    if (desktop_.controller().work().syncGroups().find(groupID) == nullptr) return;
    if (!isInFront(&review())) showListed(review().outline(), {groupID});
    showScreen(review());
    review().open(groupID);
}

void MainWindow::openMulticam(const std::vector<UUID>& groupIDs) {
    if (groupIDs.size() < 2)
        return showPageBanner(
            Signal::doubtful,
            tr("The take has one camera. Select several clips to see them beside each other."));
    // Escape returns to the clip from which the cameras were opened.
    const std::optional<UUID> from = isInFront(review_)     ? review_->clip()
                                     : isInFront(multicam_) ? multicamFrom_
                                                            : std::nullopt;
    if (!isInFront(&multicam())) showListed(multicam().outline(), groupIDs);
    isOpening_ = true;
    multicam().open(groupIDs);
    isOpening_ = false;
    if (!desktop_.players().multicam()->isOpen()) return;
    multicamFrom_ = from;
    if (!isPlayingScreen()) multicamOfSelection_ = desktop_.players().multicam()->members();
    showScreen(multicam());
}

void MainWindow::showListed(OutlineView& outline, const std::vector<UUID>& clips) {
    if (!isPlayingScreen()) {
        listed_ = results().listing();
        const auto isListed = [this](const UUID& clip) {
            return std::ranges::find(listed_->clips, clip) != listed_->clips.end();
        };
        // A clip that was opened from elsewhere does not belong to the list.
        if (listed_ && !std::ranges::any_of(clips, isListed)) listed_.reset();
    }
    outline.showOnly(listed_ ? std::optional(listed_->clips) : std::nullopt,
                     listed_ ? listed_->title : QString());
}

void MainWindow::goBack() {
    const bool isFromClip = isInFront(multicam_) && multicamFrom_ &&
                            desktop_.controller().work().syncGroups().find(*multicamFrom_) != nullptr;
    isFromClip ? openReview(*multicamFrom_) : showResults();
}

void MainWindow::openSelected() {
    if (const auto clips = actedOn(); !clips.empty()) openReview(clips.front());
}

void MainWindow::openCamerasOfSelected() {
    openMulticam(MulticamViewModel::camerasFor(desktop_.controller().work(), actedOn()));
}

std::vector<UUID> MainWindow::actedOn() const {
    if (isPlayingScreen()) return front_->clips();
    return pages_->currentWidget() == results_ ? results_->selectedClips() : std::vector<UUID>();
}

void MainWindow::runForClips(std::string_view id) {
    if (!isPlayingScreen()) return results().runForSelection(id);
    if (id == "resyncClip") return matchAgain(desktop_, this, actedOn());
    desktop_.runForClips(id, actedOn());
}

void MainWindow::listenToCards() {
    banner_->clear();
    showResults();
    work_->run("diagnose", tr("The cards are listened to…"), [this] {
        // The results are used in the doubts that are derived after this.
        desktop_.controller().derivedDoubts().derive().whenDone(
            [self = QPointer(this)](const std::exception_ptr&) {
                if (!self) return;
                const ImportController& controller = self->desktop_.controller();
                const bool isInDoubt = !controller.doubts().summary(controller.work().syncGroups()).empty();
                const auto& listened = controller.derivedDoubts().listened();
                self->banner_->show(Signal::none, translatedSentence(heardText(listened, isInDoubt)));
            });
    });
    updateActions();
}

void MainWindow::showLockitBanner() {
    using SyncEnd = LockitController::SyncEnd;
    const LockitController& lockit = desktop_.controller().lockit();
    const auto& status = lockit.lockitSyncStatus();
    if (!status || lockit.isSyncingLockit()) return;
    const SyncEnd end = lockit.lastSyncEnd();
    const bool isWithoutFolder =
        *status == LockitController::noProject && !desktop_.sessions().places().folderOfOpenSession();
    showNotice(end == SyncEnd::failed      ? Signal::missing
               : end == SyncEnd::noMatches ? Signal::doubtful
                                           : Signal::none,
               isWithoutFolder
                   ? tr("A LockitNetwork project belongs to a folder of sessions, and this session is in "
                        "none. Move it into a folder by its menu in the side bar, then choose the "
                        "project by “Lockit” beside the folder's name.")
                   : translatedSentence(*status));
}

void MainWindow::showPageBanner(Signal signal, const QString& what) {
    showNotice(signal, pageBanner_ = what);
}

void MainWindow::forget(QString& told) {
    if (!told.isEmpty() && banner_->text() == told) banner_->clear();
    told.clear();
}

void MainWindow::showScreen(WorkScreen& screen) {
    if (&screen == &shown()) return;
    front_ = &screen;
    // A message about the earlier screen that requires no action is removed, so that this screen has its
    // room.
    if (banner_->signal() == Signal::none) banner_->clear();
    // A screen that plays needs the room; the list shows the sessions again.
    if (isPlayingScreen() && sessions_->isVisible()) {
        areSessionsHidden_ = true;
        sessions_->hide();
    } else if (!isPlayingScreen() && std::exchange(areSessionsHidden_, false)) {
        sessions_->show();
    }
    reviewActions_->setInFront(isPlayingScreen(), isInFront(review_));
    showPage();
    updateActions();
}

void MainWindow::showResults() {
    if (!isPlayingScreen()) return;
    const std::vector<UUID> seen = front_->seen();
    // If the cameras were opened from a selection, the selection is not changed.
    const bool isOfSelection = isInFront(multicam_) && !multicamFrom_ && seen == multicamOfSelection_;
    showScreen(results());
    leavePlayers();
    if (!isOfSelection) results().select(seen);
}

bool MainWindow::isScanning() const { return scan_ || start_->isAboutToScan(); }

void MainWindow::startScan() {
    wantsStart_ = false;
    isDropped_ = false;
    banner_->clear();
    scanning_->begin();
    const bool isOther = desktop_.controller().work().syncGroups().empty();
    JSON arguments = JSON::object();
    arguments.set("ofOtherWork", isOther);
    // The command ends after the analysis; the screen follows the scan, and shows its result.
    desktop_.run("startScan", std::move(arguments), {}, [](const QString&) {});
    scan_ = desktop_.controller().scan().lastScan();
    isLeavingScan_ = false;
    if (isOther) offerKnownSession();
    const ClipDecisions before = ClipDecisions::of(desktop_.controller());
    const SyncGroupList clipsBefore = desktop_.controller().work().syncGroups();
    scan_->whenDone([this, before, clipsBefore](const std::exception_ptr& raised) {
        scan_.reset();
        try {
            if (raised) std::rethrow_exception(raised);
            desktop_.sessions().beginSessionOfOpenWork(desktop_.controller());
            QStringList scanned;
            for (const FileURL& folder : desktop_.controller().work().folders()) scanned << text(folder.path);
            RecentPlaces::add(scanned);
            if (const auto lost = before.without(ClipDecisions::of(desktop_.controller())); lost.any())
                showLostBanner(before, clipsBefore);
        } catch (const std::exception& why) {
            banner_->show(Signal::missing, translatedSentence(why.what()));
        } catch (const platform::Stopped&) {
            if (!isLeavingScan_) banner_->show(Signal::none, tr("The scan was cancelled; all is as it was."));
        }
        showPage();
    });
    showPage();
    // Uses the time in which the files are read to make the list.
    QMetaObject::invokeMethod(
        this, [this] { results(); }, Qt::QueuedConnection);
}

void MainWindow::showPage() {
    const ImportController& controller = desktop_.controller();
    const ScanState state = controller.scan().scanState();
    const bool isScanning = state != ScanState::idle && state != ScanState::done;
    const bool hasWork = !controller.work().syncGroups().empty() || !controller.work().wildTracks().empty();
    QWidget* page = start_;
    if (isScanning)
        page = scanning_;
    else if (!wantsStart_ && (hasWork || state == ScanState::done))
        page = &shown();
    if (isPlayingScreen() && page != front_) return showResults();
    if (pages_->currentWidget() == page) return;
    forget(pageBanner_);
    // When the banner appears or disappears, neither the rows of the list under the pointer nor the timeline
    // at the bottom of a review may move.
    auto* column = static_cast<QBoxLayout*>(banner_->parentWidget()->layout());
    column->removeWidget(banner_);
    column->insertWidget(page == results_ ? 1 : 0, banner_);
    pages_->setCurrentWidget(page);
    takeKeyboard();
    if (page == results_ && results_->selectedClips().empty())
        results_->table()->selectRow(0); // Return then opens it
}

void MainWindow::takeKeyboard() {
    auto* screen = dynamic_cast<WorkScreen*>(pages_->currentWidget());
    (screen != nullptr ? screen->keyboard() : pages_->currentWidget())->setFocus();
}

void MainWindow::updateActions() { menus_->update(); }

void MainWindow::updateStatus() {
    const OpenWork& work = desktop_.controller().work();
    QString sentence;
    if (!work.syncGroups().empty()) {
        // As an export counts them, so that the two numbers can be compared.
        const WorkState::Counts& all = work.counts();
        sentence = tr("%1: %2 with sound, %3 MOS, %4 not matched")
                       .arg(translatedSentence(counted(work.syncGroups().size(), "clip", "clips")))
                       .arg(all.withSound - all.excludedWithSound)
                       .arg(all.withoutSound - all.excludedWithoutSound)
                       .arg(work.unmatchedCount());
        if (const int excluded = all.excludedWithSound + all.excludedWithoutSound; excluded > 0)
            sentence += tr(", %1 excluded").arg(excluded);
    }
    if (pages_->currentWidget() == results_ && !sentence.isEmpty())
        sentence += QStringLiteral(" · ") + tr("Double click or Return opens a clip");
    if (const std::size_t selected = isPlayingScreen() ? 0 : actedOn().size(); selected > 1)
        sentence = tr("%1 selected").arg(selected) + QStringLiteral(" · ") + sentence;
    status_->setText(sentence);
    const auto& id = desktop_.sessions().currentSessionId();
    const SessionInfo* session = id ? desktop_.sessions().session(*id) : nullptr;
    QString title = session != nullptr ? text(session->name) : QString();
    if (const auto& project = desktop_.controller().project().currentURL();
        project && session != nullptr && id == sessionOfProject_) {
        const QFileInfo file(text(project->path));
        title = title.isEmpty() || title == file.completeBaseName()
                    ? file.fileName()
                    : tr("%1 (%2)").arg(title, file.fileName());
    }
    setWindowTitle(title.isEmpty() ? QStringLiteral("OrvaneSync") : tr("%1 – OrvaneSync").arg(title));
}

void MainWindow::restorePlaces() {
    restoreGeometry(design::keptState::value(QStringLiteral("window")).toByteArray());
    keepOnScreen();
    splitter_->restoreState(design::keptState::value(QStringLiteral("sessions")).toByteArray());
}

/// The screen that the window was on may have changed or may be disconnected.
void MainWindow::keepOnScreen() {
    const QScreen* on = QGuiApplication::screenAt(geometry().center());
    const QRect room = (on != nullptr ? on : screen())->availableGeometry();
    if (isMaximized() || isFullScreen()) return;
    QRect own = geometry(); // without the window manager's frame, as it is restored
    own.setSize(own.size().boundedTo(room.size() - windowFrame).expandedTo(smallest));
    own.moveLeft(std::max(room.left(), std::min(own.left(), room.right() + 1 - own.width())));
    own.moveTop(std::max(room.top(), std::min(own.top(), room.bottom() + 1 - own.height())));
    if (own != geometry()) setGeometry(own);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    showResults(); // a fullscreen picture would keep the program running
    stopOpening();
    design::keptState::set(QStringLiteral("window"), saveGeometry());
    design::keptState::set(QStringLiteral("sessions"), splitter_->saveState());
    if (review_ != nullptr) review_->savePlaces();
    if (results_ != nullptr) {
        results_->savePlaces();
        results_->saveListing();
    }
    event->accept();
}

} // namespace orvane::views
