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
    SmartAudioProgress progress;      ///< of the scan that runs
};

/// Room tone of the open work: finds the quiet stretches in the recordings of each scene, and builds files
/// from them, which are added to the work as wild tracks. Interface thread.
class AtmoController {
  public:
    explicit AtmoController(OpenWork& work);
    ~AtmoController();

    const AtmoState& state() const { return state_; }

    /// By scene key, the longest first. A scene without such a stretch has an empty list.
    using Candidates = std::map<std::string, std::vector<AtmoCandidate>>;
    /// Scans all clips that are matched. The result is kept for `candidates`.
    platform::Task scanAtmoCandidates();
    /// The result of the last scan of this work; absent before the first.
    const std::optional<Candidates>& candidates() const { return candidates_; }

    /// Seconds of room tone unless a length is given.
    static constexpr double usualDuration = 60;
    static constexpr double shortestTarget = 10, longestTarget = 300;
    struct Order {
        std::string scene = {};
        std::vector<AtmoCandidate> candidates = {};
        double targetDuration = usualDuration;
        /// The folder that the user chose; absent: the work's own in the application's data folder.
        std::optional<std::string> outputDirectory = {};
        std::string audioRole = "effects.atmosphere";
        /// Whether the wild track is approved; the document does not contain it otherwise. Absent: as the
        /// setting says.
        std::optional<bool> isApproved = {};
    };
    /// Writes the file of a scene, which replaces an earlier one, and makes it the scene's only room tone
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
