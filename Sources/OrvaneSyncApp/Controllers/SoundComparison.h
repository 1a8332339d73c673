#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncCore/Services/Diagnosis/ComparedSound.h"
#include "Platform/Task.h"
#include "Platform/Throttle.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace orvane {

/// Compares the sound of each of many clips with what their cameras recorded. `WorkDoubts::listen` does that
/// with some clips of each card. Changes no clip. Interface thread.
class SoundComparison {
  public:
    explicit SoundComparison(OpenWork& work);
    ~SoundComparison();

    /// The result is that of the clips as they are at the call; it is set when the task ends. Clips that do
    /// not exist are left out.
    platform::Task compare(const std::vector<UUID>& clips, std::shared_ptr<ComparedSound> result);
    /// In clips.
    struct Progress {
        std::size_t done = 0, total = 0;
    };
    /// That of the comparison that was begun last; absent while it does not run. `ImportField::progress` is
    /// notified when it changes.
    const std::optional<Progress>& progress() const { return progress_; }
    /// That of the comparison that has ended last without being stopped.
    const ComparedSound& latest() const { return latest_; }

  private:
    static platform::Task run(std::weak_ptr<SoundComparison> weak, SyncGroupList clips,
                              std::shared_ptr<ComparedSound> result, std::uint64_t number);
    void show(std::optional<Progress> progress);

    OpenWork& work_;
    const std::shared_ptr<platform::Throttle<Progress>> shown_;
    std::unique_ptr<platform::SerialQueue> queue_;
    std::optional<Progress> progress_;
    ComparedSound latest_;
    std::uint64_t number_ = 0;
};

} // namespace orvane
