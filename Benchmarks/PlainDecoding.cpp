#include "PlainDecoding.h"

#include <limits>
#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace orvane::bench {

struct PlainDecoding::State {
    AVFormatContext* file = nullptr;
    AVCodecContext* decoder = nullptr;
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    AVStream* stream = nullptr;

    ~State() {
        av_frame_free(&frame);
        av_packet_free(&packet);
        avcodec_free_context(&decoder);
        avformat_close_input(&file);
    }
    /// Number of pictures until that time in stream units is reached or the file has ended.
    int decode(std::int64_t until) {
        int pictures = 0;
        bool hasMore = true;
        while (true) {
            while (avcodec_receive_frame(decoder, frame) >= 0) {
                ++pictures;
                if (frame->best_effort_timestamp >= until) return pictures;
            }
            if (!hasMore) return pictures;
            hasMore = av_read_frame(file, packet) >= 0;
            if (!hasMore)
                avcodec_send_packet(decoder, nullptr);
            else if (packet->stream_index == stream->index)
                avcodec_send_packet(decoder, packet);
            av_packet_unref(packet);
        }
    }
};

PlainDecoding::PlainDecoding(const std::string& path) : state_(std::make_unique<State>()) {
    const AVCodec* codec = nullptr;
    const int index = avformat_open_input(&state_->file, path.c_str(), nullptr, nullptr) < 0
                          ? -1
                          : av_find_best_stream(state_->file, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (index < 0) throw std::runtime_error("no video in " + path);
    for (unsigned i = 0; i < state_->file->nb_streams; ++i)
        if (static_cast<int>(i) != index) state_->file->streams[i]->discard = AVDISCARD_ALL;
    state_->stream = state_->file->streams[index];
    state_->decoder = avcodec_alloc_context3(codec);
    avcodec_parameters_to_context(state_->decoder, state_->stream->codecpar);
    state_->decoder->thread_count = 1;
    if (avcodec_open2(state_->decoder, codec, nullptr) < 0)
        throw std::runtime_error("no decoder for " + path);
}
PlainDecoding::~PlainDecoding() = default;

void PlainDecoding::seekTo(double seconds) {
    const auto target = static_cast<std::int64_t>(seconds / av_q2d(state_->stream->time_base));
    av_seek_frame(state_->file, state_->stream->index, target, AVSEEK_FLAG_BACKWARD);
    avcodec_flush_buffers(state_->decoder);
    state_->decode(target);
}

void PlainDecoding::decodeNext() { state_->decode(std::numeric_limits<std::int64_t>::min()); }

int PlainDecoding::decodeRest() { return state_->decode(std::numeric_limits<std::int64_t>::max()); }

} // namespace orvane::bench
