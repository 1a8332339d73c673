#pragma once

#include "Platform/Playback/Player.h"
#include "Platform/Realtime/Signal.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace orvane::platform {

/// Sound for a place of the output.
struct SoundBlock {
    static constexpr std::size_t mostFrames = 512;
    static constexpr std::size_t mostChannels = 64; ///< whose levels are measured

    /// Of the transport that it belongs to; a later transport has a higher number.
    std::uint64_t generation = 0;
    std::int64_t firstFrame = 0; ///< of the output
    std::int64_t frames = 0;     ///< more than `mostFrames` if it is silent
    bool isSilent = false;       ///< the samples are undefined
    std::array<float, mostFrames> left{}, right{};
    std::size_t levelCount = 0;
    std::array<ChannelPeak, mostChannels> levels{};

    std::int64_t endFrame() const { return firstFrame + frames; }
    bool covers(std::int64_t frame) const { return firstFrame <= frame && frame < endFrame(); }
};

/// The blocks between the thread that makes sound and the callback that plays it, all allocated at the start.
/// Neither side locks or waits. A block is free, filled or taken by the callback; the producer reclaims what
/// it filled for an earlier transport. A queue is not possible: the blocks of two transports are due at the
/// same frames during a crossfade, and blocks queued for a stopped output could not be reclaimed.
class SoundBlocks {
  public:
    static constexpr std::size_t count = 64;

    // Producer.

    /// A block to fill for this generation; null if all are in use. Blocks of earlier generations that the
    /// callback has not taken are reused.
    SoundBlock* acquire(std::uint64_t generation) noexcept {
        for (Slot& slot : slots_)
            if (slot.state.load(std::memory_order_acquire) == State::free) return &slot.block;
        for (Slot& slot : slots_) {
            State expected = State::filled;
            if (slot.filledGeneration < generation &&
                slot.state.compare_exchange_strong(expected, State::free, std::memory_order_acquire))
                return &slot.block;
        }
        return nullptr;
    }
    void publish(SoundBlock& block) noexcept {
        Slot& slot = slotOf(block);
        slot.filledGeneration = block.generation;
        slot.state.store(State::filled, std::memory_order_release);
    }

    // Callback.

    void takeFilled() noexcept {
        for (Slot& slot : slots_) {
            State expected = State::filled;
            if (slot.state.compare_exchange_strong(expected, State::taken, std::memory_order_acquire))
                taken_[takenCount_++] = &slot;
        }
    }
    /// The block of this generation that is due at the frame; null if there is none.
    const SoundBlock* at(std::int64_t frame, std::uint64_t generation) const noexcept {
        for (std::size_t i = 0; i < takenCount_; ++i) {
            const SoundBlock& block = taken_[i]->block;
            if (block.generation == generation && block.covers(frame)) return &block;
        }
        return nullptr;
    }
    /// The newest generation with a block due at the frame, if newer than `generation`.
    std::uint64_t newestAt(std::int64_t frame, std::uint64_t generation) const noexcept {
        for (std::size_t i = 0; i < takenCount_; ++i)
            if (taken_[i]->block.covers(frame))
                generation = std::max(generation, taken_[i]->block.generation);
        return generation;
    }
    /// Where the next block after the frame begins, of any generation.
    std::int64_t nextStart(std::int64_t frame) const noexcept {
        std::int64_t next = std::numeric_limits<std::int64_t>::max();
        for (std::size_t i = 0; i < takenCount_; ++i)
            if (taken_[i]->block.firstFrame > frame) next = std::min(next, taken_[i]->block.firstFrame);
        return next;
    }
    /// Releases the blocks that end at or before the frame, or belong to an earlier generation.
    void release(std::int64_t frame, std::uint64_t generation) noexcept {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < takenCount_; ++i) {
            Slot* slot = taken_[i];
            if (slot->block.endFrame() <= frame || slot->block.generation < generation)
                slot->state.store(State::free, std::memory_order_release);
            else
                taken_[kept++] = slot;
        }
        takenCount_ = kept;
    }

  private:
    enum class State : std::uint8_t { free, filled, taken };
    struct Slot {
        SoundBlock block;
        std::uint64_t filledGeneration = 0; ///< of the producer
        std::atomic<State> state = State::free;
    };
    Slot& slotOf(SoundBlock& block) noexcept {
        return *std::ranges::find_if(slots_, [&](const Slot& slot) { return &slot.block == &block; });
    }

    std::array<Slot, count> slots_;
    std::array<Slot*, count> taken_{}; ///< of the callback
    std::size_t takenCount_ = 0;
};

} // namespace orvane::platform
