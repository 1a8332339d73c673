#include "OrvaneSyncCore/Services/Matching/TakeMembership.h"

#include "OrvaneSyncCore/Services/Matching/AssetPlacement.h"
#include "OrvaneSyncCore/Services/Matching/ChannelNames.h"
#include "OrvaneSyncCore/Services/Matching/RecorderMark.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Text.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <map>
#include <numeric>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

namespace orvane {

namespace {

using Candidate = TakeMembership::Candidate;
using Indices = std::vector<std::size_t>;
using SplitRecordingDetector::areKnownToDiffer;

constexpr double startToleranceSeconds = SplitRecordingDetector::contiguityToleranceSeconds;
constexpr double sameStartSeconds = 0.001; // an equal count of samples, with rounding

template <class Value>
bool differ(const std::optional<Value>& a, const std::optional<Value>& b) {
    return a && b && *a != *b;
}

std::optional<std::string> stated(const MediaAsset& file, std::optional<std::string> IXMLData::*field) {
    return file.ixmlData ? *file.ixmlData.*field : std::nullopt;
}

/// How many midnights the places of two files are apart, according to their timecode.
std::optional<double> midnightsBetween(const Candidate& a, const Candidate& b) {
    const auto own = AssetPlacement(*a.audio).range(), other = AssetPlacement(*b.audio).range();
    if (!own || !other) return std::nullopt;
    const double apart = b.range.startSeconds - a.range.startSeconds;
    return std::round((apart - (other->startSeconds - own->startSeconds)) / secondsADay);
}

/// A clip without a date meets the recordings of all days, and timecode repeats every day. A date without a
/// time of day changes by a whole day if a recording passes midnight.
bool areOfDifferentDays(const Candidate& a, const Candidate& b) {
    constexpr std::chrono::hours halfADay{12};
    const auto &own = a.audio->contentCreatedDate, &other = b.audio->contentCreatedDate;
    if (!own || !other || std::chrono::abs(*own - *other) <= halfADay) return false;
    const double days = std::round(std::chrono::duration<double>(*other - *own).count() / secondsADay);
    return midnightsBetween(a, b) != days;
}

bool mayBeOfOneRecorder(const Candidate& one, const Candidate& two) {
    const MediaAsset &a = *one.audio, &b = *two.audio;
    return !differ(a.sampleRate, b.sampleRate) && !areOfDifferentDays(one, two) &&
           !areKnownToDiffer(a.bextOriginator, b.bextOriginator) &&
           !areKnownToDiffer(stated(a, &IXMLData::tape), stated(b, &IXMLData::tape));
}

bool isSaid(const std::optional<std::string>& text) {
    return text && !platform::text::trimmed(*text).empty();
}

bool isOfOneTake(const MediaAsset& a, const MediaAsset& b) {
    // Two recorders with the same numbers, or a copy that was cut short, not another channel.
    if (a.normalizedName() == b.normalizedName()) return false;
    bool bothSayAll = true;
    for (const auto field : {&IXMLData::scene, &IXMLData::take}) {
        const auto own = stated(a, field), other = stated(b, field);
        if (areKnownToDiffer(own, other)) return false;
        bothSayAll = bothSayAll && isSaid(own) && isSaid(other);
    }
    return bothSayAll || ChannelName(a).differsOnlyInChannel(ChannelName(b));
}

/// For files of one name that start together.
bool isCopy(const Candidate& one, const Candidate& two) {
    const MediaAsset &a = *one.audio, &b = *two.audio;
    if (folderPath(a) == folderPath(b) || differ(a.channelCount, b.channelCount) ||
        !mayBeOfOneRecorder(one, two))
        return false;
    // Damaged on the way: its size and content differ, and only one of the two may be heard.
    if (a.endsEarly() || b.endsEarly()) return true;
    if (differ(a.contentMark, b.contentMark)) return false;
    if (a.fileSizeBytes && b.fileSizeBytes) return *a.fileSizeBytes == *b.fileSizeBytes;
    const auto samples = [](const MediaAsset& file) {
        return file.durationSeconds.value_or(0) * file.sampleRate.value_or(1);
    };
    return std::abs(samples(a) - samples(b)) < 0.5;
}

/// Finds the members of the take of the first candidate.
class Finder {
  public:
    Finder(std::span<const Candidate> candidates, const std::optional<SyncEngine::TCRange>& picture)
        : files_(candidates), picture_(picture), byStart_(candidates.size()) {
        std::iota(byStart_.begin(), byStart_.end(), std::size_t{0});
        std::ranges::stable_sort(byStart_, {}, [this](std::size_t i) { return start(i); });
    }

    TakeMembership find() {
        std::vector<bool> isUsed = copies();
        TakeMembership result;
        for (std::size_t i = 0; i < files_.size(); ++i)
            if (isUsed[i]) result.mirrors.push_back(i);

        isUsed_ = std::move(isUsed);
        const Indices primary = section(0);
        for (const std::size_t file : primary) lanes_.push_back({file});
        for (Indices edge = primary; !edge.empty(); edge = later(edge)) {
        }
        for (Indices edge = primary; !edge.empty(); edge = earlier(edge)) {
        }

        for (std::size_t lane = 0; lane < lanes_.size(); ++lane) {
            std::ranges::stable_sort(lanes_[lane], {}, [this](std::size_t i) { return start(i); });
            for (const std::size_t file : lanes_[lane]) result.members.push_back({file, lane});
        }
        for (std::size_t i = 0; i < files_.size(); ++i)
            if (!isUsed_[i]) result.alternates.push_back(i);
        return result;
    }

  private:
    const MediaAsset& asset(std::size_t i) const { return *files_[i].audio; }
    double start(std::size_t i) const { return files_[i].range.startSeconds; }
    double end(std::size_t i) const { return files_[i].range.endSeconds; }

    /// The files that start within the tolerance of a moment, in the order of their starts.
    std::span<const std::size_t> startingNear(double seconds, double tolerance) const {
        const auto at = [this](std::size_t i) { return start(i); };
        const auto first = std::ranges::lower_bound(byStart_, seconds - tolerance, {}, at);
        const auto last = std::ranges::upper_bound(byStart_, seconds + tolerance, {}, at);
        return first < last ? std::span(first, last) : std::span<const std::size_t>();
    }

    void sortByPath(Indices& files) const {
        if (files.size() < 2) return;
        std::vector<std::string> keys(files_.size());
        for (const std::size_t i : files)
            keys[i] = platform::text::localizedStandardSortKey(asset(i).url.pathText());
        std::ranges::stable_sort(files, {}, [&](std::size_t i) -> const std::string& { return keys[i]; });
    }

    /// Marks copies. The primary file is kept, else a whole one before one that ends early, else the one in
    /// the primary's folder, else the first by path.
    std::vector<bool> copies() const {
        std::vector<bool> isCopyOfOther(files_.size(), false);
        for (auto run = byStart_.begin(); run != byStart_.end();) {
            auto next = run + 1;
            while (next != byStart_.end() && start(*next) - start(*run) < sameStartSeconds) ++next;
            if (next - run > 1) markCopies(Indices(run, next), isCopyOfOther);
            run = next;
        }
        return isCopyOfOther;
    }
    void markCopies(const Indices& run, std::vector<bool>& isCopyOfOther) const {
        std::map<std::string, Indices> byName;
        for (const std::size_t i : run) byName[platform::text::lowercased(asset(i).filename)].push_back(i);
        for (auto& [name, same] : byName) {
            if (same.size() < 2) continue;
            sortByPath(same);
            std::ranges::stable_sort(same, {}, [this](std::size_t i) {
                return std::tuple(i != 0, asset(i).endsEarly(), folderPath(asset(i)) != folderPath(asset(0)));
            });
            Indices kept;
            for (const std::size_t i : same) {
                isCopyOfOther[i] = std::ranges::any_of(
                    kept, [&](std::size_t other) { return isCopy(files_[other], files_[i]); });
                if (!isCopyOfOther[i]) kept.push_back(i);
            }
        }
    }

    /// The file and the files beside it, in the order of their paths; marks all of them as used. Of files
    /// with one name, such as a copy that was cut short, only one is taken, as the other is the same channel.
    Indices section(std::size_t seed) {
        Indices found{seed};
        isUsed_[seed] = true;
        Indices near;
        for (const std::size_t i : startingNear(start(seed), startToleranceSeconds))
            if (!isUsed_[i] && mayBeOfOneRecorder(files_[seed], files_[i]) &&
                isOfOneTake(asset(seed), asset(i)))
                near.push_back(i);
        std::ranges::stable_partition(
            near, [&](std::size_t i) { return folderPath(asset(i)) == folderPath(asset(seed)); });
        std::map<std::string, std::size_t> byName;
        for (const std::size_t i : near) {
            const auto [same, isNew] = byName.try_emplace(asset(i).normalizedName(), i);
            if (!isNew && isFullerCopy(i, same->second)) same->second = i;
        }
        for (const auto& [name, file] : byName) {
            isUsed_[file] = true;
            found.push_back(file);
        }
        sortByPath(found);
        return found;
    }
    /// Two recorders with the same numbers do not start on the same sample.
    bool isFullerCopy(std::size_t i, std::size_t other) const {
        return std::abs(start(i) - start(other)) < sameStartSeconds && end(i) > end(other) + sameStartSeconds;
    }

    /// A file without a known length cannot be part of a chain.
    bool isPart(std::size_t i, std::size_t neighbour) const {
        return !isUsed_[i] && end(i) > start(i) && end(neighbour) > start(neighbour) &&
               mayBeOfOneRecorder(files_[neighbour], files_[i]);
    }

    Indices later(const Indices& edge) {
        std::optional<Link> best;
        for (const std::size_t own : withDistinct(&SyncEngine::TCRange::endSeconds, edge))
            for (const std::size_t i : startingNear(end(own), startToleranceSeconds))
                if (isPart(i, own)) offer(best, own, i, std::abs(start(i) - end(own)));
        return attached(best ? best : acrossGap(edge, true), edge);
    }
    Indices earlier(const Indices& edge) {
        std::optional<Link> best;
        for (const std::size_t own : withDistinct(&SyncEngine::TCRange::startSeconds, edge))
            for (const std::size_t i : byStart_) {
                if (start(i) >= start(own)) break;
                const double gap = std::abs(start(own) - end(i));
                if (gap <= startToleranceSeconds && isPart(i, own)) offer(best, own, i, gap);
            }
        return attached(best ? best : acrossGap(edge, false), edge);
    }
    /// One file for each different end, or start. Files side by side are of one recorder and mostly equally
    /// long.
    Indices withDistinct(double SyncEngine::TCRange::*moment, const Indices& edge) const {
        Indices distinct;
        for (const std::size_t i : edge)
            if (distinct.empty() ||
                std::abs(files_[i].range.*moment - files_[distinct.back()].range.*moment) > sameStartSeconds)
                distinct.push_back(i);
        return distinct;
    }

    /// How well a file continues another: first by the common pieces of their names, then by the gap.
    struct Link {
        std::size_t file;
        std::size_t common;
        double gap;
    };
    void offer(std::optional<Link>& best, std::size_t own, std::size_t i, double gap) const {
        const std::size_t common = ChannelName(asset(own)).piecesInCommon(ChannelName(asset(i)));
        if (!best || std::tuple(common, -gap) > std::tuple(best->common, -best->gap))
            best = Link{i, common, gap};
    }
    double ofPicture(std::size_t i) const {
        return SyncEngine::overlapDuration(files_[i].range, *picture_).value_or(0);
    }
    /// Whether a file is a take of the same recorder during which the camera rolled on. A take that covers
    /// less makes the clip ambiguous and remains a choice for the user. A take with other track names is
    /// refused, as its channels would get the wrong names.
    bool isNextTake(std::size_t i, const Indices& edge, bool isLater) const {
        constexpr double share = 0.5;
        return picture_ && ofPicture(i) > 0 && ofPicture(i) >= share * ofPicture(0) &&
               std::ranges::all_of(edge,
                                   [&](std::size_t own) {
                                       return (isLater ? start(i) - end(own) : start(own) - end(i)) >
                                              startToleranceSeconds;
                                   }) &&
               std::ranges::any_of(edge, [&](std::size_t own) {
                   return areOfOneRecorder(asset(own), asset(i)) && !areNamedUnlike(asset(own), asset(i));
               });
    }

    /// A part was lost between two parts whose names count on.
    std::optional<Link> acrossGap(const Indices& edge, bool isLater) const {
        std::optional<Link> best;
        for (const std::size_t own : edge)
            for (const std::size_t i : byStart_) {
                const std::size_t first = isLater ? own : i, second = isLater ? i : own;
                const double gap = start(second) - end(first);
                if (gap > startToleranceSeconds && gap <= SplitRecordingDetector::largestGapSeconds &&
                    isPart(i, own) &&
                    (SplitRecordingDetector::mayContinue(asset(first), asset(second)) ||
                     isNextTake(i, edge, isLater)) &&
                    (!best || gap < best->gap))
                    best = Link{i, 0, gap};
            }
        return best;
    }

    /// The section of the part that was found, each file on the lane of the channels that it continues.
    Indices attached(const std::optional<Link>& best, const Indices& edge) {
        if (!best) return {};
        Indices found = section(best->file);
        std::vector<bool> isTaken(lanes_.size(), false);
        for (const std::size_t file : found) {
            const ChannelName name(asset(file));
            std::optional<std::size_t> lane;
            std::pair<bool, std::size_t> closest;
            for (std::size_t i = 0; i < lanes_.size(); ++i) {
                const auto neighbour = std::ranges::find_first_of(lanes_[i], edge);
                const std::size_t other = neighbour == lanes_[i].end() ? lanes_[i].back() : *neighbour;
                const std::pair likeness(haveEqualTracks(asset(file), asset(other)),
                                         name.piecesInCommon(ChannelName(asset(other))));
                if (isTaken[i] || (lane && likeness <= closest)) continue;
                lane = i;
                closest = likeness;
            }
            if (!lane) {
                lane = lanes_.size();
                lanes_.emplace_back();
                isTaken.push_back(false);
            }
            lanes_[*lane].push_back(file);
            isTaken[*lane] = true;
        }
        return found;
    }
    static bool areNamedUnlike(const MediaAsset& a, const MediaAsset& b) {
        return a.ixmlData && b.ixmlData && !a.ixmlData->tracks.empty() && !b.ixmlData->tracks.empty() &&
               a.ixmlData->tracks != b.ixmlData->tracks;
    }
    static bool haveEqualTracks(const MediaAsset& a, const MediaAsset& b) {
        return a.ixmlData && b.ixmlData && !a.ixmlData->tracks.empty() &&
               a.ixmlData->tracks == b.ixmlData->tracks;
    }

    std::span<const Candidate> files_;
    std::optional<SyncEngine::TCRange> picture_;
    Indices byStart_;
    std::vector<bool> isUsed_; ///< a copy, or already found to belong
    std::vector<Indices> lanes_;
};

} // namespace

TakeMembership TakeMembership::of(std::span<const Candidate> candidates,
                                  const std::optional<SyncEngine::TCRange>& picture) {
    if (candidates.empty()) return {};
    // The case of most clips; an export calls this several times for each.
    if (candidates.size() == 1) return {{{0, 0}}, {}, {}};
    return Finder(candidates, picture).find();
}

bool TakeMembership::isCutShort(const Candidate& file, const Candidate& other) {
    return std::abs(file.range.startSeconds - other.range.startSeconds) < sameStartSeconds &&
           file.range.endSeconds + sameStartSeconds < other.range.endSeconds &&
           file.audio->normalizedName() == other.audio->normalizedName() &&
           !differ(file.audio->channelCount, other.audio->channelCount) && mayBeOfOneRecorder(file, other);
}

} // namespace orvane
