#include "OrvaneSyncApp/Views/MainWindow.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Views/Asking.h"
#include "OrvaneSyncApp/Views/DropFrame.h"
#include "OrvaneSyncApp/Views/Leaving.h"
#include "OrvaneSyncApp/Views/MainMenus.h"
#include "OrvaneSyncApp/Views/Review/KeyOverlay.h"
#include "OrvaneSyncApp/Views/Review/ReviewActions.h"
#include "OrvaneSyncApp/Views/Review/ReviewKeys.h"
#include "OrvaneSyncApp/Views/Review/ReviewView.h"
#include "OrvaneSyncApp/Views/ScanningView.h"
#include "OrvaneSyncApp/Views/SessionsPanel.h"
#include "OrvaneSyncApp/Views/StartView.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncApp/Views/WorkBanner.h"
#include "OrvaneSyncApp/Views/WorkBar.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

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
    makeParts();
    connectParts();
    menus_ = new MainMenus(
        desktop_, *this, *reviewActions_,
        {*screens_, *opening_, *banner_, *work_, *start_, *sessions_, [this] { takeKeyboard(); }});
    makeKeys();
    observe();
    reviewActions_->setInFront(false, false);
    restorePlaces();
    showPage();
    updateActions();
    updateStatus();
    if (pages_->currentWidget() == start_) start_->setFocus(); // so that a folder can be typed at once
}

void MainWindow::makeParts() {
    auto* centre = new QWidget;
    auto* column = new QVBoxLayout(centre);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(banner_ = new WorkBanner(desktop_));
    // A long message in a screen that plays must not widen the column of the picture.
    banner_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    pages_ = new QStackedWidget;
    pages_->addWidget(start_ = new StartView(
                          desktop_, [this] { opening_->startScan(); },
                          [this] {
                              opening_->leaveStart();
                              showPage();
                              updateActions();
                          }));
    pages_->addWidget(scanning_ = new ScanningView(desktop_));
    reviewActions_ = new ReviewActions(desktop_, this);
    column->addWidget(pages_, 1);
    splitter_ = new QSplitter;
    splitter_->addWidget(sessions_ = new SessionsPanel(desktop_));
    splitter_->addWidget(centre);
    splitter_->setStretchFactor(1, 1);
    splitter_->setChildrenCollapsible(false);
    splitter_->setSizes({sessionsWidth, usualWindow.width() - sessionsWidth});
    setCentralWidget(splitter_);
    // The help text of a menu entry covers it while the entry is marked.
    statusBar()->addWidget(status_ = design::facts({}));
    status_->setWordWrap(false);
    status_->setContentsMargins(space::tight, 0, 0, 0);
    statusBar()->addPermanentWidget(work_ = new WorkBar(desktop_));
    screens_ = std::make_unique<WorkScreens>(desktop_, *pages_, *reviewActions_);
    opening_ = std::make_unique<WorkOpening>(desktop_, *banner_, *screens_, *start_, *scanning_);
}

void MainWindow::connectParts() {
    auto* dropped = new DropFrame(this);
    dropped->describe = WorkOpening::dropText;
    dropped->drop = [this](const QStringList& paths) { opening_->drop(paths); };
    sessions_->whenOpenWorkIsWanted = [this] { showWork(); };
    work_->whenChanged = [this] { updateActions(); };
    screens_->whenFrontChanged = [this] { frontChanged(); };
    screens_->whenClipsChanged = [this] {
        banner_->leavePage();
        hideBriefIfPast();
        updateActions();
        updateStatus();
    };
    screens_->whenRefused = [this](const QString& why) { banner_->showOfPage(Signal::doubtful, why); };
    opening_->whenPageChanged = [this] {
        showPage();
        updateActions();
    };
}

void MainWindow::makeKeys() {
    ReviewKeys::Screens playing;
    playing.isInFront = [this] {
        if (!screens_->isPlaying()) return false;
        const KeyOverlay* keys = screens_->front().keyOverlay();
        return keys == nullptr || !keys->isVisible();
    };
    playing.handleFullscreen = [this](const KeyEvent& event) {
        return screens_->front().handleFullscreen(event);
    };
    playing.hear = [this](std::size_t camera) { return screens_->front().hear(camera); };
    playing.leave = [this] { screens_->goBack(); };
    playing.takeKeyboard = [this] { takeKeyboard(); };
    keys_ = std::make_unique<ReviewKeys>(desktop_, *this, std::move(playing));
}

void MainWindow::observe() {
    desktop_.whenRefused = [this](const QString& why) { banner_->showOfPage(Signal::missing, why); };
    desktop_.agreesToLeave = [this](const commands::UnsavedWork& unsaved) {
        return isAgreed(this, tr("The session “%1” could not be saved").arg(text(unsaved.session())),
                        tr("Its last change is not on the disk: %1. If you leave the session, the change is "
                           "kept until you quit, and saving is tried again every 5 seconds.")
                            .arg(whyNotSaved(unsaved.failure())),
                        tr("Leave It"), tr("Keep Working"));
    };
    desktop_.showBriefly = [this](const QString& why) {
        showToast(this, brief_ = why);
        briefState_ = briefState();
        if (why.isEmpty()) return; // only the text before was to be removed
        // A message beside a change tells what a key did.
        if (!isUpdateScheduled_) menus_->noteRefusedKey();
    };
    desktop_.whenScanWanted = [this] {
        if (desktop_.isEnabled("startScan")) opening_->startScan();
    };
    desktop_.whenFoldersWanted = [this] { opening_->prepareScan(); };
    ofWork_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::progress || field == ImportField::smartAudioProgress) return;
        if (field == ImportField::project) sessionOfProject_ = desktop_.sessions().currentSessionId();
        if (field == ImportField::syncGroups) hideBriefIfPast();
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
    ofSessions_ = desktop_.sessions().onChange([this](SessionField) { updateStatus(); });
}

MainWindow::~MainWindow() {
    desktop_.whenRefused = desktop_.showBriefly = nullptr;
    desktop_.agreesToLeave = nullptr;
    desktop_.whenScanWanted = desktop_.whenFoldersWanted = nullptr;
    screens_->close();
}

ReviewView& MainWindow::review() { return screens_->get<ReviewView>(); }

MainWindow::BriefState MainWindow::briefState() const {
    BriefState state;
    for (const UUID& id : screens_->clips())
        if (const SyncGroup* clip = desktop_.controller().work().syncGroups().find(id))
            state.emplace_back(id, clip->isLocked, !clip->isMOS());
    return state;
}

void MainWindow::hideBriefIfPast() {
    if (!brief_.isEmpty() && briefState() != briefState_) hideToast(this, std::exchange(brief_, {}));
}

void MainWindow::frontChanged() {
    // Messages about the earlier screen, so that this one has its room.
    banner_->clearSettled();
    showToast(this, brief_ = QString());
    if (screens_->isPlaying()) {
        opening_->leaveStart(); // a clip was opened while the start page was shown
        banner_->forgetKnown(); // the user works with the clips of the scan
    }
    // A screen that plays needs the room; the list shows the sessions again.
    if (screens_->isPlaying() && sessions_->isVisible()) {
        areSessionsHidden_ = true;
        sessions_->hide();
    } else if (!screens_->isPlaying() && std::exchange(areSessionsHidden_, false)) {
        sessions_->show();
    }
    reviewActions_->setInFront(screens_->isPlaying(), screens_->front().isOfOneClip());
    showPage();
    updateActions();
}

void MainWindow::showWork() {
    opening_->leaveStart();
    screens_->showList();
    showPage();
    updateActions();
    takeKeyboard();
}

void MainWindow::showPage() {
    const ImportController& controller = desktop_.controller();
    const ScanState state = controller.scan().scanState();
    const bool isScanning = state != ScanState::idle && state != ScanState::done;
    const bool hasWork = !controller.work().syncGroups().empty() || !controller.work().wildTracks().empty();
    QWidget* page = start_;
    WorkScreen* screen = nullptr;
    if (isScanning)
        page = scanning_;
    else if (!opening_->isStartWanted() && (hasWork || state == ScanState::done))
        page = screen = &screens_->front();
    if (screen == nullptr && screens_->isPlaying()) return screens_->showList();
    if (pages_->currentWidget() == page) return;
    banner_->leavePage();
    placeBanner(*page);
    pages_->setCurrentWidget(page);
    takeKeyboard();
    if (screen != nullptr) screen->entered();
}

/// When the banner appears or disappears, neither the rows of the list under the pointer nor a picture and
/// its timeline may move.
void MainWindow::placeBanner(QWidget& page) {
    const auto* screen = dynamic_cast<const WorkScreen*>(&page);
    if (QBoxLayout* const overPicture = screen != nullptr ? screen->messages() : nullptr)
        overPicture->insertWidget(0, banner_);
    else
        static_cast<QBoxLayout*>(pages_->parentWidget()->layout())
            ->insertWidget(screen != nullptr && !screen->isPlaying() ? 1 : 0, banner_);
    banner_->setVisible(!banner_->text().isEmpty()); // another parent hides it
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
    const auto* screen = dynamic_cast<const WorkScreen*>(pages_->currentWidget());
    if (const QString hint = screen != nullptr ? screen->hint() : QString();
        !sentence.isEmpty() && !hint.isEmpty())
        sentence += QStringLiteral(" · ") + hint;
    if (const std::size_t selected = screens_->clips().size(); selected > 1)
        sentence = tr("%1 selected").arg(selected) + QStringLiteral(" · ") + sentence;
    status_->setText(sentence);
    updateTitle();
}

void MainWindow::updateTitle() {
    const SessionInfo* session = desktop_.sessions().currentSession();
    QString title = session != nullptr ? text(session->name) : QString();
    if (const auto& project = desktop_.controller().project().currentURL();
        project && session != nullptr && session->id == sessionOfProject_) {
        const QFileInfo file(text(project->path));
        title = title.isEmpty() || title == file.completeBaseName()
                    ? file.fileName()
                    : tr("%1 (%2)").arg(title, file.fileName());
    }
    setWindowTitle(title.isEmpty() ? QStringLiteral("OrvaneSync") : tr("%1 – OrvaneSync").arg(title));
}

void MainWindow::restorePlaces() {
    restoreGeometry(keptState::value(QStringLiteral("window")).toByteArray());
    keepOnScreen();
    splitter_->restoreState(keptState::value(QStringLiteral("sessions")).toByteArray());
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
    screens_->showList(); // a fullscreen picture would keep the program running
    opening_->stop();
    keptState::set(QStringLiteral("window"), saveGeometry());
    keptState::set(QStringLiteral("sessions"), splitter_->saveState());
    screens_->savePlaces();
    event->accept();
}

} // namespace orvane::views
