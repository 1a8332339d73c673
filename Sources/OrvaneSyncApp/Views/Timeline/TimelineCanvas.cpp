#include "OrvaneSyncApp/Views/Timeline/TimelineCanvas.h"

#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/Controllers/TrackEditing.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Services/Timeline/TimelineRuler.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane::views {

using namespace design;
using Spot = TimelineLayout::Spot;

namespace {

constexpr int playheadWidth = 13;
constexpr double dragBegins = 4;       ///< points
constexpr double pointsPerNotch = 60;  ///< scrolled by a notch of a wheel
constexpr double anglePerNotch = 120;  ///< in the units of Qt
constexpr double zoomDeltaOfNotch = 4; ///< a notch is one step of zoom

bool isScrubbed(Spot spot) { return spot == Spot::ruler || spot == Spot::picture || spot == Spot::clap; }
bool isOnStrip(Spot spot) { return spot == Spot::strip || spot == Spot::tile || spot == Spot::range; }
bool isEdge(Spot spot) { return spot == Spot::rangeStart || spot == Spot::rangeEnd; }
bool isSound(Spot spot) { return spot == Spot::waveform || spot == Spot::anchor; }

} // namespace

ModifierSet modifiersOf(Qt::KeyboardModifiers held) {
    ModifierSet result;
    if (held.testFlag(Qt::ControlModifier)) result = result | ModifierSet::command;
    if (held.testFlag(Qt::ShiftModifier)) result = result | ModifierSet::shift;
    if (held.testFlag(Qt::AltModifier)) result = result | ModifierSet::option;
    if (held.testFlag(Qt::MetaModifier)) result = result | ModifierSet::control;
    return result;
}

PlayheadLine::PlayheadLine(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setObjectName(QStringLiteral("playhead"));
}

void PlayheadLine::moveTo(double x) {
    setGeometry(static_cast<int>(std::floor(x)) - playheadWidth / 2, 0, playheadWidth,
                parentWidget()->height());
}

void PlayheadLine::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    constexpr int middle = playheadWidth / 2;
    constexpr double top = TimelineLayout::rulerHeight - 11, tip = TimelineLayout::rulerHeight - 1;
    painter.setPen(Qt::NoPen);
    constexpr double lineOpacity = 0.6; // so that the peak of a clap stays visible
    painter.setBrush(colours().text);
    painter.setOpacity(lineOpacity);
    painter.drawRect(QRectF(middle, top, 1, height()));
    painter.setOpacity(1);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.drawPolygon(QPolygonF{{0.5, top}, {playheadWidth - 0.5, top}, {middle + 0.5, tip}});
}

TimelineCanvas::TimelineCanvas(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent)
    : QWidget(parent), desktop_(desktop), review_(std::move(review)),
      tiles_(desktop.mainThread(), [this] { invalidate(); }),
      pictures_(desktop.mainThread(),
                [this] {
                    // Pictures arrive one by one; only their row is painted again, which is the smaller part.
                    arePicturesStale_ = true;
                    if (layout_) update(pictureRow().toAlignedRect());
                }),
      playhead_(new PlayheadLine(this)) {
    setObjectName(QStringLiteral("timelineCanvas"));
    setAccessibleName(tr("Timeline"));
    setAccessibleDescription(
        tr("Picture and sound of the clip. Drag the sound to move it, drag along a channel's strip "
           "to choose that channel for a range."));
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    playhead_->hide();
}

TimelineZoomState& TimelineCanvas::zoom() { return desktop_.controller().timeline().zoom(); }

const SyncGroup* TimelineCanvas::clip() {
    return layout_ ? desktop_.controller().work().syncGroups().find(layout_->content().groupID) : nullptr;
}

JSON TimelineCanvas::ofClip() {
    JSON arguments;
    arguments.set("groupID", layout_->content().groupID.text());
    return arguments;
}

void TimelineCanvas::show(std::shared_ptr<const TimelineRows> rows, const TimelineZoomState& zoom,
                          bool isExpanded, double verticalScroll) {
    const bool isOther = !layout_ || layout_->content().groupID != rows->groupID;
    if (isOther) {
        gesture_ = Gesture::none;
        selectedRange_.reset();
        draft_.reset();
        dragText_.clear();
        isSkimming_ = false;
    }
    layout_.emplace(std::move(rows), zoom, isExpanded, verticalScroll);
    invalidate();
    showPlayhead(playheadSeconds_);
}

void TimelineCanvas::setSoundHint(const QString& hint) {
    if (std::exchange(soundHint_, hint) != hint) invalidate();
}

void TimelineCanvas::showPlayhead(double seconds) {
    playheadSeconds_ = seconds;
    if (!layout_) return;
    const double x = layout_->x(seconds);
    playhead_->setVisible(x > -playheadWidth && x < width() + playheadWidth);
    playhead_->moveTo(x);
}

void TimelineCanvas::showLoop(std::optional<TimelineSpan> loop) {
    if (std::exchange(loop_, loop) != loop) invalidate();
}

void TimelineCanvas::setSkims(bool skims) {
    skims_ = skims;
    if (!skims) endSkim();
}

void TimelineCanvas::invalidate() {
    isLayerStale_ = true;
    update();
}

// Painting

std::optional<std::size_t> TimelineCanvas::selectedIndex() const {
    const auto& ranges = layout_->content().ranges;
    for (std::size_t i = 0; i < ranges.size(); ++i)
        if (selectedRange_ == ranges[i].id) return i;
    return std::nullopt;
}

QRectF TimelineCanvas::pictureRow() const {
    const TimelineLayout::Row& row = *layout_->row(TimelineLayout::RowKind::picture);
    return {0, row.y, static_cast<double>(width()), row.height};
}

void TimelineCanvas::renderLayer(const QRectF& part) {
    const double ratio = devicePixelRatioF();
    const QSize pixels = (QSizeF(size()) * ratio).toSize();
    if (layer_.size() != pixels) layer_ = QImage(pixels, QImage::Format_RGB32);
    layer_.setDevicePixelRatio(ratio);
    QPainter painter(&layer_);
    const TimelineZoomState& zoom = desktop_.controller().timeline().zoom();
    const TimelineScene scene{
        .layout = *layout_,
        .tiles = tiles_,
        .pictures = pictures_,
        .rulerInterval = TimelineRuler::legibleInterval(zoom.rulerInterval(), zoom.pixelsPerSecond()),
        .pixelRatio = ratio,
        .soundHint = soundHint_,
        .selectedRange = selectedIndex(),
        .draftSpan = draft_,
        .draftTrack = draftTrack_,
        .dragText = dragText_,
        .dragTextX = dragTextX_,
        .loop = loop_};
    painter.setClipRect(part);
    const TimelineGaps gaps = paintTimeline(painter, scene, part);
    if (std::exchange(isLayerStale_, false)) tiles_.want(gaps.tiles);
    arePicturesStale_ = false;
    constexpr double half = 0.5;
    pictures_.want(gaps.pictures, half * pictureSlotWidth(pictures_) / layout_->zoom().pixelsPerSecond());
}

void TimelineCanvas::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    if (!layout_) return painter.fillRect(event->rect(), colours().window);
    const QSize pixels = (QSizeF(size()) * devicePixelRatioF()).toSize();
    isLayerStale_ |= layer_.size() != pixels;
    if (isLayerStale_)
        renderLayer(QRectF(rect()));
    else if (arePicturesStale_)
        renderLayer(pictureRow().intersected(QRectF(rect())));
    const double ratio = devicePixelRatioF();
    const QRectF place(event->rect());
    painter.drawImage(place, layer_, QRectF(place.topLeft() * ratio, place.size() * ratio));
    if (hasFocus()) {
        painter.setPen(QPen(colours().focus, 1));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

void TimelineCanvas::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    isLayerStale_ = true;
    if (resized) resized();
}

// Contents under the pointer

bool TimelineCanvas::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        showToolTip(help->pos(), help->globalPos());
        return true;
    }
    if (event->type() == QEvent::ShortcutOverride) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const bool removes =
            (key == Qt::Key_Delete || key == Qt::Key_Backspace) && layout_ && selectedIndex();
        if (removes || (key == Qt::Key_Escape && gesture_ != Gesture::none)) {
            event->accept();
            return true;
        }
    }
    if (event->type() == QEvent::NativeGesture && pinch(*static_cast<QNativeGestureEvent*>(event)))
        return true;
    return QWidget::event(event);
}

void TimelineCanvas::showToolTip(const QPoint& at, const QPoint& onScreen) {
    const QString words =
        layout_ ? translatedSentence(tooltipOf(layout_->content(), layout_->hit(at.x(), at.y()))) : QString();
    words.isEmpty() ? QToolTip::hideText()
                    : QToolTip::showText(onScreen, words.toHtmlEscaped().replace('\n', "<br>"), this);
}

void TimelineCanvas::showCursor(const TimelineLayout::Hit& hit) {
    const bool isLocked = layout_->content().isLocked;
    Qt::CursorShape shape = Qt::ArrowCursor;
    if (isSound(hit.spot) && !isLocked) shape = Qt::OpenHandCursor;
    if (isEdge(hit.spot)) shape = Qt::SplitHCursor;
    if (isOnStrip(hit.spot) && hit.track) shape = Qt::CrossCursor;
    setCursor(shape);
}

void TimelineCanvas::skim(const TimelineLayout::Hit& hit) {
    const bool isOver = hit.spot == Spot::ruler || hit.spot == Spot::picture || hit.spot == Spot::clap;
    if (!skims_ || !isOver || review_->engine()->transport().isPlaying) return endSkim();
    isSkimming_ = true;
    review_->handleSkim(std::clamp(hit.seconds, 0.0, layout_->content().clipSeconds));
}

void TimelineCanvas::endSkim() {
    if (std::exchange(isSkimming_, false)) review_->handleSkim(std::nullopt);
}

// Gestures

void TimelineCanvas::mousePressEvent(QMouseEvent* event) {
    if (!layout_ || event->button() != Qt::LeftButton) return;
    endSkim(); // first, because the click sets the playhead
    QToolTip::hideText();
    pressedAt_ = event->position();
    pressed_ = layout_->hit(pressedAt_.x(), pressedAt_.y());
    gesture_ = isScrubbed(pressed_.spot) ? Gesture::scrub : Gesture::pressed;
    const ModifierSet held = modifiersOf(event->modifiers());
    if (isSound(pressed_.spot) && held.contains(ModifierSet::command | ModifierSet::option)) {
        gesture_ = Gesture::none;
        return click(event->modifiers());
    }
    if (gesture_ == Gesture::scrub) scrub(pressedAt_.x());
}

void TimelineCanvas::mouseDoubleClickEvent(QMouseEvent* event) {
    const auto hit =
        layout_ ? layout_->hit(event->position().x(), event->position().y()) : TimelineLayout::Hit();
    if (event->button() != Qt::LeftButton || hit.spot != Spot::recording) return mousePressEvent(event);
    if (layout_->content().isLocked)
        return desktop_.sayWhyNot(
            translated("The clip is locked: ⟨lockCurrent⟩ unlocks it, then its recording can be chosen."));
    JSON chosen = ofClip();
    chosen.set("matchID", layout_->content().recordings[*hit.index].matchID.text());
    desktop_.run("chooseRecording", std::move(chosen));
}

void TimelineCanvas::mouseMoveEvent(QMouseEvent* event) {
    if (!layout_) return;
    const double x = event->position().x();
    zoom().cursorViewportX = x;
    if (gesture_ == Gesture::none) {
        const TimelineLayout::Hit hit = layout_->hit(x, event->position().y());
        showCursor(hit);
        return skim(hit);
    }
    if (gesture_ == Gesture::pressed && std::abs(x - pressedAt_.x()) >= dragBegins) beginDrag();
    const double at = layout_->seconds(x);
    switch (gesture_) {
    case Gesture::scrub:
        return scrub(x);
    case Gesture::sound:
        return dragSound(x, event->modifiers());
    case Gesture::range:
        draft_ = layout_->span(pressed_.seconds, at);
        return invalidate();
    case Gesture::edge: {
        const auto index = selectedIndex();
        if (!index) return endGesture(false); // it was removed meanwhile
        const BlockOverride& range = layout_->content().ranges[*index];
        draft_ = layout_->span(pressed_.spot == Spot::rangeStart ? range.endSeconds : range.startSeconds, at);
        return invalidate();
    }
    case Gesture::none:
    case Gesture::pressed:
        return;
    }
}

void TimelineCanvas::beginDrag() {
    gesture_ = Gesture::none;
    if (isSound(pressed_.spot) && layout_->content().isLocked)
        return desktop_.sayWhyNot(translatedSentence("The clip is locked: unlock it to move the sound."));
    if (isSound(pressed_.spot)) {
        gesture_ = Gesture::sound;
        setCursor(Qt::ClosedHandCursor);
    } else if (isEdge(pressed_.spot) && *pressed_.index < layout_->content().ranges.size()) {
        gesture_ = Gesture::edge;
        draftTrack_ = layout_->content().ranges[*pressed_.index].trackIndex;
        selectedRange_ = layout_->content().ranges[*pressed_.index].id;
    } else if (isOnStrip(pressed_.spot) && pressed_.track) {
        gesture_ = Gesture::range;
        draftTrack_ = *pressed_.track;
    }
}

void TimelineCanvas::scrub(double x) {
    review_->engine()->moveTo(std::clamp(layout_->seconds(x), 0.0, layout_->content().clipSeconds));
}

void TimelineCanvas::dragSound(double x, Qt::KeyboardModifiers held) {
    const ModifierSet keys = modifiersOf(held);
    try {
        review_->handleContainerDrag(x - pressedAt_.x(), {.command = keys.contains(ModifierSet::command),
                                                          .shift = keys.contains(ModifierSet::shift)});
    } catch (const OutOfRange& refused) {
        desktop_.sayWhyNot(translatedSentence(refused.what()));
    }
    if (const auto moved = desktop_.controller().timeline().liveDragSeconds())
        dragText_ = translatedSentence(layout_->content().shiftText(*moved));
    dragTextX_ = x;
    invalidate();
}

void TimelineCanvas::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !layout_) return;
    if (gesture_ == Gesture::pressed) click(event->modifiers());
    endGesture(true);
    showCursor(layout_->hit(event->position().x(), event->position().y()));
}

void TimelineCanvas::endGesture(bool isKept) {
    const Gesture ended = std::exchange(gesture_, Gesture::none);
    const auto draft = std::exchange(draft_, std::nullopt);
    if (ended == Gesture::sound) {
        if (!isKept) review_->handleContainerDrag(0, {.command = true});
        dragText_.clear();
        review_->handleDragEnded();
        if (dragEnded) dragEnded();
    }
    if (isKept && draft && ended == Gesture::range) chooseRange(*draft, draftTrack_, std::nullopt);
    if (isKept && draft && ended == Gesture::edge) chooseRange(*draft, draftTrack_, selectedRange_);
    if (ended != Gesture::none) invalidate();
}

void TimelineCanvas::click(Qt::KeyboardModifiers held) {
    const bool isRange = pressed_.spot == Spot::range || isEdge(pressed_.spot);
    const auto& ranges = layout_->content().ranges;
    selectedRange_ =
        isRange && *pressed_.index < ranges.size() ? std::optional(ranges[*pressed_.index].id) : std::nullopt;
    invalidate();
    if (isRange) return;
    const ModifierSet keys = modifiersOf(held);
    if (isSound(pressed_.spot) && layout_->content().isLocked &&
        keys.contains(ModifierSet::command | ModifierSet::option))
        return desktop_.sayWhyNot(translatedSentence(ReviewViewModel::clapIsLocked));
    if (isSound(pressed_.spot))
        review_->handleWaveformClick(pressed_.seconds - layout_->content().soundOffset, keys);
    else
        scrub(pressedAt_.x());
}

void TimelineCanvas::chooseRange(const TimelineSpan& span, int track, const std::optional<UUID>& inPlaceOf) {
    if (std::abs(span.endSeconds - span.startSeconds) < TrackEditing::shortestOverrideSeconds) return;
    JSON added = ofClip();
    added.set("startSeconds", span.startSeconds);
    added.set("endSeconds", span.endSeconds);
    added.set("trackIndex", track);
    if (inPlaceOf) added.set("overrideID", inPlaceOf->text());
    desktop_.run("addBlockOverride", std::move(added));
    selectRange(std::min(span.startSeconds, span.endSeconds), track);
}

/// Delete then removes the range that was just drawn.
void TimelineCanvas::selectRange(double startSeconds, int track) {
    const SyncGroup* clip = desktop_.controller().work().syncGroups().find(layout_->content().groupID);
    if (clip == nullptr) return;
    for (const BlockOverride& range : clip->manualBlockOverrides)
        if (range.startSeconds == startSeconds && range.trackIndex == track) selectedRange_ = range.id;
    setFocus();
}

void TimelineCanvas::removeRange(const UUID& range) {
    JSON arguments = ofClip();
    arguments.set("overrideID", range.text());
    desktop_.run("removeBlockOverride", std::move(arguments));
}

void TimelineCanvas::leaveEvent(QEvent* event) {
    endSkim();
    if (layout_) zoom().cursorViewportX.reset();
    QWidget::leaveEvent(event);
}

void TimelineCanvas::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && gesture_ != Gesture::none) return endGesture(false);
    const bool removes = event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace;
    if (removes && layout_ && selectedIndex()) return removeRange(*selectedRange_);
    QWidget::keyPressEvent(event);
}

// Zoom and scroll

void TimelineCanvas::zoomBy(double factor) {
    review_->applyZoom(factor);
    if (zoomChanged) zoomChanged();
}

void TimelineCanvas::scrollTo(double offset) {
    zoom().scrollOffset = std::clamp(offset, 0.0, zoom().largestScrollOffset());
    if (zoomChanged) zoomChanged();
}

bool TimelineCanvas::pinch(const QNativeGestureEvent& gesture) {
    if (!layout_) return false;
    if (gesture.gestureType() == Qt::BeginNativeGesture) pinched_ = 1;
    if (gesture.gestureType() != Qt::ZoomNativeGesture) return false;
    pinched_ *= 1 + gesture.value();
    zoom().cursorViewportX = gesture.position().x();
    if (const auto factor = pinchZoomFactor(pinched_)) zoomBy(*factor);
    return true;
}

void TimelineCanvas::wheelEvent(QWheelEvent* event) {
    if (!layout_) return;
    event->accept();
    const bool isPrecise = !event->pixelDelta().isNull();
    // With Alt, some systems report the wheel as horizontal.
    const QPointF notches = QPointF(event->angleDelta()) / anglePerNotch;
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        zoom().cursorViewportX = event->position().x();
        const double delta = isPrecise ? event->pixelDelta().y() : notches.y() * zoomDeltaOfNotch;
        const int steps = zoomScroll_.steps(delta);
        const double factor = steps > 0 ? TimelineZoomState::zoomInFactor : TimelineZoomState::zoomOutFactor;
        if (steps != 0) zoomBy(std::pow(factor, std::abs(steps)));
        return;
    }
    QPointF points = isPrecise ? QPointF(event->pixelDelta()) : notches * pointsPerNotch;
    const bool goesSideways = event->modifiers().testFlag(Qt::ShiftModifier) ||
                              (!isPrecise && points.x() == 0 && !canScrollVertically());
    if (goesSideways && points.x() == 0) points = points.transposed();
    if (points.x() != 0) scrollTo(zoom().scrollOffset - points.x());
    if (points.y() != 0 && scrolledBy) scrolledBy(-points.y());
}

} // namespace orvane::views
