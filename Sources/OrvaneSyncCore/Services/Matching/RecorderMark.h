#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <array>
#include <cstdint>
#include <string>

namespace orvane {

/// What distinguishes the recorders whose files lie in one folder. Pure; any thread.
struct RecorderMark {
    /// What the files say of themselves goes before how they are named.
    enum class By : std::uint8_t { originator, tape, layout, name };
    static constexpr std::array all{By::originator, By::tape, By::layout, By::name};

    By by;
    std::string value; ///< empty for a file that does not say

    static RecorderMark of(const MediaAsset& recording, By by);
    bool isOn(const MediaAsset& recording) const { return of(recording, by) == *this; }
    bool operator==(const RecorderMark&) const = default;
};

/// Whether two files lie in one folder and none of their marks tells their recorders apart.
bool areOfOneRecorder(const MediaAsset& a, const MediaAsset& b);

/// The name of a file with one sign for each number, by which the files of one recorder or camera are the
/// same.
std::string namePattern(const MediaAsset& file);

} // namespace orvane
