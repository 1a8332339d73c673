#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"

#include "OrvaneSyncCore/Utilities/Day.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>

namespace orvane {

namespace {

std::string inAScanOf(const Card& card, const std::vector<std::string>& paths) {
    const auto others = namesBeside(card.folder, paths);
    constexpr std::size_t most = 3;
    std::string options;
    for (const std::string& other : others)
        if (options.empty() || others.size() <= most) options += " --exclude '" + other + "'";
    if (options.empty() || others.size() > most) options = " --exclude with the folders of the others";
    return " in a scan of this card alone (" + options.substr(1) + ")";
}

} // namespace

std::vector<std::string> namesBeside(const std::string& folder, const std::vector<std::string>& paths) {
    const std::string within = folder + "/";
    std::set<std::string> names;
    for (const std::string& path : paths) {
        const auto own = std::ranges::mismatch(within, path).in2;
        const auto first = std::find(std::make_reverse_iterator(own), path.rend(), '/').base();
        const auto last = std::find(first, path.end(), '/');
        if (own != path.end() && last != path.end() && !path.starts_with(within))
            names.insert(std::string(first, last));
    }
    return {names.begin(), names.end()};
}

std::string OffsetCure::of(const Card& card, double offset) const {
    double total = offset + shoot_.input.rules.soundOffsetSeconds;
    const double halfAFrame = 0.5 / timecodeRate::frameRateForRealTimeCalculation(rate_);
    std::string date = card.movedByDays != 0 ? "--sound-date " + dayText(*card.day) : "";
    if (std::abs(total) >= secondsADay - halfAFrame) {
        const double days = std::round(total / secondsADay);
        total -= days * secondsADay;
        // Without a date the time of day is all that counts.
        if (card.day) date = "--sound-date " + dayText(*card.day + static_cast<long>(days));
        if (card.day && std::abs(total) < halfAFrame) return date;
    }
    return date + (date.empty() ? "" : " ") + "--sound-offset " + offsetText(total, rate_);
}

std::string OffsetCure::inAScanOfRecordings(const Card& card, bool isPart) const {
    std::vector<std::string> paths;
    bool sharesFolder = isPart;
    for (const Recording& recording : shoot_.recordings) {
        paths.push_back(recording.asset->url.path);
        const auto day = recording.place.day;
        sharesFolder = sharesFolder || (card.day && folderOf(*recording.asset) == card.folder &&
                                        !(day && card.isOf(*day + card.movedByDays)));
    }
    return sharesFolder
               ? " in a scan of these recordings alone (put links to them into a folder of their own)"
               : inAScanOf(card, paths);
}

std::string OffsetCure::inAScanOfClips(const Card& card) const {
    std::vector<std::string> paths;
    for (const Shoot::Clip& clip : shoot_.clips) paths.push_back(clip.group->video.url.path);
    return inAScanOf(card, paths);
}

} // namespace orvane
