#include "OrvaneSyncApp/Views/Inspector/ChannelsSection.h"

#include "OrvaneSyncApp/ViewModels/Inspector/TypedValues.h"
#include "OrvaneSyncApp/Views/Translation.h"

#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QVBoxLayout>

#include <algorithm>

namespace orvane::views {

using namespace design;

namespace {

constexpr double masterGainStep = 0.5; ///< dB

QString linesOf(std::initializer_list<std::string> texts) {
    QStringList filled;
    for (const std::string& one : texts)
        if (!one.empty()) filled << translatedSentence(one);
    return filled.join(QLatin1Char('\n'));
}

void showUnlessEmpty(QLabel* label, const QString& text) {
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

/// Whether the click on a box has its second meaning: only this channel.
bool meansThisTrackAlone() { return QGuiApplication::keyboardModifiers().testFlag(Qt::AltModifier); }

} // namespace

ChannelsSection::ChannelsSection(Desktop& desktop)
    : InspectorSection(desktop, QStringLiteral("channels"), tr("Channels")) {
    add(summary_ = facts({}));
    add(music_ = facts({}));
    rowLayout_ = new QVBoxLayout;
    rowLayout_->setSpacing(space::small);
    add(rowLayout_);
    auto* buttons = new FlowLayout;
    buttons->addWidget(analyse_ = button(tr("Re-analyse this clip"), Glyph::waveform));
    add(buttons);
    analyse_->setToolTip(translated(desktop.command("runSmartAudioForGroup").help));
    connect(analyse_, &QPushButton::clicked, this, [this] { analyse(); });
    question_ = new QFrame;
    question_->setProperty("banner", true);
    auto* column = new QVBoxLayout(question_);
    column->addWidget(label(tr("Overwrite manual channel selection?")));
    column->addWidget(
        facts(tr("You set this clip's export channels by hand. Re-analysing can replace them with the "
                 "algorithm's choice.")));
    auto* answers = new FlowLayout;
    for (const bool overwrites : {false, true}) {
        QPushButton* answer = button(overwrites ? tr("Overwrite") : tr("Keep my selection"));
        connect(answer, &QPushButton::clicked, this, [this, overwrites] { analyse(overwrites); });
        answers->addWidget(answer);
    }
    column->addLayout(answers);
    question_->setVisible(false);
    add(question_);
}

void ChannelsSection::analyse() {
    if (shown_ && shown_->isChosenByHand)
        question_->setVisible(true);
    else
        analyse(true);
}

void ChannelsSection::analyse(bool overwrites) {
    question_->setVisible(false);
    JSON arguments = forClip();
    arguments.set("forceOverwriteManualTracks", overwrites);
    run("runSmartAudioForGroup", std::move(arguments));
}

void ChannelsSection::runForTrack(std::string_view id, int track) {
    JSON arguments = forClip();
    arguments.set("trackIndex", track);
    run(id, std::move(arguments));
}

ChannelsSection::Row ChannelsSection::makeRow(int track) {
    auto* panel = new QFrame;
    auto* column = new QVBoxLayout(panel);
    column->setContentsMargins(0, 0, 0, space::tight);
    column->setSpacing(2);
    Row row{panel,
            label(QString()),
            facts({}),
            facts({}),
            new QCheckBox(tr("ALGO")),
            new QCheckBox(tr("ON")),
            button(tr("SOLO"))};
    auto* controls = new FlowLayout;
    controls->setSpacing(space::small);
    for (QWidget* one : std::initializer_list<QWidget*>{row.isActive, row.isAllowed, row.solo})
        controls->addWidget(one);
    column->addWidget(row.name);
    column->addLayout(controls);
    column->addWidget(row.kind);
    column->addWidget(row.share);
    row.isActive->setToolTip(
        tr("%1 With Alt: only this track.").arg(translated(desktop().command("toggleTrackActive").help)));
    row.isAllowed->setToolTip(tr("%1 With Alt: only this track.")
                                  .arg(translated(desktop().command("toggleAlgorithmInclusion").help)));
    row.solo->setToolTip(translated(desktop().command("toggleSoloMonitor").help));
    row.solo->setCheckable(true);
    connect(row.isActive, &QCheckBox::clicked, this, [this, track] {
        runForTrack(meansThisTrackAlone() ? "soloTrackActive" : "toggleTrackActive", track);
    });
    connect(row.isAllowed, &QCheckBox::clicked, this, [this, track] {
        runForTrack(meansThisTrackAlone() ? "soloAlgorithmInclusion" : "toggleAlgorithmInclusion", track);
    });
    connect(row.solo, &QPushButton::clicked, this,
            [this, track] { runForTrack("toggleSoloMonitor", track); });
    return row;
}

void ChannelsSection::fill(Row& row, const ChannelsPart::Channel& channel) {
    const QString name = text(channel.name);
    row.name->setText(breakable(channel.name));
    QPalette palette = row.name->palette();
    palette.setColor(QPalette::WindowText,
                     channel.isActive ? channelColour(channel.track - 1) : colours().disabled);
    row.name->setPalette(palette);
    row.isActive->setChecked(channel.isActive);
    row.isActive->setAccessibleName(tr("Export channel %1").arg(name));
    row.isAllowed->setChecked(channel.isAllowed);
    row.isAllowed->setAccessibleName(tr("Let the analysis use channel %1").arg(name));
    row.solo->setChecked(channel.isSolo);
    row.solo->setAccessibleName(tr("Hear channel %1 alone").arg(name));
    showUnlessEmpty(row.kind, translatedSentence(channel.kind));
    showUnlessEmpty(row.share,
                    linesOf({channel.share, channel.ranges,
                             channel.gain.empty() ? std::string() : "Recommended gain " + channel.gain}));
}

void ChannelsSection::show(const SyncGroup& clip) {
    ChannelsPart part = ChannelsPart::of(desktop().controller(), clip);
    if (clip.id != shownClip_) question_->setVisible(false);
    if (shown_ == part && clip.id == shownClip_) {
        // The click has already changed its box.
        for (std::size_t i = 0; i < rows_.size(); ++i) fill(rows_[i], part.channels[i]);
        return;
    }
    shownClip_ = clip.id;
    if (rows_.size() != part.channels.size()) {
        clear(rowLayout_);
        rows_.clear();
        for (const ChannelsPart::Channel& channel : part.channels) {
            rows_.push_back(makeRow(channel.track));
            rowLayout_->addWidget(rows_.back().panel);
        }
    }
    for (std::size_t i = 0; i < rows_.size(); ++i) fill(rows_[i], part.channels[i]);
    summary_->setText(part.channels.empty() ? tr("The clip has no sound.")
                                            : translatedSentence(part.summary));
    showUnlessEmpty(music_, translatedSentence(part.music));
    analyse_->setText(part.isAnalysed ? tr("Re-analyse this clip") : tr("Run Smart Audio"));
    analyse_->setEnabled(!part.channels.empty());
    const auto active = std::ranges::count(part.channels, true, &ChannelsPart::Channel::isActive);
    setSummary(part.channels.empty() ? tr("none") : tr("%1 of %2 on").arg(active).arg(part.channels.size()));
    shown_ = std::move(part);
}

LoudnessSection::LoudnessSection(Desktop& desktop)
    : InspectorSection(desktop, QStringLiteral("loudness"), tr("Loudness")) {
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(space::small);
    grid->setVerticalSpacing(space::tight);
    int row = 0;
    for (const auto& [name, value] :
         {std::pair(tr("Source"), &source_), std::pair(tr("Preset"), &preset_),
          std::pair(tr("Target"), &target_), std::pair(tr("Forecast"), &forecast_)}) {
        *value = label(QString());
        grid->addWidget(facts(name), row, 0, Qt::AlignTop);
        grid->addWidget(*value, row++, 1, Qt::AlignTop);
    }
    gain_ = new EntryField(tr("Set Master Gain"), [this](const QString& typed) { return setGain(typed); });
    gain_->setSteps(tr("0.5 dB"),
                    [this](int direction) { setGain(shown_->gainDB + direction * masterGainStep); });
    grid->addWidget(facts(tr("Master Gain")), row, 0);
    grid->addWidget(gain_, row, 1);
    grid->setColumnStretch(1, 1);
    add(grid);
    add(warning_ = label(QString()));
    QPalette amber = warning_->palette();
    amber.setColor(QPalette::WindowText, colour(Signal::doubtful));
    warning_->setPalette(amber);
    auto* buttons = new FlowLayout;
    buttons->addWidget(reset_ = commandButton("resetMasterGain", tr("Reset to auto")));
    QPushButton* measure = button(translated(desktop.command("measureLoudness").title));
    measure->setToolTip(translated(desktop.command("measureLoudness").help));
    connect(measure, &QPushButton::clicked, this, [this] { run("measureLoudness", JSON::object()); });
    buttons->addWidget(measure);
    add(buttons);
    add(estimation_ = facts({}));
    calibration_ = StoredCalibration::create(desktop.controller(), [this] {
        if (const SyncGroup* now = this->clip()) show(*now);
    });
}

QString LoudnessSection::setGain(const QString& typed) {
    const TypedNumber gain =
        gainFromText(utf8(typed), TrackEditing::lowestGainDB, TrackEditing::highestGainDB);
    if (!gain.value) return translatedSentence(gain.problem);
    setGain(*gain.value);
    return {};
}

void LoudnessSection::setGain(double gain) {
    JSON arguments = forClip();
    arguments.set("gainDB", std::clamp(gain, TrackEditing::lowestGainDB, TrackEditing::highestGainDB));
    arguments.set("auto", false);
    run("setMasterGain", std::move(arguments));
}

void LoudnessSection::show(const SyncGroup& clip) {
    const LoudnessPart part = LoudnessPart::of(
        clip, MasterGain::Target::fromUserDefaults(desktop().settings()), calibration_->predictor());
    reset_->setEnabled(!part.isAutomatic);
    if (shown_ == part) return;
    shown_ = part;
    source_->setText(translatedSentence(part.source));
    preset_->setText(text(part.preset));
    target_->setText(translatedSentence(part.target));
    forecast_->setText(part.forecast.empty() ? tr("after a measurement") : text(part.forecast));
    gain_->show(translatedSentence(part.gain));
    showUnlessEmpty(warning_, translatedSentence(part.warning));
    showUnlessEmpty(estimation_, translatedSentence(part.estimation));
    const QString gain = translatedSentence(part.gain);
    setSummary(part.isAutomatic ? gain : tr("%1 by hand").arg(gain));
}

} // namespace orvane::views
