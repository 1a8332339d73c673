#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace orvane {

namespace {

// A night goes on after its meal, and the next day begins later than that.
constexpr double longestPauseSeconds = 21600;

using Files = std::vector<std::size_t>;

/// The files of one folder: those without a day, and of the others, in the order of their starts, what is of
/// the day on which a card began or follows it with pauses of hours. `placeOf` gives the place of a file.
template <class PlaceOf>
std::vector<Card> nightsOf(const std::string& folder, Files files, const PlaceOf& placeOf) {
    const auto rangeOf = [&](std::size_t file) { return onLine(placeOf(file)); };
    std::ranges::stable_sort(files, {}, [&](std::size_t file) {
        return std::pair(placeOf(file).day.has_value(), rangeOf(file).startSeconds);
    });
    std::vector<Card> cards;
    double endsAt = 0; // the last card
    for (const std::size_t file : files) {
        const auto day = placeOf(file).day;
        const SyncEngine::TCRange range = rangeOf(file);
        const bool isOfLast = !cards.empty() && cards.back().day.has_value() == day.has_value() &&
                              (cards.back().day == day || range.startSeconds - endsAt <= longestPauseSeconds);
        if (!isOfLast) {
            cards.push_back({folder, day, {}});
            endsAt = range.endSeconds;
        }
        Card& card = cards.back();
        card.files.push_back(file);
        if (day) card.moreDays = std::max(card.moreDays, *day - *card.day);
        endsAt = std::max(endsAt, range.endSeconds);
    }
    return cards;
}

} // namespace

std::vector<Card> recordersCards(const Shoot& shoot, bool areClipsDated) {
    const auto placeOf = [&](std::size_t file) {
        FilePlace place = shoot.recordings[file].place;
        if (!areClipsDated) place.day.reset();
        return place;
    };
    const auto keepOneOfATake = [&](Files& files) {
        const auto rangeOf = [&](std::size_t file) {
            const SyncEngine::TCRange range = onLine(placeOf(file));
            return std::pair(std::round(range.startSeconds), std::round(range.endSeconds));
        };
        std::ranges::stable_sort(files, {}, rangeOf);
        const auto copies = std::ranges::unique(files, {}, rangeOf);
        files.erase(copies.begin(), copies.end());
    };
    std::map<std::string, Files> folders, joined;
    for (std::size_t i = 0; i < shoot.recordings.size(); ++i)
        folders[std::string(folderOf(*shoot.recordings[i].asset))].push_back(i);
    std::vector<Card> result;
    for (auto& [folder, files] : folders)
        for (Card& card : nightsOf(folder, std::move(files), placeOf)) {
            keepOneOfATake(card.files);
            if (std::cmp_greater_equal(card.files.size(), explanation::fewest)) {
                result.push_back(std::move(card));
            } else {
                Files& above = joined[folder.substr(0, folder.rfind('/'))];
                above.insert(above.end(), card.files.begin(), card.files.end());
            }
        }
    for (auto& [folder, files] : joined)
        for (Card& card : nightsOf(folder, std::move(files), placeOf))
            if (std::cmp_greater_equal(card.files.size(), explanation::fewest))
                result.push_back(std::move(card));
    return result;
}

std::vector<Card> camerasCards(const Shoot& shoot) {
    const auto placeOf = [&](std::size_t file) {
        FilePlace place = *shoot.clips[file].place;
        place.day = place.likelyDay();
        return place;
    };
    std::map<std::string, Files> folders;
    for (std::size_t i = 0; i < shoot.clips.size(); ++i)
        if (shoot.clips[i].place) folders[std::string(folderOf(shoot.clips[i].group->video))].push_back(i);
    std::vector<Card> result;
    for (auto& [folder, files] : folders)
        for (Card& card : nightsOf(folder, std::move(files), placeOf)) {
            std::ranges::sort(card.files);
            result.push_back(std::move(card));
        }
    return result;
}

} // namespace orvane
