#pragma once

#include "Platform/MainThread.h"
#include "Platform/Playback/FrameReader.h"

#include <QImage>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>

namespace orvane::views {

/// Small pictures of one video, decoded on a thread of its own and kept until another video is set. Interface
/// thread.
class PictureStrip {
  public:
    /// `decoded` is called when requested pictures are ready.
    PictureStrip(std::shared_ptr<platform::MainThread> mainThread, std::function<void()> decoded);
    ~PictureStrip();

    /// `path` in the bytes of the file system. `height`: pixels of the screen.
    void setVideo(const std::string& path, int height);
    /// The picture at that second, or the nearest one that is decoded; null if there is none yet.
    const QImage* find(double seconds) const { return near(keyOf(seconds)); }
    /// Whether the picture at exactly that second is decoded.
    bool isThere(double seconds) const { return pictures_.contains(keyOf(seconds)); }
    /// Requests visible pictures that are not decoded, in seconds. A picture may be off by the tolerance.
    void want(const std::set<double>& missing, double toleranceSeconds);
    /// Width divided by height of the video's pictures; absent while none is decoded.
    const std::optional<double>& aspect() const { return aspect_; }
    /// The file has no picture that can be decoded.
    bool isUnreadable() const { return isUnreadable_; }
    bool isDecoding() const { return !wanted_.empty(); }

  private:
    struct Reading;
    static std::int64_t keyOf(double seconds); ///< milliseconds
    const QImage* near(std::int64_t key) const;
    void take(std::uint64_t batch, std::int64_t key, const std::optional<platform::Picture>& picture);
    void setUnreadable(std::uint64_t batch);

    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::function<void()> decoded_;
    std::string path_;
    int height_ = 0;
    std::map<std::int64_t, QImage> pictures_;
    std::optional<double> aspect_;
    bool isUnreadable_ = false;
    std::set<std::int64_t> wanted_; ///< being decoded
    std::uint64_t batch_ = 0;
    std::stop_source stop_;
    std::shared_ptr<Reading> reading_; ///< of the open video
    const std::shared_ptr<PictureStrip*> self_;
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane::views
