#include "OrvaneSyncApp/Controllers/VideoEngineStatus.h"

#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Timecode/Timecode.h"

namespace orvane {

void VideoEngineStatus::setStartTimecode(double seconds, std::optional<TimecodeFrameRate> rate) {
    playhead_.startTimecodeSeconds = seconds;
    playhead_.timecodeRate = rate;
    notify(VideoEngineField::playhead);
}

void VideoEngineStatus::setStartTimecode(const std::optional<std::string>& stated,
                                         std::optional<TimecodeFrameRate> rate) {
    if (!stated) return;
    if (!rate) rate = TimecodeUtils::frameRate(playhead_.frameRate);
    const auto start = Timecode::fromString(*stated, *rate);
    setStartTimecode(start ? start->realTimeValue() : 0, rate);
}

void VideoEngineStatus::setPlayhead(platform::MediaTime time) {
    if (playhead_.time == time) return;
    playhead_.time = time;
    notify(VideoEngineField::playhead);
}

void VideoEngineStatus::setPlaying(bool isPlaying) {
    if (std::exchange(transport_.isPlaying, isPlaying) != isPlaying) notify(VideoEngineField::transport);
}

void VideoEngineStatus::setSpeed(ShuttleSpeed speed) {
    speed_ = speed;
    setLabel(speed.label());
}

void VideoEngineStatus::setLabel(std::string label) {
    if (label == loop_.jklLabel) return;
    loop_.jklLabel = std::move(label);
    notify(VideoEngineField::loop);
}

void VideoEngineStatus::clearLoopAndTransport() {
    speed_ = {};
    if (loop_ != LoopState()) {
        loop_ = {};
        notify(VideoEngineField::loop);
    }
    if (transport_ != TransportState()) {
        transport_ = {};
        notify(VideoEngineField::transport);
    }
}

} // namespace orvane
