#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace orvane {

/// The options that move the recordings of a card whose clock is wrong.
class OffsetCure {
  public:
    /// `rate`: the rate at which the options are read.
    OffsetCure(const Shoot& shoot, TimecodeFrameRate rate) : shoot_(shoot), rate_(rate) {}

    /// `offset` in seconds, in addition to the correction that the work already has. Options state offsets up
    /// to a day; whole days go into the date.
    DoubtCure of(const Card& card, double offset) const;
    /// The scan for options that would also move the sound of other cards; absent if there is none. `isPart`:
    /// other recordings of the card are right. `cameras`: folders of the clips for which the recordings are
    /// wrong; empty for all.
    std::optional<CureScan> scanOfRecordings(const Card& card, bool isPart,
                                             const std::set<std::string_view>& cameras = {}) const;
    /// The folders of clips for such a scan, if the card belongs to one of several units with cameras and
    /// sound of their own: without the cameras of the other units. Empty if nothing distinguishes units.
    std::set<std::string_view> camerasOfUnit(const Card& card) const;
    /// Text after such a cure if clips also have other sound, which that scan leaves out.
    std::string forOtherSound(const Card& card) const;
    /// Text after the cure of a part of a card: that scan leaves out the card's other recordings.
    static std::string forOtherRecordings();
    /// The scan of the card's clips. If the card has a day, without recordings of other days than the one
    /// from which the card is moved.
    std::optional<CureScan> scanOfClips(const Card& card) const;
    /// The scan of the clips of one folder from the first to the last; if `sound` is given, with its
    /// recordings only.
    std::optional<CureScan> scanOfClipsBetween(const Shoot::Clip& first, const Shoot::Clip& last,
                                               const Card* sound = nullptr) const;

  private:
    const Shoot& shoot_;
    TimecodeFrameRate rate_;
};

} // namespace orvane
