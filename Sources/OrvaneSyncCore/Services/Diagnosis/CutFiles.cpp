#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Services/Diagnosis/UnmatchedReasons.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace orvane {

namespace {

/// What is known of the length of a file that ends early.
enum class Known : std::uint8_t { present, stated, noIndex, neverClosed, isEmpty, nothing };

Known knownOf(const MediaAsset& file) {
    if (file.fileSizeBytes == 0) return Known::isEmpty;
    if (file.isUnclosed) return Known::neverClosed;
    if (!file.heldShare) return Known::nothing;
    if (file.kind == AssetKind::audio) return Known::present;
    return file.durationSeconds.value_or(0) > 0 ? Known::stated : Known::noIndex;
}

std::string lengthsOf(const MediaAsset& file) {
    const double length = file.durationSeconds.value_or(0), heldShare = file.heldShare.value_or(0);
    switch (knownOf(file)) {
    case Known::isEmpty:
        return " is empty";
    case Known::nothing:
        return " can't be read: nothing of it looks like a recording";
    case Known::present:
        if (!(heldShare > 0)) return " holds nothing of what its header states";
        return " ends early: " + clockText(length) + " of the " + clockText(length / heldShare) +
               " that its header states are there";
    case Known::stated:
        return " ends early: about " + clockText(length * heldShare) + " of its " + clockText(length) +
               " are there";
    case Known::neverClosed:
        return " was never closed by its recorder: its header does not have the true length, " +
               clockText(length) + " can be used, and its end may be missing";
    case Known::noIndex:
        break;
    }
    return " has no index by which it could be read: the recording was cut off before it was closed, or not "
           "copied to its end";
}

/// Cameras and recorders repair a recording that was cut off when its card is inserted again.
std::string cureOf(Known known, bool isOne) {
    std::string copying = isOne ? "copy it again from the card" : "copy them again from the card";
    if (known != Known::noIndex && known != Known::neverClosed) return copying;
    return copying +
           (known == Known::noIndex ? ", or let the camera repair " : ", or let the recorder repair ") +
           (isOne ? "it" : "them");
}

/// The whole copies, which the clips use, of recordings that end early; by the recordings that do.
std::map<UUID, const MediaAsset*> wholeCopies(const Shoot& shoot) {
    std::map<UUID, const MediaAsset*> copies;
    for (const Shoot::Clip& clip : shoot.clips) {
        const auto& matches = clip.group->audioMatches;
        if (matches.size() < 2 ||
            std::ranges::none_of(matches, [](const AudioMatch& match) { return match.audio->endsEarly(); }))
            continue;
        const Take take = takeOf(*clip.group, assumedChannels);
        for (const TakeFile& file : take.files) {
            const MediaAsset& cut = *matches[file.matchIndex].audio;
            if (file.role != TakeRole::mirror || !cut.endsEarly()) continue;
            for (const TakeFile& other : take.files) {
                const MediaAsset& whole = *matches[other.matchIndex].audio;
                if (other.role != TakeRole::mirror && !whole.endsEarly() &&
                    whole.normalizedName() == cut.normalizedName())
                    copies.emplace(cut.id, &whole);
            }
        }
    }
    return copies;
}

/// Each file has to be copied again, so all are named, except where a whole folder is damaged.
std::string likewise(const Shoot& shoot, const std::vector<const MediaAsset*>& files) {
    constexpr std::size_t most = 20;
    std::vector<std::string> names;
    for (std::size_t i = 1; i < std::min(files.size(), most); ++i) names.push_back(shoot.nameOf(*files[i]));
    if (names.empty()) return {};
    const std::size_t unnamed = files.size() - 1 - names.size();
    return "; likewise " + platform::text::joined(names, ", ") +
           (unnamed > 0 ? " and " + counted(unnamed, "more file", "more files") + " in '" +
                              std::string(folderOf(*files.front())) + "'"
                        : "");
}

/// What the clip's own files of those in a folder lack: the doubt about the folder begins with another one.
std::string reasonOf(const Shoot& shoot, const SyncGroup& group,
                     const std::vector<const MediaAsset*>& files) {
    std::vector<std::string> reasons;
    for (const MediaAsset* file : files) {
        if (file == &group.video)
            reasons.push_back(lengthsOf(*file).substr(1)); // the row has its name
        else if (std::ranges::any_of(group.audioMatches,
                                     [&](const AudioMatch& match) { return match.audio->id == file->id; }))
            reasons.push_back(shoot.nameOf(*file) + lengthsOf(*file));
    }
    return platform::text::joined(reasons, "; ");
}

} // namespace

void addCutFiles(const Shoot& shoot, SyncDoubts& doubts) {
    struct Folder {
        std::vector<const MediaAsset*> files;
        std::set<std::size_t> clips; ///< clips that have these files, as numbers in `shoot.clips`
    };
    const auto copies = wholeCopies(shoot);
    std::map<std::tuple<std::string_view, Known, bool>, Folder>
        folders; ///< true: their whole copies are used
    const auto folderOfFile = [&](const MediaAsset& file) -> Folder& {
        return folders[{folderOf(file), knownOf(file), copies.contains(file.id)}];
    };
    std::set<UUID> ofLocked, ofOthers; // recordings; a lock keeps what is there of one
    for (std::size_t i = 0; i < shoot.clips.size(); ++i) {
        const SyncGroup& group = *shoot.clips[i].group;
        if (group.isExcludedFromExport) continue;
        for (const AudioMatch& match : group.audioMatches)
            (group.isLocked ? ofLocked : ofOthers).insert(match.audio->id);
        if (group.isLocked) continue;
        if (group.video.heldShare) {
            Folder& folder = folderOfFile(group.video);
            folder.files.push_back(&group.video);
            folder.clips.insert(i);
        }
        for (const AudioMatch& match : group.audioMatches)
            if (match.audio->endsEarly() && !copies.contains(match.audio->id))
                folderOfFile(*match.audio).clips.insert(i);
    }
    // A file without a size could not be opened: it was removed during the scan, which reports it.
    for (const MediaAsset& recording : shoot.input.recordings)
        if ((recording.endsEarly() || (recording.fileSizeBytes && nothingIsKnown(recording))) &&
            (!ofLocked.contains(recording.id) || ofOthers.contains(recording.id)))
            folderOfFile(recording).files.push_back(&recording);
    for (auto& [key, folder] : folders) {
        const auto& [path, known, isCopied] = key;
        if (folder.files.empty()) continue;
        const MediaAsset& first = *folder.files.front();
        const auto more = static_cast<long long>(folder.files.size()) - 1;
        std::vector<const Shoot::Clip*> clips;
        for (const std::size_t clip : folder.clips) clips.push_back(&shoot.clips[clip]);
        addCardDoubt(
            doubts,
            {SyncDoubt::Kind::cutFile,
             shoot.nameOf(first) + lengthsOf(first) + likewise(shoot, folder.files) +
                 (isCopied ? "; whole copies are here and used: " + shoot.nameOf(*copies.at(first.id)) : ""),
             isCopied
                 ? (more == 0 ? "copy it again from the card if it is kept"
                              : "copy them again from the card if they are kept")
                 : DoubtCure(cureOf(known, more == 0)) +
                       (clips.empty() ? DoubtCure()
                                      : cureWords::lock("; where no whole copy is left, lock the clips"))},
            clips);
        for (const Shoot::Clip* clip : clips)
            doubts.byGroup[clip->group->id].back().reason = reasonOf(shoot, *clip->group, folder.files);
    }
}

} // namespace orvane
