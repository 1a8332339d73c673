#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"

#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"
#include "Platform/EarliestFrame.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <utility>

namespace orvane {

namespace {

using platform::AudioFile;

/// Equal for all clips of a take, whose offsets differ in the last bits, and finer than any sample.
double wholeMicroseconds(double seconds) {
    constexpr double perSecond = 1e6;
    return std::round(seconds * perSecond) / perSecond;
}

/// A range of a lane that one file fills, in frames of the take.
struct Piece {
    std::size_t file;
    std::int64_t fileStart; ///< place of the file's first frame
    std::int64_t begin;     ///< later than `fileStart` if the part before overlaps this one
    std::int64_t end;
};

/// The files that hold the same channels, one after the other.
struct Lane {
    std::size_t firstChannel = 0; ///< from 0
    std::size_t channelCount = 0;
    std::vector<Piece> pieces; ///< in order, without overlap
};

} // namespace

/// Shared by all readers of one take. Does not change after it is made, except for what reading finds
/// missing.
struct TakeLayout {
    /// Up to this many files stay open, so that a reader for another thread opens no file.
    static constexpr std::size_t mostOpenFiles = 256;

    TakeSound sound;
    /// Parallel to `sound.files`; empty if none stays open.
    std::vector<std::unique_ptr<AudioFile>> openFiles;
    std::vector<Lane> lanes;
    double sampleRate = 0;
    std::size_t channelCount = 0;
    std::int64_t frames = 0;
    std::int64_t promised = 0;
    bool canShare = true; ///< each file can give further readers

    /// What is known of a file's frames.
    struct Extent {
        bool isReadable = true;
        std::int64_t start = 0;    ///< of the file, on the take's axis
        std::int64_t own = 0;      ///< number of frames that the open file has
        std::int64_t promised = 0; ///< by its header, or by what is known of a file that cannot be opened
        platform::EarliestFrame missing{}; ///< the first frame that reading did not get
        platform::EarliestFrame failed{};  ///< the first of them because a read failed
    };
    mutable std::deque<Extent> extents; ///< parallel to `sound.files`

    /// A separate reader of the file, at its start; null if the file can no longer be read.
    std::unique_ptr<AudioFile> reader(std::size_t file) const {
        if (openFiles[file])
            if (auto reader = openFiles[file]->another()) return reader;
        return AudioFile::open(sound.files[file].url.path);
    }
};

namespace {

class TakeAudio : public AudioFile {
  public:
    explicit TakeAudio(std::shared_ptr<const TakeLayout> layout)
        : layout_(std::move(layout)), open_(layout_->lanes.size()) {}

    double sampleRate() const override { return layout_->sampleRate; }
    int channelCount() const override { return static_cast<int>(layout_->channelCount); }
    std::int64_t frameCount() const override { return layout_->frames; }
    std::int64_t promisedFrames() const override { return layout_->promised; }

    std::optional<std::int64_t> failedAt() const override {
        platform::EarliestFrame first;
        for (const TakeLayout::Extent& extent : layout_->extents)
            if (const auto frame = extent.failed.frame()) first.note(extent.start + *frame);
        return first.frame();
    }

    bool seek(std::int64_t frame) override {
        if (frame < 0 || frame > layout_->frames) return false;
        at_ = frame;
        return true;
    }

    std::size_t read(std::span<float* const> channels, std::size_t frames) override {
        const auto left = static_cast<std::uint64_t>(layout_->frames - at_);
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(frames, left));
        for (float* channel : channels.first(std::min(channels.size(), layout_->channelCount)))
            std::fill_n(channel, count, 0.0F);
        for (std::size_t lane = 0; lane < open_.size(); ++lane) readLane(lane, channels, count);
        at_ += static_cast<std::int64_t>(count);
        return count;
    }

    std::unique_ptr<AudioFile> another() const override {
        return layout_->canShare ? std::make_unique<TakeAudio>(layout_) : nullptr;
    }

  private:
    /// The file with which a lane is read.
    struct OpenPiece {
        std::size_t piece = 0;
        std::unique_ptr<AudioFile> file; ///< of that piece
        std::int64_t at = 0;             ///< the file's own next frame
    };

    void readLane(std::size_t which, std::span<float* const> channels, std::size_t count) {
        const Lane& lane = layout_->lanes[which];
        if (lane.firstChannel >= channels.size()) return;
        channels = channels.subspan(lane.firstChannel,
                                    std::min(lane.channelCount, channels.size() - lane.firstChannel));
        const std::int64_t end = at_ + static_cast<std::int64_t>(count);
        auto piece = std::ranges::upper_bound(lane.pieces, at_, {}, &Piece::end);
        for (; piece != lane.pieces.end() && piece->begin < end; ++piece) {
            const std::int64_t from = std::max(at_, piece->begin);
            const std::int64_t to = std::min(end, piece->end);
            OpenPiece& open = open_[which];
            std::int64_t got = 0;
            if (moveTo(open, static_cast<std::size_t>(piece - lane.pieces.begin()), *piece, from)) {
                targets_.clear();
                for (float* channel : channels) targets_.push_back(channel + (from - at_));
                got =
                    static_cast<std::int64_t>(open.file->read(targets_, static_cast<std::size_t>(to - from)));
                open.at += got;
            }
            if (got == to - from) continue;
            TakeLayout::Extent& extent = layout_->extents[piece->file];
            extent.missing.note(from + got - piece->fileStart);
            // A file that was opened before and cannot be opened again counts as a failed read.
            if (!open.file || open.file->failedAt()) extent.failed.note(from + got - piece->fileStart);
        }
    }

    /// Seeks only if the reader is not already at the frame: seeking in a compressed file is slow.
    bool moveTo(OpenPiece& open, std::size_t which, const Piece& piece, std::int64_t frame) {
        if (!open.file || open.piece != which) {
            open.file = layout_->reader(piece.file);
            open.piece = which;
            open.at = 0;
        }
        const std::int64_t own = frame - piece.fileStart;
        if (open.file && open.at != own) open.at = open.file->seek(own) ? own : -1;
        return open.file && open.at == own;
    }

    std::shared_ptr<const TakeLayout> layout_;
    std::vector<OpenPiece> open_; ///< one for each lane
    std::int64_t at_ = 0;
    std::vector<float*> targets_; ///< of the current read
};

/// Computes the layout of the files that can be read, at the sample rate of the first of them.
class LayoutMaker {
  public:
    explicit LayoutMaker(const TakeSound& sound) { layout_.sound = sound; }

    /// Null if no file can be read.
    std::shared_ptr<const TakeLayout> make() {
        std::vector<std::unique_ptr<AudioFile>> opened;
        for (const TakeSound::File& file : layout_.sound.files) {
            auto audio = AudioFile::open(file.url.path);
            if (audio && layout_.sampleRate <= 0) layout_.sampleRate = audio->sampleRate();
            if (audio && audio->sampleRate() != layout_.sampleRate) audio.reset();
            opened.push_back(std::move(audio));
        }
        if (!(layout_.sampleRate > 0)) return nullptr;
        for (std::size_t i = 0; i < opened.size(); ++i) {
            add(i, opened[i].get());
            if (opened[i] && !opened[i]->another()) layout_.canShare = false;
            if (i >= TakeLayout::mostOpenFiles) opened[i].reset();
        }
        layout_.openFiles = std::move(opened);
        return std::make_shared<const TakeLayout>(std::move(layout_));
    }

  private:
    void add(std::size_t i, const AudioFile* audio) {
        const TakeSound::File& file = layout_.sound.files[i];
        const auto framesIn = [&](double seconds) { return std::llround(seconds * layout_.sampleRate); };
        const std::int64_t start = framesIn(file.startSeconds);
        const std::int64_t own = audio != nullptr ? audio->frameCount() : 0;
        const std::int64_t promised =
            audio != nullptr ? audio->promisedFrames() : framesIn(file.durationSeconds);
        layout_.channelCount = std::max(layout_.channelCount,
                                        static_cast<std::size_t>(file.firstChannel - 1 + file.channelCount));
        layout_.frames = std::max(layout_.frames, start + own);
        layout_.promised = std::max(layout_.promised, start + promised);
        TakeLayout::Extent& extent = layout_.extents.emplace_back();
        extent.isReadable = audio != nullptr;
        extent.start = start;
        extent.own = own;
        extent.promised = promised;

        const auto firstChannel = static_cast<std::size_t>(file.firstChannel - 1);
        if (layout_.lanes.empty() || layout_.lanes.back().firstChannel != firstChannel)
            layout_.lanes.push_back({firstChannel, 0, {}});
        Lane& lane = layout_.lanes.back();
        lane.channelCount = std::max(lane.channelCount, static_cast<std::size_t>(file.channelCount));
        const std::int64_t begin = lane.pieces.empty() ? start : std::max(start, lane.pieces.back().end);
        if (begin < start + own) lane.pieces.push_back({i, start, begin, start + own});
    }

    TakeLayout layout_;
};

} // namespace

TakeSound::TakeSound(const SyncGroup& group, const Take& take) {
    for (const TakeFile& file : take.files)
        if (isHeard(file.role))
            files.push_back({group.audioMatches[file.matchIndex].audio->url, file.firstChannel,
                             file.channelCount, wholeMicroseconds(file.startSeconds), file.durationSeconds});
}

std::vector<IncompleteFile> OpenTake::incompleteFiles() const {
    std::vector<IncompleteFile> found;
    for (std::size_t i = 0; layout && i < layout->extents.size(); ++i) {
        const TakeLayout::Extent& extent = layout->extents[i];
        const auto seconds = [&](std::int64_t frames) {
            return static_cast<double>(frames) / layout->sampleRate;
        };
        const std::int64_t heard = std::min(extent.own, extent.missing.frame().value_or(extent.own));
        const std::int64_t promised = std::max(extent.own, extent.promised);
        if (!extent.isReadable || heard < promised)
            found.push_back(
                {layout->sound.files[i].url.lastPathComponent(), seconds(heard), seconds(promised)});
    }
    return found;
}

void OpenTake::throwIfReadFailed() const {
    if (audio && !layout) return orvane::throwIfReadFailed(*audio, filename);
    for (std::size_t i = 0; layout && i < layout->extents.size(); ++i) {
        const TakeLayout::Extent& extent = layout->extents[i];
        if (const auto frame = extent.failed.frame())
            throw ReadFailed({layout->sound.files[i].url.lastPathComponent(),
                              static_cast<double>(*frame) / layout->sampleRate,
                              static_cast<double>(extent.own) / layout->sampleRate});
    }
}

OpenTake openTake(const TakeSound& sound) {
    if (sound.files.empty()) return {};
    if (sound.files.size() == 1) {
        const FileURL& url = sound.files.front().url;
        return {AudioFile::open(url.path), nullptr, url.lastPathComponent()};
    }
    const auto layout = LayoutMaker(sound).make();
    if (!layout) return {};
    return {std::make_unique<TakeAudio>(layout), layout};
}

} // namespace orvane
