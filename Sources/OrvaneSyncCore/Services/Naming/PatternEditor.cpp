#include "OrvaneSyncCore/Services/Naming/PatternEditor.h"

#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"
#include "OrvaneSyncCore/Services/Naming/Replacing.h"
#include "Platform/Text.h"

#include <algorithm>

namespace orvane {

void PatternEditor::insert(std::string_view token) {
    const auto characters = platform::text::characters(pattern);
    if (!caretPosition || *caretPosition > characters.size()) {
        pattern += token;
        return;
    }
    std::size_t at = 0; // in bytes
    for (std::size_t i = 0; i < *caretPosition; ++i) at += characters[i].size();
    pattern.insert(at, token);
    *caretPosition += platform::text::characters(token).size();
}

std::string PatternEditor::counterToken() const {
    return "{counter:" + std::to_string(std::clamp(counterDigits, 1, mostCounterDigits)) + "}";
}

std::string PatternEditor::previewString(const SyncGroupList& groups) const {
    if (groups.empty()) return "";
    const int value = std::clamp(counterValue, 1, highestCounterValue);
    std::string name = GroupNaming::resolve(pattern, groups.front(), value);
    if (counterDigits < 2 || pattern.find("{counter}") == std::string::npos) return name;
    return replacingAll(name, std::to_string(value),
                        GroupNaming::zeroPadded(value, std::min(counterDigits, mostCounterDigits)));
}

} // namespace orvane
