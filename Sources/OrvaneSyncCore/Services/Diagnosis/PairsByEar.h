#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <set>
#include <string_view>
#include <unordered_map>
#include <vector>

// Clips that no timecode leads to their sound, and the recordings that are compared with their cameras'
// sound.
namespace orvane {

// With more pairs, too many would be similar by chance, and all of them must be read.
inline constexpr std::size_t mostPairsByEar = 200;
inline constexpr double mostSecondsByEar = 36000;

/// Such a clip, and a recording that may contain that sound.
struct PairByEar {
    const Shoot::Clip* clip;
    const MediaAsset* recording;
    double attachedSeconds; ///< clip time at which the recording begins once it is attached

    SoundClaim claim() const { return claimByEar(clip->group->id, recording->id); }
};

/// Folders with a file that counts from zero or has no time. The other files there may continue its count,
/// which runs only during recording. The count may begin at another number; then the dates of the clips
/// decide.
class CountingFolders {
  public:
    explicit CountingFolders(const Shoot& shoot);
    bool hold(const MediaAsset& file) const { return folders_.contains(folderOf(file)); }
    /// Whether the dates of the folder's clips show it: recordings at that timecode are there by chance.
    bool isShownByDates(const MediaAsset& file) const { return running_.contains(folderOf(file)); }

  private:
    std::set<std::string_view> folders_, running_;
};

/// Whether the clip's timecode, if it has one, is no time of day.
bool isWithoutTime(const Shoot::Clip& clip, const CountingFolders& counting);
/// Whether the clip has no recording and nobody decided about it.
bool isOpen(const Shoot::Clip& clip);
/// Whether timecode gives the clip sound that nobody decided about and that its camera did not hear.
bool hasUnheardSound(const Shoot& shoot, const Shoot::Clip& clip);
/// The same, under a clip whose timecode is no time of day.
bool hasSoundByChance(const Shoot& shoot, const Shoot::Clip& clip, const CountingFolders& counting);
/// Clip time at which a recording begins, by timecode, once it is attached.
double attachedAt(const Shoot& shoot, const Shoot::Clip& clip, const MediaAsset& recording);

/// The files that a recorder wrote for one take, one for each channel. They are read together, so only the
/// first of them is compared.
class TakeFiles {
  public:
    explicit TakeFiles(const Shoot& shoot);
    const UUID& firstOf(const MediaAsset& recording) const {
        const auto first = firstOf_.find(recording.id);
        return first != firstOf_.end() ? first->second : recording.id;
    }
    bool isFirst(const MediaAsset& recording) const { return firstOf(recording) == recording.id; }

  private:
    std::unordered_map<UUID, UUID> firstOf_;
};

/// The pairs that may belong together, and which of them are analysed.
struct PairsByEar {
    std::vector<PairByEar> heard;               ///< clip by clip
    std::size_t count = 0;                      ///< of all pairs that may belong together
    std::vector<const Shoot::Clip*> clips = {}; ///< clips that have a pair
    bool areLikeliest = false;                  ///< `heard` was limited by the order of names alone
};

/// For clips whose timecode is no time of day, all recordings; for the other clips, the recordings for which
/// that is true. If these pairs are too many, only those that ran at about the time of the clip's date; the
/// likeliest ones if there are none, or still too many. For clips with sound by chance, the recordings that
/// ran at about the time of their dates, unless all together are too many.
PairsByEar pairsByEar(const Shoot& shoot);

/// For cameras whose timecode gives several clips no sound, recordings within minutes, which other clips may
/// have: the clock of such a camera may have been wrong, or set in the middle of its card.
std::vector<PairByEar> pairsWithinMinutes(const Shoot& shoot);

} // namespace orvane
