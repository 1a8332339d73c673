#include "OrvaneSyncApp/Views/Timeline/TimelinePainter.h"

#include "OrvaneDesignKit/Icons.h"
#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/ViewModels/Timeline/WaveformTile.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Timeline/TrackHeader.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/SmartAudioKinds.h"
#include "Platform/MediaInspector.h"

#include <QFontMetricsF>
#include <QObject>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace orvane::views {

using namespace design;

namespace {

constexpr double usualAspect = 16.0 / 9.0;
constexpr int placeholderStep = 3;                 ///< points for each bar
constexpr std::ptrdiff_t mostPlaceholderBins = 16; ///< looked at for one bar
constexpr double onsetHeight = 5;
constexpr double diamond = 4.5;
constexpr double leastTextWidth = 26;

QColor mixed(const QColor& under, const QColor& over, double share) {
    const auto one = [&](int a, int b) { return static_cast<int>(std::lround(a + (b - a) * share)); };
    return {one(under.red(), over.red()), one(under.green(), over.green()), one(under.blue(), over.blue())};
}

QRectF rect(const TimelineRect& one) { return {one.x, one.y, one.width, one.height}; }

/// The text colour or the background colour, whichever contrasts more with `ground`.
QColor readableOn(const QColor& ground) {
    const Colours& all = colours();
    return contrast(all.text, ground) >= contrast(all.window, ground) ? all.text : all.window;
}

class Painting {
  public:
    Painting(QPainter& painter, const TimelineScene& scene, const QRectF& dirty)
        : painter_(painter), scene_(scene), layout_(scene.layout), rows_(scene.layout.content()),
          dirty_(dirty) {}

    TimelineGaps paint() {
        painter_.setFont(factsFont());
        paintGround();
        painter_.save();
        painter_.setClipRect(QRectF(0, TimelineLayout::rulerHeight, layout_.width(), dirty_.bottom() + 1),
                             Qt::IntersectClip);
        for (const TimelineLayout::Row& row : layout_.rows())
            if (row.y + row.height > std::max(dirty_.top(), TimelineLayout::rulerHeight) &&
                row.y < dirty_.bottom())
                paintRow(row);
        paintClipEdges();
        paintDragText();
        painter_.restore();
        if (dirty_.top() < TimelineLayout::rulerHeight) paintRuler();
        return std::move(gaps_);
    }

  private:
    /// Leaves out what something else fills, because most of the time of painting is spent on writing memory.
    /// At a fractional scale their edges might be rounded differently.
    void fillAround(const QRectF& outer, const QRectF& inner, const QColor& colour) {
        const QRectF hole = outer.intersected(inner);
        const bool isBroken = scene_.pixelRatio != std::floor(scene_.pixelRatio);
        if (hole.isEmpty() || isBroken) return painter_.fillRect(outer, colour);
        for (const QRectF& part : {QRectF(outer.topLeft(), QPointF(outer.right(), hole.top())),
                                   QRectF(QPointF(outer.left(), hole.bottom()), outer.bottomRight()),
                                   QRectF(QPointF(outer.left(), hole.top()), hole.bottomLeft()),
                                   QRectF(hole.topRight(), QPointF(outer.right(), hole.bottom()))})
            if (!part.isEmpty()) painter_.fillRect(part, colour);
    }

    /// The part of a row over the clip's duration.
    QRectF ofClip(double top, double height) const {
        return {layout_.x(0), top, layout_.x(rows_.clipSeconds) - layout_.x(0), height};
    }

    void paintGround() {
        const TimelineLayout::Row& last = layout_.rows().back();
        const double top = layout_.rows().front().y;
        fillAround(dirty_, ofClip(top, last.y + last.height - top), colours().window);
    }

    /// The part that the row always paints opaquely.
    QRectF opaquePart(const TimelineLayout::Row& row) const {
        if (row.kind == TimelineLayout::RowKind::picture) return rect(layout_.pictureRect());
        const bool hasContainer = rows_.hasSound && row.kind != TimelineLayout::RowKind::recordings;
        return hasContainer ? rect(layout_.soundRect(row)) : QRectF();
    }

    void paintRow(const TimelineLayout::Row& row) {
        fillAround(ofClip(row.y, row.height), opaquePart(row), colours().panel);
        switch (row.kind) {
        case TimelineLayout::RowKind::picture:
            paintPictures();
            break;
        case TimelineLayout::RowKind::sound:
            paintSound(row);
            break;
        case TimelineLayout::RowKind::channel:
            paintChannel(row);
            break;
        case TimelineLayout::RowKind::recordings:
            for (const TimelineRecording& one : rows_.recordings)
                if (one.lane == row.index) paintRecording(one, row);
            break;
        }
        painter_.fillRect(QRectF(0, row.y + row.height - 1, layout_.width(), 1), colours().line);
    }

    // Picture

    void paintPictures() {
        const QRectF strip = rect(layout_.pictureRect());
        painter_.save();
        painter_.setClipRect(strip, Qt::IntersectClip);
        painter_.fillRect(strip, colours().raised);
        painter_.setRenderHint(QPainter::SmoothPixmapTransform);
        const double width = pictureSlotWidth(scene_.pictures);
        for (const TimelineLayout::PictureSlot& slot : layout_.pictureSlots(width)) {
            const QRectF place(slot.x, strip.top(), width, strip.height());
            if (!scene_.pictures.isThere(slot.seconds) && !scene_.pictures.isUnreadable())
                gaps_.pictures.insert(slot.seconds);
            if (!place.intersects(dirty_)) continue;
            if (const QImage* image = scene_.pictures.find(slot.seconds)) paintPicture(*image, place);
            painter_.fillRect(QRectF(place.left(), place.top(), 1, place.height()), colours().line);
        }
        if (scene_.pictures.isUnreadable() && !platform::mediaLibraryWasMissed())
            text(strip, QObject::tr("No picture can be read from this file."));
        painter_.restore();
        if (rows_.pictureClapSeconds) mark(layout_.x(*rows_.pictureClapSeconds), strip.top(), strip.bottom());
    }

    /// A picture of the slot's size is copied pixel by pixel.
    void paintPicture(const QImage& image, const QRectF& place) {
        const double ratio = scene_.pixelRatio;
        const QSizeF own = QSizeF(image.size()) / ratio;
        const bool isOfSize =
            std::abs(own.width() - place.width()) < 1 && std::abs(own.height() - place.height()) < 1;
        const QPointF corner(std::round(place.left() * ratio) / ratio, place.top());
        painter_.drawImage(isOfSize ? QRectF(corner, own) : place, image);
    }

    // Sound

    void paintSound(const TimelineLayout::Row& row) {
        if (!rows_.hasSound)
            return text(QRectF(0, row.y, layout_.width(), row.height).adjusted(space::small, 0, 0, 0),
                        QObject::tr("This clip has no sound. Attach a recording in the inspector."));
        container(row);
        paintWaveform(row, 0, colours().facts, true);
        const QRectF top = rect(layout_.waveformRect(row));
        paintOnsets(top.top());
        if (!scene_.soundHint.isEmpty()) text(top.intersected(visible()), scene_.soundHint);
        paintTiles(row, std::nullopt);
        paintBorder(row);
        if (rows_.anchorSeconds) mark(layout_.x(*rows_.anchorSeconds), top.top(), row.y + row.height);
    }

    /// Painted over the contents of the container.
    void paintBorder(const TimelineLayout::Row& row) {
        const QRectF place = containerRect(row);
        if (place.isEmpty()) return;
        painter_.setPen(QPen(scene_.dragText.isEmpty() ? colours().line : colours().focus, 1));
        painter_.setBrush(Qt::NoBrush);
        painter_.drawRect(place.adjusted(0.5, 0.5, -0.5, -0.5));
    }

    /// The visible part, with its edges.
    QRectF containerRect(const TimelineLayout::Row& row) const {
        return rect(layout_.soundRect(row)).intersected(visible().adjusted(-4, 0, 4, 0));
    }

    /// Adjacent ones are painted as one piece.
    void paintOnsets(double top) {
        const Waveform* waveform = scene_.tiles.waveform();
        if (waveform == nullptr) return;
        const std::vector<double> places = layout_.onsetPlaces(waveform->onsetMarkers);
        for (std::size_t first = 0, last = 0; first < places.size(); first = ++last) {
            while (last + 1 < places.size() && places[last + 1] == places[last] + 1) ++last;
            painter_.fillRect(QRectF(places[first], top, places[last] + 1 - places[first], onsetHeight),
                              colours().facts);
        }
    }

    void paintChannel(const TimelineLayout::Row& row) {
        const TimelineChannel& channel = rows_.channels[static_cast<std::size_t>(row.index)];
        container(row);
        paintWaveform(row, channel.track, channelColour(row.index), channel.isHeard());
        const TimelineRect own = layout_.stripRect(row);
        const QRectF strip = rect(own).intersected(ofClip(own.y, own.height));
        painter_.fillRect(strip, colours().raised);
        // A drag above the strip moves the sound, so the strip must be known before the pointer is on it.
        const bool isEmpty = rows_.blocks.empty() && !scene_.draftSpan &&
                             std::ranges::count(rows_.ranges, channel.track, &BlockOverride::trackIndex) == 0;
        if (isEmpty) text(strip.intersected(visible()), QObject::tr("Drag here for a range"));
        paintTiles(row, channel.track);
        paintRanges(row, channel.track);
        if (rows_.anchorSeconds) {
            painter_.setPen(QPen(colours().focus, 1, Qt::DotLine));
            const double at = std::floor(layout_.x(*rows_.anchorSeconds)) + 0.5;
            painter_.drawLine(QPointF(at, row.y), QPointF(at, row.y + row.height));
        }
    }

    void container(const TimelineLayout::Row& row) {
        const QRectF place = containerRect(row);
        if (place.isEmpty()) return;
        const WaveformTileKey key = tileKey(row);
        QRectF tiles = rect(layout_.waveformRect(row)).intersected(dirty_);
        tiles.setHeight(key.height / scene_.pixelRatio);
        fillAround(place, hasWaveform() ? tiles : QRectF(), QColor(key.ground));
    }

    bool hasWaveform() const {
        const Waveform* waveform = scene_.tiles.waveform();
        return waveform != nullptr && waveform->binsPerSecond > 0;
    }

    /// The part of the key that all tiles of a row have in common.
    WaveformTileKey tileKey(const TimelineLayout::Row& row) const {
        const double ratio = scene_.pixelRatio;
        WaveformTileKey key;
        key.columnsPerSecond = layout_.zoom().pixelsPerSecond() * ratio;
        key.height = static_cast<int>(std::floor(layout_.waveformRect(row).height * ratio / 2)) * 2;
        key.ground = mixed(colours().window, colours().raised, 0.6).rgb();
        return key;
    }

    /// `channel`: from 1, or 0 for all of them.
    void paintWaveform(const TimelineLayout::Row& row, int channel, const QColor& colour, bool isHeard) {
        const QRectF place = rect(layout_.waveformRect(row));
        if (!hasWaveform() || place.isEmpty()) return;
        const double strength = isHeard ? 1 : 0.35;
        const double ratio = scene_.pixelRatio;
        WaveformTileKey key = tileKey(row);
        key.channel = channel;
        key.peakColour = mixed(QColor(key.ground), colour, 0.5 * strength).rgb();
        key.levelColour = mixed(QColor(key.ground), colour, strength).rgb();
        // In whole pixels of the screen, so that nothing is blurred.
        const double left = std::round(place.left() * ratio);
        const double tileWidth = WaveformTile::width;
        const double from = std::max(std::max(dirty_.left(), 0.0) * ratio, left);
        const double to = std::min(std::min(dirty_.right(), layout_.width()) * ratio, place.right() * ratio);
        for (key.index = static_cast<std::int64_t>(std::floor((from - left) / tileWidth));
             left + static_cast<double>(key.index) * tileWidth < to; ++key.index) {
            const double x = left + static_cast<double>(key.index) * tileWidth;
            const double seen = std::min(tileWidth, std::ceil(place.right() * ratio - x));
            const QRectF target(x / ratio, place.top(), seen / ratio, key.height / ratio);
            if (const QImage* image = scene_.tiles.find(key)) {
                painter_.drawImage(target, *image, QRectF(0, 0, seen, key.height));
            } else {
                gaps_.tiles.insert(key);
                paintRoughly(target, place.left(), key);
            }
        }
    }

    /// Paints bars until the tile is ready. `left`: position of the recording's first sample.
    void paintRoughly(const QRectF& target, double left, const WaveformTileKey& key) {
        painter_.fillRect(target, QColor(key.ground));
        const Waveform& waveform = *scene_.tiles.waveform();
        const auto channel = static_cast<std::size_t>(key.channel);
        const bool isOne = channel > 0 && channel <= waveform.peaksPerChannel.size();
        const std::vector<float>& peaks = isOne ? waveform.peaksPerChannel[channel - 1] : waveform.peaks;
        const double binsPerPoint = waveform.binsPerSecond / layout_.zoom().pixelsPerSecond();
        const int middle = static_cast<int>(std::round(target.center().y()));
        const float scale = scene_.tiles.gain() * static_cast<float>(target.height()) / 2;
        const int most = static_cast<int>(target.height()) / 2;
        QVector<QRect> bars;
        bars.reserve(static_cast<int>(target.width()) / placeholderStep + 1);
        const int first = static_cast<int>(std::round(target.left())), end = static_cast<int>(target.right());
        for (int x = first; x < end; x += placeholderStep) {
            const auto bin = static_cast<std::ptrdiff_t>((x - left) * binsPerPoint);
            const auto count = std::clamp<std::ptrdiff_t>(
                static_cast<std::ptrdiff_t>(placeholderStep * binsPerPoint), 1, mostPlaceholderBins);
            float peak = 0;
            for (std::ptrdiff_t i = std::max<std::ptrdiff_t>(bin, 0);
                 i < std::min(bin + count, std::ssize(peaks)); ++i)
                peak = std::max(peak, peaks[static_cast<std::size_t>(i)]);
            const int reach = std::clamp(static_cast<int>(peak * scale), 0, most);
            bars << QRect(x, middle - reach, std::min(placeholderStep, end - x), 2 * reach);
        }
        painter_.setPen(Qt::NoPen);
        painter_.setBrush(QColor(key.peakColour));
        painter_.drawRects(bars);
    }

    // Blocks and ranges

    void paintTiles(const TimelineLayout::Row& row, std::optional<int> track) {
        const TimelineRect strip = layout_.stripRect(row);
        const double first = layout_.seconds(dirty_.left()) - rows_.soundOffset;
        const double last = layout_.seconds(dirty_.right()) - rows_.soundOffset;
        double drawnTo = -1;
        for (const BlockDecision& block : rows_.blocks) {
            if (block.endSeconds < first || block.startSeconds > last) continue;
            if (track && block.activeTrack != *track && block.secondaryTrack != track) continue;
            const double left = layout_.x(block.startSeconds + rows_.soundOffset);
            const double right = layout_.x(block.endSeconds + rows_.soundOffset);
            if (right - left < 1 && right < drawnTo) continue; // several of them are in the same column
            drawnTo = std::floor(left) + 1;
            paintTile(block, QRectF(left, strip.y, std::max(right - left - 1, 1.0), strip.height),
                      track.value_or(block.activeTrack));
        }
    }

    void paintTile(const BlockDecision& block, const QRectF& place, int track) {
        const Colours& all = colours();
        const QColor ground = mixed(all.panel, channelColour(track - 1), tileOpacity(block));
        painter_.fillRect(place, ground);
        const QRectF seen = place.intersected(visible()).adjusted(3, 0, -3, 0);
        if (seen.width() < leastTextWidth) return;
        QString words;
        if (block.kind == BlockKind::multiActiveWarn)
            words = translated(multiActiveWarnLabel);
        else if (const TimelineChannel* channel = rows_.channel(track);
                 block.kind != BlockKind::silence && channel)
            words = shownName(*channel);
        if (words.isEmpty()) return;
        painter_.setPen(readableOn(ground));
        painter_.drawText(seen, Qt::AlignVCenter | Qt::AlignLeft,
                          QFontMetricsF(painter_.font()).elidedText(words, Qt::ElideRight, seen.width()));
    }

    void paintRanges(const TimelineLayout::Row& row, int track) {
        const TimelineRect strip = layout_.stripRect(row);
        const QColor colour = channelColour(track - 1);
        const auto place = [&](double start, double end) {
            const TimelineRect span = layout_.spanRect(row, start, end);
            return QRectF(span.x, strip.y, std::max(span.width, 2.0), strip.height);
        };
        for (std::size_t i = 0; i < rows_.ranges.size(); ++i) {
            const BlockOverride& range = rows_.ranges[i];
            if (range.trackIndex != track) continue;
            const QRectF body = place(range.startSeconds, range.endSeconds);
            if (!body.intersects(dirty_)) continue;
            if (rows_.blocks.empty()) painter_.fillRect(body, colour);
            const bool isSelected = scene_.selectedRange == i;
            painter_.setPen(QPen(isSelected ? colours().focus : colours().text, isSelected ? 2 : 1));
            painter_.setBrush(Qt::NoBrush);
            painter_.drawRect(body.adjusted(0.5, 0.5, -0.5, -0.5));
            for (const double edge : {body.left(), body.right() - 3})
                painter_.fillRect(QRectF(edge, body.top(), 3, body.height()),
                                  isSelected ? colours().focus : colours().text);
        }
        if (!scene_.draftSpan || scene_.draftTrack != track) return;
        const QRectF draft = place(scene_.draftSpan->startSeconds, scene_.draftSpan->endSeconds);
        painter_.fillRect(draft, mixed(colours().panel, colour, 0.75));
        painter_.setPen(QPen(colours().focus, 1, Qt::DashLine));
        painter_.setBrush(Qt::NoBrush);
        painter_.drawRect(draft.adjusted(0.5, 0.5, -0.5, -0.5));
    }

    void paintRecording(const TimelineRecording& one, const TimelineLayout::Row& row) {
        const QRectF place =
            rect(layout_.recordingRect(one, row)).intersected(visible().adjusted(-4, 0, 4, 0));
        if (place.isEmpty()) return pointTo(one, row);
        painter_.setPen(QPen(colours().line, 1));
        painter_.setBrush(colours().raised);
        painter_.drawRect(place.adjusted(0.5, 0.5, -0.5, -0.5));
        text(place.intersected(visible()).adjusted(space::tight, 0, 0, 0), orvane::views::text(one.name));
    }

    /// Points to a recording that is out of view, if its lane has no other.
    void pointTo(const TimelineRecording& one, const TimelineLayout::Row& row) {
        if (std::ranges::count(rows_.recordings, one.lane, &TimelineRecording::lane) > 1) return;
        const bool isBehind = layout_.x(one.startSeconds) > 0;
        const QRectF place(space::small, row.y, layout_.width() - 2 * space::small, row.height);
        const QString name = orvane::views::text(one.name);
        painter_.setPen(colours().facts);
        painter_.drawText(place, Qt::AlignVCenter | (isBehind ? Qt::AlignRight : Qt::AlignLeft),
                          isBehind ? name + QStringLiteral(" →") : QStringLiteral("← ") + name);
    }

    // Over all rows

    void mark(double x, double top, double bottom) {
        const double at = std::floor(x) + 0.5;
        // The peak of the clap below it must stay visible.
        painter_.setPen(QPen(colours().focus, 1, Qt::DotLine));
        painter_.drawLine(QPointF(at, top), QPointF(at, bottom));
        painter_.save();
        painter_.setRenderHint(QPainter::Antialiasing);
        painter_.setPen(Qt::NoPen);
        painter_.setBrush(colours().focus);
        const QPointF centre(at, top + diamond);
        painter_.drawPolygon(QPolygonF{{centre - QPointF(diamond, 0), centre - QPointF(0, diamond),
                                        centre + QPointF(diamond, 0), centre + QPointF(0, diamond)}});
        painter_.restore();
    }

    void paintClipEdges() {
        for (const double edge : {0.0, rows_.clipSeconds})
            painter_.fillRect(QRectF(std::floor(layout_.x(edge)), TimelineLayout::rulerHeight, 1,
                                     layout_.height() - TimelineLayout::rulerHeight),
                              colours().disabled);
    }

    void paintDragText() {
        const TimelineLayout::Row* row = layout_.row(TimelineLayout::RowKind::sound);
        if (scene_.dragText.isEmpty() || row == nullptr) return;
        const double width =
            QFontMetricsF(painter_.font()).horizontalAdvance(scene_.dragText) + 2 * space::small;
        constexpr double height = 22;
        const double left =
            std::clamp(scene_.dragTextX - width / 2, 0.0, std::max(layout_.width() - width, 0.0));
        const QRectF box(left, row->y + space::tight, width, height);
        painter_.setPen(QPen(colours().focus, 1));
        painter_.setBrush(colours().raised);
        painter_.drawRoundedRect(box, 4, 4);
        painter_.setPen(colours().text);
        painter_.drawText(box, Qt::AlignCenter, scene_.dragText);
    }

    void paintRuler() {
        const QRectF ruler(0, 0, layout_.width(), TimelineLayout::rulerHeight);
        painter_.fillRect(ruler, colours().panel);
        if (scene_.loop) {
            const double left = layout_.x(scene_.loop->startSeconds);
            painter_.fillRect(QRectF(left, 0, layout_.x(scene_.loop->endSeconds) - left, ruler.height()),
                              mixed(colours().panel, colours().selected, 0.6));
        }
        QVector<QLineF> frames, majors;
        painter_.setPen(colours().facts);
        for (const TimelineLayout::Tick& tick : layout_.ticks(scene_.rulerInterval)) {
            const double at = std::floor(tick.x) + 0.5;
            (tick.isMajor ? majors : frames)
                << QLineF(at, ruler.bottom() - (tick.isMajor ? 9 : 4), at, ruler.bottom());
            // A time without its first characters would be read as another time.
            if (!tick.label.empty() && at + space::tight >= 0)
                painter_.drawText(QPointF(at + space::tight, 14), orvane::views::text(tick.label));
        }
        painter_.setPen(colours().disabled);
        painter_.drawLines(frames);
        painter_.setPen(colours().facts);
        painter_.drawLines(majors);
        painter_.fillRect(QRectF(0, ruler.bottom() - 1, ruler.width(), 1), colours().line);
    }

    QRectF visible() const { return {0, TimelineLayout::rulerHeight, layout_.width(), 1e6}; }
    /// In several lines if one is too short and the place is high enough.
    void text(const QRectF& place, const QString& words) {
        const QRectF inside = place.adjusted(space::tight, 0, -space::tight, 0);
        const QFontMetricsF metrics(painter_.font());
        constexpr int inLines = Qt::AlignVCenter | Qt::AlignLeft | Qt::TextWordWrap;
        painter_.setPen(colours().facts);
        if (metrics.boundingRect(inside, inLines, words).height() <= inside.height())
            painter_.drawText(inside, inLines, words);
        else
            painter_.drawText(inside, Qt::AlignVCenter | Qt::AlignLeft,
                              metrics.elidedText(words, Qt::ElideRight, inside.width()));
    }

    QPainter& painter_;
    const TimelineScene& scene_;
    const TimelineLayout& layout_;
    const TimelineRows& rows_;
    const QRectF dirty_;
    TimelineGaps gaps_;
};

} // namespace

double pictureSlotHeight() { return TimelineLayout::pictureHeight - 2 * TimelineLayout::padding; }

double pictureSlotWidth(const PictureStrip& pictures) {
    return pictureSlotHeight() * pictures.aspect().value_or(usualAspect);
}

TimelineGaps paintTimeline(QPainter& painter, const TimelineScene& scene, const QRectF& dirty) {
    return Painting(painter, scene, dirty).paint();
}

} // namespace orvane::views
