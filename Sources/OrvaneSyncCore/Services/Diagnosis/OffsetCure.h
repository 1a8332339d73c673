#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace orvane {

/// The options that move the recordings of a card whose clock is wrong.
class OffsetCure {
  public:
    /// `rate`: at which the options are read.
    OffsetCure(const Shoot& shoot, TimecodeFrameRate rate) : shoot_(shoot), rate_(rate) {}

    /// `offset` in seconds, besides that by which the work is corrected already. Offsets are given up to a
    /// day; what is more goes into the date.
    DoubtCure of(const Card& card, double offset) const;
    /// For options that would move the sound of other cards as well; absent where there is none. `isPart`:
    /// other recordings of the card are right. `cameras`: the folders of the clips that they are wrong for;
    /// empty for all.
    std::optional<CureScan> scanOfRecordings(const Card& card, bool isPart,
                                             const std::set<std::string_view>& cameras = {}) const;
    /// The folders of clips for such a scan, where the card is of a unit that has cameras and sound of its
    /// own, as another one has: without those of the other. Empty where nothing tells units apart.
    std::set<std::string_view> camerasOfUnit(const Card& card) const;
    /// What to say behind such a cure where clips have other sound as well, which that scan leaves out.
    std::string forOtherSound(const Card& card) const;
    /// The same behind the cure of a part of a card, whose other recordings that scan leaves out.
    static std::string forOtherRecordings();
    /// With a day, without recordings of others than that from which the card is moved.
    std::optional<CureScan> scanOfClips(const Card& card) const;
    /// For the clips of one folder from the first to the last; with a card, for its recordings alone.
    std::optional<CureScan> scanOfClipsBetween(const Shoot::Clip& first, const Shoot::Clip& last,
                                               const Card* sound = nullptr) const;

  private:
    const Shoot& shoot_;
    TimecodeFrameRate rate_;
};

} // namespace orvane
