#include "Platform/AudioFile.h"

#include "Platform/EarliestFrame.h"
#include "Platform/Files.h"
#include "Platform/InterfaceThread.h"
#include "Platform/Media/WaveAudio.h"
#include "Platform/MediaHelper/MediaLibraryClient.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace orvane::platform {

namespace {

/// Tracks of one sample rate as one sound.
class SideBySide final : public AudioFile {
  public:
    explicit SideBySide(std::vector<std::unique_ptr<AudioFile>> tracks) : tracks_(std::move(tracks)) {
        const double rate = sampleRate();
        std::erase_if(tracks_, [rate](const auto& track) { return track->sampleRate() != rate; });
    }

    double sampleRate() const override { return tracks_.front()->sampleRate(); }
    int channelCount() const override {
        int sum = 0;
        for (const auto& track : tracks_) sum += track->channelCount();
        return sum;
    }
    std::int64_t frameCount() const override {
        std::int64_t longest = 0;
        for (const auto& track : tracks_) longest = std::max(longest, track->frameCount());
        return longest;
    }
    bool seek(std::int64_t frame) override {
        bool isAnyThere = false; // a track that ends earlier reads as silence
        for (const auto& track : tracks_)
            if (track->seek(std::min(frame, track->frameCount()))) isAnyThere = true;
        return isAnyThere && frame <= frameCount();
    }
    std::optional<std::int64_t> failedAt() const override {
        EarliestFrame first;
        for (const auto& track : tracks_)
            if (const auto frame = track->failedAt()) first.note(*frame);
        return first.frame();
    }
    std::size_t read(std::span<float* const> channels, std::size_t frames) override {
        std::vector<std::pair<std::span<float* const>, std::size_t>> parts;
        std::size_t most = 0;
        for (const auto& track : tracks_) {
            const auto own =
                channels.first(std::min(channels.size(), static_cast<std::size_t>(track->channelCount())));
            channels = channels.subspan(own.size());
            if (own.empty()) break;
            parts.emplace_back(own, track->read(own, frames));
            most = std::max(most, parts.back().second);
        }
        for (const auto& [own, got] : parts)
            for (float* channel : own) std::fill(channel + got, channel + most, 0.0F);
        return most;
    }

  private:
    std::vector<std::unique_ptr<AudioFile>> tracks_;
};

/// A library that opens a named pipe would wait for its other end.
const MediaLibrary* libraryFor(const std::string& path) {
    const auto file = files::attributes(path);
    return file && file->isRegularFile ? mediaLibrary() : nullptr;
}

} // namespace

std::unique_ptr<AudioFile> AudioFile::open(const std::string& path) {
    assertMayBlock("decoding");
    if (auto wave = openWaveAudio(path)) return wave;
    return openWithLibraries(path);
}

std::unique_ptr<AudioFile> AudioFile::openWithLibraries(const std::string& path) {
    assertMayBlock("decoding");
    const MediaLibrary* library = libraryFor(path);
    return library == nullptr ? nullptr : library->openAudio(path);
}

std::unique_ptr<AudioFile> AudioFile::openAllTracks(const std::string& path) {
    assertMayBlock("decoding");
    if (auto wave = openWaveAudio(path)) return wave;
    const MediaLibrary* library = libraryFor(path);
    if (library == nullptr) return nullptr;
    auto tracks = library->openAudioTracks(path);
    if (tracks.size() > 1) return std::make_unique<SideBySide>(std::move(tracks));
    return tracks.empty() ? nullptr : std::move(tracks.front());
}

} // namespace orvane::platform
