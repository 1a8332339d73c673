#include "Platform/Playback/SampleWindow.h"

#include "Platform/VectorOps.h"

#include <algorithm>
#include <cstring>
#include <exception>

namespace orvane::platform {

namespace {

// Frames read at a time. Most compressed files need a seek for each step backward.
constexpr std::size_t forwardFrames = 4096;
constexpr std::size_t reverseFrames = 32768;
// Louder values are errors (full scale is 1), and must not be heard.
constexpr float loudest = 16;

} // namespace

SampleWindow::SampleWindow(std::unique_ptr<AudioFile> file)
    : file_(std::move(file)), sampleRate_(file_->sampleRate()), frameCount_(file_->frameCount()),
      channels_(static_cast<std::size_t>(std::max(file_->channelCount(), 0))), readInto_(channels_.size()),
      given_(channels_.size()) {}

std::span<const float* const> SampleWindow::frames(std::int64_t first, std::size_t count, bool isReverse) {
    const std::int64_t end = first + static_cast<std::int64_t>(count);
    if (first < start_ || end > start_ + static_cast<std::int64_t>(length_)) {
        const std::size_t length = count + (isReverse ? reverseFrames : forwardFrames);
        const std::int64_t start = isReverse ? end - static_cast<std::int64_t>(length) : first;
        // Frames in both windows are moved; the missing ones before and after them are read.
        const std::int64_t keptFirst = std::max(start, start_);
        const std::int64_t keptEnd =
            std::min(start + static_cast<std::int64_t>(length), start_ + static_cast<std::int64_t>(length_));
        const bool isKept = keptEnd > keptFirst;
        const std::int64_t from = isKept ? keptFirst : start;
        const auto kept = static_cast<std::size_t>(isKept ? keptEnd - keptFirst : 0);
        for (auto& channel : channels_) {
            if (channel.size() < length) channel.resize(length);
            if (isKept)
                std::memmove(channel.data() + (from - start), channel.data() + (from - start_),
                             kept * sizeof(float));
        }
        start_ = start;
        length_ = length;
        const auto before = static_cast<std::size_t>(from - start);
        if (before > 0) read(start, before, 0);
        const std::size_t behind = before + kept;
        if (behind < length) read(start + static_cast<std::int64_t>(behind), length - behind, behind);
    }
    for (std::size_t c = 0; c < channels_.size(); ++c) given_[c] = channels_[c].data() + (first - start_);
    return given_;
}

void SampleWindow::read(std::int64_t first, std::size_t count, std::size_t at) {
    for (auto& channel : channels_)
        std::fill_n(channel.begin() + static_cast<std::ptrdiff_t>(at), count, 0.0F);
    if (first < 0) {
        const auto missing = std::min(count, static_cast<std::size_t>(-first));
        first += static_cast<std::int64_t>(missing);
        at += missing;
        count -= missing;
    }
    if (count == 0 || first >= frameCount_) return;
    const std::size_t from = at;
    try {
        if (first != filePosition_ && !file_->seek(first)) {
            filePosition_ = -1;
            return;
        }
        filePosition_ = first;
        while (count > 0) {
            for (std::size_t c = 0; c < channels_.size(); ++c) readInto_[c] = channels_[c].data() + at;
            const std::size_t got = file_->read(readInto_, count);
            if (got == 0) break;
            filePosition_ += static_cast<std::int64_t>(got);
            at += got;
            count -= got;
        }
    } catch (const std::exception&) {
        filePosition_ = -1; // what was read is played, the rest is silent
    }
    for (auto& channel : channels_) {
        const std::span<float> fresh(channel.data() + from, at - from);
        vector::silenceNonFinite(fresh);
        for (float& sample : fresh) sample = std::clamp(sample, -loudest, loudest);
    }
}

} // namespace orvane::platform
