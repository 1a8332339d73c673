#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace orvane {

/// The recording of an ambiguous clip, or of several that overlap a settled clip equally, that the clip's
/// camera heard at its place; as the number of its match. Absent if the camera heard none of them, or two
/// with different places.
std::optional<std::size_t> heardAmong(const Shoot& shoot, const Shoot::Clip& clip);
/// A recording of the clip, where timecode places it. A clip that is too short for a search is compared at
/// that place alone.
SoundClaim claimInPlace(const Shoot::Clip& clip, const AudioMatch& match);
/// Whether the clip's camera heard this recording of the clip where timecode places it.
bool isHeardInPlace(const Shoot& shoot, const Shoot::Clip& clip, const AudioMatch& match);
/// The same, or as the clip's own sound, within `inPlaceSeconds`.
bool isRecordingHeard(const Shoot& shoot, const Shoot::Clip& clip, const AudioMatch& match);
/// The suggestion to choose the recording of that match, by number. The others stay beside it, unless a
/// microphone found one of them elsewhere than in its place, or did not find it and found none of its folder
/// in place.
SyncDoubt::Suggestion suggestionToChoose(const Shoot& shoot, const Shoot::Clip& clip, std::size_t match);
/// For a recording that was attached manually and has no common timecode with the clip: the clip time at
/// which the camera heard it begin.
std::optional<double> heardAttached(const Shoot& shoot, const Shoot::Clip& clip);
/// Adds the claims that `heardAmong` and `heardAttached` need and that were not analysed, for as many clips
/// as can be analysed in seconds.
void addClipClaims(const Shoot& shoot, std::vector<SoundClaim>& toHear);
/// The same for the recordings of clips whose day is in doubt, as files of several days are mixed.
void addDayClaims(const Shoot& shoot, SyncDoubts& doubts, std::vector<SoundClaim>& toHear);
/// Adds the claims about clocks that the cameras' microphones can decide and that were not analysed, and the
/// doubts about clocks.
void addClockClaims(const Shoot& shoot, SyncDoubts& doubts, std::vector<SoundClaim>& toHear);
/// The same for a given offset, of clips without a doubt in `doubts`, which has those about clocks.
void addStatedPlaceClaims(const Shoot& shoot, SyncDoubts& doubts, std::vector<SoundClaim>& toHear);
/// The claim for a clip and a recording that have no common timecode.
SoundClaim claimByEar(const UUID& clip, const UUID& recording);
/// Adds the recordings that clips without sound may have although no timecode leads to them, if they are few.
void addClaimsByEar(const Shoot& shoot, std::vector<SoundClaim>& toHear);
/// Adds long recordings that no clip has, for some of the clips that have other sound.
void addLoneClaims(const Shoot& shoot, std::vector<SoundClaim>& toHear);

/// Seconds. The shortest sound of a camera that is compared near a known place, and how far from there.
inline constexpr double leastCloseSeconds = 4, closeReachSeconds = 2;

/// How far from its place sound without a common timecode is searched for, seconds. In a longer range, other
/// sound is similar by chance.
inline constexpr double furthestAttachedSeconds = 600;

} // namespace orvane
