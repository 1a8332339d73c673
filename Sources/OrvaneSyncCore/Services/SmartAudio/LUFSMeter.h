#pragma once

#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "Platform/AudioFile.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>

namespace orvane {

/// Integrated loudness in LUFS (ITU-R BS.1770: K-weighting, blocks of 400 ms every 100 ms, an absolute gate
/// at -70 and a relative one 10 below the mean). Takes samples in pieces of any size; the result does not
/// depend on their sizes. Memory grows by 80 bytes per second of sound for any number of channels. A sample
/// that is not finite counts as silence. One thread at a time.
class LUFSMeter {
  public:
    LUFSMeter(int channelCount, double sampleRate);
    LUFSMeter(LUFSMeter&&) noexcept;
    LUFSMeter& operator=(LUFSMeter&&) noexcept;
    ~LUFSMeter();

    /// `frames` samples of each channel, full scale 1.0.
    void add(std::span<const float* const> channels, std::size_t frames);
    /// For the samples so far. Absent for less than a block and for digital silence; -70.0 if no block is
    /// above the absolute gate.
    std::optional<double> integratedLUFS() const;

    /// For a whole recording with all channels, streamed. Absent if it cannot be read. Any thread. Throws
    /// Stopped.
    static std::optional<double> measureIntegratedLUFS(const TakeSound& sound,
                                                       const std::stop_token& stop = {});
    struct FileLoudness {
        std::optional<double> integratedLUFS;
        std::int64_t heardFrames = 0; ///< fewer than the header says if the file is cut off or damaged
    };
    /// The same for an open file. `progress` as in `AudioPass`, on the caller's thread.
    static FileLoudness measureFile(platform::AudioFile& file,
                                    const std::function<void(double share)>& progress = {},
                                    const std::stop_token& stop = {});
    /// `channels` has `channelCount` arrays of `frameCount` samples.
    static std::optional<double> measureBuffer(std::span<const float* const> channels, std::size_t frameCount,
                                               int channelCount, double sampleRate);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Measures the loudness of a recording during a pass over all its channels in order.
class LUFSListener : public AudioListener {
  public:
    explicit LUFSListener(const platform::AudioFile& file) : meter_(file.channelCount(), file.sampleRate()) {}
    void samples(std::span<const float* const> channels, std::size_t frames) override {
        meter_.add(channels, frames);
        frames_ += static_cast<std::int64_t>(frames);
    }
    std::optional<double> integratedLUFS() const { return meter_.integratedLUFS(); }
    std::int64_t heardFrames() const { return frames_; }

  private:
    LUFSMeter meter_;
    std::int64_t frames_ = 0;
};

} // namespace orvane
