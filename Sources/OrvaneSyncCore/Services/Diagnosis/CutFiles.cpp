#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <cstdint>
#include <map>
#include <set>
#include <utility>

namespace orvane {

namespace {

/// What is known of the length of a file that ends early.
enum class Known : std::uint8_t { whatIsThere, whatIsPromised, nothing };

Known knownOf(const MediaAsset& file) {
    if (file.kind == AssetKind::audio) return Known::whatIsThere;
    return file.durationSeconds.value_or(0) > 0 ? Known::whatIsPromised : Known::nothing;
}

std::string lengthsOf(const MediaAsset& file, double heldShare) {
    const double length = file.durationSeconds.value_or(0);
    switch (knownOf(file)) {
    case Known::whatIsThere:
        if (!(heldShare > 0)) return " holds nothing of what its header promises";
        return " ends early: " + clockText(length) + " of the " + clockText(length / heldShare) +
               " that its header promises are there";
    case Known::whatIsPromised:
        return " ends early: about " + clockText(length * heldShare) + " of its " + clockText(length) +
               " are there";
    case Known::nothing:
        break;
    }
    return " ends early, and what says how to read it is missing";
}

} // namespace

void addCutFiles(const Shoot& shoot, SyncDoubts& doubts) {
    if (shoot.heldShares.empty()) return;
    struct Folder {
        std::vector<const MediaAsset*> files;
        std::set<std::size_t> clips; ///< that have them, in `shoot.clips`
    };
    std::map<std::pair<std::string_view, Known>, Folder> folders;
    const auto folderOfFile = [&](const MediaAsset& file) -> Folder& {
        return folders[{folderOf(file), knownOf(file)}];
    };
    for (std::size_t i = 0; i < shoot.clips.size(); ++i) {
        const SyncGroup& group = *shoot.clips[i].group;
        if (group.isExcludedFromExport) continue;
        if (shoot.endsEarly(group.video)) {
            Folder& folder = folderOfFile(group.video);
            folder.files.push_back(&group.video);
            folder.clips.insert(i);
        }
        for (const AudioMatch& match : group.audioMatches)
            if (shoot.endsEarly(*match.audio)) folderOfFile(*match.audio).clips.insert(i);
    }
    for (const MediaAsset& recording : shoot.input.recordings)
        if (shoot.endsEarly(recording)) folderOfFile(recording).files.push_back(&recording);
    for (auto& [key, folder] : folders) {
        if (folder.files.empty()) continue;
        const MediaAsset& first = *folder.files.front();
        const auto more = static_cast<long long>(folder.files.size()) - 1;
        std::vector<const Shoot::Clip*> clips;
        for (const std::size_t clip : folder.clips) clips.push_back(&shoot.clips[clip]);
        addCardDoubt(doubts,
                     {SyncDoubt::Kind::cutFile,
                      shoot.nameOf(first) + lengthsOf(first, shoot.heldShares.at(first.url.path)) +
                          (more > 0 ? "; likewise " + counted(more, "more file", "more files") + " in '" +
                                          std::string(key.first) + "'"
                                    : ""),
                      more > 0 ? "copy them again from the card" : "copy it again from the card"},
                     clips);
    }
}

} // namespace orvane
