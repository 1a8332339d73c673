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

/// Memory for pictures that is reused when no picture uses it, as touching new memory costs more than
/// copying. Memory that is not reused returns to the system at once. Any thread.
class PixelStore {
  public:
    static std::shared_ptr<PixelStore> create() { return std::make_shared<PixelStore>(); }
    std::shared_ptr<std::uint8_t[]> get(const std::shared_ptr<PixelStore>& self, std::size_t bytes);

  private:
    /// Pages of its own: the allocator would keep the memory that many players used at the same time.
    struct Unmap {
        std::size_t bytes = 0;
        void operator()(std::uint8_t* memory) const;
    };
    using Block = std::unique_ptr<std::uint8_t[], Unmap>;
    static Block map(std::size_t bytes);

    std::mutex mutex_;
    std::size_t blockBytes_ = 0; ///< of the kept blocks
    std::vector<Block> free_;
};

/// Decodes the pictures of one file in a helper process of its own, in sequence or at any place. One thread
/// at a time, never the interface thread. When the process ends over the file, or is killed, the next query
/// starts another one, so that one bad picture does not lose the others. A file over which too many have
/// ended gives no further picture.
class VideoDecoder {
  public:
    enum class Outcome { picture, end, nothing };
    struct Result {
        Outcome outcome = Outcome::nothing;
        std::optional<Picture> picture;
        bool isLast = false; ///< the file ends after it, as decoding has shown
    };

    /// Null when no picture of the file can be decoded.
    static std::unique_ptr<VideoDecoder> open(const std::string& path);
    ~VideoDecoder();

    const VideoFacts& facts() const { return facts_; }
    /// As FrameReader::pictureAt. Throws Stopped, as all queries do.
    Result at(MediaTime time, MediaTime tolerance, PictureSize limit, const std::stop_token& stop);
    /// The newest key picture at or before `time`.
    Result keyAt(MediaTime time, PictureSize limit, const std::stop_token& stop);
    /// The newest key picture before `until`, if it is not before `earliest`; else the picture at `earliest`.
    Result groupBefore(MediaTime earliest, MediaTime until, PictureSize limit, const std::stop_token& stop);
    /// The picture after the last one that was returned; the first at the beginning. Skips pictures over
    /// which processes end, in longer and longer steps.
    Result next(PictureSize limit, const std::stop_token& stop);

  private:
    VideoDecoder(std::string path, std::shared_ptr<helper::Process> process,
                 const helper::VideoStream& stream);
    Result ask(helper::PictureQuery& query, PictureSize limit, const std::stop_token& stop);
    Result resultOf(const helper::PictureAnswer& answer, const std::stop_token& stop);
    bool openAgain(helper::PictureQuery& query);
    void noteEnd();
    MediaTime pictureLength() const;

    const std::string path_;
    std::shared_ptr<helper::Process> process_;
    std::uint32_t handle_;
    int ends_ = 0;      ///< number of processes that ended over this file
    int endsInRow_ = 0; ///< since a picture was returned
    MediaTime behind_;  ///< where the last returned picture ends
    VideoFacts facts_;
    std::shared_ptr<PixelStore> store_ = PixelStore::create();
};

} // namespace orvane::platform
