#include "Platform/MediaLibrary/LibavFile.h"
#include "Platform/MediaLibrary/LibavOwned.h"
#include "Platform/MediaLibrary/LibraryReaders.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <cmath>
#include <vector>

namespace orvane::platform {

namespace {

struct FreeConverter {
    void operator()(SwrContext* context) const { swr_free(&context); }
};

/// Most consecutive packets without sound, before a file counts as ended.
constexpr int mostSilentPackets = 10000;

/// Seconds before a requested frame at which decoding starts: a packet of most codecs overlaps its
/// neighbours.
constexpr double preroll = 0.25;

class LibavAudio : public AudioFile {
  public:
    /// `silence`: frames of silence before the stream.
    LibavAudio(LibavFile file, AVStream& stream, LibavOwned<AVCodecContext> decoder, std::int64_t silence)
        : file_(std::move(file)), stream_(stream), decoder_(std::move(decoder)), packet_(av_packet_alloc()),
          frame_(av_frame_alloc()), sampleRate_(decoder_->sample_rate),
          pending_(static_cast<std::size_t>(decoder_->ch_layout.nb_channels)), silence_(silence),
          silenceLeft_(silence) {}

    double sampleRate() const override { return sampleRate_; }
    int channelCount() const override { return static_cast<int>(pending_.size()); }
    std::int64_t frameCount() const override {
        if (stream_.duration > 0) return silence_ + samples(stream_.duration);
        return file_->duration > 0 ? av_rescale(file_->duration, sampleRate_, AV_TIME_BASE) : 0;
    }

    bool seek(std::int64_t frame) override {
        if (frame < 0 || frame > frameCount()) return false;
        silenceLeft_ = std::max<std::int64_t>(silence_ - frame, 0);
        frame = std::max<std::int64_t>(frame - silence_, 0);
        const auto early = static_cast<std::int64_t>(preroll * sampleRate_);
        // Also to before the start: the packet that only primes the decoder is there.
        if (!seekPacket(frame - early) && !seekPacket(0)) return false;
        avcodec_flush_buffers(decoder_.get());
        dropPending();
        converter_.reset(); // it may keep sound from the old position
        hasEnded_ = false;
        // The decoder starts at a packet before the frame; frames before the requested one are discarded.
        wanted_ = frame;
        return true;
    }

    std::size_t read(std::span<float* const> channels, std::size_t frames) override {
        file_.extendDeadline();
        std::size_t done = std::min(frames, static_cast<std::size_t>(silenceLeft_));
        for (float* const channel : channels) std::fill_n(channel, done, 0.0F);
        silenceLeft_ -= static_cast<std::int64_t>(done);
        while (done < frames) {
            const std::size_t ready = pending_.front().size() - pendingAt_;
            if (ready == 0) {
                if (!decodeMore()) break;
                continue;
            }
            const std::size_t some = std::min(ready, frames - done);
            for (std::size_t channel = 0; channel < std::min(channels.size(), pending_.size()); ++channel)
                std::copy_n(pending_[channel].data() + pendingAt_, some, channels[channel] + done);
            pendingAt_ += some;
            done += some;
        }
        return done;
    }

  private:
    AVRational sampleTime() const { return {1, sampleRate_}; }
    std::int64_t samples(std::int64_t units) const {
        return av_rescale_q(units, stream_.time_base, sampleTime());
    }
    std::int64_t origin() const { return stream_.start_time == AV_NOPTS_VALUE ? 0 : stream_.start_time; }

    bool seekPacket(std::int64_t frame) {
        file_.extendDeadline();
        const std::int64_t target = origin() + av_rescale_q(frame, sampleTime(), stream_.time_base);
        return av_seek_frame(file_.get(), stream_.index, target, AVSEEK_FLAG_BACKWARD) >= 0;
    }

    void dropPending() {
        for (auto& channel : pending_) channel.clear();
        pendingAt_ = 0;
    }

    /// Decodes until samples are pending; false at the end.
    bool decodeMore() {
        dropPending();
        for (int silent = 0; silent < mostSilentPackets && !hasEnded_; ++silent) {
            while (avcodec_receive_frame(decoder_.get(), frame_.get()) >= 0) {
                take(*frame_);
                av_frame_unref(frame_.get());
                if (!pending_.front().empty()) return true;
            }
            feed();
        }
        return false;
    }

    /// Passes the next packet to the decoder. A packet that it refuses is skipped.
    void feed() {
        while (av_read_frame(file_.get(), packet_.get()) >= 0) {
            const bool isOurs = packet_->stream_index == stream_.index;
            if (isOurs) avcodec_send_packet(decoder_.get(), packet_.get());
            av_packet_unref(packet_.get());
            if (isOurs) return;
        }
        if (avcodec_send_packet(decoder_.get(), nullptr) < 0) hasEnded_ = true; // it was already drained
    }

    /// A frame may have another sample format, layout or rate than the first. One with another number of
    /// channels ends the file.
    void take(AVFrame& frame) {
        if (frame.nb_samples <= 0) return;
        if (frame.ch_layout.nb_channels != channelCount()) {
            hasEnded_ = true;
            return;
        }
        if ((!converter_ || !converted_.isOf(frame)) && !makeConverter(frame)) return;
        const int most = swr_get_out_samples(converter_.get(), frame.nb_samples);
        std::vector<std::uint8_t*> planes;
        for (auto& channel : pending_) {
            channel.resize(static_cast<std::size_t>(std::max(most, 0)));
            planes.push_back(reinterpret_cast<std::uint8_t*>(channel.data()));
        }
        // The cast adds const, which C++ does not convert implicitly behind two pointers.
        const int got = swr_convert(converter_.get(), planes.data(), most,
                                    const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples);
        for (auto& channel : pending_) channel.resize(static_cast<std::size_t>(std::max(got, 0)));
        skipToWanted(frame);
    }

    void skipToWanted(const AVFrame& frame) {
        if (wanted_ < 0) return;
        const std::int64_t at = frame.best_effort_timestamp == AV_NOPTS_VALUE
                                    ? wanted_
                                    : samples(frame.best_effort_timestamp - origin());
        const std::int64_t length = static_cast<std::int64_t>(pending_.front().size());
        const std::int64_t skip = std::clamp<std::int64_t>(wanted_ - at, 0, length);
        pendingAt_ = static_cast<std::size_t>(skip);
        if (skip == length)
            dropPending();
        else
            wanted_ = -1;
    }

    bool makeConverter(AVFrame& frame) {
        SwrContext* made = nullptr;
        converter_.reset();
        if (swr_alloc_set_opts2(&made, &frame.ch_layout, AV_SAMPLE_FMT_FLTP, sampleRate_, &frame.ch_layout,
                                static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr) < 0)
            return false;
        std::unique_ptr<SwrContext, FreeConverter> owned(made);
        if (swr_init(made) < 0 || av_channel_layout_copy(&converted_.layout, &frame.ch_layout) < 0)
            return false;
        converted_.format = frame.format;
        converted_.sampleRate = frame.sample_rate;
        converter_ = std::move(owned);
        return true;
    }

    /// The form of frames that the converter accepts.
    struct FrameKind {
        int format = AV_SAMPLE_FMT_NONE;
        int sampleRate = 0;
        AVChannelLayout layout{};

        FrameKind() = default;
        FrameKind(const FrameKind&) = delete;
        FrameKind& operator=(const FrameKind&) = delete;
        ~FrameKind() { av_channel_layout_uninit(&layout); }
        bool isOf(const AVFrame& frame) const {
            return format == frame.format && sampleRate == frame.sample_rate &&
                   av_channel_layout_compare(&layout, &frame.ch_layout) == 0;
        }
    };

    LibavFile file_;
    AVStream& stream_;
    LibavOwned<AVCodecContext> decoder_;
    LibavOwned<AVPacket> packet_;
    LibavOwned<AVFrame> frame_;
    const int sampleRate_; ///< Hz; the decoder's value may change with every frame
    std::unique_ptr<SwrContext, FreeConverter> converter_;
    FrameKind converted_;
    std::vector<std::vector<float>> pending_; ///< decoded and not yet returned, one array for each channel
    std::size_t pendingAt_ = 0;
    std::int64_t wanted_ = -1;   ///< the frame to continue at after a seek; -1 when there is nothing to skip
    const std::int64_t silence_; ///< frames in total
    std::int64_t silenceLeft_;   ///< those of them before the next read
    bool hasEnded_ = false;
};

/// The sound stream of that number; a negative number means the one that players choose. Silence precedes it.
std::unique_ptr<AudioFile> openStream(LibavFile file, int wanted, double secondsOfSilence) {
    const AVCodec* codec = nullptr;
    const int index = av_find_best_stream(file.get(), AVMEDIA_TYPE_AUDIO, wanted, -1, &codec, 0);
    if (index < 0 || codec == nullptr) return nullptr;
    // The other streams are not read; the picture is by far the largest of them.
    for (unsigned i = 0; i < file->nb_streams; ++i)
        if (i != static_cast<unsigned>(index)) file->streams[i]->discard = AVDISCARD_ALL;
    AVStream& stream = *file->streams[index];
    LibavOwned<AVCodecContext> decoder(avcodec_alloc_context3(codec));
    if (!decoder || avcodec_parameters_to_context(decoder.get(), stream.codecpar) < 0) return nullptr;
    decoder->pkt_timebase = stream.time_base;
    if (avcodec_open2(decoder.get(), codec, nullptr) < 0) return nullptr;
    if (decoder->ch_layout.nb_channels <= 0 || decoder->sample_rate <= 0) return nullptr;
    const std::int64_t silence = std::llround(secondsOfSilence * decoder->sample_rate);
    return std::make_unique<LibavAudio>(std::move(file), stream, std::move(decoder), silence);
}

double startSeconds(const AVStream& stream) {
    return stream.start_time == AV_NOPTS_VALUE
               ? 0
               : av_q2d(stream.time_base) * static_cast<double>(stream.start_time);
}

/// How much later the stream begins than the first picture or sound of the file: an edit list may delay a
/// track. A file that is cut out of a longer stream begins with its first sample.
double delaySeconds(const LibavFile& file, int index) {
    constexpr double most = 86400;
    double first = most;
    for (unsigned i = 0; i < file->nb_streams; ++i) {
        const AVMediaType type = file->streams[i]->codecpar->codec_type;
        if (type == AVMEDIA_TYPE_AUDIO || type == AVMEDIA_TYPE_VIDEO)
            first = std::min(first, startSeconds(*file->streams[i]));
    }
    const double delay = startSeconds(*file->streams[index]) - std::max(first, 0.0);
    return delay < most ? std::max(delay, 0.0) : 0;
}

/// The header of a movie states when its pictures begin. Decoding the first ones to find that out would take
/// longer than everything else.
void passOverPictures(LibavFile& file) {
    if (!file.isMovie()) return;
    for (unsigned i = 0; i < file->nb_streams; ++i) {
        AVStream& stream = *file->streams[i];
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && stream.nb_frames > 0 &&
            stream.start_time != AV_NOPTS_VALUE)
            stream.discard = AVDISCARD_ALL;
    }
}

std::optional<LibavFile> openFile(const std::string& path) {
    bool ranOut = false;
    auto file = LibavFile::open(path, ranOut);
    if (!file) return file;
    passOverPictures(*file);
    file->findStreamInfo();
    return file;
}

std::vector<int> soundStreams(const LibavFile& file) {
    std::vector<int> indices;
    for (unsigned i = 0; i < file->nb_streams; ++i)
        if (file->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
            indices.push_back(static_cast<int>(i));
    return indices;
}

} // namespace

std::unique_ptr<AudioFile> openWithLibav(const std::string& path) {
    auto file = openFile(path);
    return file ? openStream(std::move(*file), -1, 0) : nullptr;
}

std::vector<std::unique_ptr<AudioFile>> openTracksWithLibav(const std::string& path) {
    std::vector<std::unique_ptr<AudioFile>> tracks;
    auto file = openFile(path);
    if (!file) return tracks;
    // A movie that states thousands of tracks would be opened as often.
    constexpr std::size_t most = 32;
    for (const int index : soundStreams(*file)) {
        if (tracks.size() == most) break;
        if (!file) file = openFile(path);
        if (!file) break;
        const double delay = delaySeconds(*file, index);
        if (auto track = openStream(std::move(*file), index, delay)) tracks.push_back(std::move(track));
        file.reset();
    }
    return tracks;
}

} // namespace orvane::platform
