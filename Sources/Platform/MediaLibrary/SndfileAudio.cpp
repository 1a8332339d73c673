#include "Platform/MediaLibrary/LibraryReaders.h"

#include <sndfile.h>

#include <algorithm>
#include <vector>

namespace orvane::platform {

namespace {

constexpr std::size_t blockFrames = 4096;

class SndfileAudio : public AudioFile {
  public:
    struct Close {
        void operator()(SNDFILE* file) const { sf_close(file); }
    };
    SndfileAudio(std::unique_ptr<SNDFILE, Close> file, const SF_INFO& info)
        : file_(std::move(file)), info_(info) {}

    double sampleRate() const override { return info_.samplerate; }
    int channelCount() const override { return info_.channels; }
    std::int64_t frameCount() const override { return info_.frames; }

    bool seek(std::int64_t frame) override {
        if (frame < 0 || frame > info_.frames) return false;
        return sf_seek(file_.get(), frame, SEEK_SET) == frame;
    }

    std::size_t read(std::span<float* const> channels, std::size_t frames) override {
        const auto count = static_cast<std::size_t>(info_.channels);
        block_.resize(blockFrames * count);
        std::size_t done = 0;
        while (done < frames) {
            const std::size_t wanted = std::min(frames - done, blockFrames);
            const auto got = sf_readf_float(file_.get(), block_.data(), static_cast<sf_count_t>(wanted));
            if (got <= 0) break;
            for (std::size_t channel = 0; channel < std::min(count, channels.size()); ++channel)
                for (std::size_t i = 0; i < static_cast<std::size_t>(got); ++i)
                    channels[channel][done + i] = block_[i * count + channel];
            done += static_cast<std::size_t>(got);
        }
        return done;
    }

  private:
    std::unique_ptr<SNDFILE, Close> file_;
    SF_INFO info_;
    std::vector<float> block_;
};

} // namespace

std::unique_ptr<AudioFile> openWithSndfile(const std::string& path) {
    SF_INFO info{};
    std::unique_ptr<SNDFILE, SndfileAudio::Close> file(sf_open(path.c_str(), SFM_READ, &info));
    if (!file || info.channels <= 0 || info.samplerate <= 0) return nullptr;
    return std::make_unique<SndfileAudio>(std::move(file), info);
}

} // namespace orvane::platform
