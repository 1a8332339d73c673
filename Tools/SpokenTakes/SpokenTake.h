#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace orvane::test {

/// The properties of a take of several people with a lav each. Levels are dBFS or dB, times seconds.
struct TakePlan {
    unsigned seed = 1;
    int speakers = 2;      ///< up to `mostSpeakers`
    double bleedDB = -10;  ///< of a speaker on each other lav, plus or minus 2 dB
    double noiseDB = -62;  ///< of each lav separately
    double speechDB = -24; ///< RMS of a speaker on their own lav while they speak
    double seconds = 60;
    double shortestTurn = 2, longestTurn = 8;
    double longestPause = 1.2;   ///< between turns
    double gainSpreadDB = 0;     ///< each lav is recorded up to this much louder or quieter
    double overlapShare = 0;     ///< share of the turns during which another speaker begins, laughs or agrees
    bool lastSpeaksOnce = false; ///< a single turn of 3 s
    double truckDB = -200;       ///< level of a truck that passes all lavs in the middle of the take
    enum class Failure { none, dead, hum, clothing };
    Failure failure = Failure::none; ///< of the last lav
    double boomDB = -200; ///< level of all speakers on a boom, which is the first track; -200: no boom
    std::uint32_t sampleRate = 22050; ///< 22050, 44100, 48000 or 96000
};
inline constexpr int mostSpeakers = 4;

/// A take and the known truth about it. The same plan gives the same take.
struct SpokenTake {
    std::uint32_t sampleRate = 0;
    std::vector<std::string> names;         ///< of the tracks, as a recorder names them
    std::vector<std::vector<float>> tracks; ///< samples, full scale 1.0
    std::vector<int> lavOf;                 ///< by speaker: the track, from 1, or 0 if the lav has failed
    /// For each quarter of a second: the speakers, from 0, who speak in it.
    std::vector<std::vector<int>> speakersAt;
};

/// Voices that are rendered once and used for every take. Needs `espeak-ng`.
class VoiceBank {
  public:
    /// `folder`: for the rendered sentences. Throws std::runtime_error.
    explicit VoiceBank(const std::string& folder);

    SpokenTake take(const TakePlan& plan) const;

  private:
    using Sound = std::vector<float>;
    std::vector<std::vector<Sound>> sentences_; ///< by voice, at the rate of the voices, at an RMS of 1
};

} // namespace orvane::test
