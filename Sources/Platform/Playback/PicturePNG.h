#pragma once

#include "Platform/PNG.h"
#include "Platform/Playback/Picture.h"

namespace orvane::platform {

/// The picture in the form that the PNG encoder reads; its pixels have to outlive it.
inline ColourPicture colourPicture(const Picture& picture) {
    return {static_cast<std::uint32_t>(picture.size.width),
            static_cast<std::uint32_t>(picture.size.height),
            {picture.pixels.get(), picture.bytes()}};
}

} // namespace orvane::platform
