#pragma once

#include "Platform/Playback/AttackSearch.h"
#include "Platform/Playback/SampleWindow.h"
#include "Platform/Playback/SoundBlocks.h"
#include "Platform/Playback/SoundTrack.h"
#include "Platform/Playback/TempoChange.h"
#include "Platform/SincResampler.h"

#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace orvane::platform {

/// The place of a recording under a clip, and how the clip runs.
struct SoundPlan {
    SoundTransport transport;
    double offsetSeconds = 0; ///< time of the clip at which the file's first frame is heard
    double endSeconds = std::numeric_limits<double>::infinity(); ///< of the clip
    /// The output had requested the frames before this one when the plan was made.
    std::int64_t askedFrames = 0;
};

/// Renders a recording for the frames of the output. Reads, converts and stretches within the call:
/// one thread, never the callback's.
///
/// At the pitch of the file, or one that follows the rate, each frame is computed from its own place in the
/// file, to the nearest sample where both rates are equal. With a tempo change the first frame is exactly in
/// place; later ones are within the search window of the library, and do not drift. The attack of a clap is
/// in place nevertheless: it is mixed over the library's output, as it was recorded.
class SoundRendering {
  public:
    using MakeTempoChange = std::function<std::unique_ptr<TempoChange>(const TempoChange::Options&)>;
    /// `makeTempoChange` may be empty or return null: pitch then follows the rate.
    SoundRendering(std::unique_ptr<AudioFile> file, double outputRate, MakeTempoChange makeTempoChange);

    const SampleWindow& file() const { return window_; }
    /// The next block begins at this frame of the output.
    void begin(const SoundPlan& plan, std::int64_t outputFrame);
    std::int64_t position() const { return position_; }
    /// Leaves out the frames before this one.
    void skipTo(std::int64_t outputFrame) { begin(plan_, outputFrame); }
    /// Whether frames can be left out inaudibly.
    bool isDirect() const { return tempo_ == nullptr; }
    /// Fills everything but the generation. The last block is silent without an end.
    void next(SoundBlock& block);

  private:
    double clipSecondsAt(std::int64_t outputFrame) const;
    double placeAt(std::int64_t outputFrame) const;
    bool isPast(std::int64_t outputFrame) const;
    void sample(double place, float* left, float* right, std::size_t count);
    void measure(std::int64_t first, std::size_t count);
    void stretch(SoundBlock& block);
    void mixInAttacks(SoundBlock& block);
    void mixInAttack(SoundBlock& block, std::int64_t attack);
    void fadeOut(SoundBlock& block) const;

    SampleWindow window_;
    const double outputRate_;
    const MakeTempoChange makeTempoChange_;
    SoundPlan plan_;
    std::int64_t position_ = 0;
    bool isReverse_ = false;
    double step_ = 1; ///< frames of the file for each frame that `sample` returns; above 0
    std::optional<SincResampler> resampler_;
    std::unique_ptr<TempoChange> tempo_;
    AttackSearch attacks_;
    double feedPlace_ = 0; ///< in the file; the tempo change gets its next frames from there
    std::vector<float> feed_;
    std::array<float, SoundBlock::mostFrames> feedLeft_{}, feedRight_{}; ///< intermediate, also for attacks
    std::size_t levelCount_ = 0;
    std::array<ChannelPeak, SoundBlock::mostChannels> levels_{}; ///< of the last frames that `sample` read
};

} // namespace orvane::platform
