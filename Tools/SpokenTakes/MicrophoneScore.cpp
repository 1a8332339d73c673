#include "SpokenTakes/MicrophoneScore.h"

#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"

#include <algorithm>
#include <set>

namespace orvane::test {

namespace {

int trackAt(const std::vector<BlockDecision>& blocks, double seconds) {
    for (const BlockDecision& block : blocks)
        if (block.startSeconds <= seconds && seconds < block.endSeconds) return block.activeTrack;
    return 0;
}

void write(const std::string& path, const SpokenTake& take, std::size_t first, std::size_t count) {
    std::vector<float> interleaved;
    interleaved.reserve(take.tracks.front().size() * count);
    for (std::size_t i = 0; i < take.tracks.front().size(); ++i)
        for (std::size_t track = first; track < first + count; ++track)
            interleaved.push_back(take.tracks[track][i]);
    WaveMaker()
        .format({.channels = static_cast<int>(count),
                 .sampleRate = take.sampleRate,
                 .samples = SampleFormat::float32})
        .samples(interleaved)
        .writeTo(path);
}

} // namespace

MicrophoneScore& MicrophoneScore::operator+=(const MicrophoneScore& other) {
    windows += other.windows;
    right += other.right;
    speakers += other.speakers;
    heard += other.heard;
    return *this;
}

MicrophoneScore scoreOf(const SpokenTake& take, const std::vector<BlockDecision>& blocks) {
    MicrophoneScore score;
    std::set<int> speakers, opened;
    for (const BlockDecision& block : blocks) opened.insert(block.activeTrack);
    for (std::size_t window = 0; window < take.speakersAt.size(); ++window) {
        if (take.speakersAt[window].size() != 1) continue;
        const int lav = take.lavOf[static_cast<std::size_t>(take.speakersAt[window].front())];
        if (lav == 0) continue;
        speakers.insert(lav);
        ++score.windows;
        if (trackAt(blocks, (static_cast<double>(window) + 0.5) * smartAudioWindowSeconds) == lav)
            ++score.right;
    }
    score.speakers = static_cast<int>(speakers.size());
    score.heard =
        static_cast<int>(std::ranges::count_if(speakers, [&](int lav) { return opened.contains(lav); }));
    return score;
}

std::vector<BlockDecision> loudestOfTwoSeconds(const SpokenTake& take) {
    constexpr std::size_t blockSeconds = 2;
    const std::size_t frames = take.tracks.front().size(), length = blockSeconds * take.sampleRate;
    std::vector<BlockDecision> blocks;
    for (std::size_t from = 0; from < frames; from += length) {
        const std::size_t to = std::min(from + length, frames);
        BlockDecision block;
        block.startSeconds = static_cast<double>(from) / take.sampleRate;
        block.endSeconds = static_cast<double>(to) / take.sampleRate;
        block.kind = BlockKind::lav;
        double loudest = -1;
        for (const int lav : take.lavOf) {
            if (lav == 0) continue;
            double energy = 0;
            const auto& track = take.tracks[static_cast<std::size_t>(lav) - 1];
            for (std::size_t i = from; i < to; ++i) energy += double{track[i]} * double{track[i]};
            if (energy <= loudest) continue;
            loudest = energy;
            block.activeTrack = lav;
        }
        blocks.push_back(std::move(block));
    }
    return blocks;
}

SmartAudioResult analysed(const SpokenTake& take, const SmartAudioBlockSettings& settings,
                          const std::string& folder, bool inMonoFiles) {
    SmartAudioRequest request;
    request.channelCount = static_cast<int>(take.tracks.size());
    request.blockSettings = settings;
    for (int track = 1; track <= request.channelCount; ++track)
        request.ixmlTracks.push_back(
            {.channelIndex = track, .name = take.names[static_cast<std::size_t>(track) - 1]});
    const std::size_t each = inMonoFiles ? 1 : take.tracks.size();
    for (std::size_t first = 0; first < take.tracks.size(); first += each) {
        const std::string path = folder + "/take_" + std::to_string(first + 1) + ".wav";
        write(path, take, first, each);
        request.sound.files.push_back(
            {.url = FileURL{path},
             .firstChannel = static_cast<int>(first) + 1,
             .channelCount = static_cast<int>(each),
             .startSeconds = 0,
             .durationSeconds = static_cast<double>(take.tracks.front().size()) / take.sampleRate});
    }
    return SmartAudioRouter(1, folder).analyze(request);
}

} // namespace orvane::test
