#pragma once

#include "OrvaneSyncCore/Models/ExportKinds.h"
#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Models/HeardLag.h"
#include "OrvaneSyncCore/Models/SmartAudioResults.h"
#include "OrvaneSyncCore/Models/SyncDoubt.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"

#include <initializer_list>
#include <map>
#include <optional>
#include <stop_token>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace orvane {

/// What doubts are derived from. The references must live as long as the call.
struct DoubtInput {
    const SyncGroupList& groups;
    const std::vector<MediaAsset>& recordings; ///< all of the work, whether a clip uses them or not
    const MatchRules& rules;                   ///< by which the clips were matched
    TrimMode trimMode;
    const SmartAudioResults& smartAudioResults; ///< as far as there are any
    const FileNames& names;                     ///< of all files of the work
    /// Of clips that were listened to, by match. Null: none were.
    const std::unordered_map<UUID, HeardLag>* heardLags = nullptr;
    /// That the scan was given, by their real paths, below which its exclusions are matched; none for work
    /// that no scan made.
    std::vector<FileURL> folders = {};
    /// Of clips whose cameras heard another recording, by match. Null: none were listened to.
    const std::unordered_map<UUID, HeardElsewhere>* heardElsewhere = nullptr;
    /// Of sound, from 0, on which linear timecode is listened for, or `settings::everyTimecodeChannel`;
    /// absent: on none.
    std::optional<int> timecodeChannel = {};
    /// Of `SyncDoubts::claims`, those that were listened to. Null: none were.
    const HeardClaims* heardClaims = nullptr;
    /// As `HeardSound::unheard`. Null: none were listened to.
    const std::unordered_set<UUID>* unheard = nullptr;
};

/// Why clips may not have the right sound. Derived anew from the state of the work; pure, any thread.
struct SyncDoubts {
    /// The doubts about each clip that has any, those about its card included.
    std::map<UUID, std::vector<SyncDoubt>> byGroup;
    /// What concerns a whole card, in the order of the cards' folders; without clips where none has to do
    /// with it.
    std::vector<CardDoubt> cards;

    bool isEmpty() const { return byGroup.empty() && cards.empty(); }

    /// A clip that is locked, left out of the export or settled by one of its recordings raises no doubt
    /// about which one it has. Throws Stopped.
    static SyncDoubts of(const DoubtInput& input, const std::stop_token& stop = {});
    /// What the cameras' microphones can tell of offsets that timecode suggests, and nobody has listened to:
    /// a few clips of each. Others may follow once these were heard. Throws Stopped.
    static std::vector<SoundClaim> claims(const DoubtInput& input, const std::stop_token& stop = {});
    /// Whether the clip has a doubt of one of these kinds.
    bool has(const UUID& group, std::initializer_list<SyncDoubt::Kind> kinds) const;
    /// Each doubt once: those of cards, then those of single clips in the order of the clips, with the clips
    /// that share kind and cure in one. The message is that of the first clip, and says how many more.
    std::vector<CardDoubt> summary(const SyncGroupList& groups) const;

    bool operator==(const SyncDoubts&) const = default;
};

} // namespace orvane
