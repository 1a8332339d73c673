#include "TimelineBenchmarks.h"

#include "OrvaneSyncApp/Views/QtMainThread.h"
#include "OrvaneSyncApp/Views/Timeline/TimelinePainter.h"
#include "OrvaneSyncCore/Services/Timeline/TimelineRuler.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformReduction.h"
#include "Table.h"

#include <QCoreApplication>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <vector>

namespace orvane::bench {

namespace {

constexpr int channels = 16;
constexpr double hour = 3600;
constexpr int width = 1440;
constexpr int paints = 25;
constexpr double mostMilliseconds = 6;

double processorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    constexpr double nano = 1e-9;
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * nano;
}

/// Loud and quiet, in a different order for each channel.
std::vector<float> envelope(int channel, float loudest) {
    std::vector<float> levels(WaveformReduction::reviewBins);
    for (std::size_t i = 0; i < levels.size(); ++i)
        levels[i] =
            loudest *
            std::abs(std::sin(static_cast<float>(i) * (0.013F + 0.001F * static_cast<float>(channel))));
    return levels;
}

std::shared_ptr<const Waveform> waveform() {
    auto made = std::make_shared<Waveform>();
    made->binsPerSecond = WaveformReduction::reviewBins / hour;
    made->durationSeconds = made->clipDuration = hour;
    made->peaks = envelope(0, 0.9F);
    made->rms = envelope(0, 0.3F);
    for (int channel = 1; channel <= channels; ++channel) {
        made->peaksPerChannel.push_back(envelope(channel, 0.9F));
        made->rmsPerChannel.push_back(envelope(channel, 0.3F));
    }
    constexpr double onsetSpacing = 0.7;
    for (int i = 0; i * onsetSpacing < hour; ++i) made->onsetMarkers.push_back(i * onsetSpacing);
    return made;
}

std::shared_ptr<const TimelineRows> rows() {
    auto made = std::make_shared<TimelineRows>();
    made->clipSeconds = made->soundSeconds = hour;
    made->frameRate = 25;
    made->hasSound = true;
    made->anchorSeconds = made->pictureClapSeconds = 10;
    for (int track = 1; track <= channels; ++track)
        made->channels.push_back({.track = track, .name = "Channel " + std::to_string(track)});
    constexpr double block = 2;
    for (int i = 0; i * block < hour; ++i) {
        BlockDecision one;
        one.startSeconds = i * block;
        one.endSeconds = one.startSeconds + block;
        one.activeTrack = 1 + i % channels;
        one.kind = BlockKind::mix;
        made->blocks.push_back(one);
        if (i % 10 == 0)
            made->ranges.push_back({UUID::random(), one.startSeconds, one.startSeconds + 3, one.activeTrack});
    }
    return made;
}

class Timeline {
  public:
    explicit Timeline(const std::string& video) {
        constexpr int pictureHeight = 42;
        tiles.setWaveform(waveform());
        pictures.setVideo(video, pictureHeight);
    }

    /// The median of several paints, in milliseconds of processor time, including the threads that Qt fills
    /// areas with.
    double paint(const TimelineLayout& layout, bool isReady) {
        QImage image(width, static_cast<int>(layout.height()), QImage::Format_RGB32);
        const double seconds = layout.zoom().contentSeconds();
        const double interval =
            TimelineRuler::rulerInterval(seconds, seconds * layout.zoom().pixelsPerSecond());
        const views::TimelineScene scene{
            .layout = layout, .tiles = tiles, .pictures = pictures, .rulerInterval = interval};
        std::vector<double> times;
        for (int i = 0; i < paints; ++i) {
            QPainter painter(&image);
            const double begin = processorSeconds();
            const views::TimelineGaps gaps = views::paintTimeline(painter, scene, QRectF(image.rect()));
            painter.end();
            constexpr double milli = 1000;
            times.push_back((processorSeconds() - begin) * milli);
            if (!isReady) continue;
            tiles.want(gaps.tiles);
            pictures.want(gaps.pictures, layout.width());
            while (tiles.isDrawing() || pictures.isDecoding())
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        std::ranges::nth_element(times, times.begin() + paints / 2);
        return times[paints / 2];
    }

  private:
    std::shared_ptr<platform::MainThread> mainThread_ = views::qtMainThread();
    views::WaveformTiles tiles{mainThread_, [] {}};
    views::PictureStrip pictures{mainThread_, [] {}};
};

} // namespace

void printTimelineRows(const std::string& video) {
    const auto content = rows();
    for (const double scale : {1.0, 4.0, 12.0, 30.0, 64.0}) {
        Timeline timeline(video);
        TimelineZoomState zoom{.zoomScale = scale, .viewportWidth = width, .clipDuration = hour};
        constexpr double middle = 0.5;
        zoom.scrollOffset = middle * zoom.largestScrollOffset();
        const TimelineLayout layout(content, zoom, true);
        for (const bool isReady : {false, true}) {
            const double ms = timeline.paint(layout, isReady);
            printRow(text("timeline of an hour, 16 channels, zoom %.0f", scale) +
                         (isReady ? "" : ", nothing drawn yet"),
                     text("%.2f ms", ms), "", "", text("< %.0f ms", mostMilliseconds), ms < mostMilliseconds);
        }
    }
}

} // namespace orvane::bench
