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

/// The clapper boards of the clips: searched for on request, stored in `SmartAudioState::slateResults`, and
/// proposed as scene and take. A search changes no clip. Interface thread.
class SlateController {
  public:
    /// Null detector: that of this machine.
    SlateController(OpenWork& work, SmartAudioCaches& caches, std::shared_ptr<SlateDetector> detector);
    ~SlateController();

    /// Searches one clip, including its first recording, also if it was searched before. If a file cannot be
    /// read, the earlier result is kept.
    platform::Task detectSlate(const UUID& groupID);
    /// Searches all clips, one after the other; each result is stored when it is found, and is kept if the
    /// rest is stopped.
    platform::Task detectSlates();
    /// Empty while no search runs; the fraction is that of all clips.
    const SmartAudioProgress& progress() const { return progress_; }

    const SlateResult* result(const UUID& groupID) const;
    /// The error of the latest search of the clip, for people; absent if there was none.
    std::optional<std::string> problem(const UUID& groupID) const;
    /// The scene and take that the slate proposes for the clip, by the present naming settings.
    std::optional<SlateProposal> proposal(const UUID& groupID) const;
    /// The proposals for all clips, in their order.
    std::vector<std::pair<UUID, SlateProposal>> proposals() const;
    /// Each opens an undo step; none if there is no proposal.
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
    int searches_ = 0; ///< running searches
    const std::shared_ptr<platform::Throttle<SmartAudioProgress>> shown_;
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
