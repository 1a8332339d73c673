#include "OrvaneSyncApp/Views/Timeline/TimelinePainter.h"

#include "OrvaneDesignKit/Icons.h"
#include "OrvaneDesignKit/Theme.h"
#include "OrvaneSyncApp/ViewModels/Timeline/WaveformTile.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncCore/Models/SmartAudioKinds.h"

#include <QFontMetricsF>
#include <QObject>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace orvane::views {

using namespace design;

namespace {

constexpr double usualAspect = 16.0 / 9.0;
constexpr double placeholderStep = 3; ///< points a bar
constexpr double diamond = 4.5;
constexpr double leastTextWidth = 26;

QColor mixed(const QColor& under, const QColor& over, double share) {
    const auto one = [&](int a, int b) { return static_cast<int>(std::lround(a + (b - a) * share)); };
    return {one(under.red(), over.red()), one(under.green(), over.green()), one(under.blue(), over.blue())};
}

QRectF rect(const TimelineRect& one) { return {one.x, one.y, one.width, one.height}; }

/// Text or ground, whichever is easier to read on it.
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
        painter_.fillRect(dirty_, colours().window);
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
    void paintRow(const TimelineLayout::Row& row) {
        painter_.fillRect(
            QRectF(layout_.x(0), row.y, layout_.x(rows_.clipSeconds) - layout_.x(0), row.height),
            colours().panel);
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
            if (const QImage* image = scene_.pictures.find(slot.seconds)) painter_.drawImage(place, *image);
            painter_.fillRect(QRectF(place.left(), place.top(), 1, place.height()), colours().line);
        }
        if (scene_.pictures.isUnreadable())
            text(strip, QObject::tr("No picture can be read from this file."));
        painter_.restore();
        if (rows_.pictureClapSeconds) mark(layout_.x(*rows_.pictureClapSeconds), strip.top(), strip.bottom());
    }

    // Sound

    void paintSound(const TimelineLayout::Row& row) {
        if (!rows_.hasSound)
            return text(QRectF(0, row.y, layout_.width(), row.height).adjusted(space::small, 0, 0, 0),
                        QObject::tr("No sound lies under this clip. Attach a recording in the inspector."));
        container(row);
        paintWaveform(row, 0, colours().facts, true);
        const QRectF top = rect(layout_.waveformRect(row));
        painter_.setPen(colours().facts);
        QVector<QLineF> onsets;
        if (const Waveform* waveform = scene_.tiles.waveform())
            for (const double place : layout_.onsetPlaces(waveform->onsetMarkers))
                onsets << QLineF(place + 0.5, top.top(), place + 0.5, top.top() + 5);
        painter_.drawLines(onsets);
        if (!scene_.soundHint.isEmpty()) text(top.intersected(visible()), scene_.soundHint);
        paintTiles(row, std::nullopt);
        if (rows_.anchorSeconds) mark(layout_.x(*rows_.anchorSeconds), top.top(), row.y + row.height);
    }

    void paintChannel(const TimelineLayout::Row& row) {
        const TimelineChannel& channel = rows_.channels[static_cast<std::size_t>(row.index)];
        container(row);
        paintWaveform(row, channel.track, channelColour(row.index), channel.isActive);
        const QRectF strip = rect(layout_.stripRect(row));
        painter_.fillRect(
            strip.intersected(QRectF(layout_.x(0), strip.top(), layout_.x(rows_.clipSeconds) - layout_.x(0),
                                     strip.height())),
            colours().raised);
        paintTiles(row, channel.track);
        paintRanges(row, channel.track);
        if (rows_.anchorSeconds) {
            painter_.setPen(QPen(colours().focus, 1, Qt::DotLine));
            const double at = std::floor(layout_.x(*rows_.anchorSeconds)) + 0.5;
            painter_.drawLine(QPointF(at, row.y), QPointF(at, row.y + row.height));
        }
    }

    void container(const TimelineLayout::Row& row) {
        const QRectF place = rect(layout_.soundRect(row)).intersected(visible().adjusted(-4, 0, 4, 0));
        if (place.isEmpty()) return;
        painter_.fillRect(place, mixed(colours().window, colours().raised, 0.6));
        if (row.kind != TimelineLayout::RowKind::sound) return;
        painter_.setPen(QPen(scene_.dragText.isEmpty() ? colours().line : colours().focus, 1));
        painter_.setBrush(Qt::NoBrush);
        painter_.drawRect(place.adjusted(0.5, 0.5, -0.5, -0.5));
    }

    /// `channel`: from 1, or 0 for all of them.
    void paintWaveform(const TimelineLayout::Row& row, int channel, const QColor& colour, bool isActive) {
        const Waveform* waveform = scene_.tiles.waveform();
        const QRectF place = rect(layout_.waveformRect(row));
        if (waveform == nullptr || waveform->binsPerSecond <= 0 || place.isEmpty()) return;
        const QColor ground = mixed(colours().window, colours().raised, 0.6);
        const double strength = isActive ? 1 : 0.35;
        const double ratio = scene_.pixelRatio;
        WaveformTileKey key;
        key.channel = channel;
        key.columnsPerSecond = layout_.zoom().pixelsPerSecond() * ratio;
        key.height = static_cast<int>(std::floor(place.height() * ratio / 2)) * 2;
        key.peakColour = mixed(ground, colour, 0.5 * strength).rgb();
        key.levelColour = mixed(ground, colour, strength).rgb();
        // In whole pixels of the screen, so that nothing is blurred.
        const double left = std::round(place.left() * ratio);
        const double tileWidth = WaveformTile::width;
        const double from = std::max(std::max(dirty_.left(), 0.0) * ratio, left);
        const double to = std::min(std::min(dirty_.right(), layout_.width()) * ratio, place.right() * ratio);
        for (key.index = static_cast<std::int64_t>(std::floor((from - left) / tileWidth));
             left + static_cast<double>(key.index) * tileWidth < to; ++key.index) {
            const double x = left + static_cast<double>(key.index) * tileWidth;
            const QRectF target(x / ratio, place.top(), tileWidth / ratio, key.height / ratio);
            if (const QImage* image = scene_.tiles.find(key)) {
                painter_.drawImage(target, *image);
            } else {
                gaps_.tiles.insert(key);
                paintRoughly(target.intersected(place), channel, *waveform, place, QColor(key.peakColour));
            }
        }
    }

    /// A bar every few points until the tile is there.
    void paintRoughly(const QRectF& target, int channel, const Waveform& waveform, const QRectF& place,
                      const QColor& colour) {
        const bool isOne =
            channel > 0 && static_cast<std::size_t>(channel) <= waveform.peaksPerChannel.size();
        WaveformTile tile;
        tile.peaks = isOne ? waveform.peaksPerChannel[static_cast<std::size_t>(channel - 1)] : waveform.peaks;
        tile.rms = isOne ? waveform.rmsPerChannel[static_cast<std::size_t>(channel - 1)] : waveform.rms;
        tile.binsPerColumn = waveform.binsPerSecond / layout_.zoom().pixelsPerSecond() * placeholderStep;
        tile.firstColumn = static_cast<std::int64_t>((target.left() - place.left()) / placeholderStep);
        const double middle = place.center().y();
        QVector<QRectF> bars;
        const int count = static_cast<int>(std::ceil(target.width() / placeholderStep));
        bars.reserve(count);
        for (int i = 0; i < count; ++i) {
            const double reach =
                std::clamp<double>(tile.column(i).peak * scene_.tiles.gain(), 0, 1) * place.height() / 2;
            bars << QRectF(target.left() + i * placeholderStep, middle - reach,
                           std::min(placeholderStep, target.width() - i * placeholderStep), 2 * reach);
        }
        painter_.setPen(Qt::NoPen);
        painter_.setBrush(colour);
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
            if (right - left < 1 && right < drawnTo) continue; // many of them share a column
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
            words = orvane::views::text(multiActiveWarnLabel);
        else if (const TimelineChannel* channel = rows_.channel(track);
                 block.kind != BlockKind::silence && channel)
            words = orvane::views::text(channel->name);
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
        if (place.isEmpty()) return;
        painter_.setPen(QPen(colours().line, 1));
        painter_.setBrush(colours().raised);
        painter_.drawRect(place.adjusted(0.5, 0.5, -0.5, -0.5));
        text(place.intersected(visible()).adjusted(space::tight, 0, 0, 0), orvane::views::text(one.name));
    }

    // Over all rows

    void mark(double x, double top, double bottom) {
        const double at = std::floor(x) + 0.5;
        painter_.setPen(QPen(colours().focus, 1));
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
            if (!tick.label.empty())
                painter_.drawText(QPointF(at + space::tight, 14), orvane::views::text(tick.label));
        }
        painter_.setPen(colours().disabled);
        painter_.drawLines(frames);
        painter_.setPen(colours().facts);
        painter_.drawLines(majors);
        painter_.fillRect(QRectF(0, ruler.bottom() - 1, ruler.width(), 1), colours().line);
    }

    QRectF visible() const { return {0, TimelineLayout::rulerHeight, layout_.width(), 1e6}; }
    void text(const QRectF& place, const QString& words) {
        painter_.setPen(colours().facts);
        painter_.drawText(
            place.adjusted(space::tight, 0, -space::tight, 0), Qt::AlignVCenter | Qt::AlignLeft,
            QFontMetricsF(painter_.font()).elidedText(words, Qt::ElideRight, place.width() - space::small));
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
