#include "Platform/Playback/SoundRendering.h"

#include "Platform/VectorOps.h"

#include <algorithm>
#include <cmath>

namespace orvane::platform {

namespace {

constexpr double fastestHeard = 2; // magnitude of the rate
constexpr double rateTolerance = 1e-6;
constexpr double fadeFrames = 64; // before the clip's end
// Longer than any output runs, and far from overflow when a place is added.
constexpr std::int64_t endless = std::numeric_limits<std::int64_t>::max() / 4;
// Enough for a tempo change to return its next piece, however much it buffers.
constexpr int mostFeeds = 256;
// Seconds of the output around an attack: longer than the tempo change moves it, and than the clap itself.
constexpr double beforeAttackSeconds = 0.01, behindAttackSeconds = 0.016, attackFadeSeconds = 0.002;

bool isNear(double a, double b) { return std::abs(a - b) < rateTolerance; }

} // namespace

SoundRendering::SoundRendering(std::unique_ptr<AudioFile> file, double outputRate,
                               MakeTempoChange makeTempoChange)
    : window_(std::move(file)), outputRate_(outputRate), makeTempoChange_(std::move(makeTempoChange)),
      attacks_(window_.sampleRate()) {}

double SoundRendering::clipSecondsAt(std::int64_t outputFrame) const {
    const SoundTransport& transport = plan_.transport;
    return transport.clipSeconds +
           transport.rate * static_cast<double>(outputFrame - transport.outputFrame) / outputRate_;
}

double SoundRendering::placeAt(std::int64_t outputFrame) const {
    return (clipSecondsAt(outputFrame) - plan_.offsetSeconds) * window_.sampleRate();
}

void SoundRendering::begin(const SoundPlan& plan, std::int64_t outputFrame) {
    if (&plan != &plan_) plan_ = plan;
    position_ = outputFrame;
    const SoundTransport& transport = plan.transport;
    const double speed = std::abs(transport.rate);
    isReverse_ = transport.rate < 0;
    tempo_ = nullptr;
    if (speed == 0 || speed > fastestHeard + rateTolerance || window_.channelCount() == 0) return;
    const bool isPitchKept = transport.pitch != PitchAlgorithm::varispeed && !isNear(speed, 1);
    if (isPitchKept && makeTempoChange_)
        tempo_ = makeTempoChange_({outputRate_, speed, transport.pitch == PitchAlgorithm::timeDomain});
    step_ = window_.sampleRate() / outputRate_ * (tempo_ ? 1 : speed);
    if (!isNear(step_, 1) && (!resampler_ || !isNear(resampler_->step(), step_))) resampler_.emplace(step_);
    feedPlace_ = placeAt(outputFrame);
}

bool SoundRendering::isPast(std::int64_t outputFrame) const {
    const double clip = clipSecondsAt(outputFrame);
    const double place = placeAt(outputFrame);
    const double reach = resampler_ ? static_cast<double>(resampler_->reach()) : 0;
    if (isReverse_) return clip < 0 || place < -reach;
    return clip >= plan_.endSeconds || place > static_cast<double>(window_.frameCount()) + reach;
}

void SoundRendering::next(SoundBlock& block) {
    const double speed = std::abs(plan_.transport.rate);
    block.firstFrame = position_;
    block.isSilent = speed == 0 || speed > fastestHeard + rateTolerance || window_.channelCount() == 0 ||
                     isPast(position_);
    block.frames = block.isSilent ? endless : std::int64_t{SoundBlock::mostFrames};
    block.levelCount = 0;
    position_ += block.frames;
    if (block.isSilent) return;
    if (tempo_) {
        stretch(block);
        mixInAttacks(block);
    } else {
        sample(placeAt(block.firstFrame), block.left.data(), block.right.data(), SoundBlock::mostFrames);
    }
    fadeOut(block);
    block.levelCount = levelCount_;
    std::copy_n(levels_.begin(), levelCount_, block.levels.begin());
}

void SoundRendering::sample(double place, float* left, float* right, std::size_t count) {
    const std::size_t heard = std::min<std::size_t>(window_.channelCount(), 2);
    const std::array<float*, 2> output{left, right};
    const auto length = static_cast<std::int64_t>(count);
    if (isNear(step_, 1)) {
        const std::int64_t nearest = std::llround(place);
        const std::int64_t first = isReverse_ ? nearest - length + 1 : nearest;
        const auto input = window_.frames(first, count, isReverse_);
        for (std::size_t channel = 0; channel < heard; ++channel) {
            if (isReverse_)
                std::reverse_copy(input[channel], input[channel] + count, output[channel]);
            else
                std::copy_n(input[channel], count, output[channel]);
        }
        measure(first, count);
    } else {
        const double last = place + static_cast<double>(length - 1) * (isReverse_ ? -step_ : step_);
        const auto reach = static_cast<std::int64_t>(resampler_->reach());
        const auto lowest = static_cast<std::int64_t>(std::floor(std::min(place, last)));
        const auto highest = static_cast<std::int64_t>(std::floor(std::max(place, last)));
        const std::int64_t first = lowest - reach;
        const auto input =
            window_.frames(first, static_cast<std::size_t>(highest + reach + 2 - first), isReverse_);
        resampler_->render(input.first(heard), place - static_cast<double>(first), isReverse_,
                           std::span(output).first(heard), count);
        measure(lowest, static_cast<std::size_t>(highest - lowest + 1));
    }
    if (heard == 1) std::copy_n(left, count, right);
}

void SoundRendering::measure(std::int64_t first, std::size_t count) {
    levelCount_ = std::min(window_.channelCount(), SoundBlock::mostChannels);
    const auto input = window_.frames(first, count, isReverse_);
    for (std::size_t channel = 0; channel < levelCount_; ++channel) {
        const std::span<const float> samples(input[channel], count);
        levels_[channel] = {vector::maxMagnitude(samples), vector::rms(samples)};
    }
}

void SoundRendering::stretch(SoundBlock& block) {
    feed_.resize(2 * SoundBlock::mostFrames);
    std::size_t done = 0;
    for (int feeds = 0; done < SoundBlock::mostFrames && feeds < mostFeeds;) {
        // Output frames use the same interleaved array as input frames.
        const std::size_t got = tempo_->take(feed_.data(), SoundBlock::mostFrames - done);
        for (std::size_t i = 0; i < got; ++i) {
            block.left[done + i] = feed_[2 * i];
            block.right[done + i] = feed_[2 * i + 1];
        }
        done += got;
        if (got > 0) continue;
        sample(feedPlace_, feedLeft_.data(), feedRight_.data(), SoundBlock::mostFrames);
        feedPlace_ += static_cast<double>(SoundBlock::mostFrames) * (isReverse_ ? -step_ : step_);
        for (std::size_t i = 0; i < SoundBlock::mostFrames; ++i) {
            feed_[2 * i] = feedLeft_[i];
            feed_[2 * i + 1] = feedRight_[i];
        }
        tempo_->put(feed_.data(), SoundBlock::mostFrames);
        ++feeds;
    }
    std::fill(block.left.begin() + static_cast<std::ptrdiff_t>(done), block.left.end(), 0.0F);
    std::fill(block.right.begin() + static_cast<std::ptrdiff_t>(done), block.right.end(), 0.0F);
}

void SoundRendering::mixInAttacks(SoundBlock& block) {
    const auto around = static_cast<std::int64_t>(behindAttackSeconds * outputRate_);
    double from = placeAt(block.firstFrame - around), to = placeAt(block.firstFrame + block.frames + around);
    if (from > to) std::swap(from, to);
    for (const std::int64_t attack : attacks_.attacks(window_, static_cast<std::int64_t>(std::floor(from)),
                                                      static_cast<std::int64_t>(std::ceil(to)), isReverse_))
        mixInAttack(block, attack);
}

void SoundRendering::mixInAttack(SoundBlock& block, std::int64_t attack) {
    const SoundTransport& transport = plan_.transport;
    const double clip = static_cast<double>(attack) / window_.sampleRate() + plan_.offsetSeconds;
    const std::int64_t middle =
        transport.outputFrame + std::llround((clip - transport.clipSeconds) / transport.rate * outputRate_);
    // In reverse the clap comes before its attack.
    const auto before =
        static_cast<std::int64_t>((isReverse_ ? behindAttackSeconds : beforeAttackSeconds) * outputRate_);
    const auto behind =
        static_cast<std::int64_t>((isReverse_ ? beforeAttackSeconds : behindAttackSeconds) * outputRate_);
    const std::int64_t first = std::max(middle - before, block.firstFrame);
    const std::int64_t end = std::min(middle + behind, block.firstFrame + block.frames);
    if (first >= end) return;
    const double place =
        placeAt(middle) + static_cast<double>(first - middle) * (isReverse_ ? -step_ : step_);
    sample(place, feedLeft_.data(), feedRight_.data(), static_cast<std::size_t>(end - first));
    const double fade = attackFadeSeconds * outputRate_;
    for (std::int64_t frame = first; frame < end; ++frame) {
        const auto inside = static_cast<double>(std::min(frame - (middle - before), middle + behind - frame));
        const auto share = static_cast<float>(std::min(inside / fade, 1.0));
        const auto at = static_cast<std::size_t>(frame - block.firstFrame);
        const auto own = static_cast<std::size_t>(frame - first);
        block.left[at] += share * (feedLeft_[own] - block.left[at]);
        block.right[at] += share * (feedRight_[own] - block.right[at]);
    }
}

void SoundRendering::fadeOut(SoundBlock& block) const {
    // Frames of the output until the clip's end, in the direction of playback.
    const double clip = clipSecondsAt(block.firstFrame);
    const double left =
        (isReverse_ ? clip : plan_.endSeconds - clip) * outputRate_ / std::abs(plan_.transport.rate);
    if (left > fadeFrames + static_cast<double>(SoundBlock::mostFrames)) return;
    for (std::size_t i = 0; i < SoundBlock::mostFrames; ++i) {
        const auto gain =
            static_cast<float>(std::clamp((left - static_cast<double>(i)) / fadeFrames, 0.0, 1.0));
        block.left[i] *= gain;
        block.right[i] *= gain;
    }
}

} // namespace orvane::platform
