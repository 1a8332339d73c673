#include "OrvaneSyncCore/Services/Export/ChannelRoles.h"

#include "FCPXMLKit/xml/XMLElement.h"
#include "OrvaneSyncCore/Services/Export/ExportClips.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace orvane::FCPXMLExporter {

namespace {

using Tracks = std::vector<IXMLTrack>;

std::string roleOf(int track, const Tracks& named, const ExportSettings& settings) {
    std::string role = settings.get(settings::audioBaseRole);
    role += '.';
    for (const IXMLTrack& candidate : named)
        if (candidate.channelIndex == track && !candidate.name.empty()) return role += candidate.name;
    const auto subrole = settings.subroleMap.find(track);
    return role += subrole == settings.subroleMap.end() ? defaultSubrole(track) : subrole->second;
}

const Tracks& tracksOf(const MediaAsset& audio, const ExportSettings& settings) {
    static const Tracks none;
    return audio.ixmlData && settings.get(settings::useIXMLTrackNames) ? audio.ixmlData->tracks : none;
}

/// In a file with a single channel the position in the file says nothing, so the running number of the file's
/// channel is used.
std::string alternateRole(const TakeFile& file, int track, const MediaAsset& audio,
                          const ExportSettings& settings) {
    if (file.channelCount > 1) return audioRoleName(track, audio, settings);
    const Tracks& tracks = tracksOf(audio, settings);
    return roleOf(file.firstChannel,
                  tracks.size() == 1 ? Tracks{{file.firstChannel, tracks.front().name}} : Tracks(), settings);
}

bool areDistinct(const std::vector<std::string>& roles) {
    std::vector<std::string_view> sorted(roles.begin(), roles.end());
    std::ranges::sort(sorted);
    return std::ranges::adjacent_find(sorted) == sorted.end();
}

/// Repeated names get a number; the result differs from all other names.
void makeDistinct(std::vector<std::string>& roles) {
    if (areDistinct(roles)) return;
    std::unordered_set<std::string> taken(roles.begin(), roles.end());
    std::unordered_map<std::string, int> numbers;
    for (std::string& role : roles) {
        int& number = numbers[role];
        if (++number == 1) continue;
        std::string numbered = role + " " + std::to_string(number);
        while (!taken.insert(numbered).second) numbered = role + " " + std::to_string(++number);
        role = std::move(numbered);
    }
}

} // namespace

ChannelRoles::ChannelRoles(const SyncGroup& group, const Take& take, const ExportSettings& settings)
    : roles_(static_cast<std::size_t>(take.runningChannelCount())) {
    const Tracks named = settings.get(settings::useIXMLTrackNames) ? namedChannels(group, take) : Tracks();
    for (const TakeFile& file : take.files) {
        if (file.role == TakeRole::mirror) continue;
        const MediaAsset& audio = group.audioMatches[file.matchIndex].audio;
        for (int track = 1; track <= file.channelCount; ++track) {
            const int number = file.firstChannel + track - 1;
            roles_[static_cast<std::size_t>(number - 1)] = isHeard(file.role)
                                                               ? roleOf(number, named, settings)
                                                               : alternateRole(file, track, audio, settings);
        }
    }
    // Names that differ only in characters that the document cannot hold become equal here.
    for (std::string& role : roles_) role = fcpxml::readBack(role);
    makeDistinct(roles_);
}

std::string audioRoleName(int track, const MediaAsset& audio, const ExportSettings& settings) {
    return roleOf(track, tracksOf(audio, settings), settings);
}

std::string defaultSubrole(int track) {
    if (track == 1) return "Mix";
    return track == 2 ? "Boom" : "Lav " + std::to_string(std::int64_t{track} - 2);
}

} // namespace orvane::FCPXMLExporter
