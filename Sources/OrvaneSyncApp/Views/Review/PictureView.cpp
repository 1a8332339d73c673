#include "OrvaneSyncApp/Views/Review/PictureView.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/ViewModels/Review/PictureTexts.h"
#include "OrvaneSyncApp/ViewModels/Timeline/RecordedLevels.h"
#include "OrvaneSyncApp/Views/Background.h"
#include "OrvaneSyncApp/Views/Review/FullscreenWindow.h"
#include "OrvaneSyncApp/Views/Review/LevelMeters.h"
#include "OrvaneSyncApp/Views/Review/PictureCanvas.h"
#include "OrvaneSyncApp/Views/Review/ReviewActions.h"
#include "OrvaneSyncApp/Views/Review/SyncLensView.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "Platform/MediaInspector.h"

#include <QAction>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QStackedLayout>
#include <QToolButton>
#include <QVBoxLayout>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <system_error>
#include <utility>

namespace orvane::views {

using namespace design;

namespace {

constexpr int wholeVolume = 100;
constexpr int volumeWidth = 84;
constexpr int loopFrames = 12; ///< before and after the playhead, as around the clap

QLabel* timecodeLabel(const QString& name, Qt::Alignment alignment) {
    auto* label = new QLabel(QStringLiteral("00:00:00:00"));
    label->setFont(timecodeFont());
    label->setMinimumWidth(QFontMetrics(timecodeFont()).horizontalAdvance(label->text()) + space::tight);
    label->setAlignment(alignment | Qt::AlignVCenter);
    label->setAccessibleName(name);
    label->setToolTip(name);
    return label;
}

/// For sighted users and for screen readers: a label with an accessible name is not read by its text.
void showValue(QLabel* label, const QString& value) {
    if (label->text() == value) return;
    label->setText(value);
    label->setAccessibleDescription(value);
}

} // namespace

QToolButton* transportButton(QAction* action) {
    auto* button = new QToolButton;
    button->setDefaultAction(action);
    button->setAccessibleName(action->iconText());
    button->setFocusPolicy(Qt::TabFocus);
    constexpr int side = 20;
    button->setIconSize({side, side});
    return button;
}

PictureView::PictureView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, ReviewActions& actions,
                         QWidget* parent)
    : QWidget(parent), desktop_(desktop), review_(std::move(review)), actions_(actions) {
    auto* pages = new QWidget;
    setToastPlace(pages);
    pages_ = new QStackedLayout(pages);
    pages_->addWidget(canvas_ = new PictureCanvas);
    pages_->addWidget(lens_ = new SyncLensView(desktop_, review_));
    pages_->addWidget(note_ = new EmptyState(Glyph::film, {}, {}));
    note_->add(tryAgain_ = button(tr("Try Again")));
    tryAgain_->setFocusPolicy(Qt::TabFocus); // after a click, the keys still control the review
    connect(tryAgain_, &QPushButton::clicked, this, [this] { tryAgain(); });
    canvas_->setEngine(review_->engine());
    canvas_->whenScrolled = [this](double deltaY, bool isPrecise) {
        review_->scrollFrames(deltaY, isPrecise);
    };
    canvas_->whenDoubleClicked = [this] { review_->fullscreen().toggleFullscreen(); };
    const auto name = [this] {
        const SyncGroup* shown = clip();
        if (shown == nullptr) return QString();
        QString words = text(shown->video.filename);
        for (const auto& [holds, word] :
             {std::pair(shown->isLocked, tr("Locked")), std::pair(shown->isApproved, tr("Marked as synced"))})
            if (holds) words += QStringLiteral("   ·   ") + word;
        return words;
    };
    review_->fullscreen().desktop = FullscreenWindow::desktop(
        review_->engine(),
        {*this, name, [this] { return keys ? keys() : std::vector<KeyGroup>(); }, desktop_.controller()});

    auto* picture = new QHBoxLayout;
    picture->setSpacing(1);
    auto* place = new QGridLayout;
    place->addWidget(pages, 0, 0);
    place->addWidget(whyNoLens_ = label(QString()), 0, 0, Qt::AlignBottom);
    whyNoLens_->setProperty("banner", true);
    whyNoLens_->setMargin(space::small);
    picture->addLayout(place, 1);
    picture->addWidget(meters_ = new LevelMeters(desktop_.mainThread(), review_->engine()));
    meters_->levelsOfRecording = [this] {
        const auto& id = review_->groupID();
        const SyncGroup* clip = id ? desktop_.controller().work().syncGroups().find(*id) : nullptr;
        if (clip == nullptr) return std::vector<platform::ChannelPeak>();
        ImportController& controller = desktop_.controller();
        return recordedLevels(*clip, controller.smartAudio().state(),
                              controller.timeline().waveform()->waveform(),
                              review_->engine()->playhead().seconds());
    };
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(picture, 1);
    column->addWidget(makeTimecodes());
    column->addWidget(makeBar(actions));

    connect(actions.lens(), &QAction::toggled, this, [this] { showPage(); });
    ofEngine_ = review_->engine()->onChange([this](VideoEngineField field) { follow(field); });
    ofReview_ = review_->onChange([this] {
        if (std::exchange(shown_, review_->groupID()) != shown_) meters_->clear();
        showPage();
        showTimecodes();
    });
    ofWork_ = desktop_.controller().onChange([this](ImportField field) {
        if (field != ImportField::syncGroups) return;
        if (pages_->currentWidget() == note_ || actions_.lens()->isChecked()) showPage();
    });
    ofFullscreen_ = review_->fullscreen().onChange(
        [this] { canvas_->setAsksForSize(!review_->fullscreen().isShowing()); });
    showPage();
    showTransport();
    showTimecodes();
}

PictureView::~PictureView() {
    for (const auto& timer : {deviceTimer_, fileTimer_})
        if (timer) timer->cancel();
    review_->fullscreen().hide();
    review_->fullscreen().desktop = {};
}

const SyncGroup* PictureView::clip() const {
    const auto& id = review_->groupID();
    return id ? desktop_.controller().work().syncGroups().find(*id) : nullptr;
}

QWidget* PictureView::makeTimecodes() {
    auto* line = new QWidget;
    auto* row = new QHBoxLayout(line);
    row->setContentsMargins(space::small, space::tight, space::small, 0);
    row->setSpacing(space::tight);
    const auto glyph = [row](Glyph what) {
        auto* label = new QLabel;
        label->setPixmap(icon(what).pixmap(space::medium, space::medium));
        row->addWidget(label);
    };
    glyph(Glyph::film);
    row->addWidget(pictureTimecode_ = timecodeLabel(tr("Timecode of the picture"), Qt::AlignLeft));
    pictureTimecode_->setObjectName(QStringLiteral("pictureTimecode"));
    row->addStretch(1);
    row->addWidget(shuttle_ = new QLabel);
    shuttle_->setFont(timecodeFont());
    shuttle_->setAlignment(Qt::AlignCenter);
    shuttle_->setAccessibleName(tr("Speed"));
    row->addStretch(1);
    row->addWidget(device_ = new Badge(Signal::doubtful, tr("No sound device")));
    device_->hide();
    line->setMinimumHeight(device_->sizeHint().height() + space::tight); // the picture keeps its size with it
    row->addWidget(soundTimecode_ = timecodeLabel(tr("Timecode of the sound"), Qt::AlignRight));
    glyph(Glyph::sound);
    return line;
}

QWidget* PictureView::makeBar(ReviewActions& actions) {
    loop_ = new QAction(icon(Glyph::loop), tr("Loop"), this);
    loop_->setCheckable(true);
    connect(loop_, &QAction::triggered, this, [this] { toggleLoop(); });

    auto* bar = new QWidget;
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(space::small, 0, space::small, space::tight);
    row->setSpacing(1);
    row->addStretch(1);
    for (QAction* action :
         {actions.toStart(), actions.action(KeyAction::stepBackward), actions.action(KeyAction::playPause),
          actions.action(KeyAction::stepForward), actions.action(KeyAction::slowMoForward), loop_,
          actions.action(KeyAction::clapCheck), actions.lens(), actions.action(KeyAction::toggleFullscreen)})
        row->addWidget(transportButton(action));
    row->addStretch(1);
    auto* loudspeaker = new QLabel;
    loudspeaker->setPixmap(icon(Glyph::sound).pixmap(space::medium, space::medium));
    row->addWidget(loudspeaker);
    row->addWidget(volume_ = new QSlider(Qt::Horizontal));
    volume_->setAccessibleName(tr("Volume"));
    volume_->setToolTip(tr("Volume"));
    volume_->setFocusPolicy(Qt::TabFocus);
    volume_->setMaximum(wholeVolume);
    volume_->setFixedWidth(volumeWidth);
    connect(volume_, &QSlider::valueChanged, this, [this](int value) {
        JSON arguments = JSON::object();
        arguments.set("volume", static_cast<double>(value) / wholeVolume);
        desktop_.run("playerVolume", std::move(arguments));
    });
    return bar;
}

void PictureView::toggleLoop() {
    VideoEngine& engine = *review_->engine();
    if (engine.loop().isLooping) {
        desktop_.run("playerClearLoop");
    } else {
        JSON arguments = JSON::object();
        arguments.set("aroundSeconds", engine.playhead().seconds());
        arguments.set("frames", loopFrames);
        desktop_.run("playerLoop", std::move(arguments));
    }
    showTransport(); // also if the command had no effect
}

void PictureView::follow(VideoEngineField field) {
    switch (field) {
    case VideoEngineField::playhead:
        return showTimecodes();
    case VideoEngineField::transport:
        showPage();
        [[fallthrough]];
    case VideoEngineField::sound:
        showTimecodes();
        [[fallthrough]];
    case VideoEngineField::loop:
        return showTransport();
    case VideoEngineField::picture:
        return;
    }
}

void PictureView::showPage() {
    const auto note = pictureNote(clip(), *review_->engine(), platform::mediaLibraryWasMissed());
    if (note) {
        std::string words = note->text;
        if (note->mayComeBack)
            words += "\n" + unseenDecisionsText(*clip(),
                                                desktop_.controller().timeline().timelineFrameRate(*clip()));
        note_->setTexts(translated(note->title), translatedSentence(words));
    }
    tryAgain_->setVisible(note && note->mayComeBack);
    if (note && note->mayComeBack && review_->engine()->transport().isVideoMissing && !fileTimer_)
        lookForFile();
    // Without a clap the picture is shown, in which it can be searched for. While a clip is opened, the page
    // of the clip before stays.
    const SyncGroup* shown = actions_.lens()->isChecked() ? clip() : nullptr;
    const auto& transport = review_->engine()->transport();
    const bool isOpening = transport.isLoading || review_->isSearchingClap();
    const bool isLens =
        shown != nullptr && (lens_->canShow() || (isOpening && pages_->currentWidget() == lens_));
    const bool isWithoutClap = shown != nullptr && !isLens && !isOpening && transport.isLoaded;
    whyNoLens_->setVisible(isWithoutClap);
    if (isWithoutClap)
        whyNoLens_->setText(translated(syncLensNote(*shown, review_->clapSeconds().has_value())));
    pages_->setCurrentWidget(isLens ? static_cast<QWidget*>(lens_)
                             : note ? static_cast<QWidget*>(note_)
                                    : canvas_);
}

void PictureView::tryAgain() {
    if (clip() != nullptr) desktop_.players().loadGroup(*review_->groupID());
}

void PictureView::lookForFile() {
    constexpr std::chrono::seconds pause{1};
    fileTimer_ = desktop_.mainThread()->after(pause, [this] {
        const auto ended = std::exchange(fileTimer_, nullptr); // holds this function
        const SyncGroup* shown = clip();
        const auto isWanted = [this] {
            const auto& transport = review_->engine()->transport();
            return transport.isVideoMissing && !transport.isPlaying && !transport.isLoading;
        };
        if (shown == nullptr || !review_->engine()->transport().isVideoMissing) return;
        inBackground(
            this,
            [path = shown->video.url.path] {
                std::error_code error;
                return std::filesystem::exists(path, error);
            },
            [this, isWanted, id = shown->id](bool isBack) {
                if (isBack && isWanted() && review_->shows(id)) return tryAgain();
                if (!fileTimer_) lookForFile();
            });
    });
}

bool PictureView::event(QEvent* event) {
    // If the user comes back from the file manager, the card may be connected.
    const bool isBack = event->type() == QEvent::WindowActivate && isVisible();
    if (isBack && review_->engine()->transport().isVideoMissing && !review_->engine()->transport().isPlaying)
        tryAgain();
    return QWidget::event(event);
}

void PictureView::showTransport() {
    const VideoEngine& engine = *review_->engine();
    const bool isPlaying = engine.transport().isPlaying;
    if (std::exchange(wasPlaying_, isPlaying) != isPlaying) checkDevice();
    QAction* play = actions_.action(KeyAction::playPause);
    play->setIcon(icon(isPlaying ? Glyph::pause : Glyph::play));
    showValue(shuttle_, text(engine.loop().jklLabel));
    loop_->setChecked(engine.loop().isLooping);
    loop_->setToolTip(engine.loop().isLooping
                          ? tr("End the Loop")
                          : tr("Loop %1 Frames Either Side of the Playhead").arg(loopFrames));
    // Not greyed out for the moment in which the next clip is opened.
    loop_->setEnabled(engine.transport().isLoaded || engine.transport().isLoading);
    const QSignalBlocker quiet(volume_);
    volume_->setValue(static_cast<int>(std::lround(engine.sound().volume * wholeVolume)));
}

void PictureView::showTimecodes() {
    const SyncGroup* shown = clip();
    const PlayheadState& playhead = review_->engine()->playhead();
    showValue(pictureTimecode_, shown == nullptr ? QString() : text(pictureTimecode(playhead)));
    showValue(soundTimecode_, shown == nullptr ? QString() : text(soundTimecode(*shown, playhead)));
}

void PictureView::checkDevice() {
    if (deviceTimer_) deviceTimer_->cancel();
    deviceTimer_.reset();
    if (!review_->engine()->transport().isPlaying) return;
    // A device is opened while playing already begins.
    constexpr std::chrono::seconds untilOpen{2};
    deviceTimer_ = desktop_.mainThread()->after(untilOpen, [this] {
        const auto note = soundNote(*review_->engine());
        const QString whole = note ? translated(*note) : QString();
        device_->setToolTip(whole);
        device_->setAccessibleDescription(whole);
        device_->setVisible(note.has_value());
        if (note) checkDevice(); // to notice a device that is connected meanwhile
    });
}

} // namespace orvane::views
