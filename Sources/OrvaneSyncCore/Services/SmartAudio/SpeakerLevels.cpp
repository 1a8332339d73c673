#include "OrvaneSyncCore/Services/SmartAudio/SpeakerLevels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

namespace orvane::SmartAudioBlockRouter {

namespace {

constexpr double noiseShare = 0.05; // the noise of a track: the level of this share of its windows, the
                                    // quietest
constexpr double gapDB = -100;     // dBFS; quieter windows are gaps in the recording and are not used for the
                                   // noise
constexpr double belowNoiseDB = 6; // a level below the noise is set to this much below it

// Decibels above the noise of a track from which speech is possible, from which it is certain, and from which
// two tracks can be compared.
constexpr double possibleDB = 3;
constexpr double sureDB = 10;
constexpr double usableDB = 6;

// While one person speaks, the level difference of two lavaliers stays within a few decibels. Knocks and
// rustling are as loud, but their differences are spread widely. So a difference counts only if enough
// windows have nearly the same one.
constexpr double togetherDB = 1.5; // on either side
constexpr std::size_t fewestTogether = 5;
constexpr double fewestShare = 0.1; // of the number of windows around the most frequent difference

/// If the difference of two tracks varies by more than this, they have different speakers.
constexpr double differentDB = 5;
constexpr double mostBalanceDB = 14; // a larger difference is not due to the recording levels: one lavalier
                                     // records no one
constexpr double clearLeadDB = 2;
constexpr double farLeadDB = 60; // for the only audible track; negative for an inaudible one

using Levels = std::vector<double>; // one for each window

/// The level that `share` of the windows do not exceed; silence if there are no windows.
double quantile(Levels levels, double share) {
    if (levels.empty()) return silentLevelDB;
    const auto at =
        levels.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(levels.size() - 1));
    std::ranges::nth_element(levels, at);
    return *at;
}

struct Track {
    Levels raw;     // dBFS
    Levels clean;   // without the noise, dBFS
    double noiseDB; // dBFS
};

/// Linear; a value that is not a number counts as silence, infinity as the largest float.
double powerOf(float rms) {
    const double held = rms > 0 ? std::min(rms, std::numeric_limits<float>::max()) : 0.0F;
    return held * held;
}

Track measured(int track, std::span<const PerWindowFrame> frames) {
    Track measured{.raw = {}, .clean = {}, .noiseDB = 0};
    std::vector<double> powers;
    for (const PerWindowFrame& frame : frames) {
        const WindowMetrics* window = metricsOf(frame, track);
        measured.raw.push_back(window != nullptr ? levelDB(window->rms, windowLevelFloor) : silentLevelDB);
        powers.push_back(window != nullptr ? powerOf(window->rms) : 0);
    }
    Levels recorded;
    std::ranges::copy_if(measured.raw, std::back_inserter(recorded),
                         [](double level) { return level > gapDB; });
    measured.noiseDB = quantile(std::move(recorded), noiseShare);
    const double noise = std::pow(10, measured.noiseDB / 10), least = measured.noiseDB - belowNoiseDB;
    const double leastPower = std::pow(10, least / 10);
    for (const double power : powers)
        measured.clean.push_back(power - noise > leastPower ? 10 * std::log10(power - noise) : least);
    return measured;
}

/// False for a track with only its noise: not connected, or with constant hum.
bool hasUsableLevel(const Track& track) {
    const auto usable =
        std::ranges::count_if(track.raw, [&](double level) { return level - track.noiseDB > usableDB; });
    return static_cast<std::size_t>(usable) > fewestTogether;
}

/// Counts differences in steps of half a decibel.
class Differences {
  public:
    void add(double decibels) {
        const double held = std::clamp(decibels, -mostDB, mostDB);
        ++counts_[static_cast<std::size_t>(std::lround((held + mostDB) * steps))];
    }
    /// The lowest and the highest difference around which there are enough others.
    std::optional<std::pair<double, double>> extremes() const {
        std::array<std::size_t, places> together{};
        for (std::size_t i = 0; i < places; ++i)
            for (std::size_t k = i - std::min(i, reach); k <= std::min(i + reach, places - 1); ++k)
                together[i] += counts_[k];
        const auto share = fewestShare * static_cast<double>(*std::ranges::max_element(together));
        const auto fewest = std::max(fewestTogether, static_cast<std::size_t>(std::ceil(share)));
        std::optional<std::pair<double, double>> found;
        for (std::size_t i = 0; i < places; ++i) {
            if (counts_[i] == 0 || together[i] < fewest) continue;
            const double decibels = static_cast<double>(i) / steps - mostDB;
            found = {found ? found->first : decibels, decibels};
        }
        return found;
    }

  private:
    static constexpr double mostDB = 60, steps = 2;
    static constexpr auto reach = static_cast<std::size_t>(togetherDB * steps);
    static constexpr auto places = static_cast<std::size_t>(2 * mostDB * steps) + 1;
    std::array<std::size_t, places> counts_{};
};

/// By how many decibels `one` is louder when both are equally far from their speakers; 0 for two tracks that
/// record the same people.
double balanceDB(const Track& one, const Track& other) {
    Differences differences;
    for (std::size_t window = 0; window < one.raw.size(); ++window)
        if (std::max(one.raw[window] - one.noiseDB, other.raw[window] - other.noiseDB) > usableDB)
            differences.add(one.clean[window] - other.clean[window]);
    const auto extremes = differences.extremes();
    if (!extremes || extremes->second - extremes->first <= differentDB) return 0;
    return std::clamp((extremes->first + extremes->second) / 2, -mostBalanceDB, mostBalanceDB);
}

} // namespace

SpeakerLevels::SpeakerLevels(const std::vector<int>& tracks, std::span<const PerWindowFrame> frames)
    : tracks_(tracks), presence_(frames.size()), leads_(frames.size() * tracks.size(), -farLeadDB) {
    std::vector<Track> all;
    std::vector<std::size_t> heard; // the persons with an audible track
    for (const int track : tracks) {
        all.push_back(measured(track, frames));
        if (hasUsableLevel(all.back())) heard.push_back(all.size() - 1);
    }
    hasSpeech_ = !heard.empty();
    std::vector<double> balance(all.size() * all.size());
    for (const std::size_t i : heard)
        for (const std::size_t k : heard)
            if (i < k) {
                balance[i * all.size() + k] = balanceDB(all[i], all[k]);
                balance[k * all.size() + i] = -balance[i * all.size() + k];
            }
    for (std::size_t window = 0; window < frames.size(); ++window) {
        double above = 0;
        for (const std::size_t i : heard) above = std::max(above, all[i].raw[window] - all[i].noiseDB);
        presence_[window] = std::clamp((above - possibleDB) / (sureDB - possibleDB), 0.0, 1.0);
        for (const std::size_t i : heard) {
            double lead = farLeadDB;
            for (const std::size_t k : heard)
                if (k != i)
                    lead = std::min(lead, all[i].clean[window] - all[k].clean[window] -
                                              balance[i * all.size() + k]);
            leads_[window * all.size() + i] = lead;
        }
    }
}

std::optional<WindowRange> SpeakerLevels::clearestStretch(std::size_t person, std::size_t fewest,
                                                          const std::vector<bool>& isTaken) const {
    std::optional<WindowRange> clearest;
    double most = 0, sum = 0;
    std::size_t first = 0;
    for (std::size_t window = 0; window <= windows(); ++window) {
        const bool leads = window < windows() && !isTaken[window] && presence(window) > 0.5 &&
                           leadDB(window, person) > clearLeadDB;
        if (leads) {
            sum += leadDB(window, person);
            continue;
        }
        if (window - first >= fewest && sum > most) {
            most = sum;
            clearest = WindowRange{first, window};
        }
        first = window + 1;
        sum = 0;
    }
    return clearest;
}

} // namespace orvane::SmartAudioBlockRouter
