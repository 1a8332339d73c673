#include "OrvaneSyncCore/Services/Atmo/AtmoStitcher.h"

#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"
#include "Platform/Files.h"
#include "Platform/Stop.h"
#include "Platform/VectorOps.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace orvane {

namespace {

constexpr std::size_t pieceFrames = 65536;

/// Reads the samples of a section, piece by piece.
class SegmentReader {
  public:
    explicit SegmentReader(const AtmoCandidate& segment)
        : file_(platform::AudioFile::open(segment.url.path)), filename_(segment.url.lastPathComponent()) {
        if (!file_)
            throw platform::FileError("can't read " + segment.url.path +
                                      ": it holds no sound that can be decoded");
        const int channels = file_->channelCount();
        if (channels < 1 || segment.startSample < 0 || !file_->seek(segment.startSample)) return;
        left_ = static_cast<std::size_t>(std::max<std::int64_t>(segment.endSample - segment.startSample, 0));
        const auto wanted = static_cast<std::size_t>(std::clamp(segment.channelIndex, 0, channels - 1));
        samples_.assign(wanted + 1, std::vector<float>());
    }

    /// Returns up to that many frames; none at the end. Throws ReadFailed.
    std::span<const float> read(std::size_t frames) {
        frames = std::min(frames, left_);
        if (frames == 0) return {};
        std::vector<float*> channels;
        for (auto& channel : samples_) {
            channel.resize(frames);
            channels.push_back(channel.data());
        }
        const std::size_t got = std::min(file_->read(channels, frames), frames);
        if (got < frames) throwIfReadFailed(*file_, filename_);
        left_ = got == 0 ? 0 : left_ - got;
        const auto wanted = std::span(samples_.back()).first(got);
        platform::vector::silenceNonFinite(wanted);
        return wanted;
    }

  private:
    std::unique_ptr<platform::AudioFile> file_;
    std::string filename_;
    std::size_t left_ = 0;
    std::vector<std::vector<float>> samples_; ///< from the first channel to the wanted one
};

} // namespace

void AtmoStitcher::append(const AtmoCandidate& segment, const std::stop_token& stop) {
    SegmentReader reader(segment);
    std::vector<float> head;
    while (head.size() < fade_) {
        const auto piece = reader.read(fade_ - head.size());
        if (piece.empty()) break;
        head.insert(head.end(), piece.begin(), piece.end());
    }
    auto rest = reader.read(pieceFrames);
    if (head.empty() && rest.empty()) return;

    const std::size_t n = std::min(tail_.size(), head.size());
    for (std::size_t i = 0; i < n; ++i) {
        const double angle = static_cast<double>(i) / static_cast<double>(n) * std::numbers::pi / 2;
        tail_[i] = static_cast<float>(static_cast<double>(tail_[i]) * std::cos(angle) +
                                      static_cast<double>(head[i]) * std::sin(angle));
    }
    write(std::span(tail_).first(n));
    tail_.clear();
    pass(std::span(head).subspan(n));
    for (; !rest.empty(); rest = reader.read(pieceFrames)) {
        platform::throwIfStopped(stop);
        pass(rest);
    }
}

/// Appends to the kept frames and writes all but the last `fade_` of them.
void AtmoStitcher::pass(std::span<const float> samples) {
    tail_.insert(tail_.end(), samples.begin(), samples.end());
    if (tail_.size() <= fade_) return;
    const std::size_t ready = tail_.size() - fade_;
    write(std::span(tail_).first(ready));
    tail_.erase(tail_.begin(), tail_.begin() + static_cast<std::ptrdiff_t>(ready));
}

void AtmoStitcher::write(std::span<const float> samples) {
    const float* const only = samples.data();
    if (!samples.empty()) out_.write(std::span(&only, 1), samples.size());
}

} // namespace orvane
