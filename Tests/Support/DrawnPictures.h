#pragma once

#include "Platform/Playback/Picture.h"

#include <string>

namespace orvane::test {

/// A picture that ffmpeg draws; source and filters are in ffmpeg's syntax.
platform::Picture drawnPicture(const std::string& source, const std::string& filters);

/// The same, as a video of `seconds` seconds.
void drawVideo(const std::string& path, const std::string& source, const std::string& filters, int seconds);

/// Filters that draw a clapper board into a picture of 1280 by 720: ruled cells with a small label above each
/// value, such as {"SCENE", "12A"}. Colours are ffmpeg's names.
struct DrawnSlate {
    std::string scene = "SCENE", take = "TAKE", director = "DIRECTOR", camera = "CAMERA";
    std::string ink = "black", board = "white";

    std::string filters() const;
};

} // namespace orvane::test
