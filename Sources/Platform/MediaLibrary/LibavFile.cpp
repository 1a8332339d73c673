#include "Platform/MediaLibrary/LibavFile.h"

#include <string_view>

namespace orvane::platform {

namespace {

/// For a disk that hangs and a file that leads the demuxer in circles.
constexpr std::chrono::seconds longestRead{10};

constexpr const char* containers =
    "mov,mp4,mxf,aiff,wav,w64,caf,matroska,webm,avi,mpegts,mpeg,dv,gxf,asf,flac,ogg";
constexpr const char* mostProbed =
    "131072"; ///< bytes to tell the container by; an MXF may begin with 64 KB of other things
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

std::optional<LibavFile> LibavFile::open(const std::string& path, bool& hindered) {
    LibavFile file;
    file.watch_ = std::make_unique<Watch>();
    file.extendDeadline();

    AVFormatContext* context = avformat_alloc_context();
    if (context == nullptr) {
        hindered = true;
        return std::nullopt;
    }
    context->interrupt_callback.opaque = file.watch_.get();
    context->interrupt_callback.callback = [](void* opaque) {
        auto& watch = *static_cast<Watch*>(opaque);
        const bool isLate = Clock::now() > watch.deadline;
        watch.hasFired = watch.hasFired || isLate;
        return isLate ? 1 : 0;
    };
    Options options;
    for (const auto& [key, value] : {std::pair{"protocol_whitelist", "file"},
                                     {"format_whitelist", containers},
                                     {"formatprobesize", mostProbed},
                                     {"probesize", mostAnalyzed},
                                     {"analyzeduration", longestAnalysis}})
        av_dict_set(&options.dictionary, key, value, 0);
    // The scheme in front keeps a path with a colon from being taken for one. On failure the context is
    // freed.
    const std::string url = "file:" + path;
    const int result = avformat_open_input(&context, url.c_str(), nullptr, &options.dictionary);
    if (result < 0) {
        hindered = file.ranOutOfTime() || result == AVERROR(ENOMEM);
        return std::nullopt;
    }
    file.context_.reset(context);
    return file;
}

void LibavFile::findStreamInfo() {
    extendDeadline();
    avformat_find_stream_info(context_.get(), nullptr);
}

void LibavFile::extendDeadline() { watch_->deadline = Clock::now() + longestRead; }

bool LibavFile::isMovie() const { return std::string_view(context_->iformat->name).starts_with("mov,"); }

} // namespace orvane::platform
