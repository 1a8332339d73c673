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

/// The input of the doubts. The references must live as long as the call.
struct DoubtInput {
    const SyncGroupList& groups;
    const std::vector<MediaAsset>& recordings; ///< all recordings of the work, used by a clip or not
    const MatchRules& rules;                   ///< the rules by which the clips were matched
    TrimMode trimMode;
    const SmartAudioResults& smartAudioResults; ///< of the groups that have any
    const FileNames& names;                     ///< of all files of the work
    /// Of the analysed clips, by match. Null: no clip was analysed.
    const std::unordered_map<UUID, HeardLag>* heardLags = nullptr;
    /// The folders of the scan, by their real paths; exclusions are matched below them. Empty for work that
    /// no scan made.
    std::vector<FileURL> folders = {};
    /// Of clips whose cameras heard another recording, by match. Null: no clip was analysed.
    const std::unordered_map<UUID, HeardElsewhere>* heardElsewhere = nullptr;
    /// The channel of sound, from 0, on which linear timecode is searched for, or
    /// `settings::everyTimecodeChannel`; absent: none.
    std::optional<int> timecodeChannel = {};
    /// The claims of `SyncDoubts::claims` that were analysed. Null: none was.
    const HeardClaims* heardClaims = nullptr;
    /// As `HeardSound::unheard`. Null: no clip was analysed.
    const std::unordered_set<UUID>* unheard = nullptr;
};

/// Why clips may not have the right sound. Derived from the state of the work; pure, any thread.
struct SyncDoubts {
    /// The doubts of each clip that has any, those of its card included.
    std::map<UUID, std::vector<SyncDoubt>> byGroup;
    /// Doubts about a whole card, in the order of the cards' folders; without clips if they concern none.
    std::vector<CardDoubt> cards;
    /// Recordings that doubts about clocks and dates are about. Those under no clip are explained by that.
    std::unordered_set<UUID> recordings;

    bool isEmpty() const { return byGroup.empty() && cards.empty(); }

    /// A clip that is locked, left out of the export or settled by one of its recordings has no doubt about
    /// which recording it has. Throws Stopped.
    static SyncDoubts of(const DoubtInput& input, const std::stop_token& stop = {});
    /// The claims about offsets from timecode that the cameras' microphones can decide and that were not
    /// analysed, a few clips for each offset. More may follow once these are analysed. Throws Stopped.
    static std::vector<SoundClaim> claims(const DoubtInput& input, const std::stop_token& stop = {});
    /// The sound that the clip should have. Null for a clip with a lock or an offset of the editor.
    const SyncDoubt::Suggestion* suggestionFor(const SyncGroup& group) const;
    /// The doubt about a card that the doubt of a clip is; null if it is none.
    const CardDoubt* ofCard(const SyncDoubt& doubt) const;
    /// Whether the clip has a doubt of one of these kinds.
    bool has(const UUID& group, std::initializer_list<SyncDoubt::Kind> kinds) const;
    /// Each doubt once: those of cards, then those of single clips in the order of the clips. Clips that
    /// share kind and cure are in one doubt: its message is that of the first clip, with the number of the
    /// others.
    std::vector<CardDoubt> summary(const SyncGroupList& groups) const;

    bool operator==(const SyncDoubts&) const = default;
};

} // namespace orvane
