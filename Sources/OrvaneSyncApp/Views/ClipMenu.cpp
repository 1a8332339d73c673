#include "OrvaneSyncApp/Views/ClipMenu.h"

#include "OrvaneDesignKit/Icons.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/ViewModels/Inspector/ClipParts.h"
#include "OrvaneSyncApp/ViewModels/Results/ClipInLists.h"
#include "OrvaneSyncApp/ViewModels/Results/LockOfClips.h"
#include "OrvaneSyncApp/Views/MatchAgain.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>

#include <algorithm>

namespace orvane::views {

namespace {

constexpr std::string_view clipCommands[] = {"toggleApproved",
                                             "toggleLocked",
                                             "toggleExcludedFromExport",
                                             "toggleExcludedFromMulticam",
                                             "togglePickup",
                                             "confirmAmbiguousMatch",
                                             "resyncClip",
                                             "resetClipToAutoSync"};

} // namespace

void ClipMenu::fill(QMenu& menu, const std::vector<UUID>& clips) const {
    menu.setToolTipsVisible(true);
    if (clips.size() == 1) addRecordings(menu, clips.front());
    const ClipMenu self = *this; // the menu may outlive this
    for (const std::string_view id : clipCommands) {
        QAction* action =
            menu.addAction(desktop_.title(id, clips), of_, [self, id, clips] { self.run(id, clips); });
        action->setToolTip(translated(desktop_.command(id).help));
        action->setEnabled(std::ranges::any_of(clips, [&](const UUID& clip) {
            const SyncGroup* group = desktop_.controller().work().syncGroups().find(clip);
            return group != nullptr && desktop_.isEnabled(id, group);
        }));
    }
    menu.addAction(design::icon(design::Glyph::waveform), QObject::tr("Run Smart Audio"), of_, [self, clips] {
        JSON arguments = JSON::object();
        arguments.set("forceOverwriteManualTracks", false);
        self.desktop_.runForClips("runSmartAudioForGroup", clips, std::move(arguments));
        self.done(clips);
    });
    menu.addSeparator();
    menu.addAction(QObject::tr("Rename…"), of_, [self, clips] {
        clips.size() == 1 ? self.rename(clips.front()) : showBatchRenamer(self.desktop_, self.of_, clips);
    });
}

void ClipMenu::run(std::string_view command, const std::vector<UUID>& clips) const {
    if (command == "resyncClip") {
        matchAgain(desktop_, of_, clips);
    } else if (command == "toggleLocked" && clips.size() > 1) {
        lock(clips);
    } else {
        const SyncGroupList before = desktop_.controller().work().syncGroups();
        desktop_.runForClips(command, clips);
        // Of one clip the list shows the change.
        const std::size_t changed =
            desktop_.controller().work().syncGroups().changesSince(before).changed.size();
        if (clips.size() > 1 && changed > 0)
            design::showToast(of_->window(), QObject::tr("%1: %2 changed. Undo takes it back.")
                                                 .arg(translated(desktop_.command(command).title),
                                                      translatedSentence(counted(changed, "clip", "clips"))));
    }
    done(clips);
}

void ClipMenu::lock(const std::vector<UUID>& clips) const {
    const LockOfClips lock = LockOfClips::of(desktop_.controller(), clips);
    desktop_.controller().withUndo(lock.isLocking ? undoSteps::lock : undoSteps::unlock,
                                   [&] { desktop_.runForClips("toggleLocked", lock.clips); });
    design::showToast(of_->window(),
                      QObject::tr("%1. Undo takes it back.").arg(translatedSentence(lock.text())));
}

void ClipMenu::addRecordings(QMenu& menu, const UUID& clip) const {
    const auto candidates = recordingCandidates(desktop_.controller().work(), clip);
    if (candidates.empty()) return;
    menu.addAction(QObject::tr("Recording of this clip"))->setEnabled(false); // a heading
    for (const RecordingCandidate& one : candidates) {
        QAction* action =
            menu.addAction(translatedSentence(one.text), of_, [self = *this, clip, match = one.matchID] {
                JSON arguments = JSON::object();
                arguments.set("matchID", match.text());
                self.desktop_.runForClips("chooseRecording", {clip}, std::move(arguments));
                self.done({clip});
            });
        action->setCheckable(true);
        action->setChecked(one.isFirst);
    }
    menu.addSeparator();
}

void ClipMenu::rename(const UUID& clipID) const {
    const std::vector<UUID> clips{clipID};
    const SyncGroup* clip = desktop_.controller().work().syncGroups().find(clipID);
    if (clip == nullptr) return;
    QInputDialog question(of_);
    question.setWindowTitle(QObject::tr("Rename clip"));
    // The name without the parts that the naming rules add to every name, such as the camera.
    const NamePart part = NamePart::of(desktop_.controller(), *clip);
    const std::string& automatic = part.automatic;
    const QString present = text(part.name.empty() ? automatic : part.name);
    const auto preview = [&](const QString& typed) {
        const SyncGroup* now = desktop_.controller().work().syncGroups().find(clipID);
        if (now == nullptr) return;
        const auto change =
            NameChange::of(desktop_.controller(), *now, typed == present ? part.name : utf8(typed));
        const QString others = translatedSentence(change.othersText());
        question.setLabelText(QObject::tr("Clip name; empty: by the naming rules\nIn Final Cut Pro: %1")
                                  .arg(text(change.exported)) +
                              (others.isEmpty() ? QString() : QLatin1Char('\n') + others));
    };
    QObject::connect(&question, &QInputDialog::textValueChanged, &question, preview);
    question.setTextValue(present); // the dialog selects this text
    preview(present);
    if (auto* field = question.findChild<QLineEdit*>()) field->setPlaceholderText(text(automatic));
    // If the name was not changed, the clip keeps its name by the naming rules.
    if (question.exec() != QDialog::Accepted || question.textValue() == present) return;
    JSON arguments = JSON::object();
    arguments.set("name", utf8(question.textValue()));
    desktop_.runForClips("setManualClipName", clips, std::move(arguments));
    done(clips);
}

} // namespace orvane::views
