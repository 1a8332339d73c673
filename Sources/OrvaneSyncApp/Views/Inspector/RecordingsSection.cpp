#include "OrvaneSyncApp/Views/Inspector/RecordingsSection.h"

#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"
#include "OrvaneSyncApp/Views/Asking.h"
#include "OrvaneSyncApp/Views/Inspector/AttachSheet.h"
#include "OrvaneSyncApp/Views/MatchAgain.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QPointer>
#include <QShortcut>
#include <QVBoxLayout>

namespace orvane::views {

using namespace design;

RecordingsSection::RecordingsSection(Desktop& desktop)
    : InspectorSection(desktop, QStringLiteral("recordings"), tr("Recordings")) {
    add(prompt_ = label(QString()));
    rows_ = new QVBoxLayout;
    rows_->setSpacing(space::small);
    add(rows_);
    auto* buttons = new FlowLayout;
    buttons->addWidget(confirm_ = commandButton("confirmAmbiguousMatch"));
    buttons->addWidget(attach_ = button(tr("Attach…"), Glyph::plus));
    attach_->setToolTip(tr("%1 (%2)").arg(tr("Adds a recording of this shoot to the clip"),
                                          QLatin1String(reviewKeys::attach)));
    connect(attach_, &QPushButton::clicked, this, [this] { chooseFromPool(); });
    buttons->addWidget(attachFile_ = button(tr("Attach File…")));
    attachFile_->setToolTip(translated(RecordingsPart::choosePrompt));
    connect(attachFile_, &QPushButton::clicked, this, [this] { chooseFile(); });
    buttons->addWidget(
        commandButton("resyncClip", {}, [this] { matchAgain(this->desktop(), this, {clipID()}); }));
    buttons->addWidget(detach_ = commandButton("removeVideoFromSync"));
    detach_->setToolTip(translated(RecordingsPart::detachHint));
    add(buttons);
    addKeys();
    add(isSilent_ = commandBox("toggleMOS", tr("MOS (no audio)")));
}

/// Keys that work also while the section is folded.
void RecordingsSection::addKeys() {
    const auto add = [this](const QString& key, auto does) {
        connect(new QShortcut(QKeySequence(key), this), &QShortcut::activated, this, does);
    };
    add(QLatin1String(reviewKeys::attach), [this] {
        if (!shown_) return;
        // A message instead of the sheet, because the keys that choose in the sheet usually follow.
        shown_->isLocked ? tell(window(), tr("The clip is locked"),
                                translated("⟨lockCurrent⟩ unlocks it, then Ctrl+T attaches a recording."))
                         : chooseFromPool();
    });
    for (int i = 0; i < reviewKeys::mostChosen; ++i)
        add(QString::fromLatin1(reviewKeys::choose).arg(i + 1),
            [this, index = static_cast<std::size_t>(i)] { choose(index); });
}

void RecordingsSection::choose(std::size_t index) {
    if (!shown_) return;
    if (index < shown_->recordings.size() && shown_->hasChoice()) return use(index);
    const QString why =
        shown_->isLocked
            ? translated("The clip is locked: ⟨lockCurrent⟩ unlocks it, then its recording can be chosen.")
        : shown_->hasChoice() ? tr("The clip has no recording %1 to choose.").arg(index + 1)
                              : tr("The clip has no other recording to choose.");
    desktop().sayWhyNot(why);
}

void RecordingsSection::use(std::size_t index) {
    JSON arguments = forClip();
    arguments.set("matchID", shown_->recordings[index].files.front().matchID.text());
    run("chooseRecording", std::move(arguments));
}

void RecordingsSection::show(const SyncGroup& clip) {
    const RecordingsPart part = RecordingsPart::of(desktop().controller(), clip);
    isSilent_->setChecked(part.isMeantSilent);
    if (shown_ == part && shownClip_ == clip.id) return;
    shownClip_ = clip.id;
    fill(part);
    shown_ = part;
}

void RecordingsSection::fill(const RecordingsPart& part) {
    setSummary(part.recordings.empty() ? tr("none") : QString::number(part.recordings.size()));
    prompt_->setText(translatedSentence(part.prompt));
    prompt_->setVisible(!part.prompt.empty());
    clear(rows_);
    for (std::size_t i = 0; i < part.recordings.size(); ++i) rows_->addWidget(recordingRow(part, i));
    confirm_->setVisible(part.isAmbiguous);
    isSilent_->setVisible(part.recordings.empty());
    attach_->setEnabled(!part.isLocked);
    attachFile_->setEnabled(!part.isLocked);
}

QWidget* RecordingsSection::recordingRow(const RecordingsPart& part, std::size_t index) {
    const RecordingsPart::Recording& recording = part.recordings[index];
    auto* panel = new QFrame;
    panel->setProperty("banner", true);
    auto* column = new QVBoxLayout(panel);
    column->setContentsMargins(space::small, space::tight, space::tight, space::small);
    column->setSpacing(space::tight);
    for (const RecordingsPart::File& file : recording.files) {
        auto* row = new QHBoxLayout;
        row->setSpacing(space::tight);
        QLabel* name = label(breakableFile(file.name));
        name->setToolTip(text(file.name));
        row->addWidget(name, 1);
        QPushButton* remove = button({}, Glyph::cross, Weight::quiet);
        remove->setAccessibleName(tr("Take %1 off the clip").arg(text(file.name)));
        remove->setToolTip(translated(desktop().command("removeAudioMatch").help));
        remove->setEnabled(!part.isLocked);
        connect(remove, &QPushButton::clicked, this, [this, id = file.matchID] {
            JSON arguments = forClip();
            arguments.set("matchID", id.text());
            run("removeAudioMatch", std::move(arguments));
        });
        row->addWidget(remove, 0, Qt::AlignTop);
        column->addLayout(row);
        column->addWidget(facts(translatedSentence(file.facts)));
    }
    const bool isHeard = index == 0 && !part.isAmbiguous;
    if (isHeard && part.recordings.size() > 1)
        column->addWidget(new Badge(Signal::matched, tr("Heard")));
    else if (part.hasChoice()) {
        QPushButton* choose =
            button(tr("Use This Recording"), part.isAmbiguous ? Weight::primary : Weight::normal);
        choose->setAccessibleName(tr("Use %1").arg(text(recording.title)));
        const QString help = translated(desktop().command("chooseRecording").help);
        choose->setToolTip(index < reviewKeys::mostChosen
                               ? tr("%1 (%2)").arg(help, translatedKey(reviewKeys::choose).arg(index + 1))
                               : help);
        connect(choose, &QPushButton::clicked, this, [this, index] { use(index); });
        column->addWidget(choose, 0, Qt::AlignLeft);
    }
    return panel;
}

Desktop::Done RecordingsSection::whenAttached() {
    return [alive = QPointer(this), id = clipID()](const JSON&) {
        if (!alive) return;
        Desktop& desktop = alive->desktop();
        desktop.runForClips("autoDetectAudioAnchor", {id});
        const SyncGroup* clip = desktop.controller().work().syncGroups().find(id);
        if (clip == nullptr) return;
        const RecordingsPart part = RecordingsPart::of(desktop.controller(), *clip);
        if (part.isOutside) desktop.sayWhyNot(translatedSentence(part.prompt));
    };
}

void RecordingsSection::chooseFromPool() {
    const auto& doubts = desktop().controller().doubts().byGroup;
    const auto own = doubts.find(clipID());
    auto* sheet = new AttachSheet(desktop(),
                                  attachableTo(desktop().controller(), clipID(),
                                               own == doubts.end() ? std::vector<SyncDoubt>() : own->second),
                                  this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->whenChosen = [this, arguments = forClip()](const UUID& audio) {
        JSON call = arguments;
        call.set("audio", audio.text());
        run("attachAudioToGroup", std::move(call), whenAttached());
    };
    sheet->whenFileWanted = [this] { chooseFile(); };
    sheet->open();
}

void RecordingsSection::chooseFile() {
    auto* dialog = new QFileDialog(this, translated(RecordingsPart::choosePrompt));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilters({tr("Sound (*.wav *.bwf *.aif *.aiff *.WAV *.BWF)"), tr("All files (*)")});
    if (const SyncGroup* own = clip(); own != nullptr && own->primaryAudio() != nullptr)
        dialog->setDirectory(QFileInfo(text(own->primaryAudio()->url.path)).path());
    connect(dialog, &QFileDialog::fileSelected, this, [this, arguments = forClip()](const QString& path) {
        JSON call = arguments;
        call.set("path", utf8(path));
        run("chooseAndAttachAudio", std::move(call), whenAttached());
    });
    dialog->open();
}

} // namespace orvane::views
