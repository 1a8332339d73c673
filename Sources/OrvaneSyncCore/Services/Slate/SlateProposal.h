#pragma once

#include "OrvaneSyncCore/Models/SlateResult.h"
#include "OrvaneSyncCore/Services/Naming/BatchRenamer.h"

#include <optional>
#include <string>

namespace orvane {

/// Values from the slate that a clip could take over, for the editor to accept.
struct SlateProposal {
    // Only if neither the recorder nor a report states them.
    std::optional<std::string> scene = {}, take = {};
    /// The name that the clip would have with these values; absent if it would not change or the editor has
    /// named the clip.
    std::optional<std::string> clipName = {};

    bool operator==(const SlateProposal&) const = default;
};

/// Absent if the slate gives nothing new, and if the recorder or a report has another scene than the slate:
/// then the slate is from another take. Any thread.
std::optional<SlateProposal> slateProposal(const SyncGroup& group, const SlateResult& slate,
                                           const BatchRenamer::Settings& naming);

/// Adds scene and take to the clip's report metadata, and sets the clip's manual name.
void accept(const SlateProposal& proposal, SyncGroup& group);

} // namespace orvane
