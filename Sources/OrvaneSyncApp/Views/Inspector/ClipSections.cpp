#include "OrvaneSyncApp/Views/Inspector/ClipSections.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Views/DoubtBar.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QGridLayout>
#include <QLineEdit>
#include <QPointer>
#include <QVBoxLayout>

namespace orvane::views {

using namespace design;

namespace {

QGridLayout* factsGrid() {
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(space::small);
    grid->setVerticalSpacing(space::tight);
    return grid;
}

} // namespace

DoubtsSection::DoubtsSection(Desktop& desktop)
    : InspectorSection(desktop, QStringLiteral("doubts"), tr("Doubts")) {
    rows_ = new QVBoxLayout;
    rows_->setSpacing(space::small);
    add(rows_);
}

void DoubtsSection::take(const CureStep& step) {
    run(step.command, step.arguments,
        [alive = QPointer<DoubtsSection>(this), step,
         before = desktop().controller().work().syncGroups()](const JSON& answer) {
            if (alive == nullptr) return;
            if (!step.scansAgain)
                showToast(alive->window(), doneText(alive->desktop(), step, before, answer));
            else if (alive->desktop().whenScanWanted)
                alive->desktop().whenScanWanted();
        });
}

void DoubtsSection::show(const SyncGroup& clip) {
    DoubtsPart part = DoubtsPart::of(desktop().controller(), clip);
    if (shown_ == part) return;
    clear(rows_);
    if (!part.whyUnmatched.empty()) {
        rows_->addWidget(new Badge(Signal::missing, tr("No Match")));
        rows_->addWidget(label(breakable(utf8(translatedSentence(part.whyUnmatched)))));
    }
    for (const DoubtsPart::Doubt& doubt : part.doubts) {
        rows_->addWidget(new Badge(Signal::doubtful, tr("Doubtful")));
        rows_->addWidget(label(breakable(utf8(translatedSentence(doubt.message)))));
        if (!doubt.cure.empty())
            rows_->addWidget(facts(tr("→ %1").arg(breakable(utf8(translatedSentence(doubt.cure))))));
        if (doubt.steps.empty()) continue;
        auto* buttons = new FlowLayout;
        for (const CureStep& step : doubt.steps) {
            QPushButton* cure = button(translatedSentence(step.button));
            cure->setToolTip(step.scansAgain ? tr("%1 The shoot is then scanned and matched again.")
                                                   .arg(translated(desktop().command(step.command).help))
                                             : translated(desktop().command(step.command).help));
            connect(cure, &QPushButton::clicked, this, [this, step] { take(step); });
            buttons->addWidget(cure);
        }
        rows_->addLayout(buttons);
    }
    const std::size_t count = part.doubts.size() + (part.whyUnmatched.empty() ? 0 : 1);
    setSummary(QString::number(count));
    setVisible(count > 0);
    shown_ = std::move(part);
}

NameSection::NameSection(Desktop& desktop)
    : InspectorSection(desktop, QStringLiteral("name"), tr("Name and flags")) {
    name_ = new EntryField(tr("Clip name"), [this](const QString& typed) {
        JSON arguments = forClip();
        arguments.set("name", utf8(typed));
        return runFromField("setManualClipName", std::move(arguments));
    });
    name_->line()->setToolTip(tr("Empty: named by the rules of the settings"));
    add(name_);
    add(exported_ = facts({}));
    connect(name_->line(), &QLineEdit::textChanged, this, [this](const QString& typed) { preview(typed); });
    add(isPickup_ = commandBox("togglePickup", tr("Pickup")));
    add(isExcluded_ = commandBox("toggleExcludedFromExport", tr("Leave out of the export")));
    add(isOutOfMulticam_ = commandBox("toggleExcludedFromMulticam", tr("Leave out of multicam")));
    auto* buttons = new FlowLayout;
    buttons->addWidget(commandButton("markScenePickupFromHere"));
    buttons->addWidget(commandButton("resetClipToAutoSync"));
    add(buttons);
}

void NameSection::preview(const QString& name) {
    const SyncGroup* now = clip();
    if (now == nullptr) return;
    const auto change = NameChange::of(desktop().controller(), *now, utf8(name));
    const QString others = breakable(utf8(translatedSentence(change.othersText())));
    exported_->setText(tr("In Final Cut Pro: %1").arg(breakable(change.exported)) +
                       (others.isEmpty() ? QString() : QLatin1Char('\n') + others));
}

void NameSection::show(const SyncGroup& clip) {
    const NamePart part = NamePart::of(desktop().controller(), clip);
    isPickup_->setChecked(part.isPickup);
    isExcluded_->setChecked(part.isExcluded);
    isOutOfMulticam_->setChecked(part.isExcludedFromMulticam);
    if (shown_ == part) return;
    shown_ = part;
    name_->setProposal(text(part.automatic));
    name_->show(text(part.name));
    if (!name_->line()->isModified())
        exported_->setText(tr("In Final Cut Pro: %1").arg(breakable(part.exported)));
    setSummary(part.isExcluded ? tr("not exported") : part.isPickup ? tr("pickup") : QString());
}

MetadataSection::MetadataSection(Desktop& desktop)
    : InspectorSection(desktop, QStringLiteral("metadata"), tr("Metadata")) {
    rows_ = new QVBoxLayout;
    rows_->setSpacing(space::small);
    add(rows_);
    auto* buttons = new FlowLayout;
    buttons->addWidget(clearReport_ = commandButton("clearALEMetadata"));
    buttons->addWidget(clearLockit_ = commandButton("clearLockitMetadata"));
    add(buttons);
}

void MetadataSection::show(const SyncGroup& clip) {
    clearReport_->setVisible(clip.hasALEMetadata());
    clearLockit_->setVisible(clip.hasLockitMetadata());
    MetadataPart part = MetadataPart::of(desktop().controller(), clip);
    if (shown_ == part) return;
    clear(rows_);
    QGridLayout* files = factsGrid();
    for (const auto& [name, value] : part.files)
        name == MetadataPart::cameraFile || name == MetadataPart::recording ? addFileFact(files, name, value)
                                                                            : addFact(files, name, value);
    rows_->addLayout(files);
    for (const MetadataPart::Source& source : part.sources)
        for (const auto& group : source.groups) {
            rows_->addWidget(facts(tr("%1 · %2").arg(translatedSentence(source.title),
                                                     translatedSentence(rawValue(group.group)))));
            QGridLayout* grid = factsGrid();
            for (const auto& [key, value] : group.rows) addFact(grid, key, value);
            rows_->addLayout(grid);
        }
    shown_ = std::move(part);
}

NotesSection::NotesSection(Desktop& desktop)
    : InspectorSection(desktop, QStringLiteral("notes"), tr("Notes and slate")) {
    rows_ = new QVBoxLayout;
    rows_->setSpacing(space::tight);
    add(rows_);
    auto* buttons = new FlowLayout;
    // Above the texts that a search changes, and the one that comes and goes behind the other.
    buttons->addWidget(detect_ = commandButton("detectSlate", {}, [this] { searchOrStop(); }));
    buttons->addWidget(accept_ = commandButton("acceptSlate"));
    add(buttons);
    add(slate_ = label(QString()));
    add(proposal_ = facts({}));
}

void NotesSection::searchOrStop() {
    if (isSearching()) return search_->requestStop();
    search_ = run("detectSlate", forClip());
    showSearch();
    search_->whenDone([alive = QPointer(this)](const std::exception_ptr&) {
        if (alive != nullptr) alive->showSearch();
    });
}

void NotesSection::showSearch() {
    detect_->setText(isSearching() ? tr("Cancel") : translated(desktop().command("detectSlate").title));
}

void NotesSection::show(const SyncGroup& clip) {
    NotesPart part = NotesPart::of(desktop().controller(), clip);
    accept_->setVisible(!part.proposal.empty());
    if (shown_ == part) return;
    clear(rows_);
    if (part.notes.empty()) rows_->addWidget(facts(tr("Nobody wrote anything about this take.")));
    for (const auto& [who, note] : part.notes) {
        rows_->addWidget(facts(translatedSentence(who)));
        rows_->addWidget(label(breakable(note)));
    }
    QString slate = translatedSentence(part.slate);
    if (!part.slateProblem.empty()) slate += QLatin1Char('\n') + translatedSentence(part.slateProblem);
    slate_->setText(slate);
    proposal_->setText(translatedSentence(part.proposal));
    proposal_->setVisible(!part.proposal.empty());
    setSummary(part.notes.empty() ? QString() : QString::number(part.notes.size()));
    shown_ = std::move(part);
}

} // namespace orvane::views
