#include "Platform/MediaLibrary/LibavFile.h"

#include <cerrno>
#include <string_view>

namespace orvane::platform {

namespace {

/// Ends reads from a disk that hangs, and of a file that leads the demuxer into a loop.
constexpr std::chrono::seconds longestRead{10};

constexpr int inputBufferBytes = 32768;

constexpr const char* containers =
    "mov,mp4,mxf,aiff,wav,w64,caf,matroska,webm,avi,mpegts,mpeg,dv,gxf,asf,flac,ogg";
/// Other data may look like MPEG audio somewhere, so this format is accepted only if the file begins with it.
constexpr const char* containersAndMPEGAudio =
    "mov,mp4,mxf,aiff,wav,w64,caf,matroska,webm,avi,mpegts,mpeg,dv,gxf,asf,flac,ogg,mp3";
constexpr const char* mostProbed =
    "131072"; ///< bytes for recognising the container; an MXF may begin with 64 KB of other data
constexpr const char* mostAnalyzed = "2000000";    ///< bytes of media data
constexpr const char* longestAnalysis = "1000000"; ///< microseconds of media

struct Options {
    AVDictionary* dictionary = nullptr;
    Options() = default;
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;
    ~Options() { av_dict_free(&dictionary); }
};

} // namespace

void silenceLibav() {
    av_log_set_callback([](void*, int, const char*, va_list) {});
}

bool isPictureStream(const AVStream& stream) {
    constexpr int still =
        AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS | AV_DISPOSITION_STILL_IMAGE;
    return stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && (stream.disposition & still) == 0;
}

std::optional<LibavFile> LibavFile::open(const std::string& path, bool& ranOut) {
    LibavFile file;
    file.source_ = std::make_unique<Source>();
    file.source_->file = FileInput::open(path);
    if (!file.source_->file) return std::nullopt;
    file.extendDeadline();

    auto* buffer = static_cast<unsigned char*>(av_malloc(inputBufferBytes));
    file.input_.reset(
        avio_alloc_context(buffer, inputBufferBytes, 0, file.source_.get(), readPacket, nullptr, seek));
    if (!file.input_) av_free(buffer);
    AVFormatContext* context = file.input_ ? avformat_alloc_context() : nullptr;
    if (context == nullptr) {
        ranOut = true;
        return std::nullopt;
    }
    context->pb = file.input_.get();
    context->interrupt_callback.opaque = &file.source_->watch;
    context->interrupt_callback.callback = [](void* watch) {
        return static_cast<Watch*>(watch)->isLate() ? 1 : 0;
    };
    const bool mayBeMPEGAudio = file.source_->file->beginsAsMPEGAudio();
    Options options;
    for (const auto& [key, value] :
         {std::pair{"protocol_whitelist", "file"},
          {"format_whitelist", mayBeMPEGAudio ? containersAndMPEGAudio : containers},
          {"formatprobesize", mostProbed},
          {"probesize", mostAnalyzed},
          {"analyzeduration", longestAnalysis}})
        av_dict_set(&options.dictionary, key, value, 0);
    // The scheme keeps a path with a colon from being read as one. On failure the context is freed.
    const std::string url = "file:" + path;
    const int result = avformat_open_input(&context, url.c_str(), nullptr, &options.dictionary);
    if (result < 0) {
        ranOut = file.ranOutOfTime() || result == AVERROR(ENOMEM);
        return std::nullopt;
    }
    file.context_.reset(context);
    return file;
}

bool LibavFile::Watch::isLate() {
    const bool isLate = Clock::now() > deadline;
    hasFired = hasFired || isLate;
    return isLate;
}

void LibavFile::CloseInput::operator()(AVIOContext* input) const {
    av_freep(static_cast<void*>(&input->buffer)); // the library may have replaced it by another one
    avio_context_free(&input);
}

int LibavFile::readPacket(void* opaque, std::uint8_t* into, int size) noexcept {
    auto& source = *static_cast<Source*>(opaque);
    if (source.watch.isLate()) return AVERROR_EXIT;
    const auto count = source.file->read(into, static_cast<std::size_t>(size));
    if (count < 0) return AVERROR(EIO);
    return count == 0 ? AVERROR_EOF : static_cast<int>(count);
}

std::int64_t LibavFile::seek(void* opaque, std::int64_t offset, int whence) noexcept {
    FileInput& file = *static_cast<Source*>(opaque)->file;
    const std::int64_t position = whence == AVSEEK_SIZE ? file.size() : file.seek(offset, whence);
    return position < 0 ? AVERROR(EINVAL) : position;
}

void LibavFile::findStreamInfo() {
    extendDeadline();
    avformat_find_stream_info(context_.get(), nullptr);
}

void LibavFile::extendDeadline() { source_->watch.deadline = Clock::now() + longestRead; }

bool LibavFile::isMovie() const { return std::string_view(context_->iformat->name).starts_with("mov,"); }

} // namespace orvane::platform
