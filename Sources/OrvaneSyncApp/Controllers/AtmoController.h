#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/SmartAudioState.h"
#include "OrvaneSyncCore/Services/Atmo/QuietAmbientGenerator.h"
#include "OrvaneSyncCore/Services/Atmo/SceneKey.h"
#include "Platform/Throttle.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// What views watch of the room tone.
struct AtmoState {
    bool isGenerating = false;
    std::optional<AtmoResult> result; ///< room tone that the export adds by itself
    SmartAudioProgress progress;      ///< of the scan under way
};

/// Room tone of the open work: the quiet stretches of the recordings of each scene, and the files that are
/// built of them, which join the work as wild tracks. Interface thread.
class AtmoController {
  public:
    explicit AtmoController(OpenWork& work);
    ~AtmoController();

    const AtmoState& state() const { return state_; }

    /// By scene key, the longest first. A scene whose recordings have no such stretch has an empty list.
    using Candidates = std::map<std::string, std::vector<AtmoCandidate>>;
    /// Of all clips that are matched. They stay at hand for `candidates`.
    platform::Task scanAtmoCandidates();
    /// What the last scan of this work has found; nothing before.
    const std::optional<Candidates>& candidates() const { return candidates_; }

    /// Seconds of room tone where nobody says otherwise.
    static constexpr double usualDuration = 60;
    static constexpr double shortestTarget = 10, longestTarget = 300;
    struct Order {
        std::string scene = {};
        std::vector<AtmoCandidate> candidates = {};
        double targetDuration = usualDuration;
        /// One that a person chose; absent: the work's own in the application's data folder.
        std::optional<std::string> outputDirectory = {};
        std::string audioRole = "effects.atmosphere";
        /// Of the wild track, without which the document does not have it; absent: as the setting says.
        std::optional<bool> isApproved = {};
    };
    /// Writes the file of a scene, which replaces the one before, and makes it the scene's only room tone
    /// among the wild tracks. Throws QuietAtmoError, FileError and OutputRefused.
    platform::Task buildAtmo(Order order, std::shared_ptr<AtmoResult> result);

    static std::string sceneKey(const SyncGroup& group) { return orvane::sceneKey(group); }

  private:
    using Weak = std::weak_ptr<AtmoController>;
    static platform::Task scan(Weak weak, std::map<std::string, std::vector<FileURL>> files);
    static platform::Task build(Weak weak, Order order, std::shared_ptr<AtmoResult> result);
    void adopt(const AtmoResult& result, bool isApproved);

    OpenWork& work_;
    AtmoState state_;
    std::optional<Candidates> candidates_;
    int building_ = 0;
    const std::shared_ptr<platform::Throttle<SmartAudioProgress>> shown_;
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
