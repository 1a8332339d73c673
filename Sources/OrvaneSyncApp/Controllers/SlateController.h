#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/SmartAudioCaches.h"
#include "OrvaneSyncCore/Services/Slate/SlateDetector.h"
#include "OrvaneSyncCore/Services/Slate/SlateProposal.h"
#include "Platform/Task.h"
#include "Platform/Throttle.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// The clapper boards of the clips: searched for on request, kept in `SmartAudioState::slateResults`, and
/// offered for scene and take. A search writes nothing into a clip. Interface thread.
class SlateController {
  public:
    /// Null detector: that of this machine.
    SlateController(OpenWork& work, SmartAudioCaches& caches, std::shared_ptr<SlateDetector> detector);
    ~SlateController();

    /// Searches one clip, its first recording included, also where that was done before. Where a file cannot
    /// be read, what was found before stays.
    platform::Task detectSlate(const UUID& groupID);
    /// Searches all clips, one after the other; each result stands as soon as it is found, and stays where
    /// the rest is stopped.
    platform::Task detectSlates();
    /// Empty while no search runs; the fraction is that of all clips.
    const SmartAudioProgress& progress() const { return progress_; }

    const SlateResult* result(const UUID& groupID) const;
    /// What was wrong with the latest search of the clip, for people; absent where nothing was.
    std::optional<std::string> problem(const UUID& groupID) const;
    /// What the clip could take over from its slate, as the naming settings now are.
    std::optional<SlateProposal> proposal(const UUID& groupID) const;
    /// Those of all clips, in their order.
    std::vector<std::pair<UUID, SlateProposal>> proposals() const;
    /// Each an undo step of its own; none where nothing is offered.
    void acceptSlate(const UUID& groupID);
    void acceptSlates();

  private:
    static platform::Task search(std::weak_ptr<SlateController> weak, std::vector<UUID> clips);
    static platform::Task searchEach(std::weak_ptr<SlateController> weak, std::vector<UUID> clips);
    platform::Task start(std::vector<UUID> clips);
    void accept(const UndoStep& step, const std::vector<std::pair<UUID, SlateProposal>>& proposals);
    void show(SmartAudioProgress progress);

    OpenWork& work_;
    SmartAudioCaches& caches_;
    const std::shared_ptr<SlateDetector> detector_;
    SmartAudioProgress progress_;
    int searches_ = 0; ///< under way
    const std::shared_ptr<platform::Throttle<SmartAudioProgress>> shown_;
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
