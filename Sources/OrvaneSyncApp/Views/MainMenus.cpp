#include "OrvaneSyncApp/Views/MainMenus.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/ViewModels/Review/FullscreenManager.h"
#include "OrvaneSyncApp/Views/RecentPlaces.h"
#include "OrvaneSyncApp/Views/Review/KeyEvents.h"
#include "OrvaneSyncApp/Views/Review/ReviewActions.h"
#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/Settings.h"

#include <QAction>
#include <QActionGroup>
#include <QFileDialog>
#include <QFileInfo>
#include <QMainWindow>
#include <QMenuBar>
#include <QSettings>
#include <QToolBar>

#include <algorithm>

namespace orvane::views {

using namespace design;

MainMenus::MainMenus(Desktop& desktop, QMainWindow& window, ReviewActions& review, Screens screens)
    : desktop_(desktop), window_(window), screens_(std::move(screens)) {
    makeFile();
    makeEdit();
    makeClip();
    makeAudio();
    makeReview(review);
    makeView();
    makeHelp();
    makeTools();
    bindings_ = desktop_.players().shortcuts()->onChange([this](ShortcutField field) {
        if (field == ShortcutField::bindings) showKeys();
    });
    showKeys();
}

QAction* MainMenus::addCommand(QMenu* menu, std::string_view id, const QKeySequence& key, JSON arguments) {
    const commands::Command& row = desktop_.command(id);
    QAction* action = menu->addAction(translated(row.title));
    action->setShortcut(key);
    action->setStatusTip(translated(row.help));
    connect(action, &QAction::triggered, this, [this, id, arguments] { desktop_.run(id, arguments); });
    commandActions_.emplace_back(action, id);
    return action;
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
    connect(file->addAction(tr("New Scan…")), &QAction::triggered, this, [this] { screens_.newScan(); });
    RecentPlaces::menu(file, screens_.openPaths);
    QAction* newSession = addCommand(file, "newSession", QKeySequence::New);
    connect(newSession, &QAction::triggered, this, [this] { screens_.leaveStart(); });
    file->addSeparator();
    open_ = file->addAction(translated(desktop_.command("loadProject").title));
    connect(open_, &QAction::triggered, this, [this] {
        chooseAndRun("loadProject", tr("Open project"), tr("Projects (*.orvanesync);;All files (*)"), false);
    });
    save_ = file->addAction(translated(desktop_.command("saveProject").title));
    connect(save_, &QAction::triggered, this,
            [this] { chooseAndRun("saveProject", tr("Save project"), tr("Projects (*.orvanesync)"), true); });
    commandActions_.emplace_back(save_, "exportFCPXML"); // there is work
    report_ = file->addAction(translated(desktop_.command("loadALE").title));
    report_->setIcon(icon(Glyph::report));
    connect(report_, &QAction::triggered, this, [this] {
        chooseAndRun("loadALE", tr("Load report"), tr("Reports (*.ale *.csv *.txt *.tsv);;All files (*)"),
                     false);
    });
    addCommand(file, "syncLockitNetwork")->setIcon(icon(Glyph::refresh));
    file->addSeparator();
    export_ =
        file->addAction(icon(Glyph::exportDocument), translated(desktop_.command("exportFCPXML").title));
    export_->setShortcut(QKeySequence(tr("Ctrl+E")));
    connect(export_, &QAction::triggered, this, [this] { showExport(desktop_, &window_); });
    commandActions_.emplace_back(export_, "exportFCPXML");
    file->addSeparator();
    addCommand(file, "reset", QKeySequence::Close);
    QAction* quit = file->addAction(tr("Quit"));
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, [this] { window_.close(); });
}

void MainMenus::makeEdit() {
    QMenu* edit = window_.menuBar()->addMenu(tr("&Edit"));
    undo_ = addCommand(edit, "undo");
    undo_->setIcon(icon(Glyph::undo));
    redo_ = addCommand(edit, "redo");
    redo_->setIcon(icon(Glyph::redo));
    edit->addSeparator();
    QAction* find = edit->addAction(tr("Find…"));
    find->setShortcut(QKeySequence::Find);
    connect(find, &QAction::triggered, this, [this] { screens_.find(); });
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
    addCommand(clip, "resyncAllClips")->setIcon(icon(Glyph::refresh));
}

void MainMenus::makeAudio() {
    QMenu* audio = audio_ = window_.menuBar()->addMenu(tr("&Audio"));
    JSON mode = JSON::object();
    mode.set("mode", settings::smartAudioMode.write(SmartAudioMode::standard));
    mode.set("forceOverwriteManualTracks", false);
    addCommand(audio, "runSmartAudioAnalysis", {}, mode)->setIcon(icon(Glyph::waveform));
    for (const std::string_view other : settings::smartAudioMode.choices) {
        mode.set("mode", other);
        QAction* action = audio->addAction(tr("Smart Audio: %1").arg(text(other)));
        connect(action, &QAction::triggered, this,
                [this, mode] { desktop_.run("runSmartAudioAnalysis", mode); });
        commandActions_.emplace_back(action, "runSmartAudioAnalysis");
    }
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
        QAction* one = menu->addAction(text(screenLabel(screens[static_cast<std::size_t>(i)])));
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
    auto* tools = window_.addToolBar(tr("Tools"));
    tools->setObjectName(QStringLiteral("tools"));
    tools->setMovable(false);
    tools->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    const auto actionOf = [this](std::string_view id) {
        for (const auto& list : {commandActions_, clipActions_})
            for (const auto& [action, command] : list)
                if (command == id) return action;
        return export_;
    };
    // Short, so that all of them stand beside each other in the narrowest window.
    const auto add = [tools](QAction* action, const QString& word) {
        action->setIconText(QLatin1Char(' ') + word);
        tools->addAction(action);
    };
    add(undo_, tr("Undo"));
    add(redo_, tr("Redo"));
    tools->addSeparator();
    add(actionOf("runSmartAudioAnalysis"), tr("Smart Audio"));
    add(actionOf("toggleApproved"), tr("Approve"));
    add(actionOf("toggleLocked"), tr("Lock"));
    add(rename_, tr("Rename"));
    add(actionOf("resyncAllClips"), tr("Re-sync"));
    add(report_, tr("Report"));
    add(sheets_.buildRoomTone, tr("Room Tone"));
    add(actionOf("syncLockitNetwork"), tr("LockitNetwork"));
    auto* stretch = new QWidget;
    stretch->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    tools->addWidget(stretch);
    add(export_, tr("Export"));
}

void MainMenus::showKeys() {
    const ShortcutBindings& bindings = desktop_.players().shortcuts()->bindings();
    const auto give = [&](QAction* action, ShortcutAction meant) {
        const auto found = bindings.find(meant);
        action->setShortcut(found == bindings.end() ? QKeySequence() : menuKey(found->second));
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
    rename_->setEnabled(clips.size() == 1);
    const bool isPlaying = screens_.isPlaying();
    results_->setEnabled(isPlaying);
    keys_->setEnabled(screens_.isReviewing());
    review_->setEnabled(!isPlaying && !clips.empty());
    multicam_->setEnabled(!clips.empty());
    const UndoState undo = desktop_.controller().work().undoState();
    undo_->setText(undo.undoActionName ? tr("Undo %1").arg(translated(*undo.undoActionName)) : tr("Undo"));
    redo_->setText(undo.redoActionName ? tr("Redo %1").arg(translated(*undo.redoActionName)) : tr("Redo"));
}

void MainMenus::chooseAndRun(std::string_view id, const QString& caption, const QString& filter,
                             bool isSaved) {
    QSettings places;
    const QString from = places.value(QStringLiteral("lastFolder")).toString();
    QString chosen = isSaved ? QFileDialog::getSaveFileName(&window_, caption, from, filter)
                             : QFileDialog::getOpenFileName(&window_, caption, from, filter);
    if (chosen.isEmpty()) return;
    places.setValue(QStringLiteral("lastFolder"), QFileInfo(chosen).absolutePath());
    JSON arguments = JSON::object();
    if (isSaved) {
        if (QFileInfo(chosen).suffix().isEmpty()) chosen += QStringLiteral(".orvanesync");
        arguments.set("overwrite", true); // the dialog has asked
    }
    arguments.set("path", utf8(chosen));
    desktop_.run(id, std::move(arguments));
}

} // namespace orvane::views
