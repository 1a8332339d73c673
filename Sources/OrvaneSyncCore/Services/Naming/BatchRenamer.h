#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

/// Renames many clips by one rule: find and replace, number padding, prefix and suffix. A plain value. Its
/// operations change no clip; they return the manual names that the clips would get.
struct BatchRenamer {
    /// The naming settings.
    struct Settings {
        GroupNaming::Source source = GroupNaming::Source::sceneTake;
        std::optional<std::string> customPattern = std::string(GroupNaming::defaultPattern);
        std::string separator{GroupNaming::defaultSeparator};
    };
    struct PreviewRow {
        std::string before;
        std::string after;
    };
    static constexpr int mostPadDigits = 6;

    std::string find; ///< exact, case-sensitive
    std::string replace;
    int padDigits = 0; ///< 0 to 6, larger values count as 6; 0 means no padding
    std::string prefix;
    std::string suffix;

    bool hasOperation() const;
    std::string transform(std::string_view name) const;
    /// The names of each of `clips` in lists before and after, in the order of `clips`, if only these are
    /// renamed. All of them are in `groups`. Pure; any thread.
    std::vector<PreviewRow> preview(const SyncGroupList& groups, const std::vector<UUID>& clips,
                                    const Settings& settings) const;
    /// The new manual name of every clip that would get one, in the order of the clips. A clip that still has
    /// its camera's file name, or whose name would stay the same, is left unchanged.
    std::vector<std::pair<UUID, std::string>> newNames(const SyncGroupList& groups,
                                                       const Settings& settings) const;

    /// Adds leading zeros to each run of number characters that is shorter than `digits`.
    static std::string padNumericSegments(std::string_view name, int digits);
    /// The clips with a manual name that can be cleared.
    static std::vector<UUID> manuallyNamed(const SyncGroupList& groups);
};

} // namespace orvane
