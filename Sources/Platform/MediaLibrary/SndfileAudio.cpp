#include "Platform/ByteCursor.h"
#include "Platform/MediaLibrary/FileInput.h"
#include "Platform/MediaLibrary/LibraryReaders.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <vector>

namespace orvane::platform {

namespace {

constexpr std::size_t blockFrames = 4096;

class SndfileAudio : public AudioFile {
  public:
    struct Close {
        void operator()(SNDFILE* file) const { sf_close(file); }
    };
    SndfileAudio(std::unique_ptr<FileInput> input, std::unique_ptr<SNDFILE, Close> file, const SF_INFO& info)
        : input_(std::move(input)), file_(std::move(file)), info_(info), promised_(promisedBy(*file_, info)) {
    }

    double sampleRate() const override { return info_.samplerate; }
    int channelCount() const override { return info_.channels; }
    std::int64_t frameCount() const override { return info_.frames; }
    std::int64_t promisedFrames() const override { return promised_; }

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
    static std::int64_t promisedBy(SNDFILE& file, const SF_INFO& info) {
        // The length of a file that was cut off, if only its end states a length.
        if (info.frames == SF_COUNT_MAX) return 0;
        const bool isAIFF = (info.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_AIFF;
        return isAIFF ? std::max(info.frames, framesOfAIFF(file)) : info.frames;
    }

    /// The number in the common chunk; the library counts the frames that are present.
    static sf_count_t framesOfAIFF(SNDFILE& file) {
        constexpr std::size_t framesAt = 2, commonBytes = 18;
        SF_CHUNK_INFO chunk{};
        std::memcpy(chunk.id, "COMM", 4);
        chunk.id_size = 4;
        SF_CHUNK_ITERATOR* const at = sf_get_chunk_iterator(&file, &chunk);
        std::array<std::byte, commonBytes> body{};
        chunk.datalen = commonBytes;
        chunk.data = body.data();
        if (at == nullptr || sf_get_chunk_data(at, &chunk) != SF_ERR_NO_ERROR) return 0;
        return ByteCursor(body).u32be(framesAt).value_or(0);
    }

    std::unique_ptr<FileInput> input_; ///< what `file_` reads from
    std::unique_ptr<SNDFILE, Close> file_;
    SF_INFO info_;
    std::int64_t promised_; ///< frames
    std::vector<float> block_;
};

FileInput& input(void* user) { return *static_cast<FileInput*>(user); }

/// The library's own file access would not distinguish a bad disk from the end of the file.
SF_VIRTUAL_IO readOnlyAccess() {
    SF_VIRTUAL_IO access{};
    access.get_filelen = [](void* user) -> sf_count_t { return input(user).size(); };
    access.seek = [](sf_count_t offset, int whence, void* user) -> sf_count_t {
        return input(user).seek(offset, whence);
    };
    access.read = [](void* into, sf_count_t count, void* user) -> sf_count_t {
        return std::max<sf_count_t>(input(user).read(into, static_cast<std::size_t>(count)), 0);
    };
    access.write = [](const void*, sf_count_t, void*) -> sf_count_t { return 0; };
    access.tell = [](void* user) -> sf_count_t { return input(user).position(); };
    return access;
}

} // namespace

std::unique_ptr<AudioFile> openWithSndfile(const std::string& path) {
    auto input = FileInput::open(path);
    // The decoder of MPEG audio in this library writes to the terminal; the other media library reads it
    // silently.
    if (!input || input->beginsAsMPEGAudio()) return nullptr;
    SF_INFO info{};
    SF_VIRTUAL_IO access = readOnlyAccess();
    std::unique_ptr<SNDFILE, SndfileAudio::Close> file(
        sf_open_virtual(&access, SFM_READ, &info, input.get()));
    if (!file || info.channels <= 0 || info.samplerate <= 0) return nullptr;
    return std::make_unique<SndfileAudio>(std::move(input), std::move(file), info);
}

} // namespace orvane::platform
