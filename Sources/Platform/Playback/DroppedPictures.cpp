#include "Platform/Playback/DroppedPictures.h"

#include "Platform/Playback/PictureTrack.h"

#include <algorithm>
#include <cmath>

namespace orvane::platform {

void DroppedPictures::playing(const Picture& picture, MediaTime now, double rate) {
    constexpr double everyPictureUpTo = 2; // at faster rates, an output shows only some of them
    const double speed = std::abs(rate);
    const bool isEachDue = speed <= everyPictureUpTo;
    if (isEachDue && lastPlayed_)
        count_ += std::max<std::int64_t>(std::abs(picture.number - *lastPlayed_) - 1, 0);
    else if (!isEachDue && speed < PictureTrack::keyPicturesFromRate &&
             (now + pictureTimeSlack < picture.time || now > picture.time + picture.duration))
        ++count_;
    lastPlayed_ = picture.number;
}

} // namespace orvane::platform
