#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace orvane {

/// What is made of all clips and costs a look at each: kept while the clips that change say the same of what
/// it depends on. A decision about one of 10,000 clips then costs what that one does.
template <class Value>
class DerivedFromClips {
  public:
    /// Made anew where it has to be. `isSame(before, now)`: whether nothing that the value depends on differs
    /// between both states of a clip. Valid until the next call.
    template <class IsSame, class Make>
    const Value& of(const SyncGroupList& clips, const IsSame& isSame, const Make& make) {
        if (value_ && !isKept(clips, isSame)) value_.reset();
        if (!value_) {
            value_.emplace(make());
            clips_ = clips;
        }
        return *value_;
    }
    void reset() { value_.reset(); }

  private:
    template <class IsSame>
    bool isKept(const SyncGroupList& clips, const IsSame& isSame) {
        const SyncGroupChanges changes = clips.changesSince(clips_);
        if (changes.empty()) return true;
        // Of many, comparing them costs more than to make it anew.
        constexpr std::size_t few = 64;
        if (!changes.went.empty() || !changes.came.empty() || !changes.moved.empty() ||
            changes.changed.size() > few)
            return false;
        const bool kept = std::ranges::all_of(
            changes.changed, [&](std::size_t row) { return isSame(clips_[row], clips[row]); });
        if (kept) clips_ = clips;
        return kept;
    }

    std::optional<Value> value_;
    SyncGroupList clips_; ///< of which it was made, or which say the same
};

} // namespace orvane
