#include "OrvaneSyncCore/Services/Matching/RecorderMark.h"

#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>

namespace orvane {

RecorderMark RecorderMark::of(const MediaAsset& recording, By by) {
    switch (by) {
    case By::originator:
        return {by, recording.bextOriginator.value_or("")};
    case By::tape:
        return {by, recording.ixmlData ? recording.ixmlData->tape.value_or("") : ""};
    case By::layout:
        return {by, std::to_string(recording.channelCount.value_or(0)) +
                        formatted(" at %.0f", recording.sampleRate.value_or(0))};
    case By::name:
        break;
    }
    return {by, namePattern(recording)};
}

bool areOfOneRecorder(const MediaAsset& a, const MediaAsset& b) {
    return folderPath(a) == folderPath(b) && std::ranges::all_of(RecorderMark::all, [&](RecorderMark::By by) {
               return RecorderMark::of(a, by).isOn(b);
           });
}

std::string namePattern(const MediaAsset& file) {
    std::string pattern;
    for (const char c : file.normalizedName()) {
        const bool isDigit = c >= '0' && c <= '9';
        if (!isDigit)
            pattern += c;
        else if (pattern.empty() || pattern.back() != '#')
            pattern += '#';
    }
    return pattern;
}

} // namespace orvane
