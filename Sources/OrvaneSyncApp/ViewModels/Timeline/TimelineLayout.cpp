#include "OrvaneSyncApp/ViewModels/Timeline/TimelineLayout.h"

#include "OrvaneSyncCore/Services/Timeline/TimelineRuler.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane {

namespace {

constexpr double reachOfEdge = 5;        ///< points to each side
constexpr double leastFrameDistance = 6; ///< points; frames that are narrower get no ticks
constexpr double labelEverySeconds = 1;
constexpr double shareBehindPlayhead = 0.1; ///< of the width, when the view is moved by a page

bool isWhole(double value) { return std::abs(value - std::round(value)) < 1e-6; }

} // namespace

TimelineLayout::TimelineLayout(std::shared_ptr<const TimelineRows> rows, const TimelineZoomState& zoom,
                               bool isExpanded, double verticalScroll)
    : rows_(std::move(rows)), zoom_(zoom) {
    double y = rulerHeight - verticalScroll;
    const auto add = [&](RowKind kind, int index, double height) {
        placed_.push_back({kind, index, y, height});
        y += height;
    };
    add(RowKind::picture, 0, pictureHeight);
    add(RowKind::sound, 0, soundHeight);
    if (isExpanded)
        for (std::size_t i = 0; i < rows_->channels.size(); ++i)
            add(RowKind::channel, static_cast<int>(i), channelHeight);
    for (int lane = 0; lane < rows_->laneCount; ++lane) add(RowKind::recordings, lane, recordingHeight);
    height_ = y + verticalScroll;
}

const TimelineLayout::Row* TimelineLayout::row(RowKind kind, int index) const {
    const auto found =
        std::ranges::find_if(placed_, [&](const Row& one) { return one.kind == kind && one.index == index; });
    return found == placed_.end() ? nullptr : &*found;
}

double TimelineLayout::seconds(double x) const {
    return (x + zoom_.scrollOffset) / zoom_.pixelsPerSecond() - zoom_.preRollSeconds;
}

std::vector<TimelineLayout::Tick> TimelineLayout::ticks(double interval) const {
    std::vector<Tick> result;
    if (!(interval > 0)) return result;
    const double last = seconds(width());
    const double pixelsPerFrame = rows_->frameRate > 0 ? zoom_.pixelsPerSecond() / rows_->frameRate : 0;
    if (pixelsPerFrame >= leastFrameDistance)
        for (double frame = std::ceil(seconds(0) * rows_->frameRate); frame / rows_->frameRate <= last;
             ++frame)
            if (!isWhole(frame / rows_->frameRate / interval))
                result.push_back({x(frame / rows_->frameRate), false, {}});
    // One tick left of the view, because its label reaches into the view.
    for (double number = std::ceil(seconds(0) / interval) - 1; number * interval <= last; ++number) {
        const double at = number * interval;
        result.push_back(
            {x(at), true, isWhole(at / labelEverySeconds) ? TimelineRuler::labelText(std::round(at)) : ""});
    }
    return result;
}

std::vector<TimelineLayout::PictureSlot> TimelineLayout::pictureSlots(double slotWidth) const {
    std::vector<PictureSlot> slots;
    const double begin = x(0);
    const double end = std::min(x(rows_->clipSeconds), width());
    if (!(slotWidth > 0)) return slots;
    constexpr double half = 0.5;
    for (double number = std::max(std::floor(-begin / slotWidth), 0.0); begin + number * slotWidth < end;
         ++number)
        slots.push_back({begin + number * slotWidth, (number + half) * slotWidth / zoom_.pixelsPerSecond()});
    return slots;
}

TimelineRect TimelineLayout::spanRect(const Row& row, double startSeconds, double endSeconds) const {
    return {x(startSeconds), row.y, (endSeconds - startSeconds) * zoom_.pixelsPerSecond(), row.height};
}

TimelineRect TimelineLayout::pictureRect() const {
    TimelineRect rect = spanRect(placed_.front(), 0, rows_->clipSeconds);
    rect.y += padding;
    rect.height -= 2 * padding;
    return rect;
}

TimelineRect TimelineLayout::soundRect(const Row& row) const {
    TimelineRect rect = spanRect(row, rows_->soundOffset, rows_->soundEnd());
    rect.y += padding;
    rect.height -= 2 * padding;
    return rect;
}

TimelineRect TimelineLayout::waveformRect(const Row& row) const {
    TimelineRect rect = soundRect(row);
    rect.height -= stripHeight;
    return rect;
}

TimelineRect TimelineLayout::stripRect(const Row& row) const {
    return {0, row.y + row.height - padding - stripHeight, width(), stripHeight};
}

TimelineRect TimelineLayout::recordingRect(const TimelineRecording& recording, const Row& row) const {
    TimelineRect rect = spanRect(row, recording.startSeconds, recording.endSeconds);
    rect.y += 2;
    rect.height -= 4;
    return rect;
}

std::vector<double> TimelineLayout::onsetPlaces(std::span<const double> onsets) const {
    std::vector<double> places;
    const double first = seconds(0) - rows_->soundOffset;
    for (auto at = std::ranges::lower_bound(onsets, first); at != onsets.end(); ++at) {
        const double place = std::floor(x(*at + rows_->soundOffset));
        if (place > width()) break;
        if (places.empty() || place > places.back()) places.push_back(place);
    }
    return places;
}

std::optional<TimelineLayout::Hit> TimelineLayout::hitOnStrip(const Row& row, double atX, double atY) const {
    if (!stripRect(row).contains(atX, atY)) return std::nullopt;
    Hit found{.spot = Spot::strip, .seconds = seconds(atX)};
    if (row.kind == RowKind::channel) {
        found.track = row.index + 1;
        std::optional<std::size_t> inside;
        for (std::size_t i = 0; i < rows_->ranges.size(); ++i) {
            const BlockOverride& range = rows_->ranges[i];
            if (range.trackIndex != *found.track) continue;
            const double start = x(range.startSeconds), end = x(range.endSeconds);
            // In a narrow range each edge takes a third of it at most.
            const double reach = std::min(reachOfEdge, (end - start) / 3);
            found.index = i;
            if (atX >= start - reachOfEdge && atX < start + reach)
                return found.spot = Spot::rangeStart, found;
            if (atX > end - reach && atX <= end + reachOfEdge) return found.spot = Spot::rangeEnd, found;
            if (atX >= start && atX < end) inside = i;
        }
        found.index = inside;
        if (inside) return found.spot = Spot::range, found;
    }
    const double inTake = found.seconds - rows_->soundOffset;
    for (std::size_t i = 0; i < rows_->blocks.size(); ++i) {
        const BlockDecision& block = rows_->blocks[i];
        if (inTake < block.startSeconds || inTake >= block.endSeconds) continue;
        if (found.track && block.activeTrack != *found.track && block.secondaryTrack != found.track) continue;
        found.spot = Spot::tile;
        found.index = i;
    }
    return found;
}

TimelineLayout::Hit TimelineLayout::hit(double atX, double atY) const {
    Hit found{.seconds = seconds(atX)};
    if (atY < rulerHeight) return found.spot = Spot::ruler, found;
    const auto row = std::ranges::find_if(
        placed_, [&](const Row& one) { return atY >= one.y && atY < one.y + one.height; });
    if (row == placed_.end()) return found;
    const auto isNear = [&](const std::optional<double>& moment) {
        return moment && std::abs(x(*moment) - atX) <= reachOfEdge;
    };
    switch (row->kind) {
    case RowKind::picture:
        if (isNear(rows_->pictureClapSeconds))
            found.spot = Spot::clap;
        else if (pictureRect().contains(atX, atY))
            found.spot = Spot::picture;
        return found;
    case RowKind::sound:
    case RowKind::channel:
        if (!rows_->hasSound) return found;
        if (auto onStrip = hitOnStrip(*row, atX, atY)) return *onStrip;
        if (row->kind == RowKind::channel)
            found.track = row->index + 1;
        else if (isNear(rows_->anchorSeconds))
            return found.spot = Spot::anchor, found;
        if (soundRect(*row).contains(atX, atY)) found.spot = Spot::waveform;
        return found;
    case RowKind::recordings:
        for (std::size_t i = 0; i < rows_->recordings.size(); ++i) {
            const TimelineRecording& one = rows_->recordings[i];
            if (one.lane != row->index || !recordingRect(one, *row).contains(atX, atY)) continue;
            found.spot = Spot::recording;
            found.index = i;
        }
        return found;
    }
    return found;
}

std::optional<TimelineSpan> TimelineLayout::span(double fromSeconds, double toSeconds) const {
    const auto [low, high] = std::minmax(fromSeconds, toSeconds);
    const TimelineSpan chosen{std::clamp(low, 0.0, rows_->clipSeconds),
                              std::clamp(high, 0.0, rows_->clipSeconds)};
    return chosen.endSeconds - chosen.startSeconds < shortestSpanSeconds ? std::nullopt
                                                                         : std::optional(chosen);
}

std::optional<double> TimelineLayout::scrollFollowing(double playheadSeconds) const {
    const double at = x(playheadSeconds);
    if (at >= 0 && at < width()) return std::nullopt;
    const double wanted =
        std::clamp(zoom_.scrollOffset + at - width() * shareBehindPlayhead, 0.0, zoom_.largestScrollOffset());
    return wanted == zoom_.scrollOffset ? std::nullopt : std::optional(wanted);
}

std::string tooltipOf(const TimelineRows& rows, const TimelineLayout::Hit& hit) {
    using enum TimelineLayout::Spot;
    switch (hit.spot) {
    case tile:
        return rows.tooltip(rows.blocks[*hit.index]);
    case range:
    case rangeStart:
    case rangeEnd:
        return rows.tooltip(rows.ranges[*hit.index]);
    case recording:
        return rows.tooltip(rows.recordings[*hit.index]) +
               (rows.isLocked ? "" : "\nDouble click: use this recording.");
    case strip:
        return hit.track
                   ? "Drag along the strip to have T" + std::to_string(*hit.track) + " heard in a range."
                   : std::string();
    case waveform:
        if (hit.track) return rows.channel(*hit.track)->tooltip();
        return rows.soundName + "\nBegins at " + rows.offsetText() +
               (rows.isLocked
                    ? "\nThe clip is locked: unlock it to move the sound."
                    : "\nDrag moves it by frames; with Shift its anchor snaps to an onset, with Ctrl it "
                      "moves freely.\nCtrl and Alt with a click put the anchor there.");
    case anchor:
        return "Clap point at " + momentText(*rows.anchorSeconds) + " of the clip";
    case clap:
        return "Clap in the picture at " + momentText(*rows.pictureClapSeconds);
    case picture:
    case ruler:
        return momentText(hit.seconds);
    case nothing:
        break;
    }
    return {};
}

} // namespace orvane
