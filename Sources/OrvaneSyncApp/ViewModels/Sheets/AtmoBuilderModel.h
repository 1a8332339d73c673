#pragma once

#include "OrvaneSyncApp/Controllers/AtmoController.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvane {

/// What the room tone builder holds of each scene: which stretches are chosen, how long the tone is to be,
/// and what came of the last one. Closing the sheet forgets it. One thread.
class AtmoBuilderModel {
  public:
    static constexpr double targetStep = 5; ///< seconds
    /// What is chosen at first: the longest until they reach so many seconds.
    static constexpr double preselectedSeconds = 60;
    /// What the sheet says while it waits, and where nothing was found.
    static constexpr const char* scanningText = "Scanning for quiet stretches per scene…";
    static constexpr const char* nothingFoundText =
        "Threshold is −60 dBFS for ≥ 2.5 s of stable, transient-free audio. Match some clips first; if "
        "there's literally no quiet long enough, the algorithm finds nothing.";

    struct Scene {
        std::string key;
        std::vector<AtmoCandidate> candidates; ///< the longest first
        std::set<UUID> selection;
        double targetSeconds = AtmoController::usualDuration;
        enum class State : std::uint8_t { idle, generating, done, failed };
        State state = State::idle;
        std::string status; ///< for people; empty while idle and in work

        /// The chosen ones, in the order of the list.
        std::vector<AtmoCandidate> chosen() const;
        double chosenSeconds() const;
        bool canGenerate() const { return state != State::generating && !selection.empty(); }
    };

    explicit AtmoBuilderModel(const AtmoController::Candidates& found);

    /// Those that have a stretch at all, in the order of their keys.
    const std::vector<Scene>& scenes() const { return scenes_; }
    bool isEmpty() const { return scenes_.empty(); }
    void selectAll(std::size_t scene);
    void clear(std::size_t scene);
    void setSelected(std::size_t scene, const UUID& candidate, bool isSelected);
    /// Brought within the range and to a whole step.
    void setTarget(std::size_t scene, double seconds);
    /// What is to be built; nothing where nothing is chosen or it is being built already.
    std::optional<AtmoController::Order> begin(std::size_t scene);
    void succeeded(std::size_t scene, const std::string& fileName);
    void failed(std::size_t scene, const std::string& why);

    static std::string startText(const AtmoCandidate& candidate);  ///< "02:05.30": minutes, seconds
    static std::string lengthText(const AtmoCandidate& candidate); ///< "3.5s"
    static std::string levelText(const AtmoCandidate& candidate);  ///< "-63.2 dBFS"

  private:
    std::vector<Scene> scenes_;
};

} // namespace orvane
