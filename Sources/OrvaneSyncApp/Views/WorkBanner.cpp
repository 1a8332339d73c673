#include "OrvaneSyncApp/Views/WorkBanner.h"

#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/ViewModels/Results/ListeningTexts.h"
#include "OrvaneSyncApp/ViewModels/Results/Questions.h"
#include "OrvaneSyncApp/ViewModels/Sheets/ReportTexts.h"
#include "OrvaneSyncApp/Views/Asking.h"
#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/Leaving.h"
#include "OrvaneSyncApp/Views/SessionsPanel.h"
#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/StartView.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QPointer>

#include <algorithm>
#include <memory>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

/// `clips`: those with changes that were not saved when the program was quit.
QString leftUnsavedText(const SessionInfo& session, int clips) {
    return QObject::tr(
               "The session “%1” is open as it was last saved, %2. What was decided of %3 after that could "
               "not be saved when the program was quit.")
        .arg(text(session.name), dayText(session.modified),
             translatedSentence(counted(clips, "clip", "clips")));
}

/// Clips whose tracks an analysis has chosen, but whose results were not found in the cache.
std::ptrdiff_t unanalysedClips(const ImportController& controller) {
    return std::ranges::count_if(controller.work().syncGroups(), [&](const SyncGroup& clip) {
        return clip.tracksManuallyEdited == false &&
               !controller.smartAudio().state().results.contains(clip.id);
    });
}

/// The clips whose camera file was not in the work before.
std::ptrdiff_t newClips(const SyncGroupList& clips, const SyncGroupList& before) {
    std::unordered_set<std::string_view> known;
    for (const SyncGroup& clip : before) known.insert(clip.video.url.path);
    return std::ranges::count_if(clips,
                                 [&](const SyncGroup& clip) { return !known.contains(clip.video.url.path); });
}

/// Which days the clips were matched with, if that is not the default; else empty.
QString daysText(const WorkState& work) {
    const MatchingDays days = work.matchRules().days;
    if (days == settings::matchingDays.standard()) return {};
    const QString name = translatedSentence(displayText(days));
    return days == work.environment.settings->get(settings::matchingDays)
               ? QObject::tr("Days whose recordings a clip may get, by the settings: %1.").arg(name)
               : QObject::tr("Days whose recordings a clip may get, for this work only: %1.").arg(name);
}

QString keptText(std::ptrdiff_t newOnes) {
    return newOnes == 0 ? QObject::tr("All decisions were kept.")
                        : QObject::tr("All decisions were kept; the scan found %1.")
                              .arg(translatedSentence(counted(newOnes, "new clip", "new clips")));
}

} // namespace

WorkBanner::WorkBanner(Desktop& desktop) : desktop_(desktop) {
    ofWork_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::lockit) showLockit();
        if (field == ImportField::report) showReportResult();
        if (field == ImportField::smartAudio || field == ImportField::smartAudioProgress) showAnalysis();
        if (field == ImportField::undoState) followUndo();
    });
    ofSessions_ = desktop_.sessions().onChange([this](SessionField field) {
        if (field == SessionField::problem) showProblem();
        if (field == SessionField::lastSaveError) showSaving();
        if (field == SessionField::settingsOfFolder) showFolderSettings();
    });
    ofSettings_ = desktop_.settings().onChange(
        [self = QPointer(this), main = desktop_.mainThread()](const std::string& key) {
            if (key.starts_with("smartAudio."))
                main->post([self] {
                    if (self) self->showOutdated();
                });
        });
}

void WorkBanner::showNotice(Signal signal, const QString& what) {
    isKept() ? showToast(window(), what) : show(signal, what);
}

void WorkBanner::showOfPage(Signal signal, const QString& what) { showNotice(signal, ofPage_ = what); }

void WorkBanner::forget(QString& message) {
    if (!message.isEmpty()) remove(message);
    message.clear();
}

void WorkBanner::showAnalysis() {
    const SmartAudioState& state = desktop_.controller().smartAudio().state();
    const SyncGroupList& clips = desktop_.controller().work().syncGroups();
    analysedClips_ = std::max(analysedClips_, state.progress.total);
    if (state.isAnalyzing && !wasAnalysing_ && !clips.empty()) analysed_ = clips.front().id;
    if (state.isAnalyzing) forget(unanalysed_);
    if (!std::exchange(wasAnalysing_, state.isAnalyzing) || state.isAnalyzing) return;
    if (desktop_.controller().smartAudio().outdatedCount() == 0) forget(outdated_);
    // For a single clip the timeline shows the result. Results of work that is not open are not reported.
    const bool isOfOpenWork = analysed_ && clips.find(*analysed_) != nullptr;
    if (std::exchange(analysedClips_, 0) < 2 || !isOfOpenWork) return;
    if (const auto warning = unheardWarning(WorkSnapshot(desktop_.controller())))
        return showNotice(Signal::missing, translatedSentence(*warning));
    int heard = 0, withSound = 0;
    for (const SyncGroup& clip : clips) {
        if (clip.isMOS() || !clip.matchStatus.isSettled()) continue;
        ++withSound;
        if (state.results.heard(clip.id) != nullptr) ++heard;
    }
    showNotice(Signal::none,
               tr("Smart Audio has analyzed %1 of %2 clips with sound.").arg(heard).arg(withSound));
}

void WorkBanner::beginScan() {
    clearAll();
    showLostAgain_ = nullptr;
}

void WorkBanner::showLost(const ClipDecisions& before, const WorkFiles& workBefore) {
    const ClipDecisions lost = before.without(ClipDecisions::of(desktop_.controller()));
    showLostAgain_ = [this, before, workBefore] { showLost(before, workBefore); };
    const auto isLastStep = [this] {
        const auto& last = desktop_.controller().work().undoState().undoActionName;
        if (last == undoSteps::scanAndMatch.actionName) return true;
        showToast(window(),
                  tr("Other steps came after the scan: Undo takes these back first, then the scan."));
        return false;
    };
    show(
        Signal::doubtful,
        lost_ = tr("The scan replaced the clips and removed these decisions: %1.").arg(decisionsText(lost)),
        tr("Keep the Decisions"),
        [this, isLastStep, before, workBefore] {
            if (isLastStep()) keepDecisions(before, workBefore);
        },
        tr("Undo"),
        [this, isLastStep] {
            if (!isLastStep()) return;
            forget(lost_);
            desktop_.run("undo");
        });
    keep(); // no menu offers it again
}

void WorkBanner::keepDecisions(const ClipDecisions& before, const WorkFiles& workBefore) {
    forget(lost_);
    showLostAgain_ = nullptr;
    desktop_.controller()
        .recordings()
        .keepDecisions(workBefore)
        .whenDone([self = QPointer(this), before, workBefore](const std::exception_ptr& raised) {
            if (!self || raised) return;
            const auto lost = before.without(ClipDecisions::of(self->desktop_.controller()));
            if (lost.any())
                return self->showScanWarnings(
                    Signal::doubtful,
                    tr("The decisions were kept, but for those of clips whose camera file the scan did "
                       "not find or left out as a copy: %1.")
                        .arg(decisionsText(lost)));
            self->showKept(workBefore);
        });
}

void WorkBanner::showKept(const WorkFiles& before) {
    const WorkFiles now = desktop_.controller().recordings().workFiles();
    inBackground(
        this,
        [before, now, rules = NamingRules::of(desktop_.settings())] {
            return RenamedClips::of(before, now, rules);
        },
        [this, clips = newClips(now.groups, before.groups), now](const RenamedClips& renamed) {
            if (desktop_.controller().recordings().workFiles().scanned != now.scanned) return;
            showScanWarnings(Signal::none, keptText(clips) +
                                               (renamed.count > 0 ? QStringLiteral(" ") : QString()) +
                                               translatedSentence(renamed.text()));
        });
}

void WorkBanner::followUndo() {
    const UndoState state = desktop_.controller().work().undoState();
    const auto isNext = [](const std::optional<std::string>& step, const UndoStep& which) {
        return step == which.actionName;
    };
    const bool canRedoScan = isNext(state.redoActionName, undoSteps::scanAndMatch);
    const bool isScanLast = isNext(state.undoActionName, undoSteps::scanAndMatch);
    if (canRedoScan) {
        forget(lost_);
    } else if (isScanLast && lost_.isEmpty() && showLostAgain_) {
        const auto again = showLostAgain_; // a copy: the call sets it
        again();
    }
}

void WorkBanner::showProblem() {
    const auto& problem = desktop_.sessions().problem();
    if (!problem) return;
    const bool areClipsKept = problem->find("groups.json.other") != std::string::npos;
    show(Signal::doubtful, translatedSentence(*problem), areClipsKept ? tr("How to See Them") : QString(),
         [this] {
             tell(window(), tr("The clips that were kept"),
                  tr("They are those of the other program, with what was decided there; the open ones are "
                     "those of this window. To see the others, copy the session's folder to another place, "
                     "call the kept file groups.json in the copy, and drop the copy on this window. The "
                     "clips that are open are then kept beside it."));
         });
}

void WorkBanner::showSaving() {
    const auto& failure = desktop_.sessions().lastSaveError();
    if (!failure) return forget(unsaved_);
    show(Signal::missing,
         unsaved_ = tr("The session could not be saved: %1. It is tried again every 5 seconds.")
                        .arg(whyNotSaved(*failure)));
}

void WorkBanner::showOutdated() {
    const SmartAudioController& smartAudio = desktop_.controller().smartAudio();
    const std::size_t clips = smartAudio.state().isAnalyzing ? 0 : smartAudio.outdatedCount();
    if (clips == 0) return forget(outdated_);
    show(Signal::doubtful,
         outdated_ =
             tr("The settings of Smart Audio have changed. Made with other settings: the analysis of %1.")
                 .arg(translatedSentence(counted(static_cast<long long>(clips), "clip", "clips"))),
         tr("Run Again"), [this] {
             forget(outdated_);
             desktop_.controller().smartAudio().reanalyseOutdated();
         });
}

void WorkBanner::showKnown(const SessionInfo& session, std::function<void()> open) {
    show(Signal::doubtful,
         known_ = tr("These folders are in the session “%1” of %2 already: %3 clips, %4 locked.")
                      .arg(views::text(session.name), dayText(session.modified),
                           QString::number(session.groupCount), QString::number(session.lockedCount)),
         tr("Open It"), std::move(open));
}

void WorkBanner::showSession(const SessionInfo& session) {
    if (const int unsaved = takeLeftUnsaved(session); unsaved > 0)
        return show(Signal::doubtful, leftUnsavedText(session, unsaved));
    desktop_.controller().smartAudio().recalled().whenDone(
        [self = QPointer(this), id = session.id](const std::exception_ptr& raised) {
            if (self && !raised && self->desktop_.sessions().currentSessionId() == id) self->showUnanalysed();
        });
}

void WorkBanner::showSessionOfStart(const SessionInfo& session) {
    // A message about what is wrong, or about what came with the session, is more important.
    if (!text().isEmpty() || desktop_.controller().work().syncGroups().empty()) return;
    if (const int unsaved = takeLeftUnsaved(session); unsaved > 0)
        show(Signal::doubtful, leftUnsavedText(session, unsaved));
    else if (!showUnanalysed())
        showToast(window(), tr("The session “%1” is open as it was last saved, %2.")
                                .arg(views::text(session.name), dayText(session.modified)));
}

bool WorkBanner::showUnanalysed() {
    const auto clips = unanalysedClips(desktop_.controller());
    if (clips == 0) return false;
    show(Signal::none,
         unanalysed_ = tr("Smart Audio has chosen the channels, but its results are not stored any more for "
                          "%1: they must be analyzed again.")
                           .arg(translatedSentence(counted(clips, "clip", "clips"))),
         tr("Run Smart Audio"), [this] {
             JSON arguments = JSON::object();
             arguments.set("mode", settings::smartAudioMode.write(modeOfAnalysis(desktop_.settings())));
             desktop_.run("runSmartAudioAnalysis", std::move(arguments));
         });
    return true;
}

void WorkBanner::showFolderSettings() {
    constexpr qsizetype most = 4;
    const std::vector<std::string>& keys = desktop_.sessions().places().appliedSettings();
    QStringList names;
    for (const std::string& label : labelsOfSettings(keys)) names << translated(label);
    QString list = names.mid(0, most).join(QStringLiteral(", "));
    if (const qsizetype more = std::ssize(keys) - std::min(most, names.size()); names.isEmpty())
        list = tr("%1 settings").arg(more);
    else if (more > 0)
        list = tr("%1 and %2 more").arg(list).arg(more);
    show(Signal::none,
         tr("The folder “%1” has settings of its own, which are in force with its session: %2.")
             .arg(views::text(desktop_.sessions().places().folderOfOpenSession().value_or("")), list),
         tr("Settings…"), [this] { SettingsWindow(desktop_, window()).exec(); });
}

void WorkBanner::showReportResult() {
    const ReportController& reports = desktop_.controller().reports();
    if (!reports.aleMatchStatus()) {
        if (reports.aleFileURL() && desktop_.controller().work().syncGroups().empty())
            show(Signal::none, tr("“%1” is read. Its rows go to the clips of the next scan.")
                                   .arg(views::text(reports.aleFileURL()->lastPathComponent())));
        return;
    }
    QString said = translatedSentence(*reports.aleMatchStatus());
    if (const std::string rows = reportTexts::rowsWithoutClip(reports); !rows.empty())
        said += QStringLiteral(". ") + translatedSentence(rows) + QStringLiteral(".");
    const std::string column = reports.betterColumn();
    if (!column.empty())
        said += QLatin1Char(' ') + tr("More of them name one in the column “%1”.").arg(views::text(column));
    show(
        column.empty() ? Signal::none : Signal::doubtful, said, tr("Report…"),
        [this] { showReport(desktop_, window()); }, column.empty() ? QString() : tr("Match by This Column"),
        [this, column] { matchReportBy(column); });
}

void WorkBanner::matchReportBy(const std::string& column) {
    const auto& report = desktop_.controller().reports().aleFileURL();
    if (!report) return;
    const auto set = [this](std::string_view key, JSON value) {
        JSON arguments = JSON::object();
        arguments.set("key", key);
        arguments.set("value", std::move(value));
        desktop_.run("setSetting", std::move(arguments));
    };
    set(settings::reportMatchColumn.key, JSON(column));
    set(settings::reportMatchField.key, settings::reportMatchField.write(ReportMatchField::column));
    JSON arguments = JSON::object();
    arguments.set("path", report->path);
    desktop_.run("loadALE", std::move(arguments));
}

void WorkBanner::showProject() {
    if (desktop_.controller().work().syncGroups().empty()) return; // its folders are not here
    const QString locks = tr("A project file holds no locks: they are in the session where they were set.");
    QStringList names;
    for (const FileURL& video : desktop_.controller().project().clipsWithoutRecording())
        names << views::text(video.lastPathComponent());
    if (names.isEmpty()) return showScanWarnings(Signal::none, locks);
    showScanWarnings(
        Signal::doubtful,
        tr("Recordings that were attached by hand did not come back with the project: %1. Attach them "
           "again with Ctrl+T, or open the session in which that was done.")
                .arg(names.join(QStringLiteral(", "))) +
            QLatin1Char(' ') + locks);
}

void WorkBanner::showScanWarnings(Signal signal, const QString& notice) {
    inBackground(
        this,
        [work = std::make_shared<const WorkSnapshot>(desktop_.controller())] { return scanWarnings(*work); },
        [this, signal, notice,
         scanned = desktop_.controller().scan().scanResult()](const std::vector<std::string>& warnings) {
            if (desktop_.controller().scan().scanResult() != scanned) return;
            QStringList all;
            for (const std::string& warning : warnings) {
                const QString line = translatedSentence(warning);
                all << line.left(1).toUpper() + line.mid(1) + QLatin1Char('.');
            }
            QStringList shown;
            if (!notice.isEmpty()) shown << notice;
            if (const QString days = daysText(desktop_.controller().work()); !days.isEmpty()) shown << days;
            shown << all.mid(0, 1);
            if (shown.isEmpty()) return;
            ofPage_ = shown.join(QLatin1Char('\n'));
            if (!text().isEmpty()) return showToast(window(), ofPage_);
            show(all.isEmpty() ? signal : Signal::doubtful, ofPage_,
                 all.size() > 1 ? tr("All %1 Warnings").arg(all.size()) : QString(), [this, all] {
                     tell(window(), tr("Warnings of the scan"), all.join(QStringLiteral("\n\n")));
                 });
        });
}

void WorkBanner::showListened(const std::vector<CardDoubt>& before) {
    const ImportController& controller = desktop_.controller();
    const auto now = controller.doubts().summary(controller.work().syncGroups());
    const bool isNew = std::ranges::any_of(
        now, [&](const CardDoubt& one) { return std::ranges::find(before, one) == before.end(); });
    const auto doubts = now.empty() ? DoubtsAfterListening::none
                        : isNew     ? DoubtsAfterListening::found
                                    : DoubtsAfterListening::known;
    show(Signal::none, translatedSentence(heardText(controller.derivedDoubts().listened(),
                                                    controller.derivedDoubts().notCompared(), doubts)));
}

void WorkBanner::showCompared(std::function<void(const std::vector<UUID>&)> showClips) {
    const ComparedSound& compared = desktop_.controller().soundComparison().latest();
    const QString said = translatedSentence(comparedText(compared));
    if (compared.off.empty() && !compared.unlike.empty())
        return show(Signal::none, said, tr("Show Clips Not Compared"),
                    [showClips = std::move(showClips), clips = compared.unlike] { showClips(clips); });
    if (compared.off.empty()) return showNotice(Signal::none, said);
    std::vector<UUID> off;
    for (const ComparedSound::Off& one : compared.off) off.push_back(one.groupID);
    compared_ = said;
    show(
        Signal::doubtful, said, tr("Show Clips"),
        [showClips = std::move(showClips), off = std::move(off)] { showClips(off); }, tr("Move Their Sound"),
        [this] {
            desktop_.run("moveAsCompared", {}, [self = QPointer(this)](const JSON& answer) {
                if (!self) return;
                self->forget(self->compared_);
                const auto moved = answer.find("changedClips")->integer().value_or(0);
                showToast(self->window(), tr("Sound moved: %1. Undo takes it back.")
                                              .arg(translatedSentence(counted(moved, "clip", "clips"))));
            });
        });
}

void WorkBanner::showLockit() {
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

} // namespace orvane::views
