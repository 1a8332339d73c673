#include "OrvaneSyncApp/Views/Timeline/TimelineView.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/ElidedLabel.h"
#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneSyncApp/Views/Timeline/TimelineCanvas.h"
#include "OrvaneSyncApp/Views/Timeline/TrackHeader.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPointer>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStackedLayout>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

constexpr int framePause = 16; ///< milliseconds
constexpr int scrollStep = 40; ///< points
constexpr QSize smallest{200, 150};

/// With the progress for a recording that takes a while; each change of it repaints the timeline.
QString readingText(double seconds, double share) {
    constexpr double longSeconds = 600;
    if (seconds < longSeconds) return QObject::tr("Reading the sound…");
    return QObject::tr("Reading the sound… %1 %").arg(std::floor(share * 100));
}

QString skimSetting() { return QStringLiteral("timeline/skims"); }

} // namespace

TimelineView::TimelineView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent)
    : QWidget(parent), desktop_(desktop), review_(std::move(review)), pages_(new QStackedLayout(this)),
      playing_(new QTimer(this)), later_(review_->engine(), [this] { refresh(); }) {
    setObjectName(QStringLiteral("timeline"));
    pages_->addWidget(
        new EmptyState(Glyph::waveform, tr("No clip in view"), tr("Choose one in the list of clips.")));
    auto* page = new QWidget;
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeTools());
    column->addWidget(makeRows(), 1);
    pages_->addWidget(page);
    playing_->setInterval(framePause);
    playing_->setTimerType(Qt::PreciseTimer);
    connect(playing_, &QTimer::timeout, this, [this] { showPosition(); });
    follow();
    refresh();
}

QWidget* TimelineView::makeTools() {
    auto* tools = new QWidget;
    auto* row = new QHBoxLayout(tools);
    row->setContentsMargins(space::small, 2, space::small, 2);
    row->setSpacing(space::tight);
    row->addWidget(summary_ = new ElidedLabel(Qt::ElideRight), 1);
    summary_->setFont(factsFont());
    summary_->setProperty("facts", true);
    const auto add = [&](const QString& words, const QString& name, const QString& tip,
                         Weight weight = Weight::quiet) {
        auto* made = button(words, weight);
        made->setAccessibleName(name);
        made->setToolTip(tip);
        row->addWidget(made);
        return made;
    };
    const commands::Command& analysis = desktop_.command("runSmartAudioForGroup");
    analyse_ =
        add(tr("Run Smart Audio"), translated(analysis.title), translated(analysis.help), Weight::normal);
    connect(analyse_, &QPushButton::clicked, this, [this] { runSmartAudio(); });
    auto* skim = add(tr("Skim"), tr("Skim"), tr("Shows the picture under the pointer while nothing plays."),
                     Weight::normal);
    skim->setCheckable(true);
    skim->setChecked(design::keptState::value(skimSetting(), true).toBool());
    connect(skim, &QPushButton::toggled, this, [this](bool skims) {
        design::keptState::set(skimSetting(), skims);
        canvas_->setMinimumSize(smallest);
        canvas_->setSkims(skims);
    });
    const auto key = [this](QPushButton* made, KeyAction action) {
        connect(made, &QPushButton::clicked, this, [this, action] { review_->handleKeyAction(action); });
    };
    key(add(QStringLiteral("−"), tr("Zoom Out"), tr("Zoom the timeline out (−).")), KeyAction::zoomOut);
    key(add(tr("Fit"), tr("Zoom Fit"), tr("Reset the timeline zoom to fit the clip duration (0).")),
        KeyAction::zoomFit);
    key(add(QStringLiteral("+"), tr("Zoom In"), tr("Zoom the timeline in (+).")), KeyAction::zoomIn);
    return tools;
}

QWidget* TimelineView::makeRows() {
    auto* rows = new QWidget;
    auto* grid = new QGridLayout(rows);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0);
    grid->addWidget(header_ = new TrackHeader(
                        desktop_, [this] { review_->handleKeyAction(KeyAction::toggleAudioExpand); }),
                    0, 0);
    grid->addWidget(canvas_ = new TimelineCanvas(desktop_, review_), 0, 1);
    grid->addWidget(down_ = new QScrollBar(Qt::Vertical), 0, 2);
    grid->addWidget(across_ = new QScrollBar(Qt::Horizontal), 1, 1);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(0, 1);
    across_->setSingleStep(scrollStep);
    down_->setSingleStep(scrollStep);
    canvas_->setSkims(design::keptState::value(skimSetting(), true).toBool());
    canvas_->resized = [this] { changed(false); };
    canvas_->zoomChanged = [this] { changed(false); };
    canvas_->dragEnded = [this] { changed(true); };
    canvas_->scrolledBy = [this](double points) { scrollRows(points); };
    canvas_->canScrollVertically = [this] { return down_->maximum() > 0; };
    header_->scrolledBy = [this](double points) { scrollRows(points); };
    connect(across_, &QScrollBar::valueChanged, this, [this](int value) {
        desktop_.controller().timeline().zoom().scrollOffset = value;
        changed(false);
    });
    connect(down_, &QScrollBar::valueChanged, this, [this] { changed(false); });
    return rows;
}

// Notices

void TimelineView::follow() {
    TimelineController& timeline = desktop_.controller().timeline();
    following_.push_back(desktop_.controller().onChange([this](const ImportChange& change) {
        if (!shown_) return;
        // An edit shares the clips that it does not change.
        const bool isEdited = change.field == ImportField::syncGroups &&
                              change.clips.find(*shown_) != change.clipsBefore.find(*shown_);
        if (isEdited || change.field == ImportField::smartAudio ||
            change.field == ImportField::smartAudioProgress)
            changed(true);
    }));
    // The analysis that is shown may have been made with other settings than the new ones.
    following_.push_back(desktop_.settings().onChange(
        [self = QPointer(this), main = desktop_.mainThread()](const std::string&) {
            main->post([self] {
                if (self) self->changed(true);
            });
        }));
    following_.push_back(review_->onChange([this] { changed(review_->groupID() != shown_); }));
    following_.push_back(timeline.waveform()->onChange([this] { changed(true); }));
    following_.push_back(timeline.waveform()->onProgress([this] {
        if (rows_) showSound();
    }));
    following_.push_back(review_->engine()->onChange([this](VideoEngineField field) {
        if (field == VideoEngineField::playhead && !playing_->isActive()) showPosition();
        if (field == VideoEngineField::transport) {
            runWhilePlaying();
            const bool isMissing = review_->engine()->transport().isVideoMissing;
            if (std::exchange(wasVideoMissing_, isMissing) && !isMissing) showPictures(); // it exists again
        }
        if (field != VideoEngineField::loop) return;
        const LoopState& loop = review_->engine()->loop();
        canvas_->showLoop(loop.isLooping
                              ? std::optional(TimelineSpan{loop.loopStart.seconds(), loop.loopEnd.seconds()})
                              : std::nullopt);
    }));
}

void TimelineView::changed(bool rows) {
    areRowsStale_ |= rows;
    later_.schedule();
}

void TimelineView::refresh() {
    const auto& groupID = review_->groupID();
    const SyncGroup* clip = groupID ? desktop_.controller().work().syncGroups().find(*groupID) : nullptr;
    if (clip == nullptr) {
        shown_.reset();
        rows_.reset();
        return pages_->setCurrentIndex(0);
    }
    TimelineController& timeline = desktop_.controller().timeline();
    if (timeline.shownGroupID() != groupID) timeline.show(*groupID);
    if (shown_ != groupID) {
        shown_ = groupID;
        areRowsStale_ = true;
        showPictures();
    }
    if (areRowsStale_ && rows_ && rows_->groupID == *groupID && review_->isDraggingAudio()) {
        moveRows(*clip); // the rest is updated when the drag has ended
    } else if (std::exchange(areRowsStale_, false) || !rows_) {
        buildRows(*clip);
    }
    pages_->setCurrentIndex(1);
    showZoom();
    showPosition();
}

void TimelineView::showPictures() {
    const SyncGroup* clip = shown_ ? desktop_.controller().work().syncGroups().find(*shown_) : nullptr;
    if (clip == nullptr) return;
    canvas_->pictures().setVideo(clip->video.url.path,
                                 static_cast<int>(std::lround(pictureSlotHeight() * devicePixelRatioF())));
    canvas_->update();
}

void TimelineView::buildRows(const SyncGroup& clip) {
    ImportController& controller = desktop_.controller();
    auto rows = std::make_shared<TimelineRows>(timelineRows(
        clip, controller.timeline().timelineFrameRate(clip), controller.smartAudio().state(),
        desktop_.settings(), controller.work().fileNames(), controller.smartAudio().termsOf(clip.id)));
    const WaveformState& waveform = *controller.timeline().waveform();
    if (rows->soundSeconds <= 0)
        rows->soundSeconds = waveform.waveform().clipDuration; // the file does not state it
    if (rows->isAnalysed && controller.smartAudio().isOutdated(clip.id)) {
        rows->isAnalysed = false;
        rows->summary += " · made with other settings";
    }
    rows_ = std::move(rows);
    showSummary();
    canvas_->tiles().setWaveform(waveform.sharedWaveform());
    showSound();
}

void TimelineView::moveRows(const SyncGroup& clip) {
    auto moved = std::make_shared<TimelineRows>(*rows_);
    moved->moveSound(ClipSound(clip).offsetSeconds);
    rows_ = std::move(moved);
}

void TimelineView::showSummary() {
    const SmartAudioState& state = desktop_.controller().smartAudio().state();
    analyse_->setVisible(rows_->hasSound && !state.isAnalyzing && !rows_->isAnalysed);
    // The button beside it says what to do, so that the state is not cut in a narrow window.
    constexpr std::string_view advice = " — run Smart Audio";
    summary_->setText(translatedSentence(rows_->summary.substr(0, rows_->summary.find(advice))));
    summary_->setToolTip(translatedSentence(rows_->summary));
}

void TimelineView::runSmartAudio() {
    JSON arguments;
    arguments.set("groupID", rows_->groupID.text());
    arguments.set("forceOverwriteManualTracks", false);
    desktop_.run("runSmartAudioForGroup", std::move(arguments));
}

void TimelineView::showSound() {
    const TimelineController& timeline = desktop_.controller().timeline();
    const WaveformState& waveform = *timeline.waveform();
    QString hint;
    if (rows_->hasSound && waveform.waveform().binsPerSecond <= 0)
        hint = isSoundUnreadable(timeline) ? translated(unreadableSound)
                                           : readingText(rows_->soundSeconds, waveform.readShare());
    canvas_->setSoundHint(hint);
}

void TimelineView::showZoom() {
    TimelineZoomState& zoom = desktop_.controller().timeline().zoom();
    zoom.updateViewportWidth(canvas_->width());
    zoom.scrollOffset = std::clamp(zoom.scrollOffset, 0.0, zoom.largestScrollOffset());
    {
        const QSignalBlocker quiet(across_);
        across_->setRange(0, static_cast<int>(std::lround(zoom.largestScrollOffset())));
        across_->setPageStep(canvas_->width());
        across_->setValue(static_cast<int>(std::lround(zoom.scrollOffset)));
    }
    const bool isExpanded = review_->isAudioExpanded();
    const double all = TimelineLayout(rows_, zoom, isExpanded).height();
    {
        const QSignalBlocker quiet(down_);
        down_->setRange(0, std::max(0, static_cast<int>(std::ceil(all)) - canvas_->height()));
        down_->setPageStep(canvas_->height());
    }
    across_->setVisible(across_->maximum() > 0);
    down_->setVisible(down_->maximum() > 0);
    canvas_->show(rows_, zoom, isExpanded, down_->value());
    header_->show(canvas_->layout(), isExpanded);
}

void TimelineView::scrollRows(double points) {
    down_->setValue(down_->value() + static_cast<int>(std::lround(points)));
}

// The player

void TimelineView::runWhilePlaying() {
    const bool plays = review_->engine()->transport().isPlaying;
    if (plays == playing_->isActive()) return;
    plays ? playing_->start() : playing_->stop();
    showPosition();
}

void TimelineView::showPosition() {
    if (!rows_ || !canvas_->hasLayout()) return;
    const VideoEngine& engine = *review_->engine();
    const bool plays = playing_->isActive() && engine.player() != nullptr;
    const double seconds = plays ? engine.player()->currentTime().seconds() : engine.playhead().seconds();
    const auto offset = plays ? canvas_->layout().scrollFollowing(seconds) : std::nullopt;
    if (offset) {
        desktop_.controller().timeline().zoom().scrollOffset = *offset;
        changed(false);
    }
    canvas_->showPlayhead(seconds);
}

} // namespace orvane::views
