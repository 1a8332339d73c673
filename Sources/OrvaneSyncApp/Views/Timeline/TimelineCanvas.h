#pragma once

#include "OrvaneSyncApp/ViewModels/Timeline/TimelineLayout.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Timeline/PictureStrip.h"
#include "OrvaneSyncApp/Views/Timeline/TimelinePainter.h"
#include "OrvaneSyncApp/Views/Timeline/WaveformTiles.h"

#include <QImage>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class QMenu;
class QNativeGestureEvent;

namespace orvane::views {

/// The playhead, as a narrow widget over the timeline: moving it repaints only the old and the new columns.
class PlayheadLine : public QWidget {
  public:
    explicit PlayheadLine(QWidget* parent);
    /// x in points of the parent.
    void moveTo(double x);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

/// Ruler, picture, sound, channels and recordings of a clip, painted into an image that is made again when
/// something in it has changed; and the gestures of pointer and wheel on them.
class TimelineCanvas : public QWidget {
  public:
    TimelineCanvas(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent = nullptr);

    /// Sets what is shown, and how far the rows are scrolled up.
    void show(std::shared_ptr<const TimelineRows> rows, const TimelineZoomState& zoom, bool isExpanded,
              double verticalScroll);
    void setSoundHint(const QString& hint);
    const QString& soundHint() const { return soundHint_; }
    const TimelineLayout& layout() const { return *layout_; }
    bool hasLayout() const { return layout_.has_value(); }
    /// Clip time.
    void showPlayhead(double seconds);
    void showLoop(std::optional<TimelineSpan> loop);
    void setSkims(bool skims);
    /// Everything is painted in its final form.
    bool isComplete() const { return !tiles_.isDrawing() && !pictures_.isDecoding(); }
    WaveformTiles& tiles() { return tiles_; }
    PictureStrip& pictures() { return pictures_; }
    void invalidate();

    std::function<void()> resized;
    std::function<void()> dragEnded;        ///< a drag of the sound
    std::function<void()> zoomChanged;      ///< zoom or horizontal scroll has changed
    std::function<void(double)> scrolledBy; ///< points, vertically
    std::function<bool()> canScrollVertically;

    /// The commands that apply to a place.
    std::unique_ptr<QMenu> menuAt(const TimelineLayout::Hit& hit);
    const std::optional<UUID>& selectedRange() const { return selectedRange_; }

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    enum class Gesture { none, pressed, scrub, sound, range, edge };
    bool pinch(const QNativeGestureEvent& gesture);
    void showToolTip(const QPoint& at, const QPoint& onScreen);
    void showCursor(const TimelineLayout::Hit& hit);
    void skim(const TimelineLayout::Hit& hit);
    void endSkim();
    void scrub(double x);
    void beginDrag();
    void dragSound(double x, Qt::KeyboardModifiers held);
    void click(Qt::KeyboardModifiers held);
    /// Paints into the image: everything, or only the row of pictures.
    void renderLayer(const QRectF& part);
    QRectF pictureRow() const;
    std::optional<std::size_t> selectedIndex() const;
    void endGesture(bool isKept);
    void chooseRange(const TimelineSpan& span, int track, const std::optional<UUID>& inPlaceOf);
    void selectRange(double startSeconds, int track);
    void removeRange(const UUID& range);
    void zoomBy(double factor);
    void scrollTo(double offset);
    TimelineZoomState& zoom();
    const SyncGroup* clip();
    JSON ofClip();

    Desktop& desktop_;
    const std::shared_ptr<ReviewViewModel> review_;
    WaveformTiles tiles_;
    PictureStrip pictures_;
    std::optional<TimelineLayout> layout_;
    QImage layer_; ///< in pixels of the screen
    bool isLayerStale_ = true;
    bool arePicturesStale_ = false; ///< in the image, while the rest is up to date
    PlayheadLine* playhead_;
    double playheadSeconds_ = 0;
    QString soundHint_;
    std::optional<TimelineSpan> loop_;
    bool skims_ = true;
    bool isSkimming_ = false;
    ZoomScroll zoomScroll_;
    double pinched_ = 1; ///< magnification since the pinch began

    Gesture gesture_ = Gesture::none;
    TimelineLayout::Hit pressed_;
    QPointF pressedAt_;
    std::optional<UUID> selectedRange_;
    std::optional<TimelineSpan> draft_;
    int draftTrack_ = 0;
    QString dragText_;
    double dragTextX_ = 0;
};

/// The held modifier keys, in the form of the models.
ModifierSet modifiersOf(Qt::KeyboardModifiers held);

} // namespace orvane::views
