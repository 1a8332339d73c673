#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The state of the editor of a naming pattern. A plain value.
struct PatternEditor {
    static constexpr int mostCounterDigits = 6;
    static constexpr int highestCounterValue = 9999;

    std::string pattern;
    int counterDigits = 3;                    ///< 1 to 6; values outside are clamped
    int counterValue = 1;                     ///< 1 to 9999; values outside are clamped
    std::optional<std::size_t> caretPosition; ///< in characters (as people count them) from the start

    /// Inserts the token at the caret and moves the caret behind it. Without a caret, or if it is behind the
    /// end of the pattern, the token is appended and the caret does not move.
    void insert(std::string_view token);
    /// The counter with its digits, such as "{counter:3}".
    std::string counterToken() const;
    /// The pattern resolved for the first clip; empty without clips.
    std::string previewString(const SyncGroupList& groups) const;
};

} // namespace orvane
