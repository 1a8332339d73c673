#pragma once

#include "Platform/MediaLibrary/FileInput.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

extern "C" {
#include <libavformat/avformat.h>
}

namespace orvane::platform {

/// libav writes no word to the terminal from here on.
void silenceLibav();

/// A stream of moving pictures, rather than the cover of an album or a thumbnail.
bool isPictureStream(const AVStream& stream);

/// A file opened by libavformat: local files only, containers only (a playlist could name other files), a
/// bounded look at it, and an end to every read that takes too long.
class LibavFile {
  public:
    /// Nothing when no demuxer can read it; `ranOut` is set when there was no time or memory to find out.
    static std::optional<LibavFile> open(const std::string& path, bool& ranOut);

    AVFormatContext* get() const { return context_.get(); }
    AVFormatContext* operator->() const { return context_.get(); }
    /// Looks into the media data for what the headers leave open.
    void findStreamInfo();
    /// Gives the next reads their full time again.
    void extendDeadline();
    /// A read was given up because it took too long.
    bool ranOutOfTime() const { return source_->watch.hasFired; }
    /// Bytes, as of the moment; -1 when the system does not say.
    std::int64_t size() const { return source_->file->size(); }
    /// The demuxer for QuickTime and MP4 has opened it.
    bool isMovie() const;

  private:
    using Clock = std::chrono::steady_clock;
    struct Close {
        void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
    };
    struct Watch {
        Clock::time_point deadline;
        bool hasFired = false;
        bool isLate();
    };
    /// What libavformat reads through.
    struct Source {
        std::unique_ptr<FileInput> file;
        Watch watch;
    };
    struct CloseInput {
        void operator()(AVIOContext* input) const;
    };
    LibavFile() = default;
    static int readPacket(void* source, std::uint8_t* into, int size) noexcept;
    static std::int64_t seek(void* source, std::int64_t offset, int whence) noexcept;

    // Each keeps a pointer to the one above and goes first.
    std::unique_ptr<Source> source_;
    std::unique_ptr<AVIOContext, CloseInput> input_;
    std::unique_ptr<AVFormatContext, Close> context_;
};

} // namespace orvane::platform
