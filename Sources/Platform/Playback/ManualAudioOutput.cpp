#include "Platform/Playback/AudioOutput.h"

#include <algorithm>

namespace orvane::platform {

void ManualAudioOutput::pull(float* left, float* right, std::size_t frames) {
    if (renderer_ != nullptr) {
        renderer_->render({left, right, frames, frames_});
    } else {
        std::fill_n(left, frames, 0.0F);
        std::fill_n(right, frames, 0.0F);
    }
    frames_ += static_cast<std::int64_t>(frames);
}

bool ManualAudioOutput::start(AudioRenderer& renderer) {
    renderer_ = &renderer;
    return true;
}

void ManualAudioOutput::stop() { renderer_ = nullptr; }

double ManualAudioOutput::heardFrame() const { return static_cast<double>(frames_); }

} // namespace orvane::platform
