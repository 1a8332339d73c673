#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The state behind the editor of a naming pattern. A plain value.
struct PatternEditor {
    static constexpr int mostCounterDigits = 6;
    static constexpr int highestCounterValue = 9999;

    std::string pattern;
    int counterDigits = 3;                    ///< 1 to 6; what is beyond counts as the nearest
    int counterValue = 1;                     ///< 1 to 9999, likewise
    std::optional<std::size_t> caretPosition; ///< characters (as people count them) from the start

    /// Puts the token in at the caret and moves the caret behind it; without a caret, or with one behind the
    /// end of the pattern, the token goes to the end and the caret stays.
    void insert(std::string_view token);
    /// The counter with its digits, such as "{counter:3}".
    std::string counterToken() const;
    /// The pattern as the first clip would have it; empty without clips.
    std::string previewString(const SyncGroupList& groups) const;
};

} // namespace orvane
