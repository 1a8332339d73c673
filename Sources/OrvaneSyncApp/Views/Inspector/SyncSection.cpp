#include "OrvaneSyncApp/Views/Inspector/SyncSection.h"

#include "OrvaneSyncApp/ViewModels/Review/ReviewViewModel.h"
#include "OrvaneSyncApp/ViewModels/Timeline/TimelineRows.h"
#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/Review/KeyEvents.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Services/Naming/SyncClustering.h"
#include "OrvaneSyncCore/Services/Shortcuts/ReviewKeys.h"

#include <QGridLayout>
#include <QLineEdit>

#include <algorithm>
#include <span>

namespace orvane::views {

using namespace design;

namespace {

constexpr double offsetStepSeconds = 0.01;

QString syncMethodText(SyncMethod method) { return translated(label(method)); }

// The controls below a text, and beside a button, keep their places whatever is shown in it: the same key is
// pressed for one clip after the other, and a second click must meet the same control.

/// Reserves the height of that many lines.
void reserveLines(QLabel& label, int lines) {
    label.setText(QStringList(lines, QStringLiteral("x")).join(QLatin1Char('\n')));
    label.setMinimumHeight(label.heightForWidth(QWIDGETSIZE_MAX));
    label.setAlignment(Qt::AlignTop | Qt::AlignLeft);
    label.clear();
}

/// Reserves the width of the longest of the texts.
void reserveWidth(QPushButton& button, std::span<const std::string_view> texts) {
    button.ensurePolished(); // its size depends on the window's style sheet
    int widest = 0;
    for (const std::string_view text : texts) {
        button.setText(translated(text));
        widest = std::max(widest, button.sizeHint().width());
    }
    button.setMinimumWidth(widest);
}

/// `reason`: why the button does nothing; empty if it works.
void showButton(QPushButton* button, const std::string& reason, const QString& help) {
    button->setEnabled(reason.empty());
    button->setToolTip(reason.empty() ? help : translated(reason));
}

} // namespace

SyncSection::SyncSection(Desktop& desktop, std::shared_ptr<ReviewViewModel> review)
    : InspectorSection(desktop, QStringLiteral("sync"), tr("Sync")), review_(std::move(review)) {
    add(begins_ = label(QString()));
    reserveLines(*begins_, 2);
    makeDecisions(); // first, so that they are in view on a low screen
    add(facts(tr("Sync Method")));
    add(method_ = new Choice);
    method_->setAccessibleName(tr("Sync Method"));
    method_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    for (const SyncMethod method : allSyncMethods) {
        method_->addItem(syncMethodText(method));
        method_->setItemData(method_->count() - 1, translated(description(method)), Qt::ToolTipRole);
    }
    connect(method_, &QComboBox::activated, this, [this](int index) {
        JSON arguments = forClip();
        arguments.set("method", toJSON(allSyncMethods.at(static_cast<std::size_t>(index))));
        run("setSyncMethod", std::move(arguments));
    });
    add(methodText_ = facts({}));
    reserveLines(*methodText_, 2);
    makeOffset();
    makeAnchor();
}

void SyncSection::makeOffset() {
    constexpr double furthest = ClipEditing::furthestOffsetSeconds;
    frames_ = new EntryField(tr("Offset in frames"), [this](const QString& typed) {
        return moveTo(offsetFromFrames(utf8(typed), shown_->frameRate, furthest));
    });
    frames_->setSteps(tr("1 frame"), [this](int direction) {
        JSON arguments = forClip();
        arguments.set("frames", direction);
        run("nudgeByFrames", std::move(arguments));
    });
    seconds_ = new EntryField(tr("Offset in seconds"), [this](const QString& typed) {
        return moveTo(offsetFromSeconds(utf8(typed), furthest));
    });
    seconds_->setSteps(tr("10 ms"), [this](int direction) { moveBy(direction * offsetStepSeconds); });
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(space::small);
    for (const auto& [row, name, field] :
         {std::tuple(0, tr("Frames"), frames_), std::tuple(1, tr("Seconds"), seconds_)}) {
        QLabel* left = facts(name);
        left->setBuddy(field->line());
        grid->addWidget(left, row, 0);
        grid->addWidget(field, row, 1);
    }
    grid->setColumnStretch(1, 1);
    add(facts(tr("Manual offset, added to the match")));
    add(grid);
    add(wholeFrames_ = facts({}));
    reserveLines(*wholeFrames_, 1);
    auto* reset = new FlowLayout;
    reset->addWidget(commandButton("resetAudioOffset"));
    add(reset);
}

void SyncSection::makeAnchor() {
    add(anchor_ = label(QString()));
    reserveLines(*anchor_, 2);
    auto* buttons = new FlowLayout;
    buttons->fillLines();
    buttons->addWidget(goToAnchor_ = button(tr("Go To")));
    goToAnchor_->setAccessibleName(tr("Go to the clap point"));
    connect(goToAnchor_, &QPushButton::clicked, this, [this] { review_->seekVideoToAnchor(); });
    buttons->addWidget(putOnFrame_ = button(tr("Put on the Frame Shown")));
    connect(putOnFrame_, &QPushButton::clicked, this, [this] { review_->putClapOnFrame(); });
    buttons->addWidget(updateAnchor_ = button({}));
    connect(updateAnchor_, &QPushButton::clicked, this,
            [this] { review_->handleKeyAction(KeyAction::updateClapPoint); });
    buttons->addWidget(clearAnchor_ = button(tr("Clear")));
    clearAnchor_->setAccessibleName(tr("Clear the clap point"));
    connect(clearAnchor_, &QPushButton::clicked, this, [this] { run("setAudioAnchor"); });
    buttons->addWidget(searchAnchor_ = commandButton("autoDetectAudioAnchor"));
    buttons->addWidget(clapCheck_ = button(translated(orvane::label(ShortcutAction::clapCheck))));
    connect(clapCheck_, &QPushButton::clicked, this,
            [this] { review_->handleKeyAction(KeyAction::clapCheck); });
    // A button that a click disables would hand its focus on, and the next control would be scrolled to.
    for (QPushButton* one : {goToAnchor_, putOnFrame_, updateAnchor_, clearAnchor_, clapCheck_})
        one->setFocusPolicy(Qt::TabFocus);
    ofReview_ = review_->onChange([this] { showClapCheck(); }); // a clap is found
    ofSound_ = desktop().controller().timeline().waveform()->onChange([this] { showSearch(); });
    ofEngine_ = review_->engine()->onChange([this](VideoEngineField field) {
        if (field == VideoEngineField::transport || field == VideoEngineField::loop) showClapCheck();
    });
    add(buttons);
    add(anchorHint_ = facts({}));
    reserveLines(*anchorHint_, 2);
}

void SyncSection::makeDecisions() {
    auto* buttons = new FlowLayout;
    buttons->fillLines();
    buttons->addWidget(lock_ = commandButton("toggleLocked", tr("Lock")));
    buttons->addWidget(approve_ = commandButton("toggleApproved"));
    approve_->setCheckable(true);
    approve_->setIcon(icon(Glyph::approve));
    buttons->addWidget(lockAll_ = button(translated(desktop().command("lockAllInCluster").title)));
    connect(lockAll_, &QPushButton::clicked, this, [this] {
        JSON arguments = JSON::object();
        arguments.set("of", clipID().text());
        run("lockAllInCluster", std::move(arguments));
    });
    add(buttons);
}

void SyncSection::lookForCameras(const SyncGroup& clip) {
    std::pair of(clip.id, clip.clipName + clip.manualClipName.value_or(""));
    if (camerasOf_ == of) return;
    if (!camerasOf_ || camerasOf_->first != clip.id) isAlone_ = false; // not known yet
    camerasOf_ = std::move(of);
    const platform::SettingsStore& store = desktop().settings();
    // The names of all clips are made for this.
    inBackground(
        this,
        [groups = desktop().controller().work().syncGroups(), id = clip.id,
         source = store.get(settings::clipNamingSource), pattern = store.get(settings::customNamingPattern)] {
            const SyncClustering::Index takes(groups, source, pattern);
            std::optional<std::size_t> own;
            for (std::size_t i = 0; i < groups.size() && !own; ++i)
                if (groups[i].id == id) own = i;
            for (std::size_t i = 0; own && i < groups.size(); ++i)
                if (i != *own && takes.key(i) == takes.key(*own) && takes.shoot(i) == takes.shoot(*own))
                    return true;
            return false;
        },
        [this, id = clip.id](bool hasOthers) {
            if (!camerasOf_ || camerasOf_->first != id) return;
            isAlone_ = !hasOthers;
            showLockAll();
        });
}

void SyncSection::showLockAll() {
    lockAll_->setEnabled(!isAlone_ && desktop().isEnabled("lockAllInCluster", clip()));
    lockAll_->setToolTip(isAlone_ ? tr("This clip is the only camera of its take.")
                                  : translated(desktop().command("lockAllInCluster").help));
}

void SyncSection::showSearch() {
    if (!shown_) return;
    const TimelineController& timeline = desktop().controller().timeline();
    const bool isUnreadable = timeline.shownGroupID() == clipID() && isSoundUnreadable(timeline);
    showButton(searchAnchor_,
               shown_->whyNoSearch.empty() && isUnreadable ? unreadableSound : shown_->whyNoSearch,
               translated(desktop().command("autoDetectAudioAnchor").help));
}

void SyncSection::showClapCheck() {
    const bool isClapKnown = review_->clapSeconds() || review_->engine()->loop().isLooping;
    const bool can = review_->canCheckClap() && isClapKnown;
    clapCheck_->setEnabled(can);
    const std::string reason = !isClapKnown
                                   ? "There is no clap point yet; the key of the loop plays around 3 s."
                               : !shown_ || shown_->whyNoCheck.empty() ? "The clip is not loaded."
                                                                       : shown_->whyNoCheck;
    clapCheck_->setToolTip(translated(can ? helpText(ShortcutAction::clapCheck) : std::string_view(reason)));
}

QString SyncSection::moveTo(const TypedNumber& typed) {
    if (!typed.value) return translatedSentence(typed.problem);
    JSON arguments = forClip();
    arguments.set("deltaSeconds", *typed.value - clip()->manualAudioOffsetSeconds);
    return runFromField("adjustAudioOffset", std::move(arguments));
}

void SyncSection::moveBy(double seconds) {
    JSON arguments = forClip();
    arguments.set("deltaSeconds", seconds);
    run("adjustAudioOffset", std::move(arguments));
}

void SyncSection::show(const SyncGroup& clip) {
    const SyncPart part = SyncPart::of(clip, desktop().controller().timeline().timelineFrameRate(clip));
    approve_->setChecked(part.isApproved); // the click has already changed the box
    const bool isSame = shown_ == part;
    if (!shown_) {
        lock_->setIcon(icon(Glyph::lock));
        reserveWidth(*lock_, SyncPart::lockTexts);
        reserveWidth(*updateAnchor_, SyncPart::anchorTexts);
    }
    shown_ = part;
    showClapCheck();
    showSearch();
    lookForCameras(clip);
    showLockAll();
    if (isSame) return;
    setSummary(translatedSentence(part.offsetShown + (part.isLocked ? " f, locked" : " f")));
    begins_->setText(translatedSentence(part.begins));
    method_->setCurrentIndex(static_cast<int>(part.method));
    methodText_->setText(translated(description(part.method)));
    frames_->show(text(part.offsetFrames));
    // Translated with its unit, so that the number gets the decimal point of the language.
    QString seconds = translatedSentence(part.offsetInSeconds + " s");
    seconds.chop(2);
    seconds_->show(seconds);
    wholeFrames_->setText(translatedSentence(part.wholeFrames));
    for (EntryField* field : {frames_, seconds_}) field->setEnabled(part.hasSound);
    anchor_->setText(translatedSentence(part.anchor));
    showButton(goToAnchor_, part.whyNoGoTo, tr("Moves the playhead to the clap point"));
    showButton(putOnFrame_, part.whyNoPut,
               tr("%1 (%2)").arg(tr("Moves the sound by whole frames, so that its clap falls into the frame "
                                    "that is shown"),
                                 translatedKey(reviewKeys::putOnFrame)));
    updateAnchor_->setText(translated(part.updateAnchor));
    showButton(updateAnchor_, part.whyNoUpdate, translated(helpText(ShortcutAction::updateClapPoint)));
    showButton(clearAnchor_, part.whyNoClear, translated(desktop().command("setAudioAnchor").help));
    anchorHint_->setText(translated(part.anchorHint));
    lock_->setText(translated(part.lock));
    lock_->setIcon(icon(part.isLocked ? Glyph::unlock : Glyph::lock));
}

SensorSection::SensorSection(Desktop& desktop)
    : InspectorSection(desktop, QStringLiteral("sensor"), tr("Speed")) {
    auto* row = new QHBoxLayout;
    QLabel* name = label(tr("Sensor FPS"));
    name->setToolTip(translated(SensorPart::hint));
    row->addWidget(name);
    row->addWidget(rate_ = new Choice, 1);
    rate_->setAccessibleName(tr("Sensor FPS"));
    rate_->setToolTip(translated(SensorPart::hint));
    rate_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    add(row);
    add(unconfirmed_ = new Badge(Signal::doubtful, tr("unconfirmed")));
    add(speed_ = facts({}));
    add(note_ = facts(translated(SensorPart::unconfirmedNote)));
    add(native_ = new QCheckBox(tr("Also export at its own rate")));
    add(projectRate_ = new QCheckBox(tr("Also export at project rate")));
    for (const auto& [box, id] : {std::pair(native_, "setGenerateNativeMOS"),
                                  std::pair(projectRate_, "setGenerateProjectRateClip")}) {
        box->setToolTip(translated(desktop.command(id).help));
        connect(box, &QCheckBox::clicked, this, [this, command = id](bool isOn) {
            JSON arguments = forClip();
            arguments.set("enabled", isOn);
            run(command, std::move(arguments));
        });
    }
    connect(rate_, &QComboBox::activated, this, [this](int index) {
        JSON arguments = forClip();
        const QVariant rate = rate_->itemData(index);
        if (rate.isValid()) arguments.set("fps", rate.toDouble());
        run("setManualSensorFrameRate", std::move(arguments));
        // The box shows the value of the clip, whether the choice was accepted or not.
        if (const SyncGroup* now = clip()) fill(SensorPart::of(*now));
    });
}

void SensorSection::show(const SyncGroup& clip) {
    const SensorPart part = SensorPart::of(clip);
    native_->setChecked(part.generatesNative);
    projectRate_->setChecked(part.generatesProjectRate);
    if (shown_ == part) return;
    fill(part);
    shown_ = part;
}

void SensorSection::fill(const SensorPart& part) {
    rate_->clear();
    for (const double rate : part.rates) rate_->addItem(text(fpsText(rate)), rate);
    rate_->insertSeparator(rate_->count());
    rate_->addItem(translatedSentence(part.reset));
    rate_->setCurrentIndex(part.rate ? rate_->findData(*part.rate) : -1);
    rate_->setEnabled(!part.isLocked);
    unconfirmed_->setVisible(part.isUnconfirmed);
    note_->setVisible(part.isUnconfirmed);
    speed_->setText(translatedSentence(part.speed));
    speed_->setVisible(!part.speed.empty());
    native_->setVisible(part.isOffspeed);
    projectRate_->setVisible(part.isOffspeed);
    setSummary(part.isUnconfirmed ? tr("unconfirmed") : part.isOffspeed ? tr("off-speed") : QString());
}

} // namespace orvane::views
