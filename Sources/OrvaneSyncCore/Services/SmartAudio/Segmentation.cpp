#include "OrvaneSyncCore/Services/SmartAudio/Segmentation.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace orvane::SmartAudioBlockRouter {

namespace {

constexpr double impossible = std::numeric_limits<double>::infinity();

/// The two cheapest ways to end before a window: a switch to a choice must come from another choice, so the
/// second is needed if the best one has the same choice.
struct Ends {
    double best = impossible, second = impossible;
    std::size_t bestChoice = 0, secondChoice = 0;

    void consider(double cost, std::size_t choice) {
        if (cost < best) {
            second = best;
            secondChoice = bestChoice;
            best = cost;
            bestChoice = choice;
        } else if (cost < second) {
            second = cost;
            secondChoice = choice;
        }
    }
    double otherThan(std::size_t choice) const { return bestChoice == choice ? second : best; }
    std::size_t choiceOtherThan(std::size_t choice) const {
        return bestChoice == choice ? secondChoice : bestChoice;
    }
};

} // namespace

/// Dynamic programming over the windows. `open[choice]` is the lowest cost of all windows so far if the last
/// segment has this choice and is long enough to end. This segment either continues or began `shortest`
/// windows ago.
std::vector<Segment> cheapestSegments(const SegmentCosts& costs, std::size_t shortest) {
    const std::size_t windows = costs.windows(), choices = costs.choices();
    if (windows == 0 || choices == 0) return {};
    shortest = std::clamp<std::size_t>(shortest, 1, windows);

    std::vector<double> open(choices, impossible),
        recent(choices, 0); // `recent`: cost of the last `shortest` windows
    std::vector<Ends> ends(windows + 1);
    std::vector<std::uint32_t> begins(windows *
                                      choices); ///< start of the last segment, by its last window and choice
    for (std::size_t window = 0; window < windows; ++window) {
        const std::size_t end = window + 1;
        for (std::size_t choice = 0; choice < choices; ++choice) {
            const double cost = costs.at(window, choice);
            recent[choice] += cost;
            if (end > shortest) recent[choice] -= costs.at(window - shortest, choice);
            if (end < shortest) continue;
            const std::size_t begin = end - shortest;
            const double fresh =
                begin == 0 ? recent[choice]
                           : ends[begin].otherThan(choice) + costs.switchCost(begin) + recent[choice];
            const double longer = open[choice] + cost;
            const bool goesOn = longer <= fresh;
            begins[window * choices + choice] = goesOn && window > 0 ? begins[(window - 1) * choices + choice]
                                                                     : static_cast<std::uint32_t>(begin);
            open[choice] = goesOn ? longer : fresh;
            ends[end].consider(open[choice], choice);
        }
    }

    std::vector<Segment> segments;
    std::size_t end = windows, choice = ends[windows].bestChoice;
    for (;;) {
        const std::size_t begin = begins[(end - 1) * choices + choice];
        segments.push_back({begin, end, choice});
        if (begin == 0) break;
        choice = ends[begin].choiceOtherThan(choice);
        end = begin;
    }
    std::ranges::reverse(segments);
    return segments;
}

} // namespace orvane::SmartAudioBlockRouter
