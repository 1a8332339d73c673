#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace orvane {

/// Of the recordings that overlap an ambiguous clip, or that overlap a settled one alike, the one that its
/// camera heard where it lies, by number of the match. Absent where it heard none of them, or two that do not
/// lie alike.
std::optional<std::size_t> heardAmong(const Shoot& shoot, const Shoot::Clip& clip);
/// Clip time at which the camera heard the recording begin that was attached by hand without a common
/// timecode.
std::optional<double> heardAttached(const Shoot& shoot, const Shoot::Clip& clip);
/// What the two before can be known by, and nobody has listened to: of so many clips as can be heard in
/// seconds.
void addClipClaims(const Shoot& shoot, std::vector<SoundClaim>& toHear);
/// Recordings that clips without sound may have, though no timecode says so, where there are few.
void addClaimsByEar(const Shoot& shoot, std::vector<SoundClaim>& toHear);
/// Long recordings that no clip has, in some clips that have other sound.
void addLoneClaims(const Shoot& shoot, std::vector<SoundClaim>& toHear);

/// How far from its place sound without a common timecode is looked for, seconds: in more minutes, other
/// sound is alike by chance.
inline constexpr double furthestAttachedSeconds = 600;

} // namespace orvane
