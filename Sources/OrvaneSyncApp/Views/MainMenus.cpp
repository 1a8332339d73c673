#include "OrvaneSyncApp/Views/MainMenus.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Controllers/Commands/Conditions.h"
#include "OrvaneSyncApp/ViewModels/Results/Questions.h"
#include "OrvaneSyncApp/ViewModels/Review/FullscreenManager.h"
#include "OrvaneSyncApp/Views/Asking.h"
#include "OrvaneSyncApp/Views/RecentPlaces.h"
#include "OrvaneSyncApp/Views/Review/KeyEvents.h"
#include "OrvaneSyncApp/Views/Review/KeyOverlay.h"
#include "OrvaneSyncApp/Views/Review/ReviewActions.h"
#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"
#include "OrvaneSyncApp/Views/Sheets/HelpMenu.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/StartView.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncApp/Views/WorkBanner.h"
#include "OrvaneSyncApp/Views/WorkBar.h"
#include "OrvaneSyncApp/Views/WorkOpening.h"
#include "OrvaneSyncApp/Views/WorkScreens.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QKeySequence>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

struct DrawnEntry {
    std::string_view id;
    Glyph glyph;
};
constexpr std::array<DrawnEntry, 14> drawnEntries{{{"undo", Glyph::undo},
                                                   {"redo", Glyph::redo},
                                                   {"loadALE", Glyph::report},
                                                   {"syncLockitNetwork", Glyph::network},
                                                   {"exportFCPXML", Glyph::exportDocument},
                                                   {"toggleApproved", Glyph::approve},
                                                   {"toggleLocked", Glyph::lock},
                                                   {"toggleExcludedFromExport", Glyph::excluded},
                                                   {"resyncClip", Glyph::refresh},
                                                   {"resyncAllClips", Glyph::refresh},
                                                   {"batchRename", Glyph::rename},
                                                   {"runSmartAudioAnalysis", Glyph::waveform},
                                                   {"buildAtmo", Glyph::roomTone},
                                                   {"clusterLoad", Glyph::cameras}}};

QKeySequence keyOfEntry(std::string_view key) {
    if (key == "New") return QKeySequence::New;
    if (key == "Close") return QKeySequence::Close;
    return {text(key), QKeySequence::PortableText};
}

} // namespace

MainMenus::MainMenus(Desktop& desktop, QMainWindow& window, ReviewActions& review, MenuParts parts)
    : QObject(&window), desktop_(desktop), window_(window), parts_(std::move(parts)),
      files_(desktop_, window_, parts_) {
    makeCommands();
    makeFile();
    makeEdit();
    makeClip();
    makeAudio();
    makeReview(review);
    makeView();
    makeHelp();
    makeTools();
    keysOfBar_ = std::make_unique<MenuBarKeys>(window_, *quit_, parts_.takeKeyboard);
    bindings_ = desktop_.players().shortcuts()->onChange([this](ShortcutField field) {
        if (field == ShortcutField::bindings) showKeys();
    });
    showKeys();
}

void MainMenus::makeCommands() {
    const auto acts = actsOfWindow();
    for (const commands::Command& row : commands::allCommands()) {
        if (!row.entry) continue;
        auto* action = new QAction(translated(row.title), this);
        action->setShortcut(keyOfEntry(row.entry->key));
        action->setStatusTip(translated(row.help));
        if (const auto act = acts.find(row.id); act != acts.end())
            connect(action, &QAction::triggered, this, act->second);
        else
            connect(action, &QAction::triggered, this, [this, &row] { run(row); });
        ofCommands_.emplace(row.id, action);
    }
    for (const auto& [id, glyph] : drawnEntries) of(id)->setIcon(icon(glyph));
}

std::map<std::string_view, std::function<void()>> MainMenus::actsOfWindow() {
    return {
        {"newSession",
         [this] {
             parts_.banner.clearAll(); // messages about the work that is closed
             desktop_.run("newSession");
             parts_.opening.leaveStart();
         }},
        {"loadProject", [this] { files_.openProject(); }},
        {"saveProject", [this] { files_.saveProject(); }},
        {"loadALE", [this] { files_.loadReport(); }},
        {"syncLockitNetwork",
         [this] { parts_.work.run("syncLockitNetwork", tr("The metadata of the clips is requested…")); }},
        {"writeReview", [this] { files_.writeReview(); }},
        {"applyReview", [this] { files_.applyReview(); }},
        {"exportFCPXML", [this] { showExport(desktop_, &window_); }},
        {"exportSingleClip",
         [this] {
             if (const auto clips = parts_.screens.clips(); clips.size() == 1)
                 files_.exportClip(clips.front());
         }},
        {"resyncAllClips",
         [this] {
             if (agrees(questionBeforeResync())) desktop_.run("resyncAllClips");
         }},
        {"resetAllClipsToAutoSync",
         [this] {
             if (agrees(questionBeforeReset())) desktop_.run("resetAllClipsToAutoSync");
         }},
        {"batchRename", [this] { showBatchRenamer(desktop_, &window_, parts_.screens.clips()); }},
        {"runSmartAudioAnalysis",
         [this] { analyse(settings::smartAudioMode.write(modeOfAnalysis(desktop_.settings()))); }},
        {"buildAtmo", [this] { showAtmoBuilder(desktop_, &window_); }},
        {"clusterLoad", [this] { parts_.screens.openMulticamOfSelected(); }},
    };
}

void MainMenus::run(const commands::Command& row) {
    if (row.isOfOneClip())
        parts_.screens.front().run(row.id);
    else if (row.id == "undo" || row.id == "redo")
        takeBack(row.id);
    else
        desktop_.run(row.id);
}

/// Says which clip's change was undone if it is not the clip in view.
void MainMenus::takeBack(std::string_view id) {
    const OpenWork& work = desktop_.controller().work();
    const SyncGroupList before = work.syncGroups();
    const QString what = of(id)->text().replace(QStringLiteral("&&"), QStringLiteral("&"));
    if (std::exchange(isKeyRefused_, false) && id == "undo" && parts_.screens.isPlaying())
        return showToast(&window_, tr("The last key has changed nothing. Once more for: %1").arg(what));
    desktop_.run(id);
    const SyncGroupList& now = work.syncGroups();
    std::vector<UUID> changed;
    for (const std::size_t row : now.changesSince(before).changed)
        if (const SyncGroup* then = before.find(now[row].id); then && !haveSameContents(*then, now[row]))
            changed.push_back(now[row].id);
    if (changed.empty() || changed == std::vector{desktop_.players().review()->groupID().value_or(UUID())})
        return;
    const QString whose = changed.size() == 1
                              ? text(work.displayNames().at(changed.front()))
                              : translatedSentence(counted(std::ssize(changed), "clip", "clips"));
    showToast(&window_, QStringLiteral("%1: %2").arg(what, whose));
}

QAction* MainMenus::of(std::string_view id) const {
    const auto found = ofCommands_.find(id);
    if (found == ofCommands_.end()) throw std::logic_error("no entry of a menu runs " + std::string(id));
    return found->second;
}

QMenu* MainMenus::addMenu(const QString& title) { return window_.menuBar()->addMenu(title); }

QAction* MainMenus::ownEntry(const QString& title, std::function<void()> act, const QString& help) {
    auto* action = new QAction(title, this);
    action->setStatusTip(help);
    connect(action, &QAction::triggered, this, std::move(act));
    return action;
}

void MainMenus::fill(QMenu* menu, commands::Menu which, std::vector<OwnEntry> entries) {
    for (const commands::Command& row : commands::allCommands())
        if (row.entry && row.entry->menu == which) entries.push_back({row.entry->order, of(row.id)});
    std::ranges::stable_sort(entries, {}, &OwnEntry::order);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i > 0 && entries[i].order / 100 != entries[i - 1].order / 100) menu->addSeparator();
        menu->addAction(entries[i].action);
    }
}

bool MainMenus::agrees(const Question& question) {
    return isAgreed(&window_, translated(question.title), translatedSentence(question.text),
                    translated(question.yes), translated(question.no));
}

void MainMenus::makeFile() {
    QMenu* file = addMenu(tr("&File"));
    scan_ = ownEntry(tr("New Scan…"), [this] { parts_.opening.prepareScan(); });
    scan_->setObjectName(QStringLiteral("newScan"));
    scanAgain_ = ownEntry(
        tr("Scan Again"),
        [this] {
            if (!parts_.opening.refusesDuringScan()) parts_.opening.startScan();
        },
        tr("Scans the folders of the open clips again, for files that were added to them. Decisions are "
           "kept."));
    addCard_ = ownEntry(
        tr("Add Card…"), [this] { files_.addCard(); },
        tr("Scans a further folder together with those of the open clips. Decisions are kept."));
    quit_ = new QAction(tr("Quit"), this);
    quit_->setShortcut(Qt::CTRL | Qt::Key_Q); // Qt sets a key for this only on the major desktops
    QAction* recent = RecentPlaces::menu(file, [this](const QStringList& paths) {
                          parts_.opening.openPaths(paths);
                      })->menuAction();
    fill(file, commands::Menu::file,
         {{110, scan_}, {112, scanAgain_}, {114, addCard_}, {120, recent}, {520, quit_}});
}

void MainMenus::makeEdit() {
    find_ = ownEntry(tr("Find…"), [this] {
        QLineEdit* field = parts_.screens.front().search();
        field->setFocus(Qt::ShortcutFocusReason);
        field->selectAll();
    });
    find_->setShortcut(QKeySequence::Find);
    QAction* settings = ownEntry(tr("Settings…"), [this] { SettingsWindow(desktop_, &window_).exec(); });
    settings->setIcon(icon(Glyph::gear));
    settings->setShortcut(Qt::CTRL | Qt::Key_Comma);
    fill(addMenu(tr("&Edit")), commands::Menu::edit, {{210, find_}, {220, settings}});
}

void MainMenus::makeClip() {
    rename_ = ownEntry(tr("Rename…"), [this] { renameClips(); });
    rename_->setIcon(icon(Glyph::rename));
    rename_->setShortcut(Qt::Key_F2);
    fill(addMenu(tr("&Clip")), commands::Menu::clip, {{210, rename_}});
}

void MainMenus::renameClips() {
    const std::vector<UUID> clips = parts_.screens.clips();
    if (clips.size() == 1)
        parts_.screens.front().rename(clips.front());
    else if (!clips.empty())
        showBatchRenamer(desktop_, &window_, clips);
}

void MainMenus::listenToCards() {
    parts_.banner.clear();
    parts_.screens.showList();
    const ImportController& controller = desktop_.controller();
    parts_.work.run("diagnose", tr("The sound of the cards is compared…"),
                    [this, before = controller.doubts().summary(controller.work().syncGroups())] {
                        // The results are used in the doubts that are derived after this, which are shown
                        // above the list.
                        desktop_.controller().derivedDoubts().derive().whenDone(
                            [banner = QPointer(&parts_.banner), before](const std::exception_ptr&) {
                                if (banner) banner->showListened(before);
                            });
                    });
    update();
}

std::vector<UUID> MainMenus::clipsToCompare() const {
    std::vector<UUID> clips = parts_.screens.clips();
    if (clips.size() < 2) clips.clear();
    return clips;
}

void MainMenus::compareSound() {
    JSON arguments = JSON::object();
    JSON::Array clips;
    for (const UUID& clip : clipsToCompare()) clips.emplace_back(clip.text());
    if (!clips.empty()) arguments.set("groupIDs", std::move(clips));
    parts_.work.run(
        "compareSound", tr("The sound is compared…"),
        [this] {
            parts_.banner.showCompared([this](const std::vector<UUID>& off) {
                parts_.screens.showList();
                parts_.screens.list().showClips(off);
            });
        },
        std::move(arguments));
    update();
}

void MainMenus::makeAudio() {
    std::vector<OwnEntry> entries;
    for (std::size_t i = 0; i < RawValues<SmartAudioMode>::texts.size(); ++i) {
        QAction* mode = ownEntry(
            tr("Smart Audio: %1").arg(translated(RawValues<SmartAudioMode>::texts.at(i))),
            [this, i] { analyse(settings::smartAudioMode.write(static_cast<SmartAudioMode>(i))); },
            of("runSmartAudioAnalysis")->statusTip());
        mode->setCheckable(true);
        ofAnalysisModes_.push_back(mode);
        entries.push_back({120, mode});
    }
    listen_ = ownEntry(
        tr("Listen to the Cards"), [this] { listenToCards(); },
        tr("Compares some clips of each card with what their cameras recorded, to find a clock that is "
           "wrong."));
    listen_->setObjectName(QStringLiteral("listen"));
    entries.push_back({210, listen_});
    compare_ = ownEntry(
        {}, [this] { compareSound(); },
        tr("Compares the sound of each clip with what its camera recorded, and says which "
           "clips are off. Of all clips, if less than two are selected."));
    compare_->setObjectName(QStringLiteral("compare"));
    entries.push_back({220, compare_});
    entries.push_back({320, ownEntry(tr("Calibration…"), [this] {
                           SettingsWindow settings(desktop_, &window_);
                           settings.showTab(SettingPage::calibration);
                           settings.exec();
                       })});
    fill(addMenu(tr("&Audio")), commands::Menu::audio, std::move(entries));
}

void MainMenus::analyse(const JSON& mode) {
    const auto question = questionBeforeAnalysis(desktop_.controller().work().syncGroups());
    JSON arguments = JSON::object();
    arguments.set("mode", mode);
    arguments.set("forceOverwriteManualTracks", !question || agrees(*question));
    desktop_.run("runSmartAudioAnalysis", std::move(arguments));
    update(); // the click has ticked the entry
}

void MainMenus::makeReview(ReviewActions& review) {
    review.fillPlayback(*addMenu(tr("&Playback")));
    review.fillSync(*addMenu(tr("&Sync")));
}

void MainMenus::makeView() {
    QMenu* view = addMenu(tr("&View"));
    results_ = ownEntry(tr("Results"), [this] { parts_.screens.showList(); });
    results_->setIcon(icon(Glyph::back));
    review_ = ownEntry(
        tr("Review Clip"), [this] { parts_.screens.openReviewOfSelected(); },
        tr("Opens the clip on its clap, with its sound. Return does the same in the list."));
    review_->setIcon(icon(Glyph::film));
    QMenu* screens = view->addMenu(icon(Glyph::fullscreen), tr("Fullscreen on"));
    fullscreen_ = screens->menuAction();
    connect(screens, &QMenu::aboutToShow, this, [this, screens] { listScreens(screens); });
    QAction* sessions =
        ownEntry(tr("Sessions"), [this] { parts_.sessions.setVisible(!parts_.sessions.isVisible()); });
    sessions->setCheckable(true);
    sessions->setShortcut(Qt::CTRL | Qt::Key_0);
    connect(view, &QMenu::aboutToShow, this,
            [this, sessions] { sessions->setChecked(parts_.sessions.isVisible()); });
    std::vector<OwnEntry> entries{
        {110, results_}, {120, review_}, {310, screens->menuAction()}, {410, sessions}};
    for (const QString& title : ResultsView::filterTitles()) {
        const auto choice = static_cast<int>(filters_.size());
        QAction* one = ownEntry(
            tr("List: %1").arg(title),
            [this, choice] {
                parts_.screens.showList();
                parts_.screens.list().showFilter(choice);
            },
            tr("Shows the list of clips, with these alone."));
        one->setShortcut(Qt::ALT | static_cast<Qt::Key>(Qt::Key_1 + choice));
        filters_.push_back(one);
        entries.push_back({210 + choice, one});
    }
    fill(view, commands::Menu::view, std::move(entries));
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
    QMenu* help = addMenu(tr("&Help"));
    keys_ = ownEntry(
        tr("Keys of the Review (?)"),
        [this] {
            if (KeyOverlay* keys = parts_.screens.front().keyOverlay()) keys->open();
        },
        tr("What each key does here and now."));
    help->addAction(keys_);
    introduction_ = ownEntry(
        tr("Introduction and Demo Shoot"),
        [this] {
            parts_.opening.prepareScan();
            parts_.start.showWelcome();
        },
        tr("What the program is for, and a small shooting day to try it with."));
    introduction_->setObjectName(QStringLiteral("introduction"));
    help->addAction(introduction_);
    addHelpEntries(desktop_, &window_, help);
}

void MainMenus::makeTools() {
    auto* tools = new ToolRow(tr("Tools"));
    tools->setObjectName(QStringLiteral("tools"));
    window_.addToolBar(tools);
    // The texts of operations on all clips, and of their end, are shortened last.
    tools->add(of("undo"), of("undo")->text(), 1);
    tools->add(of("redo"), of("redo")->text(), 0);
    tools->addSeparator();
    tools->add(of("runSmartAudioAnalysis"), tr("Smart Audio"), 5);
    tools->add(of("toggleApproved"), of("toggleApproved")->text(), 8);
    of("toggleApproved")
        ->setToolTip(tr("A mark for people, in the lists. Lock is what keeps the sync as it is."));
    tools->add(of("toggleLocked"), tr("Lock"), 7);
    for (const char* decision : {"toggleApproved", "toggleLocked"}) {
        of(decision)->setCheckable(true);
        connect(of(decision), &QAction::triggered, this, [this] { update(); }); // a click has checked it
    }
    tools->add(rename_, tr("Rename"), 6);
    resync_ = ownEntry(tr("Re-sync"), [this] {
        if (parts_.screens.clips().empty())
            of("resyncAllClips")->trigger();
        else
            parts_.screens.front().run("resyncClip");
    });
    resync_->setObjectName(QStringLiteral("resync"));
    resync_->setIcon(icon(Glyph::refresh));
    tools->add(resync_, tr("Re-sync"), 4);
    tools->add(of("loadALE"), tr("Report"), 3);
    tools->add(of("buildAtmo"), tr("Room Tone"), 2);
    tools->add(of("syncLockitNetwork"), tr("LockitNetwork"), 1);
    auto* stretch = new QWidget;
    stretch->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    tools->addWidget(stretch);
    tools->add(of("exportFCPXML"), tr("Export"), 9);
}

void MainMenus::showKeys() {
    const ShortcutBindings& bindings = desktop_.players().shortcuts()->bindings();
    std::vector<std::pair<QAction*, QKeySequence>> ofUser;
    for (const auto& [id, action] : ofCommands_) {
        const commands::Command& row = desktop_.command(id);
        if (!row.action) continue;
        const auto key = shortcutInMenus(bindings, *row.action);
        action->setProperty(keyOfUser, key.has_value());
        action->setShortcut(key ? QKeySequence() : keyOfEntry(row.entry->key));
        if (key) ofUser.emplace_back(action, menuKey(*key));
    }
    // If two entries had the same key, the desktop would run neither.
    for (const auto& [action, key] : ofUser)
        if (entryWithKey(window_, key) == nullptr) action->setShortcut(key);
}

void MainMenus::enableForClips(const std::vector<UUID>& clips) {
    const SyncGroupList& groups = desktop_.controller().work().syncGroups();
    std::map<std::string_view, QAction*> left; // those that none of the clips seen so far enables
    for (const auto& [id, action] : ofCommands_)
        if (desktop_.command(id).isOfOneClip()) left.emplace(id, action);
    for (const UUID& clip : clips) {
        if (left.empty()) break;
        const SyncGroup* group = groups.find(clip);
        if (group == nullptr) continue;
        std::erase_if(left, [&](const auto& entry) {
            const bool applies = desktop_.isEnabled(entry.first, group);
            if (applies) entry.second->setEnabled(true);
            return applies;
        });
    }
    for (const auto& [id, action] : left) action->setEnabled(false);
}

void MainMenus::update() {
    isKeyRefused_ = false;
    const std::vector<UUID> clips = parts_.screens.clips();
    for (const auto& [id, action] : ofCommands_)
        if (!desktop_.command(id).isOfOneClip()) action->setEnabled(desktop_.isEnabled(id));
    enableForClips(clips);
    const auto used = static_cast<std::size_t>(modeOfAnalysis(desktop_.settings()));
    for (std::size_t i = 0; i < ofAnalysisModes_.size(); ++i) {
        ofAnalysisModes_[i]->setEnabled(of("runSmartAudioAnalysis")->isEnabled());
        ofAnalysisModes_[i]->setChecked(i == used);
    }
    if (clips.size() != 1) of("exportSingleClip")->setEnabled(false);
    of("clusterLoad")->setEnabled(!clips.empty());
    const QAction& resync = *of(clips.empty() ? "resyncAllClips" : "resyncClip");
    resync_->setEnabled(resync.isEnabled());
    resync_->setStatusTip(resync.statusTip());
    resync_->setToolTip(
        clips.size() < 2
            ? resync.text()
            : tr("Re-sync %1").arg(translatedSentence(counted(std::ssize(clips), "clip", "clips"))));
    const SyncGroupList& all = desktop_.controller().work().syncGroups();
    of("toggleLocked")->setText(desktop_.title("toggleLocked", clips));
    for (const auto& [id, decided] : {std::pair("toggleApproved", &SyncGroup::isApproved),
                                      std::pair("toggleLocked", &SyncGroup::isLocked)})
        of(id)->setChecked(!clips.empty() && std::ranges::all_of(clips, [&, is = decided](const UUID& clip) {
            const SyncGroup* group = all.find(clip);
            return group != nullptr && group->*is;
        }));
    const commands::CommandContext& context = desktop_.context();
    scan_->setEnabled(commands::isScanIdle(context));
    introduction_->setEnabled(scan_->isEnabled());
    scanAgain_->setEnabled(commands::hasClipsWhileIdle(context) && desktop_.isEnabled("startScan"));
    addCard_->setEnabled(scanAgain_->isEnabled());
    find_->setEnabled(commands::hasClipsWhileIdle(context));
    fullscreen_->setEnabled(find_->isEnabled());
    for (QAction* filter : filters_) filter->setEnabled(find_->isEnabled());
    listen_->setEnabled(commands::hasClipsWhileIdle(context) &&
                        !desktop_.controller().derivedDoubts().listening());
    compare_->setEnabled(desktop_.isEnabled("compareSound") &&
                         !desktop_.controller().soundComparison().progress());
    const auto compared = std::ssize(clipsToCompare());
    compare_->setText(
        compared > 0 ? tr("Compare Sound of %1").arg(translatedSentence(counted(compared, "clip", "clips")))
                     : tr("Compare Sound of All Clips"));
    rename_->setEnabled(clips.size() == 1 || (!clips.empty() && of("batchRename")->isEnabled()));
    const bool isPlaying = parts_.screens.isPlaying();
    results_->setEnabled(isPlaying);
    keys_->setEnabled(isPlaying);
    review_->setEnabled(!isPlaying && !clips.empty());
    const UndoState undo = desktop_.controller().work().undoState();
    const auto name = [this](std::string_view id, const std::optional<std::string>& step,
                             const QString& withStep) {
        of(id)->setText(step ? withStep.arg(translated(*step).replace(QLatin1Char('&'), QStringLiteral("&&")))
                             : translated(desktop_.command(id).title));
    };
    name("undo", undo.undoActionName, tr("Undo %1"));
    name("redo", undo.redoActionName, tr("Redo %1"));
}

} // namespace orvane::views
