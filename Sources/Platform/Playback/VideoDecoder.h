#pragma once

#include "Platform/Playback/FrameReader.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane::platform {

namespace helper {
class Process;
struct VideoStream;
struct PictureQuery;
struct PictureAnswer;
} // namespace helper

/// Memory for pictures that is used again once nobody holds a picture, as touching new memory costs more than
/// copying. What is not used again goes back to the system at once. Any thread.
class PixelStore {
  public:
    static std::shared_ptr<PixelStore> create() { return std::make_shared<PixelStore>(); }
    std::shared_ptr<std::uint8_t[]> get(const std::shared_ptr<PixelStore>& self, std::size_t bytes);

  private:
    /// Pages of its own: the allocator would keep what many players had at once.
    struct Unmap {
        std::size_t bytes = 0;
        void operator()(std::uint8_t* memory) const;
    };
    using Block = std::unique_ptr<std::uint8_t[], Unmap>;
    static Block map(std::size_t bytes);

    std::mutex mutex_;
    std::size_t blockBytes_ = 0; ///< of those that are kept
    std::vector<Block> free_;
};

/// Decodes the pictures of one file in a helper process of its own, one after the other or anywhere. One
/// thread at a time, never the interface thread. When the process ends over the file, or is killed,
/// another one takes its place with the next query, so that one bad picture does not cost the others; a file
/// over which too many have ended has no further picture.
class VideoDecoder {
  public:
    enum class Outcome { picture, end, nothing };
    struct Result {
        Outcome outcome = Outcome::nothing;
        std::optional<Picture> picture;
        bool isLast = false; ///< the file ends behind it, as decoding has shown
    };

    /// Null when the file has no picture that can be decoded.
    static std::unique_ptr<VideoDecoder> open(const std::string& path);
    ~VideoDecoder();

    const VideoFacts& facts() const { return facts_; }
    /// As FrameReader::pictureAt. Throws Stopped, as the other two do.
    Result at(MediaTime time, MediaTime tolerance, PictureSize limit, const std::stop_token& stop);
    /// The newest picture at or before `time` that is decoded by itself.
    Result keyAt(MediaTime time, PictureSize limit, const std::stop_token& stop);
    /// The newest picture before `until` that is decoded by itself, if it is not before `earliest`; else the
    /// one at `earliest`.
    Result groupBefore(MediaTime earliest, MediaTime until, PictureSize limit, const std::stop_token& stop);
    /// The picture behind the one that was given last; the first at the beginning. What processes end over is
    /// passed over, in longer and longer steps.
    Result next(PictureSize limit, const std::stop_token& stop);

  private:
    VideoDecoder(std::string path, std::shared_ptr<helper::Process> process,
                 const helper::VideoStream& stream);
    Result ask(helper::PictureQuery& query, PictureSize limit, const std::stop_token& stop);
    Result resultOf(const helper::PictureAnswer& answer, const std::stop_token& stop);
    bool openAnew(helper::PictureQuery& query);
    void noteEnd();
    MediaTime pictureLength() const;

    const std::string path_;
    std::shared_ptr<helper::Process> process_;
    std::uint32_t handle_;
    int ends_ = 0;      ///< of processes, over this file
    int endsInRow_ = 0; ///< since a picture was given
    MediaTime behind_;  ///< where the picture that was given last ends
    VideoFacts facts_;
    std::shared_ptr<PixelStore> store_ = PixelStore::create();
};

} // namespace orvane::platform
