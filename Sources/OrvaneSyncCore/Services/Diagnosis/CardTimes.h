#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <functional>
#include <optional>

namespace orvane {

/// Where the recordings of a card lie, and clips among them: seconds since 1970 for a card with a day, since
/// midnight for one without.
class CardTimes {
  public:
    /// The references must live as long as this.
    CardTimes(const Shoot& shoot, const Card& card) : shoot_(shoot), card_(card) {}

    /// Of a card without a day, and clips without one, all; else those of its day and of the days beside it:
    /// a clock that is hours off changes its date at another time than the cameras do.
    bool mayOverlap(const Shoot::Clip& clip) const;
    /// A recording on the day of the card, by one of its files; `range` and `placeOf` alike.
    FilePlace placeOf(std::size_t file) const;
    SyncEngine::TCRange range(std::size_t file) const;
    /// From the first start to the last end of the recordings, moved by the offset.
    SyncEngine::TCRange hoursAt(double offsetSeconds) const;
    /// Whether the clip lies within these hours.
    bool isWithin(const SyncEngine::TCRange& hours, const Shoot::Clip& clip) const;
    /// All of its recordings, each once, moved by the offset.
    Cover coverAt(double offsetSeconds) const;

    struct Covered {
        std::size_t whole;        ///< a file of the recording
        SyncEngine::TCRange clip; ///< where the clip lies among the recordings
    };
    /// The recording that covers the clip, or that the clip covers.
    std::optional<Covered> covered(const Cover& sound, const Shoot::Clip& clip) const;

  private:
    using Accept = std::function<bool(const SyncEngine::TCRange& range)>;
    bool anyPlace(const Shoot::Clip& clip, const Accept& accept) const;

    const Shoot& shoot_;
    const Card& card_;
};

} // namespace orvane
