#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>
#include <utility>

namespace orvane {

namespace {

using Files = std::vector<std::size_t>;

/// Divides the files of one folder into cards: the files without a day, and the files that are, in the order
/// of their starts, of the day on which a card began or follow it with pauses of hours. `placeOf` returns the
/// place of a file.
template <class PlaceOf>
std::vector<Card> nightsOf(const std::string& folder, const Files& files, const PlaceOf& placeOf) {
    struct Placed {
        std::size_t file;
        std::optional<long> day;
        SyncEngine::TCRange range;
    };
    std::vector<Placed> placed;
    placed.reserve(files.size());
    for (const std::size_t file : files) {
        const FilePlace place = placeOf(file);
        placed.push_back({file, place.day, onLine(place)});
    }
    std::ranges::stable_sort(
        placed, {}, [](const Placed& one) { return std::pair(one.day.has_value(), one.range.startSeconds); });
    std::vector<Card> cards;
    double endsAt = 0; // of the last card
    for (const auto& [file, day, range] : placed) {
        const bool isOfLast =
            !cards.empty() && cards.back().day.has_value() == day.has_value() &&
            (cards.back().day == day || range.startSeconds - endsAt <= longestPauseOfANight);
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

RecordersCards::RecordersCards(const Shoot& shoot, const std::vector<const Shoot::Clip*>& clips)
    : isRight(shoot.recordings.size()), isOverlapping(isRight), isFitting(isRight), shoot_(shoot) {
    for (const Shoot::Clip* clip : clips) {
        if (clip->isCovered && clip->primary) isRight[shoot.wholes.firstOf[*clip->primary]] = true;
        areClipsDated_ = areClipsDated_ || clip->likelyDay();
    }
    for (const Shoot::Clip& clip : shoot.clips)
        for (const AudioMatch& match : clip.group->audioMatches)
            if (const auto found = shoot.recordingByID.find(match.audio->id);
                found != shoot.recordingByID.end()) {
                const std::size_t whole = shoot.wholes.firstOf[found->second];
                isOverlapping[whole] = true;
                if (clip.place && fits(match, found->second, *clip.place)) isFitting[whole] = true;
            }
    for (std::vector<bool>* those : {&isRight, &isOverlapping, &isFitting})
        for (std::size_t i = 0; i < those->size(); ++i) (*those)[i] = (*those)[shoot.wholes.firstOf[i]];
    std::map<std::string, Files> folders, joined;
    for (std::size_t i = 0; i < shoot.recordings.size(); ++i)
        folders[std::string(shoot.recorderOf(*shoot.recordings[i].asset))].push_back(i);
    for (const auto& [folder, files] : folders) {
        std::vector<Card> own = byRecorder(folder, files);
        if (own.empty()) own = nights(folder, files);
        for (Card& card : own)
            if (std::cmp_greater_equal(card.files.size(), explanation::fewest)) {
                cards.push_back(std::move(card));
            } else {
                Files& above = joined[folder.substr(0, folder.rfind('/'))];
                above.insert(above.end(), card.files.begin(), card.files.end());
            }
    }
    for (const auto& [folder, files] : joined)
        for (Card& card : nights(folder, files))
            if (std::cmp_greater_equal(card.files.size(), explanation::fewest))
                cards.push_back(std::move(card));
}

/// Whether one of the two covers the other, within a second.
bool RecordersCards::fits(const AudioMatch& match, std::size_t file, const FilePlace& clip) const {
    const double start = match.syncOffsetSeconds - shoot_.wholes.startsAt[file];
    const SyncEngine::TCRange picture{0, clip.range.durationSeconds()},
        sound{start, start + shoot_.wholes.places[file].range.durationSeconds()};
    return covers(sound, picture) || covers(picture, sound);
}

FilePlace RecordersCards::placeOf(std::size_t file) const {
    FilePlace place = shoot_.recordings[file].place;
    if (!areClipsDated_) place.day.reset();
    return place;
}

std::vector<Card> RecordersCards::nights(const std::string& folder, const Files& files) const {
    std::vector<Card> result = nightsOf(folder, files, [&](std::size_t file) { return placeOf(file); });
    for (Card& card : result) keepOneOfATake(card.files);
    return result;
}

void RecordersCards::keepOneOfATake(Files& files) const {
    using Rounded = std::pair<std::pair<double, double>, std::size_t>; // seconds, and the file
    std::vector<Rounded> placed;
    placed.reserve(files.size());
    for (const std::size_t file : files) {
        const SyncEngine::TCRange range = onLine(placeOf(file));
        placed.push_back({{std::round(range.startSeconds), std::round(range.endSeconds)}, file});
    }
    std::ranges::stable_sort(placed, {}, &Rounded::first);
    const auto copies = std::ranges::unique(placed, {}, &Rounded::first);
    placed.erase(copies.begin(), copies.end());
    files.clear();
    std::ranges::transform(placed, std::back_inserter(files), &Rounded::second);
}

int RecordersCards::countOf(const Files& files, const std::vector<bool>& those) const {
    return static_cast<int>(std::ranges::count_if(files, [&](std::size_t file) { return those[file]; }));
}

bool RecordersCards::fitsFewClips(const Card& card) const {
    return std::cmp_less_equal(3 * countOf(card.files, isFitting), card.files.size());
}

/// Divides the files by the first mark that separates those that fit clips from those that do not; empty if
/// no mark does.
std::vector<Card> RecordersCards::byRecorder(const std::string& folder, const Files& files) const {
    const auto assetOf = [&](std::size_t file) -> const MediaAsset& {
        return *shoot_.recordings[file].asset;
    };
    for (const RecorderMark::By by : RecorderMark::all) {
        if (std::ranges::all_of(files, [&](std::size_t file) {
                return RecorderMark::areEqual(assetOf(files.front()), assetOf(file), by);
            }))
            continue;
        std::map<std::string, Files> recorders;
        for (const std::size_t file : files)
            recorders[RecorderMark::of(assetOf(file), by).value].push_back(file);
        std::vector<Card> result;
        bool hasFitting = false, hasUnfitting = false;
        for (const auto& [value, own] : recorders)
            for (Card& card : nights(folder, own)) {
                card.recorder = RecorderMark{by, value};
                if (std::cmp_greater_equal(card.files.size(), explanation::fewest))
                    (fitsFewClips(card) ? hasUnfitting : hasFitting) = true;
                result.push_back(std::move(card));
            }
        if (hasFitting && hasUnfitting) return result;
    }
    return {};
}

std::string nameOfCard(const Card& card, const Shoot& shoot) {
    const auto nameOf = [&](std::size_t file) { return shoot.nameOf(*shoot.recordings[file].asset); };
    return "the recordings in '" + card.folder + "'" +
           (card.recorder ? " (" + nameOf(card.files.front()) + " – " + nameOf(card.files.back()) + ")" : "");
}

std::vector<Card> camerasCards(const Shoot& shoot) {
    const auto placeOf = [&](std::size_t file) { return shoot.clips[file].likelyPlace(); };
    std::map<std::string, Files> folders;
    for (std::size_t i = 0; i < shoot.clips.size(); ++i)
        if (shoot.clips[i].place) folders[std::string(folderOf(shoot.clips[i].group->video))].push_back(i);
    std::vector<Card> result;
    for (const auto& [folder, files] : folders)
        for (Card& card : nightsOf(folder, files, placeOf)) {
            std::ranges::sort(card.files);
            result.push_back(std::move(card));
        }
    return result;
}

} // namespace orvane
