#include "Platform/Media/WaveAudio.h"

#include "Platform/EarliestFrame.h"
#include "Platform/Media/WaveHeaders.h"
#include "Platform/RandomAccessFile.h"
#include "Platform/ReadErrorWatch.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

namespace orvane::platform {

namespace {

static_assert(std::endian::native == std::endian::little, "samples are taken from the file as they lie");

/// Small enough for the processor's first caches between reading and converting.
constexpr std::size_t bufferBytes = std::size_t{1} << 17U;

/// Samples are loaded four bytes at a time, whatever their size.
constexpr std::size_t loadBytes = 4;

enum class Encoding { int16, int24, int32, float32 };

std::optional<Encoding> encoding(const WaveSamples& samples) {
    if (samples.isFloat) return samples.bits == 32 ? std::optional(Encoding::float32) : std::nullopt;
    switch (samples.bits) {
    case 16:
        return Encoding::int16;
    case 24:
        return Encoding::int24;
    case 32:
        return Encoding::int32;
    default:
        return std::nullopt;
    }
}

/// The sample in the lowest bytes of `loaded`. The integer is shifted to the top of 32 bits, where its sign
/// bit is the machine's; dividing by a power of two is exact.
template <Encoding encoding>
float converted(std::uint32_t loaded) {
    if constexpr (encoding == Encoding::float32) return std::bit_cast<float>(loaded);
    constexpr unsigned unused = encoding == Encoding::int16 ? 16 : encoding == Encoding::int24 ? 8 : 0;
    constexpr float scale = 1.0F / 2147483648.0F;
    return static_cast<float>(static_cast<std::int32_t>(loaded << unused)) * scale;
}

/// Converts the sample at every `stride`-th byte. First a group is loaded, then converted, so that the
/// compiler can use vector instructions for the second step.
template <Encoding encoding>
void convert(std::span<const std::byte> bytes, std::size_t stride, std::span<float> into) {
    constexpr std::size_t group = 16;
    std::array<std::uint32_t, group> loaded; // written before it is read
    std::size_t done = 0;
    for (; done + group <= into.size(); done += group) {
        for (std::size_t i = 0; i < group; ++i)
            std::memcpy(&loaded[i], &bytes[(done + i) * stride], loadBytes);
        for (std::size_t i = 0; i < group; ++i) into[done + i] = converted<encoding>(loaded[i]);
    }
    for (; done < into.size(); ++done) {
        std::memcpy(&loaded[0], &bytes[done * stride], loadBytes);
        into[done] = converted<encoding>(loaded[0]);
    }
}

void convert(Encoding encoding, std::span<const std::byte> bytes, std::size_t stride, std::span<float> into) {
    switch (encoding) {
    case Encoding::int16:
        return convert<Encoding::int16>(bytes, stride, into);
    case Encoding::int24:
        return convert<Encoding::int24>(bytes, stride, into);
    case Encoding::int32:
        return convert<Encoding::int32>(bytes, stride, into);
    case Encoding::float32:
        return convert<Encoding::float32>(bytes, stride, into);
    }
}

class WaveAudio : public AudioFile {
  public:
    /// State that all readers of one file share.
    struct Shared {
        explicit Shared(RandomAccessFile opened) : file(std::move(opened)) {}
        RandomAccessFile file;
        EarliestFrame failure;
    };

    WaveAudio(std::shared_ptr<Shared> shared, const WaveSamples& samples, Encoding encoding)
        : shared_(std::move(shared)), samples_(samples), encoding_(encoding),
          framesPerRead_(std::max<std::size_t>(bufferBytes / samples.bytesPerFrame(), 1)) {}

    double sampleRate() const override { return samples_.sampleRate; }
    int channelCount() const override { return samples_.channels; }
    std::int64_t frameCount() const override { return static_cast<std::int64_t>(samples_.frames); }
    std::int64_t promisedFrames() const override {
        return static_cast<std::int64_t>(samples_.promisedFrames);
    }

    bool seek(std::int64_t frame) override {
        if (frame < 0 || frame > frameCount()) return false;
        at_ = static_cast<std::uint64_t>(frame);
        return true;
    }

    std::size_t read(std::span<float* const> channels, std::size_t frames) override {
        channels = channels.first(std::min<std::size_t>(channels.size(), samples_.channels));
        std::size_t done = 0;
        while (done < frames && at_ < samples_.frames) {
            const std::size_t wanted = static_cast<std::size_t>(
                std::min<std::uint64_t>({frames - done, framesPerRead_, samples_.frames - at_}));
            const std::size_t got = fill(wanted);
            for (std::size_t channel = 0; channel < channels.size(); ++channel)
                convert(encoding_, std::span(buffer_).subspan(channel * bytesPerSample()),
                        samples_.bytesPerFrame(), std::span(channels[channel] + done, got));
            at_ += got;
            done += got;
            if (got < wanted) break;
        }
        return done;
    }

    std::optional<std::int64_t> failedAt() const override { return shared_->failure.frame(); }

    std::unique_ptr<AudioFile> another() const override {
        return std::make_unique<WaveAudio>(shared_, samples_, encoding_);
    }

  private:
    std::size_t bytesPerSample() const { return static_cast<std::size_t>(samples_.bits / 8); }

    /// Whole frames only; fewer than requested if the file was cut off since it was opened.
    std::size_t fill(std::size_t frames) {
        const std::size_t bytes = frames * samples_.bytesPerFrame();
        // The last sample is loaded together with the bytes that follow it.
        if (buffer_.size() < bytes + loadBytes) buffer_.resize(bytes + loadBytes);
        const std::uint64_t position = samples_.dataAt + at_ * samples_.bytesPerFrame();
        const ReadErrorWatch watch;
        const std::size_t got =
            shared_->file.readInto(position, std::span(buffer_).first(bytes)) / samples_.bytesPerFrame();
        if (watch.hasSeenError()) shared_->failure.note(static_cast<std::int64_t>(at_ + got));
        return got;
    }

    const std::shared_ptr<Shared> shared_;
    WaveSamples samples_;
    Encoding encoding_;
    std::size_t framesPerRead_;
    std::uint64_t at_ = 0; ///< the next frame to read
    std::vector<std::byte> buffer_;
};

} // namespace

std::unique_ptr<AudioFile> openWaveAudio(const std::string& path) {
    auto file = RandomAccessFile::open(path);
    if (!file) return nullptr;
    const auto samples = locateWaveSamples(*file);
    if (!samples || samples->frames == 0) return nullptr;
    const auto kind = encoding(*samples);
    if (!kind) return nullptr;
    auto shared = std::make_shared<WaveAudio::Shared>(std::move(*file));
    return std::make_unique<WaveAudio>(std::move(shared), *samples, *kind);
}

} // namespace orvane::platform
