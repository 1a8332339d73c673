#include "OrvaneSyncCore/Services/Takes/Take.h"

#include "OrvaneSyncCore/Services/Matching/TakeMembership.h"
#include "OrvaneSyncCore/Utilities/EnumTable.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string>
#include <utility>

namespace orvane {

namespace {

// The most that a wave file's header can state; a larger count is an error in the file.
constexpr int mostChannels = 65535;

TakeMembership membershipOf(const SyncGroup& group) {
    std::vector<TakeMembership::Candidate> candidates;
    candidates.reserve(group.audioMatches.size());
    for (const AudioMatch& match : group.audioMatches) {
        const double start = match.syncOffsetSeconds;
        candidates.push_back({&*match.audio, {start, start + match.audio->durationSeconds.value_or(0)}});
    }
    const auto& seconds = group.video.durationSeconds;
    return TakeMembership::of(candidates,
                              seconds ? std::optional(SyncEngine::TCRange{0, *seconds}) : std::nullopt);
}

/// Adds the files of a clip in the order of the take and numbers their channels.
class Builder {
  public:
    Builder(const SyncGroup& group, int channelsIfUnknown)
        : group_(group), channelsIfUnknown_(channelsIfUnknown) {}

    Take build() {
        const TakeMembership membership = membershipOf(group_);
        const auto& members = membership.members;
        const bool hasLanes = !members.empty() && members.back().lane > 0;
        for (auto first = members.begin(); first != members.end();) {
            const auto last = std::find_if(first, members.end(),
                                           [&](const auto& member) { return member.lane != first->lane; });
            const TakeRole role = hasLanes && last - first == 1 ? TakeRole::channel : TakeRole::part;
            int channels = 0;
            for (; first != last; ++first) channels = std::max(channels, add(first->candidate, role));
            next_ += channels;
        }
        take_.channelCount = next_ - 1;
        for (const std::size_t match : membership.alternates) next_ += add(match, TakeRole::alternate);
        next_ = 0;
        for (const std::size_t match : membership.mirrors) add(match, TakeRole::mirror);
        placeOnAxis();
        return std::move(take_);
    }

  private:
    int add(std::size_t matchIndex, TakeRole role) {
        const MediaAsset& audio = *group_.audioMatches[matchIndex].audio;
        const int channels = std::clamp(audio.channelCount.value_or(channelsIfUnknown_), 1, mostChannels);
        take_.files.push_back({matchIndex, role, next_, channels, 0, audio.durationSeconds.value_or(0)});
        return channels;
    }

    void placeOnAxis() {
        double first = std::numeric_limits<double>::infinity();
        double last = -std::numeric_limits<double>::infinity();
        for (const TakeFile& file : take_.files) {
            if (!isHeard(file.role)) continue;
            const double start = offsetOf(file);
            first = std::min(first, start);
            last = std::max(last, start + file.durationSeconds);
        }
        if (take_.files.empty()) return;
        take_.offsetSeconds = first;
        for (TakeFile& file : take_.files) file.startSeconds = offsetOf(file) - first;
        take_.primaryStartSeconds = group_.audioMatches.front().syncOffsetSeconds - first;
        // A single file has exactly its stated length; adding and subtracting its offset would change it by
        // rounding.
        take_.durationSeconds =
            take_.heardFileCount() == 1 ? take_.files.front().durationSeconds : last - first;
    }
    double offsetOf(const TakeFile& file) const {
        return group_.audioMatches[file.matchIndex].syncOffsetSeconds;
    }

    const SyncGroup& group_;
    int channelsIfUnknown_;
    int next_ = 1; ///< number of the next channel
    Take take_;
};

/// The recorder's name of a file's only channel, which is the take's channel `number`. A recorder may list
/// the tracks of all files in each file.
const IXMLTrack* ownTrack(const std::vector<IXMLTrack>& tracks, int number, int channelsOfTake) {
    if (tracks.size() == 1) return &tracks.front();
    if (std::cmp_equal(tracks.size(), channelsOfTake)) return &tracks[static_cast<std::size_t>(number - 1)];
    const auto found = std::ranges::find(tracks, number, &IXMLTrack::channelIndex);
    return found == tracks.end() ? nullptr : &*found;
}

} // namespace

std::string_view name(TakeRole role) {
    constexpr std::array<std::string_view, 4> names{"part", "channel", "mirror", "alternate"};
    return rowOf(names, role);
}

int Take::runningChannelCount() const {
    int last = 0;
    for (const TakeFile& file : files)
        if (file.role != TakeRole::mirror) last = std::max(last, file.firstChannel + file.channelCount - 1);
    return last;
}

std::size_t Take::heardFileCount() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(files, [](const TakeFile& file) { return isHeard(file.role); }));
}

Take takeOf(const SyncGroup& group, int channelsIfUnknown) {
    return Builder(group, channelsIfUnknown).build();
}

std::string filesText(const SyncGroup& group, const Take& take, const FileNames& names) {
    if (take.isEmpty()) return "";
    std::string text = names.of(*group.audioMatches[take.files.front().matchIndex].audio);
    const std::size_t others = take.heardFileCount() - 1;
    if (others > 0) text += " + " + std::to_string(others) + (others == 1 ? " file" : " files");
    return text;
}

std::vector<IXMLTrack> namedChannels(const SyncGroup& group, const Take& take) {
    std::vector<IXMLTrack> named;
    const auto add = [&](const IXMLTrack& track, int number) {
        if (std::ranges::find(named, number, &IXMLTrack::channelIndex) == named.end())
            named.push_back({number, track.name});
    };
    for (const TakeFile& file : take.files) {
        const MediaAsset& audio = *group.audioMatches[file.matchIndex].audio;
        if (!isHeard(file.role) || !audio.ixmlData) continue;
        const auto& tracks = audio.ixmlData->tracks;
        if (take.heardFileCount() == 1) return tracks;
        if (file.channelCount > 1) {
            for (const IXMLTrack& track : tracks)
                if (track.channelIndex >= 1 && track.channelIndex <= file.channelCount)
                    add(track, file.firstChannel + track.channelIndex - 1);
        } else if (const IXMLTrack* own = ownTrack(tracks, file.firstChannel, take.channelCount)) {
            add(*own, file.firstChannel);
        }
    }
    return named;
}

} // namespace orvane
