#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"
#include "Support/Test.h"

namespace orvane::test {

using SmartAudioBlockRouter::PerWindowFrame;
using SmartAudioBlockRouter::WindowMetrics;

inline constexpr double window = smartAudioWindowSeconds;
inline constexpr double silent = -200; ///< dBFS of a stretch without sound
inline constexpr double speechGateDB = -50;

/// A level that a track has for a number of seconds.
struct Level {
    double seconds;
    double rmsDB;
    double crestDB = 6;
};
using Pattern = std::vector<Level>;

inline float linear(double dB) { return dB <= silent ? 0.0F : static_cast<float>(std::pow(10, dB / 20)); }

inline WindowMetrics metrics(int track, double rmsDB, double crestDB = 6) {
    return {track, linear(rmsDB), rmsDB <= silent ? 0.0F : linear(rmsDB + crestDB), rmsDB > speechGateDB, 0};
}

/// The frames of a take: pattern n is track n + 1. Shorter patterns end earlier.
inline std::vector<PerWindowFrame> take(const std::vector<Pattern>& tracks) {
    std::vector<PerWindowFrame> frames;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        std::size_t at = 0;
        for (const Level& level : tracks[i])
            for (long n = std::lround(level.seconds / window); n > 0; --n, ++at) {
                if (at == frames.size()) frames.push_back({static_cast<int>(at), {}});
                frames[at].perChannel.push_back(metrics(static_cast<int>(i) + 1, level.rmsDB, level.crestDB));
            }
    }
    return frames;
}

inline ChannelClassification classified(int track, ChannelKind kind, std::string source = "iXML: track",
                                        const std::string& speaker = {}) {
    ChannelClassification c;
    c.trackIndex = track;
    c.kind = kind;
    c.confidence = 0.95F;
    c.source = std::move(source);
    if (!speaker.empty()) c.speakerName = speaker;
    return c;
}

inline BlockDecision block(double start, double end, int track, BlockKind kind, std::string reason = "r",
                           double peakDB = -20) {
    return {start, end, track, std::nullopt, kind, 1.0, peakDB, std::move(reason)};
}

/// The blocks as text, such as "0-4 T1 mix | 4-6.5 T2 lav".
inline std::string listed(const std::vector<BlockDecision>& blocks) {
    const auto number = [](double value) {
        std::string text = std::to_string(value);
        text.erase(text.find_last_not_of('0') + 1);
        if (text.ends_with('.')) text.pop_back();
        return text;
    };
    std::string text;
    for (const BlockDecision& b : blocks) {
        if (!text.empty()) text += " | ";
        text += number(b.startSeconds) + "-" + number(b.endSeconds) + " T" + std::to_string(b.activeTrack);
        if (b.secondaryTrack) text += "+" + std::to_string(*b.secondaryTrack);
        text += " " + std::string(rawValue(b.kind));
    }
    return text;
}

} // namespace orvane::test
