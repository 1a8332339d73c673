#pragma once

#include "OrvaneSyncApp/ViewModels/Timeline/TimelineRows.h"
#include "OrvaneSyncCore/Services/Timeline/TimelineZoomState.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace orvane {

/// In points of the view, y axis downwards.
struct TimelineRect {
    double x = 0, y = 0, width = 0, height = 0;

    double right() const { return x + width; }
    double bottom() const { return y + height; }
    bool contains(double atX, double atY) const {
        return atX >= x && atX < right() && atY >= y && atY < bottom();
    }
};

/// A range of clip time.
struct TimelineSpan {
    double startSeconds = 0, endSeconds = 0;
    bool operator==(const TimelineSpan&) const = default;
};

/// The positions of everything in a clip's timeline. x is 0 at the left edge of the visible content, y is 0
/// at the top of the view; the ruler stays at the top while the rows below it scroll. A value; rows are
/// shared and never change.
class TimelineLayout {
  public:
    // Heights in points.
    static constexpr double rulerHeight = 26, pictureHeight = 48, soundHeight = 66, channelHeight = 50,
                            recordingHeight = 24;
    static constexpr double stripHeight = 14, padding = 3;

    /// `verticalScroll`: points by which the rows are scrolled up. `isExpanded`: one row for each channel.
    TimelineLayout(std::shared_ptr<const TimelineRows> rows, const TimelineZoomState& zoom, bool isExpanded,
                   double verticalScroll = 0);

    enum class RowKind { picture, sound, channel, recordings };
    struct Row {
        RowKind kind;
        int index; ///< of the channel or the lane, from 0
        double y, height;
    };
    /// From top to bottom.
    const std::vector<Row>& rows() const { return placed_; }
    const Row* row(RowKind kind, int index = 0) const;
    const TimelineRows& content() const { return *rows_; }
    const TimelineZoomState& zoom() const { return zoom_; }
    /// Of the ruler and all rows together.
    double height() const { return height_; }
    double width() const { return zoom_.viewportWidth; }
    double x(double seconds) const { return zoom_.viewportX(seconds); }
    /// Clip time.
    double seconds(double x) const;

    struct Tick {
        double x;
        bool isMajor;      ///< one in every interval; the others are frames
        std::string label; ///< only of some major ones
    };
    /// The visible ones. `interval`: seconds from one major tick to the next.
    std::vector<Tick> ticks(double interval) const;

    struct PictureSlot {
        double x;       ///< of the left edge
        double seconds; ///< of its middle: a picture up to half a slot earlier is still within the slot
    };
    /// Visible pictures side by side; the first slot is at the clip's first frame.
    std::vector<PictureSlot> pictureSlots(double slotWidth) const;

    TimelineRect pictureRect() const;
    /// The part of a row over the sound; its width is 0 if the sound's length is not known.
    TimelineRect soundRect(const Row& row) const;
    TimelineRect waveformRect(const Row& row) const;
    /// Across the whole width.
    TimelineRect stripRect(const Row& row) const;
    TimelineRect spanRect(const Row& row, double startSeconds, double endSeconds) const;
    TimelineRect recordingRect(const TimelineRecording& recording, const Row& row) const;
    /// x of the take's onsets, which are given in take time; each column once.
    std::vector<double> onsetPlaces(std::span<const double> onsets) const;

    enum class Spot {
        nothing,
        ruler,
        picture,
        waveform,
        strip,
        tile,
        range,
        rangeStart,
        rangeEnd,
        anchor,
        clap,
        recording
    };
    struct Hit {
        Spot spot = Spot::nothing;
        double seconds = 0;                 ///< clip time at the point, also outside the clip
        std::optional<int> track{};         ///< track of the row; absent: all
        std::optional<std::size_t> index{}; ///< among the blocks, ranges or recordings
    };
    Hit hit(double x, double y) const;

    /// The range that a drag along a strip selects: ascending and within the clip. Absent if it is too short.
    std::optional<TimelineSpan> span(double fromSeconds, double toSeconds) const;
    static constexpr double shortestSpanSeconds = 0.1;

    /// The scroll position to set when the playhead leaves the view while playing; absent otherwise.
    std::optional<double> scrollFollowing(double playheadSeconds) const;

  private:
    std::optional<Hit> hitOnStrip(const Row& row, double x, double y) const;

    std::shared_ptr<const TimelineRows> rows_;
    TimelineZoomState zoom_;
    std::vector<Row> placed_;
    double height_ = 0;
};

/// The text about what is at a point; empty if there is none.
std::string tooltipOf(const TimelineRows& rows, const TimelineLayout::Hit& hit);

} // namespace orvane
