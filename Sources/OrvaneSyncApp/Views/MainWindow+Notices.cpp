#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/Views/AnalyseAgain.h"
#include "OrvaneSyncApp/Views/Asking.h"
#include "OrvaneSyncApp/Views/MainWindow.h"
#include "OrvaneSyncApp/Views/SessionsPanel.h"
#include "OrvaneSyncApp/Views/StartView.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QPointer>

#include <algorithm>
#include <utility>

namespace orvane::views {

using namespace design;

void MainWindow::showNotice(Signal signal, const QString& what) {
    const bool isOffered = !lost_.isEmpty() && banner_->text() == lost_;
    isOffered ? showToast(this, what) : banner_->show(signal, what);
}

void MainWindow::showAnalysisBanner() {
    const SmartAudioState& state = desktop_.controller().smartAudio().state();
    const SyncGroupList& clips = desktop_.controller().work().syncGroups();
    analysedClips_ = std::max(analysedClips_, state.progress.total);
    if (state.isAnalyzing && !wasAnalysing_ && !clips.empty()) analysed_ = clips.front().id;
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

void MainWindow::showLostBanner(const ClipDecisions& before, const SyncGroupList& clipsBefore) {
    const ClipDecisions lost = before.without(ClipDecisions::of(desktop_.controller()));
    const auto isLastStep = [this] {
        const auto& last = desktop_.controller().work().undoState().undoActionName;
        if (last == undoSteps::scanAndMatch.actionName) return true;
        showToast(this, tr("Other steps came after the scan: Undo takes these back first, then the scan."));
        return false;
    };
    banner_->show(
        Signal::doubtful,
        lost_ =
            tr("The scan replaced the clips and took away what was decided: %1.").arg(decisionsText(lost)),
        tr("Keep the Decisions"),
        [this, isLastStep, before, clipsBefore] {
            if (isLastStep()) keepDecisions(before, clipsBefore);
        },
        tr("Undo"),
        [this, isLastStep] {
            if (!isLastStep()) return;
            banner_->clear();
            desktop_.run("undo");
        });
}

void MainWindow::keepDecisions(const ClipDecisions& before, const SyncGroupList& clipsBefore) {
    forget(lost_);
    desktop_.controller()
        .recordings()
        .keepDecisions(clipsBefore)
        .whenDone([self = QPointer(this), before](const std::exception_ptr& raised) {
            if (!self || raised) return;
            const auto lost = before.without(ClipDecisions::of(self->desktop_.controller()));
            if (lost.any())
                return self->banner_->show(
                    Signal::doubtful,
                    tr("The decisions were kept, but for those of clips whose camera file the scan did not "
                       "find: %1.")
                        .arg(decisionsText(lost)));
            self->banner_->show(Signal::none, tr("All decisions were kept, beside the new clips."));
        });
}

void MainWindow::forgetLostDecisions() {
    const UndoState state = desktop_.controller().work().undoState();
    if (state.redoActionName == undoSteps::scanAndMatch.actionName) forget(lost_);
}

void MainWindow::showSessionProblem() {
    const auto& problem = desktop_.sessions().problem();
    if (!problem) return;
    const bool areClipsKept = problem->find("groups.json.other") != std::string::npos;
    banner_->show(
        Signal::doubtful, translatedSentence(*problem), areClipsKept ? tr("How to See Them") : QString(),
        [this] {
            tell(this, tr("The clips that were kept"),
                 tr("They are those of the other program, with what was decided there; the open ones are "
                    "those of this window. To see the others, copy the session's folder to another place, "
                    "call the kept file groups.json in the copy, and drop the copy on this window. The "
                    "clips that are open then lie beside it in turn."));
        });
}

void MainWindow::showOutdatedBanner() {
    const SmartAudioController& smartAudio = desktop_.controller().smartAudio();
    const std::size_t clips = smartAudio.state().isAnalyzing ? 0 : smartAudio.outdatedCount();
    if (clips == 0) return forget(outdated_);
    banner_->show(
        Signal::doubtful,
        outdated_ =
            tr("The settings of Smart Audio have changed. Made with other settings: the analysis of %1.")
                .arg(translatedSentence(counted(static_cast<long long>(clips), "clip", "clips"))),
        tr("Run Again"), [this] {
            forget(outdated_);
            runSmartAudioAgain(desktop_);
        });
}

void MainWindow::offerKnownSession() {
    const auto found = std::make_shared<std::optional<UUID>>();
    desktop_.sessions()
        .findSession(desktop_.controller().work().folders(), found)
        .whenDone([self = QPointer(this), found](const std::exception_ptr& raised) {
            if (!self || raised || !*found) return;
            const SessionInfo* known = self->desktop_.sessions().session(**found);
            if (known == nullptr) return;
            self->banner_->show(
                Signal::doubtful,
                tr("These folders are in the session “%1” of %2 already: %3 clips, %4 locked.")
                    .arg(text(known->name), dayText(known->modified), QString::number(known->groupCount),
                         QString::number(known->lockedCount)),
                tr("Open It"), [self, id = known->id] {
                    self->isLeavingScan_ = true;
                    self->wantsStart_ = false;
                    self->banner_->clear();
                    JSON arguments = JSON::object();
                    arguments.set("sessionId", id.text());
                    self->desktop_.run("loadSession", std::move(arguments));
                });
        });
}

} // namespace orvane::views
