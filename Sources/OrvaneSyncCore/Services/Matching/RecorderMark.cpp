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

bool RecorderMark::areEqual(const MediaAsset& a, const MediaAsset& b, By by) {
    // Most are equal, which needs no texts.
    if (by == By::originator && a.bextOriginator == b.bextOriginator) return true;
    if (by == By::layout && a.channelCount == b.channelCount && a.sampleRate == b.sampleRate) return true;
    return of(a, by).isOn(b);
}

bool areOfOneRecorder(const MediaAsset& a, const MediaAsset& b) {
    return folderPath(a) == folderPath(b) && std::ranges::all_of(RecorderMark::all, [&](RecorderMark::By by) {
               return RecorderMark::areEqual(a, b, by);
           });
}

std::string namePattern(const MediaAsset& file) {
    std::string pattern = file.normalizedName();
    std::size_t size = 0; // of the beginning that is done, never ahead of the character that is read
    for (const char c : pattern) {
        const bool isDigit = c >= '0' && c <= '9';
        if (!isDigit || size == 0 || pattern[size - 1] != '#') pattern[size++] = isDigit ? '#' : c;
    }
    pattern.resize(size);
    return pattern;
}

} // namespace orvane
