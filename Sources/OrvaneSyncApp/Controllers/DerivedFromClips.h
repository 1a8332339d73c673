#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <utility>

namespace orvane {

/// The clips that something was made of.
class ClipsMark {
  public:
    void set(SyncGroupList clips) { clips_ = std::move(clips); }
    void reset() { clips_.reset(); }
    /// Whether nothing that it depends on differs. `isSame(before, now)`: of both states of one clip.
    template <class IsSame>
    bool isSame(const SyncGroupList& clips, const IsSame& isSame) {
        if (!clips_) return false;
        const SyncGroupChanges changes = clips.changesSince(*clips_);
        if (changes.empty()) return true;
        // Of many, comparing them costs more than to make it again.
        constexpr std::size_t few = 64;
        if (!changes.went.empty() || !changes.came.empty() || !changes.moved.empty() ||
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

/// What is made of all clips and costs a look at each: kept while the clips that change say the same of what
/// it depends on. A decision about one of 10,000 clips then costs what that one does.
template <class Value>
class DerivedFromClips {
  public:
    /// Made again where it has to be. `isSame`: as `ClipsMark` has it. Valid until the next call.
    template <class IsSame, class Make>
    const Value& of(const SyncGroupList& clips, const IsSame& isSame, const Make& make) {
        if (!ifMade(clips, isSame)) {
            value_ = std::make_shared<const Value>(make());
            madeOf_.set(clips);
        }
        return *value_;
    }
    /// For a caller that keeps it; null where it has to be made again.
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
