#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace orvane::bench {

inline constexpr int recordedChannels = 8;

/// The sound of people who speak in turns, on eight microphones: coloured noise that is loud for a few
/// seconds on one of them, quieter on its neighbours, and never silent. The same in every run.
class SpokenSound {
  public:
    explicit SpokenSound(std::uint32_t sampleRate) : secondFrames_(sampleRate) {}

    std::size_t secondFrames() const { return secondFrames_; }
    /// The next second, interleaved, full scale 1.0.
    std::vector<float> nextSecond();

  private:
    std::size_t secondFrames_;
    int second_ = 0;
    std::uint32_t noise_ = 1;
    std::vector<float> last_ = std::vector<float>(recordedChannels);
};

/// Makes a broadcast wave of 24 bits unless it is there already.
void makeRecording(const std::string& path, int minutes, std::uint32_t sampleRate);

} // namespace orvane::bench
