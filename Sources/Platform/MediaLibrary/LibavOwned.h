#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace orvane::platform {

/// Deleters for what libav frees by functions of its own.
struct LibavFree {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
template <class T>
using LibavOwned = std::unique_ptr<T, LibavFree>;

} // namespace orvane::platform
