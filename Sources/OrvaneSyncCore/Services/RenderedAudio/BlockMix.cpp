#include "OrvaneSyncCore/Services/RenderedAudio/BlockMix.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

constexpr float clippingStarts = 0.7F;

/// The first frame at or after the time.
std::int64_t frameAt(double seconds, double sampleRate) {
    if (!(seconds > 0)) return 0;
    auto frame = static_cast<std::int64_t>(std::ceil(seconds * sampleRate));
    while (frame > 0 && static_cast<double>(frame - 1) / sampleRate >= seconds) --frame;
    while (static_cast<double>(frame) / sampleRate < seconds) ++frame;
    return frame;
}

/// Longer than any recording, and short enough that frame numbers do not overflow.
constexpr double longestSeconds = 1e9;

/// Valid blocks in order; if several start at the same time, the last one counts.
std::vector<BlockDecision> usable(const std::vector<BlockDecision>& blocks) {
    std::vector<BlockDecision> result;
    for (const BlockDecision& block : blocks) {
        if (!(std::abs(block.startSeconds) < longestSeconds)) continue;
        while (!result.empty() && result.back().startSeconds >= block.startSeconds) result.pop_back();
        result.push_back(block);
    }
    return result;
}

float softClipped(float sample) { return std::abs(sample) < clippingStarts ? sample : std::tanh(sample); }

} // namespace

BlockMix::BlockMix(const std::vector<BlockDecision>& blocks, double rampSeconds, double sampleRate,
                   int channelCount)
    : sampleRate_(sampleRate) {
    const auto voiceOf = [&](const BlockDecision& block) {
        const bool isHeard = block.activeTrack >= 1 && block.activeTrack <= channelCount &&
                             std::isfinite(block.gainMultiplier);
        return isHeard ? Voice{block.activeTrack - 1, block.gainMultiplier} : Voice{};
    };
    const std::vector<BlockDecision> inOrder = usable(blocks);
    if (inOrder.empty()) return;
    voice_ = voiceOf(inOrder.front());
    const auto start = [&](std::size_t i) { return inOrder[i].startSeconds; };
    for (std::size_t i = 1; i < inOrder.size(); ++i) {
        double half = rampSeconds * 0.5;
        if (i > 1) half = std::min(half, (start(i) - start(i - 1)) / 2);
        if (i + 1 < inOrder.size()) half = std::min(half, (start(i + 1) - start(i)) / 2);
        const std::int64_t from =
            std::max(frameAt(start(i) - half, sampleRate), changes_.empty() ? 0 : changes_.back().to);
        changes_.push_back({start(i), half, from, std::max(frameAt(start(i) + half, sampleRate), from),
                            voiceOf(inOrder[i])});
    }
}

int BlockMix::channelsNeeded() const {
    int last = voice_.channel;
    for (const Change& change : changes_) last = std::max(last, change.voice.channel);
    return std::max(last + 1, 1);
}

void BlockMix::mix(std::span<const float* const> channels, std::span<float> out) {
    for (std::size_t at = 0; at < out.size();) {
        const Change* change = next_ < changes_.size() ? &changes_[next_] : nullptr;
        const std::int64_t boundary = change == nullptr       ? frame_ + std::ssize(out)
                                      : frame_ < change->from ? change->from
                                                              : change->to;
        const auto count = static_cast<std::size_t>(
            std::clamp<std::int64_t>(boundary - frame_, 0, static_cast<std::int64_t>(out.size() - at)));
        const auto piece = out.subspan(at, count);
        if (change == nullptr || frame_ < change->from)
            hold(voice_, channels, piece, at);
        else
            cross(voice_, *change, channels, piece, at);
        at += count;
        frame_ += static_cast<std::int64_t>(count);
        if (change != nullptr && frame_ >= change->to) {
            voice_ = change->voice;
            ++next_;
        }
    }
    std::ranges::transform(out, out.begin(), softClipped);
}

void BlockMix::hold(const Voice& voice, std::span<const float* const> channels, std::span<float> out,
                    std::size_t at) const {
    if (voice.channel < 0) {
        std::ranges::fill(out, 0.0F);
        return;
    }
    const float* in = channels[static_cast<std::size_t>(voice.channel)] + at;
    const auto gain = static_cast<float>(voice.gain);
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = in[i] * gain;
}

void BlockMix::cross(const Voice& old, const Change& change, std::span<const float* const> channels,
                     std::span<float> out, std::size_t at) const {
    const auto sample = [&](const Voice& voice, std::size_t i) {
        return voice.channel < 0
                   ? 0.0
                   : voice.gain *
                         static_cast<double>(channels[static_cast<std::size_t>(voice.channel)][at + i]);
    };
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double t = static_cast<double>(frame_ + static_cast<std::int64_t>(i)) / sampleRate_;
        const double u = (t - (change.startSeconds - change.halfRamp)) / (2 * change.halfRamp);
        const double share = u * u * (3 - 2 * u);
        out[i] = static_cast<float>(sample(old, i) * (1 - share) + sample(change.voice, i) * share);
    }
}

} // namespace orvane
