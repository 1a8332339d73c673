#pragma once

#include "Platform/Playback/Picture.h"

#include <memory>
#include <optional>
#include <stop_token>
#include <string>

namespace orvane::platform {

struct VideoFacts {
    PictureSize size;              ///< upright, with square pixels
    MediaTime duration;            ///< of the clip, edit lists included
    double nominalFrameRate = 0;   ///< pictures per second on average; 0 if unknown
    std::int64_t pictureCount = 0; ///< as far as the file states it; else 0
    bool isIntraOnly = false;      ///< every picture can be decoded by itself
};

/// Reads single pictures of a video file. One thread at a time, never the interface thread: an operation
/// takes as long as decoding does. For a damaged or missing part of a file it returns no picture; only
/// Stopped is thrown.
class FrameReader {
  public:
    /// Null when no picture of the file can be decoded. `path` is in the bytes of the file system.
    static std::unique_ptr<FrameReader> open(const std::string& path);
    virtual ~FrameReader() = default;

    virtual const VideoFacts& facts() const = 0;
    /// A picture whose time is within `tolerance` of the newest one at or before `time`, the quickest one to
    /// decode; with a tolerance of 0 that one itself. Before the first picture it is the first, after the
    /// last the last. No larger than `limit`, where a side of 0 means no limit.
    virtual std::optional<Picture> pictureAt(MediaTime time, MediaTime tolerance, PictureSize limit,
                                             const std::stop_token& stop = {}) = 0;
};

} // namespace orvane::platform
