#include "OrvaneSyncApp/Views/MainMenus.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Controllers/Commands/Conditions.h"
#include "OrvaneSyncApp/ViewModels/Results/Questions.h"
#include "OrvaneSyncApp/ViewModels/Review/FullscreenManager.h"
#include "OrvaneSyncApp/Views/Asking.h"
#include "OrvaneSyncApp/Views/RecentPlaces.h"
#include "OrvaneSyncApp/Views/Review/KeyEvents.h"
#include "OrvaneSyncApp/Views/Review/ReviewActions.h"
#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/Settings.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QSettings>

#include <algorithm>
#include <stdexcept>

namespace orvane::views {

using namespace design;

MainMenus::MainMenus(Desktop& desktop, QMainWindow& window, ReviewActions& review, Screens screens)
    : QObject(&window), desktop_(desktop), window_(window), screens_(std::move(screens)) {
    makeFile();
    makeEdit();
    makeClip();
    makeAudio();
    makeReview(review);
    makeView();
    makeHelp();
    makeTools();
    for (const QAction* one : window_.menuBar()->actions())
        connect(
            one->menu(), &QMenu::aboutToHide, this, [this] { returnKeyboard(); }, Qt::QueuedConnection);
    window_.menuBar()->installEventFilter(this);
    QCoreApplication::instance()->installEventFilter(this);
    bindings_ = desktop_.players().shortcuts()->onChange([this](ShortcutField field) {
        if (field == ShortcutField::bindings) showKeys();
    });
    showKeys();
}

/// The keys of a menu rest while a sheet is open.
bool MainMenus::isQuittingOverSheet(const QObject& watched, const QEvent& event) const {
    if (event.type() != QEvent::KeyPress || !watched.isWidgetType() ||
        QApplication::activeModalWidget() == nullptr)
        return false;
    return QKeySequence(static_cast<const QKeyEvent&>(event).keyCombination()) == quit_->shortcut();
}

void MainMenus::quit() {
    // Sheets end as by their own cross, which stops what they run.
    while (QWidget* sheet = QApplication::activeModalWidget())
        if (!sheet->close()) return;
    QMetaObject::invokeMethod(
        &window_, [this] { window_.close(); }, Qt::QueuedConnection);
}

bool MainMenus::eventFilter(QObject* watched, QEvent* event) {
    if (isQuittingOverSheet(*watched, *event)) {
        quit();
        return true;
    }
    const bool isEscape =
        event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
    if (isEscape && watched == window_.menuBar()) // which leaves its entry by it
        QMetaObject::invokeMethod(
            this, [this] { returnKeyboard(); }, Qt::QueuedConnection);
    return false;
}

void MainMenus::returnKeyboard() {
    const QMenuBar* bar = window_.menuBar();
    if (bar->hasFocus() && bar->activeAction() == nullptr && QApplication::activePopupWidget() == nullptr)
        screens_.takeKeyboard();
}

QAction* MainMenus::addCommand(QMenu* menu, std::string_view id, const QKeySequence& key, JSON arguments) {
    const commands::Command& row = desktop_.command(id);
    QAction* action = menu->addAction(translated(row.title));
    action->setShortcut(key);
    action->setStatusTip(translated(row.help));
    connect(action, &QAction::triggered, this,
            [this, id, arguments = std::move(arguments)] { desktop_.run(id, arguments); });
    commandActions_.emplace_back(action, id);
    return action;
}

QAction* MainMenus::addAsking(QMenu* menu, std::string_view id, std::function<void()> act) {
    const commands::Command& row = desktop_.command(id);
    QAction* action = menu->addAction(translated(row.title));
    action->setStatusTip(translated(row.help));
    connect(action, &QAction::triggered, this, std::move(act));
    commandActions_.emplace_back(action, id);
    return action;
}

bool MainMenus::agrees(const Question& question) {
    return isAgreed(&window_, translated(question.title), translatedSentence(question.text),
                    translated(question.yes), translated(question.no));
}

QAction* MainMenus::addClipCommand(QMenu* menu, std::string_view id, const QKeySequence& key) {
    const commands::Command& row = desktop_.command(id);
    QAction* action = menu->addAction(translated(row.title));
    action->setShortcut(key);
    action->setStatusTip(translated(row.help));
    connect(action, &QAction::triggered, this, [this, id] { screens_.runForClips(id); });
    clipActions_.emplace_back(action, id);
    return action;
}

void MainMenus::makeFile() {
    QMenu* file = window_.menuBar()->addMenu(tr("&File"));
    scan_ = file->addAction(tr("New Scan…"));
    scan_->setObjectName(QStringLiteral("newScan"));
    connect(scan_, &QAction::triggered, this, [this] { screens_.newScan(); });
    RecentPlaces::menu(file, screens_.openPaths);
    QAction* newSession = addCommand(file, "newSession", QKeySequence::New);
    connect(newSession, &QAction::triggered, this, [this] { screens_.leaveStart(); });
    file->addSeparator();
    open_ = file->addAction(translated(desktop_.command("loadProject").title));
    connect(open_, &QAction::triggered, this, [this] {
        if (const auto path =
                chosenFile(tr("Open OrvaneSync Project"), tr("Projects (*.orvanesync);;All files (*)")))
            runWithPath("loadProject", *path);
    });
    save_ = addAsking(file, "saveProject", [this] {
        const auto path = placeFor(tr("Save OrvaneSync Project"), tr("Projects (*.orvanesync)"),
                                   text(proposedProjectName(desktop_.controller(), desktop_.sessions())));
        if (path) runWithPath("saveProject", *path, "path", true);
    });
    report_ = file->addAction(translated(desktop_.command("loadALE").title));
    report_->setIcon(icon(Glyph::report));
    commandActions_.emplace_back(report_, "loadALE");
    connect(report_, &QAction::triggered, this, [this] {
        if (const auto path =
                chosenFile(tr("Load report"), tr("Reports (*.ale *.csv *.txt *.tsv);;All files (*)")))
            runWithPath("loadALE", *path);
    });
    addCommand(file, "clearALEMetadataForAllClips");
    addAsking(file, "syncLockitNetwork", [this] {
        screens_.syncLockitNetwork();
    })->setIcon(icon(Glyph::network));
    addCommand(file, "clearLockitMetadataForAllClips");
    file->addSeparator();
    const QString tables = tr("Review tables (*.csv)");
    addAsking(file, "writeReview", [this, tables] {
        const auto path = placeFor(tr("Write review table"), tables, QStringLiteral("Review.csv"));
        if (path) runWithPath("writeReview", *path, "output", true);
    });
    addAsking(file, "applyReview", [this, tables] {
        if (const auto path = chosenFile(tr("Apply review table"), tables)) runWithPath("applyReview", *path);
    });
    file->addSeparator();
    export_ =
        file->addAction(icon(Glyph::exportDocument), translated(desktop_.command("exportFCPXML").title));
    export_->setShortcut(QKeySequence(tr("Ctrl+E")));
    connect(export_, &QAction::triggered, this, [this] { showExport(desktop_, &window_); });
    commandActions_.emplace_back(export_, "exportFCPXML");
    file->addSeparator();
    addCommand(file, "reset", QKeySequence::Close);
    quit_ = file->addAction(tr("Quit"));
    quit_->setShortcut(QKeySequence(tr("Ctrl+Q"))); // Qt gives none outside of the great desktops
    connect(quit_, &QAction::triggered, this, [this] { quit(); });
}

void MainMenus::makeEdit() {
    QMenu* edit = window_.menuBar()->addMenu(tr("&Edit"));
    undo_ = addCommand(edit, "undo");
    undo_->setIcon(icon(Glyph::undo));
    redo_ = addCommand(edit, "redo");
    redo_->setIcon(icon(Glyph::redo));
    edit->addSeparator();
    find_ = edit->addAction(tr("Find…"));
    find_->setShortcut(QKeySequence::Find);
    connect(find_, &QAction::triggered, this, [this] { screens_.find(); });
    QAction* settings = edit->addAction(icon(Glyph::gear), tr("Settings…"));
    settings->setShortcut(QKeySequence(tr("Ctrl+,")));
    connect(settings, &QAction::triggered, this, [this] { SettingsWindow(desktop_, &window_).exec(); });
}

void MainMenus::makeClip() {
    QMenu* clip = clip_ = window_.menuBar()->addMenu(tr("&Clip"));
    addClipCommand(clip, "toggleApproved", QKeySequence(tr("Ctrl+Return")))->setIcon(icon(Glyph::approve));
    addClipCommand(clip, "toggleLocked", QKeySequence(tr("Ctrl+L")))->setIcon(icon(Glyph::lock));
    addClipCommand(clip, "toggleExcludedFromExport")->setIcon(icon(Glyph::excluded));
    addClipCommand(clip, "toggleExcludedFromMulticam");
    addClipCommand(clip, "togglePickup");
    clip->addSeparator();
    rename_ = clip->addAction(icon(Glyph::rename), tr("Rename…"));
    rename_->setShortcut(QKeySequence(Qt::Key_F2));
    connect(rename_, &QAction::triggered, this, [this] { screens_.renameClip(); });
    addClipCommand(clip, "confirmAmbiguousMatch");
    addClipCommand(clip, "resyncClip", QKeySequence(tr("Ctrl+R")))->setIcon(icon(Glyph::refresh));
    addClipCommand(clip, "resetClipToAutoSync");
    clip->addSeparator();
    single_ = clip->addAction(translated(desktop_.command("exportSingleClip").title));
    single_->setStatusTip(translated(desktop_.command("exportSingleClip").help));
    connect(single_, &QAction::triggered, this, [this] { exportClip(); });
    clip->addSeparator();
    addAsking(clip, "resyncAllClips", [this] {
        if (agrees(questionBeforeResync())) desktop_.run("resyncAllClips");
    })->setIcon(icon(Glyph::refresh));
    addAsking(clip, "resetAllClipsToAutoSync", [this] {
        if (agrees(questionBeforeReset())) desktop_.run("resetAllClipsToAutoSync");
    });
}

void MainMenus::makeAudio() {
    QMenu* audio = audio_ = window_.menuBar()->addMenu(tr("&Audio"));
    addAsking(audio, "runSmartAudioAnalysis", [this] {
        analyse(settings::smartAudioMode.write(modeOfAnalysis(desktop_.settings())));
    })->setIcon(icon(Glyph::waveform));
    for (std::size_t i = 0; i < RawValues<SmartAudioMode>::texts.size(); ++i)
        addAsking(audio, "runSmartAudioAnalysis", [this, i] {
            analyse(settings::smartAudioMode.write(static_cast<SmartAudioMode>(i)));
        })->setText(tr("Smart Audio: %1").arg(translated(RawValues<SmartAudioMode>::texts.at(i))));
    addCommand(audio, "measureLoudness");
    audio->addSeparator();
    listen_ = audio->addAction(tr("Listen to the Cards"));
    listen_->setObjectName(QStringLiteral("listen"));
    listen_->setStatusTip(
        tr("Compares some clips of each card with what their cameras heard, to find a clock that is wrong."));
    connect(listen_, &QAction::triggered, this, [this] { screens_.listenToCards(); });
}

void MainMenus::analyse(const JSON& mode) {
    const auto question = questionBeforeAnalysis(desktop_.controller().work().syncGroups());
    JSON arguments = JSON::object();
    arguments.set("mode", mode);
    arguments.set("forceOverwriteManualTracks", !question || agrees(*question));
    desktop_.run("runSmartAudioAnalysis", std::move(arguments));
}

void MainMenus::exportClip() {
    const std::vector<UUID> clips = screens_.clips();
    if (clips.size() != 1) return;
    const auto path =
        placeFor(tr("Export clip"), tr("Final Cut Pro XML (*.fcpxml)"), QStringLiteral("Clip.fcpxml"));
    if (!path) return;
    JSON arguments = JSON::object();
    arguments.set("groupID", clips.front().text());
    arguments.set("output", utf8(*path));
    arguments.set("overwrite", true); // the dialog has asked
    desktop_.run("exportSingleClip", std::move(arguments),
                 [this, place = *path](const JSON&) { tellSaved(place); });
}

void MainMenus::makeReview(ReviewActions& review) {
    QMenu* playback = window_.menuBar()->addMenu(tr("&Playback"));
    review.fillPlayback(*playback);
    QMenu* sync = window_.menuBar()->addMenu(tr("&Sync"));
    review.fillSync(*sync);
}

void MainMenus::makeView() {
    QMenu* view = window_.menuBar()->addMenu(tr("&View"));
    results_ = view->addAction(icon(Glyph::back), tr("Results"));
    connect(results_, &QAction::triggered, this, [this] { screens_.showResults(); });
    review_ = view->addAction(icon(Glyph::film), tr("Review Clip"));
    review_->setStatusTip(
        tr("Opens the clip on its clap, with its sound. Return does the same in the list."));
    connect(review_, &QAction::triggered, this, [this] { screens_.openReview(); });
    multicam_ = view->addAction(icon(Glyph::cameras), translated(desktop_.command("clusterLoad").title));
    multicam_->setShortcut(QKeySequence(tr("Ctrl+M")));
    multicam_->setStatusTip(tr("Opens all cameras of the clip's take, or the clips that are selected."));
    connect(multicam_, &QAction::triggered, this, [this] { screens_.openMulticam(); });
    view->addSeparator();
    QMenu* screens = view->addMenu(icon(Glyph::fullscreen), tr("Fullscreen on"));
    connect(screens, &QMenu::aboutToShow, this, [this, screens] { listScreens(screens); });
    view->addSeparator();
    QAction* sessions = view->addAction(tr("Sessions"));
    sessions->setCheckable(true);
    sessions->setShortcut(QKeySequence(tr("Ctrl+0")));
    connect(view, &QMenu::aboutToShow, this,
            [this, sessions] { sessions->setChecked(screens_.sessions->isVisible()); });
    connect(sessions, &QAction::triggered, this,
            [this] { screens_.sessions->setVisible(!screens_.sessions->isVisible()); });
}

void MainMenus::listScreens(QMenu* menu) {
    menu->clear();
    FullscreenManager& fullscreen = desktop_.players().review()->fullscreen();
    const std::vector<Screen> screens =
        fullscreen.desktop.screens ? fullscreen.desktop.screens() : std::vector<Screen>();
    auto* group = new QActionGroup(menu);
    const int last = static_cast<int>(screens.size()) - 1;
    for (int i = 0; i <= last; ++i) {
        QAction* one = menu->addAction(translatedSentence(screenLabel(screens[static_cast<std::size_t>(i)])));
        one->setCheckable(true);
        group->addAction(one);
        one->setChecked(i == std::clamp(fullscreen.preferredScreen(), 0, last));
        connect(one, &QAction::triggered, this, [&fullscreen, i] { fullscreen.setPreferredScreen(i); });
    }
}

void MainMenus::makeHelp() {
    QMenu* help = window_.menuBar()->addMenu(tr("&Help"));
    keys_ = help->addAction(tr("Keys of the Review (?)"));
    keys_->setStatusTip(tr("What each key does here and now."));
    connect(keys_, &QAction::triggered, this, [this] { screens_.showKeys(); });
    sheets_ = addSheetActions(desktop_, &window_, clip_, audio_, help);
}

void MainMenus::makeTools() {
    auto* tools = new ToolRow(tr("Tools"));
    tools->setObjectName(QStringLiteral("tools"));
    window_.addToolBar(tools);
    const auto actionOf = [this](std::string_view id) {
        for (const auto& list : {commandActions_, clipActions_})
            for (const auto& [action, command] : list)
                if (command == id) return action;
        throw std::logic_error("no entry of a menu runs " + std::string(id));
    };
    // The words of what is done with every clip, and of its end, stay longest.
    tools->add(undo_, tr("Undo"), 0);
    tools->add(redo_, tr("Redo"), 0);
    tools->addSeparator();
    tools->add(actionOf("runSmartAudioAnalysis"), tr("Smart Audio"), 5);
    tools->add(actionOf("toggleApproved"), tr("Approve"), 8);
    tools->add(actionOf("toggleLocked"), tr("Lock"), 7);
    tools->add(rename_, tr("Rename"), 6);
    tools->add(actionOf("resyncAllClips"), tr("Re-sync"), 4);
    tools->add(report_, tr("Report"), 3);
    tools->add(sheets_.buildRoomTone, tr("Room Tone"), 2);
    tools->add(actionOf("syncLockitNetwork"), tr("LockitNetwork"), 1);
    auto* stretch = new QWidget;
    stretch->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    tools->addWidget(stretch);
    tools->add(export_, tr("Export"), 9);
}

void MainMenus::showKeys() {
    const ShortcutBindings& bindings = desktop_.players().shortcuts()->bindings();
    const auto give = [&](QAction* action, ShortcutAction meant) {
        const auto found = bindings.find(meant);
        action->setShortcut(found == bindings.end() ? QKeySequence() : menuKey(found->second));
        action->setProperty(keyOfUser, true);
    };
    give(undo_, ShortcutAction::undo);
    give(redo_, ShortcutAction::redo);
    give(open_, ShortcutAction::openProject);
    give(save_, ShortcutAction::saveProject);
}

bool MainMenus::applies(std::string_view id, const std::vector<UUID>& clips) const {
    const SyncGroupList& groups = desktop_.controller().work().syncGroups();
    return std::ranges::any_of(clips, [&](const UUID& clip) {
        const SyncGroup* group = groups.find(clip);
        return group != nullptr && desktop_.isEnabled(id, group);
    });
}

void MainMenus::update() {
    for (const auto& [action, id] : commandActions_) action->setEnabled(desktop_.isEnabled(id));
    const std::vector<UUID> clips = screens_.clips();
    for (const auto& [action, id] : clipActions_) action->setEnabled(applies(id, clips));
    const commands::CommandContext& context = desktop_.context();
    scan_->setEnabled(commands::isAtRest(context));
    find_->setEnabled(commands::hasClipsAtRest(context));
    listen_->setEnabled(commands::hasClipsAtRest(context) && !screens_.isListening());
    sheets_.renameClips->setEnabled(desktop_.isEnabled("batchRename"));
    sheets_.buildRoomTone->setEnabled(desktop_.isEnabled("scanAtmoCandidates"));
    rename_->setEnabled(clips.size() == 1);
    single_->setEnabled(clips.size() == 1 && applies("exportSingleClip", clips));
    const bool isPlaying = screens_.isPlaying();
    results_->setEnabled(isPlaying);
    keys_->setEnabled(isPlaying);
    review_->setEnabled(!isPlaying && !clips.empty());
    multicam_->setEnabled(!clips.empty());
    const UndoState undo = desktop_.controller().work().undoState();
    const auto named = [](const std::string& step) {
        return translated(step).replace(QLatin1Char('&'), QStringLiteral("&&"));
    };
    undo_->setText(undo.undoActionName ? tr("Undo %1").arg(named(*undo.undoActionName)) : tr("Undo"));
    redo_->setText(undo.redoActionName ? tr("Redo %1").arg(named(*undo.redoActionName)) : tr("Redo"));
}

namespace {

QString lastFolderSetting() { return QStringLiteral("lastFolder"); }

std::optional<QString> remembered(const QString& chosen) {
    if (chosen.isEmpty()) return std::nullopt;
    QSettings().setValue(lastFolderSetting(), QFileInfo(chosen).absolutePath());
    return chosen;
}

} // namespace

std::optional<QString> MainMenus::chosenFile(const QString& caption, const QString& filter) {
    return remembered(QFileDialog::getOpenFileName(
        &window_, caption, QSettings().value(lastFolderSetting()).toString(), filter));
}

std::optional<QString> MainMenus::placeFor(const QString& caption, const QString& filter,
                                           const QString& name) {
    const QDir folder(QSettings().value(lastFolderSetting(), QDir::homePath()).toString());
    auto chosen = remembered(QFileDialog::getSaveFileName(&window_, caption, folder.filePath(name), filter));
    if (chosen && QFileInfo(*chosen).suffix().isEmpty())
        *chosen += QLatin1Char('.') + QFileInfo(name).suffix();
    return chosen;
}

void MainMenus::runWithPath(std::string_view id, const QString& path, std::string_view argument,
                            bool overwrites) {
    JSON arguments = JSON::object();
    arguments.set(argument, utf8(path));
    if (overwrites) arguments.set("overwrite", true); // the dialog has asked
    desktop_.run(id, std::move(arguments), [this, overwrites, path](const JSON&) {
        if (overwrites) tellSaved(path);
    });
}

void MainMenus::tellSaved(const QString& path) {
    showToast(&window_, tr("Saved: %1").arg(QFileInfo(path).fileName()));
}

} // namespace orvane::views
