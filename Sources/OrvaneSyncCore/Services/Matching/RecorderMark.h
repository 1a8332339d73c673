#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <array>
#include <cstdint>
#include <string>

namespace orvane {

/// A property that distinguishes the recorders whose files are in one folder. Pure; any thread.
struct RecorderMark {
    /// In the order of priority: what the files state is more reliable than their names.
    enum class By : std::uint8_t { originator, tape, layout, name };
    static constexpr std::array all{By::originator, By::tape, By::layout, By::name};

    By by;
    std::string value; ///< empty for a file that does not state it

    static RecorderMark of(const MediaAsset& recording, By by);
    bool isOn(const MediaAsset& recording) const { return of(recording, by) == *this; }
    static bool areEqual(const MediaAsset& a, const MediaAsset& b, By by);
    bool operator==(const RecorderMark&) const = default;
};

/// Whether two files are in one folder and no mark shows that their recorders differ.
bool areOfOneRecorder(const MediaAsset& a, const MediaAsset& b);

/// The name of a file with one character in place of each number: equal for the files of one recorder or
/// camera.
std::string namePattern(const MediaAsset& file);

} // namespace orvane
