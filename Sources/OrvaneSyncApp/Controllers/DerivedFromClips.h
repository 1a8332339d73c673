#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <utility>

namespace orvane {

/// Identifies the clips that a value was made from.
class ClipsMark {
  public:
    void set(SyncGroupList clips) { clips_ = std::move(clips); }
    void reset() { clips_.reset(); }
    /// Whether the value would be the same for the present clips. `isSame(before, now)` compares two states
    /// of one clip.
    template <class IsSame>
    bool isSame(const SyncGroupList& clips, const IsSame& isSame) {
        if (!clips_) return false;
        const SyncGroupChanges changes = clips.changesSince(*clips_);
        if (changes.empty()) return true;
        // Above this number of changed clips, comparing them costs more than making the value again.
        constexpr std::size_t few = 64;
        if (!changes.removed.empty() || !changes.inserted.empty() || !changes.moved.empty() ||
            changes.changed.size() > few)
            return false;
        const bool areSame = std::ranges::all_of(
            changes.changed, [&](std::size_t row) { return isSame((*clips_)[row], clips[row]); });
        if (areSame) clips_ = clips;
        return areSame;
    }

  private:
    std::optional<SyncGroupList> clips_;
};

/// A value that is made from all clips, which costs a look at each. It is kept while every clip that changes
/// is the same in all that the value depends on: a decision about one of 10,000 clips then costs a look at
/// that clip.
template <class Value>
class DerivedFromClips {
  public:
    /// Makes the value again if necessary. `isSame`: as in `ClipsMark`. Valid until the next call.
    template <class IsSame, class Make>
    const Value& of(const SyncGroupList& clips, const IsSame& isSame, const Make& make) {
        if (!ifMade(clips, isSame)) {
            value_ = std::make_shared<const Value>(make());
            madeOf_.set(clips);
        }
        return *value_;
    }
    /// For a caller that keeps the value; null if it has to be made again.
    template <class IsSame>
    std::shared_ptr<const Value> ifMade(const SyncGroupList& clips, const IsSame& isSame) {
        if (value_ && !madeOf_.isSame(clips, isSame)) value_.reset();
        return value_;
    }
    void reset() { value_.reset(); }

  private:
    std::shared_ptr<const Value> value_;
    ClipsMark madeOf_;
};

} // namespace orvane
