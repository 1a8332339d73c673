#pragma once

#include "OrvaneSyncApp/Controllers/VideoEngineState.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "Platform/Listeners.h"
#include "Platform/MainThread.h"
#include "Platform/Playback/Picture.h"
#include "Platform/Task.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// What the sync lens shows: the frame with the clap or another frame near it, the frames before and after
/// it, and the sound of the same time. Clip time.
struct SyncLensPlan {
    static constexpr std::size_t pictureCount = 3;

    FileURL video;
    std::optional<TakeSound> sound; ///< absent: the clip has no recording
    double soundOffsetSeconds = 0;  ///< clip time of the sound's first sample
    double clapSeconds = 0;
    platform::MediaTime frameLength;
    std::int64_t clapFrame = 0;   ///< from 0
    std::int64_t middleFrame = 0; ///< of the picture in the middle, from 0

    /// The start of the first frame shown; before 0 if the middle is the first frame of the clip.
    double startSeconds() const { return (frameLength * (middleFrame - 1)).seconds(); }
    double endSeconds() const { return (frameLength * (middleFrame + 2)).seconds(); }
    bool operator==(const SyncLensPlan&) const = default;
};

/// `clapSeconds`: clip time. `isAtPlayhead`: the frame under the playhead is in the middle, not the clap.
/// Absent for a clip without a clap, or with a clap outside its picture.
std::optional<SyncLensPlan> syncLensPlan(const SyncGroup& clip, std::optional<double> clapSeconds,
                                         const PlayheadState& playhead, bool isAtPlayhead = false);
/// The caption of the picture at that place, from 0: how many frames it is away from the clap.
std::string syncLensCaption(const SyncLensPlan& plan, std::size_t picture);
/// Why there is no plan for the clip, and what to do. Names keys as "⟨updateClapPoint⟩".
std::string syncLensNote(const SyncGroup& clip, bool hasClap);

/// The pictures and the sound of a plan, read on other threads. Until they are read, those of the plan before
/// stay if it is of the same file. Interface thread; held by a shared pointer, because loads hold a weak one.
class SyncLens : public std::enable_shared_from_this<SyncLens> {
  public:
    /// One column of the sound, full scale at 1, over all channels.
    struct Column {
        float lowest = 0;
        float highest = 0;
    };
    struct Seen {
        std::array<std::optional<platform::Picture>, SyncLensPlan::pictureCount> pictures;
        std::vector<Column> sound; ///< over the whole time of the plan; empty if it can't be read
    };
    static std::shared_ptr<SyncLens> create(std::shared_ptr<platform::MainThread> mainThread);
    ~SyncLens();

    /// Reads the plan, unless it was the last one requested. `columns`: number of columns of the sound.
    void show(const SyncLensPlan& plan, platform::PictureSize limit, std::size_t columns);
    void clear();

    const std::optional<SyncLensPlan>& plan() const { return plan_; }
    /// The plan that `seen` belongs to; absent: nothing is read yet.
    const std::optional<SyncLensPlan>& seenPlan() const { return seenPlan_; }
    bool isLoading() const { return isLoading_; }
    const Seen& seen() const { return seen_; }
    platform::Subscription onChange(std::function<void()> callback) {
        return changed_.add(std::move(callback));
    }

  private:
    explicit SyncLens(std::shared_ptr<platform::MainThread> mainThread);
    static platform::Task load(std::weak_ptr<SyncLens> weak, SyncLensPlan plan, platform::PictureSize limit,
                               std::size_t columns);

    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::unique_ptr<platform::SerialQueue> queue_;
    std::optional<SyncLensPlan> plan_, seenPlan_;
    platform::PictureSize limit_;
    std::size_t columns_ = 0;
    std::optional<platform::Task> task_;
    bool isLoading_ = false;
    Seen seen_;
    platform::Listeners<> changed_;
};

} // namespace orvane
