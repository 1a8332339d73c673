#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <functional>
#include <optional>

namespace orvane {

/// The time ranges of a card's recordings, and of the clips that they are compared with: seconds since 1970
/// for a card with a day, since midnight for a card without one.
class CardTimes {
  public:
    /// The references must live as long as this object.
    CardTimes(const Shoot& shoot, const Card& card) : shoot_(shoot), card_(card) {}

    /// True if the card or the clip has no day. Else whether the clip is of the card's day or of the day
    /// before or after it: a clock that is hours off changes its date at another time than the cameras do.
    bool mayOverlap(const Shoot::Clip& clip) const;
    /// The place of a recording on the day of the card. The recording is given by the number of any of its
    /// files, as in `range`.
    FilePlace placeOf(std::size_t file) const;
    SyncEngine::TCRange range(std::size_t file) const;
    /// From the first start to the last end of the recordings, moved by the offset.
    SyncEngine::TCRange hoursAt(double offsetSeconds) const;
    /// Whether the clip lies within these hours.
    bool isWithin(const SyncEngine::TCRange& hours, const Shoot::Clip& clip) const;
    /// All recordings of the card, each once, moved by the offset.
    Cover coverAt(double offsetSeconds) const;

    struct Covered {
        std::size_t whole;        ///< a file of the recording
        SyncEngine::TCRange clip; ///< range of the clip, on the axis of the recordings
    };
    /// The recording that covers the clip, or that the clip covers.
    std::optional<Covered> covered(const Cover& sound, const Shoot::Clip& clip) const;
    /// The same by the time of day alone, as if the clip were of the card's day.
    std::optional<Covered> coveredByHours(const Cover& sound, const Shoot::Clip& clip) const;

  private:
    using Accept = std::function<bool(const SyncEngine::TCRange& range)>;
    bool anyPlace(const Shoot::Clip& clip, const std::optional<long>& day, const Accept& accept) const;

    std::optional<Covered> coveredOn(const std::optional<long>& day, const Cover& sound,
                                     const Shoot::Clip& clip) const;

    const Shoot& shoot_;
    const Card& card_;
};

} // namespace orvane
