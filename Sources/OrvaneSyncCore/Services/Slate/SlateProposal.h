#pragma once

#include "OrvaneSyncCore/Models/SlateResult.h"
#include "OrvaneSyncCore/Services/Naming/BatchRenamer.h"

#include <optional>
#include <string>

namespace orvane {

/// What a clip could take over from its slate, for the editor to accept.
struct SlateProposal {
    // Where neither the recorder nor a report says it.
    std::optional<std::string> scene = {}, take = {};
    /// The name that the clip would have if the recorder had said so; absent where that changes nothing or
    /// the editor has named the clip.
    std::optional<std::string> clipName = {};

    bool operator==(const SlateProposal&) const = default;
};

/// Nothing where the slate says nothing new, and where recorder or report name another scene than the slate:
/// then it is of another take. Any thread.
std::optional<SlateProposal> slateProposal(const SyncGroup& group, const SlateResult& slate,
                                           const BatchRenamer::Settings& naming);

/// Scene and take go beside what reports say of the clip, the name becomes that of the clip.
void accept(const SlateProposal& proposal, SyncGroup& group);

} // namespace orvane
