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

/// Keeps libav from printing to the terminal.
void silenceLibav();

/// A stream of moving pictures; false for an album cover or a thumbnail.
bool isPictureStream(const AVStream& stream);

/// A file opened by libavformat: local files only, containers only (a playlist could name other files), with
/// a limited probe, and a time limit for every read.
class LibavFile {
  public:
    /// Nothing when no demuxer can read it; `ranOut` is set when time or memory did not suffice to find out.
    static std::optional<LibavFile> open(const std::string& path, bool& ranOut);

    AVFormatContext* get() const { return context_.get(); }
    AVFormatContext* operator->() const { return context_.get(); }
    /// Reads media data to find what the headers do not state.
    void findStreamInfo();
    /// Restarts the time limit for the next reads.
    void extendDeadline();
    /// A read was ended because it took too long.
    bool ranOutOfTime() const { return source_->watch.hasFired; }
    /// Bytes, at this moment; -1 when the system does not report it.
    std::int64_t size() const { return source_->file->size(); }
    /// It was opened by the demuxer for QuickTime and MP4.
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

    // Each keeps a pointer to the one above and is destroyed first.
    std::unique_ptr<Source> source_;
    std::unique_ptr<AVIOContext, CloseInput> input_;
    std::unique_ptr<AVFormatContext, Close> context_;
};

} // namespace orvane::platform
