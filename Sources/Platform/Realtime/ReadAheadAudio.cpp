#include "Platform/Realtime/ReadAheadAudio.h"

#include "Platform/Realtime/Ring.h"
#include "Platform/Realtime/Signal.h"
#include "Platform/Realtime/Threads.h"

#include <algorithm>
#include <atomic>
#include <vector>

namespace orvane::platform {

namespace {

constexpr std::size_t blockFrames = 1024;
constexpr std::size_t fewestBlocks = 3;

/// Where to read, and the number of that request: blocks of an earlier request are stale.
struct ReadRequest {
    std::int64_t frame = 0;
    std::uint32_t number = 0;
};

struct Block {
    std::uint32_t request = 0;
    std::size_t frames = 0;     ///< fewer than a whole block only where the file ends; 0 marks the end itself
    std::vector<float> samples; ///< one channel after the other, `blockFrames` each
};

} // namespace

struct ReadAheadAudio::State {
    State(std::unique_ptr<AudioFile> opened, std::size_t framesAhead)
        : file(std::move(opened)), channels(static_cast<std::size_t>(std::max(file->channelCount(), 0))),
          blocks(std::max(fewestBlocks, (framesAhead + blockFrames - 1) / blockFrames + 1)),
          filled(blocks.size()), empty(blocks.size()), requests(blocks.size()) {
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            blocks[i].samples.resize(channels * blockFrames);
            empty.write({{i}});
        }
        thread = startThread("read-ahead", ThreadPriority::normal,
                             [this](const std::stop_token& stop) { serve(stop); });
    }
    ~State() {
        thread.request_stop();
        wake.post();
        thread.join();
    }

    // The reading thread.

    void serve(const std::stop_token& stop) {
        std::vector<float*> arrays(channels);
        ReadRequest current;
        bool atEnd = !file->seek(0);
        bool endIsTold = false;
        while (!stop.stop_requested()) {
            if (takeNewest(current)) {
                atEnd = !file->seek(current.frame);
                endIsTold = false;
            }
            std::size_t index = 0;
            if ((atEnd && endIsTold) || empty.read({&index, 1}) == 0) {
                wake.wait();
                continue;
            }
            Block& block = blocks[index];
            block.request = current.number;
            block.frames = 0;
            if (!atEnd) {
                for (std::size_t c = 0; c < channels; ++c) arrays[c] = block.samples.data() + c * blockFrames;
                while (block.frames < blockFrames) {
                    const std::size_t more = file->read(arrays, blockFrames - block.frames);
                    if (more == 0) break;
                    block.frames += more;
                    for (float*& array : arrays) array += more;
                }
                atEnd = block.frames < blockFrames;
            }
            endIsTold = block.frames == 0;
            filled.write({{index}});
            ready.post();
        }
    }

    bool takeNewest(ReadRequest& newest) {
        bool any = false;
        while (requests.read({&newest, 1}) > 0) any = true;
        return any;
    }

    // The consumer.

    /// The block at the position; nothing where it has not been read yet.
    const Block* front() noexcept {
        while (!hasFront || blocks[frontIndex].request != wanted.number ||
               (taken == blocks[frontIndex].frames && taken > 0)) {
            if (hasFront) {
                hasFront = false;
                empty.write({{frontIndex}});
                wake.post();
            }
            if (filled.read({&frontIndex, 1}) == 0) {
                sendRequest();
                return nullptr;
            }
            hasFront = true;
            taken = 0;
        }
        return &blocks[frontIndex];
    }

    /// A request that found no room waits here for the next call; only the newest counts.
    void sendRequest() noexcept {
        if (!isRequestPending || requests.write({{wanted}}) == 0) return;
        isRequestPending = false;
        wake.post();
    }

    const std::unique_ptr<AudioFile> file;
    const std::size_t channels;
    std::vector<Block> blocks;
    Ring<std::size_t> filled; ///< indices of blocks, in the order of reading
    Ring<std::size_t> empty;
    Ring<ReadRequest> requests;
    Signal wake;  ///< for the reading thread: room, a request or the end
    Signal ready; ///< for `waitUntilReady`: a block was filled

    ReadRequest wanted;
    bool isRequestPending = false;
    std::int64_t position = 0;
    bool hasFront = false;
    std::size_t frontIndex = 0;
    std::size_t taken = 0; ///< frames of the front block that were read

    std::jthread thread; ///< last: everything above is there when it starts
};

ReadAheadAudio::ReadAheadAudio(std::unique_ptr<AudioFile> file, std::size_t framesAhead)
    : state_(std::make_unique<State>(std::move(file), framesAhead)) {}

ReadAheadAudio::~ReadAheadAudio() = default;

double ReadAheadAudio::sampleRate() const { return state_->file->sampleRate(); }

int ReadAheadAudio::channelCount() const { return static_cast<int>(state_->channels); }

std::size_t ReadAheadAudio::read(std::span<float* const> channels, std::size_t frames) noexcept {
    State& state = *state_;
    std::size_t done = 0;
    while (done < frames) {
        const Block* block = state.front();
        if (block == nullptr || block->frames == 0) break;
        const std::size_t count = std::min(frames - done, block->frames - state.taken);
        for (std::size_t c = 0; c < std::min(channels.size(), state.channels); ++c)
            std::copy_n(block->samples.data() + c * blockFrames + state.taken, count, channels[c] + done);
        state.taken += count;
        done += count;
    }
    state.position += static_cast<std::int64_t>(done);
    return done;
}

void ReadAheadAudio::seek(std::int64_t frame) noexcept {
    State& state = *state_;
    ++state.wanted.number;
    state.wanted.frame = frame;
    state.position = frame;
    state.isRequestPending = true;
    state.sendRequest();
}

std::int64_t ReadAheadAudio::position() const noexcept { return state_->position; }

bool ReadAheadAudio::isAtEnd() noexcept {
    const Block* block = state_->front();
    return block != nullptr && block->frames == 0;
}

void ReadAheadAudio::waitUntilReady() {
    while (state_->front() == nullptr) state_->ready.wait();
}

} // namespace orvane::platform
