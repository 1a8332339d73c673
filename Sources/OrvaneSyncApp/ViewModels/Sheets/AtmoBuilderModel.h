#pragma once

#include "OrvaneSyncApp/Controllers/AtmoController.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvane {

/// The state of the room tone builder for each scene: which stretches are chosen, the length that is wanted,
/// and the result of the last build. Discarded when the sheet is closed. One thread.
class AtmoBuilderModel {
  public:
    static constexpr double targetStep = 5; ///< seconds
    /// At first the longest stretches are chosen, until they are at least this many seconds together.
    static constexpr double preselectedSeconds = 60;
    /// The texts shown during the search, and after a search without results.
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
        std::string status; ///< shown to the user; empty before and during a build

        /// The chosen stretches, in the order of the list.
        std::vector<AtmoCandidate> chosen() const;
        double chosenSeconds() const;
        bool canGenerate() const { return state != State::generating && !selection.empty(); }
    };

    explicit AtmoBuilderModel(const AtmoController::Candidates& found);

    /// Only scenes that have a stretch, in the order of their keys.
    const std::vector<Scene>& scenes() const { return scenes_; }
    bool isEmpty() const { return scenes_.empty(); }
    void selectAll(std::size_t scene);
    void clear(std::size_t scene);
    void setSelected(std::size_t scene, const UUID& candidate, bool isSelected);
    /// Limits the value to the range and rounds it to a whole step.
    void setTarget(std::size_t scene, double seconds);
    /// The order to build. Absent if nothing is chosen or the scene's tone is being built already.
    std::optional<AtmoController::Order> begin(std::size_t scene);
    void succeeded(std::size_t scene, const std::string& fileName);
    void failed(std::size_t scene, const std::string& why);

    static std::string startText(const AtmoCandidate& candidate);  ///< minutes and seconds: "02:05.30"
    static std::string lengthText(const AtmoCandidate& candidate); ///< "3.5s"
    static std::string levelText(const AtmoCandidate& candidate);  ///< "-63.2 dBFS"

  private:
    std::vector<Scene> scenes_;
};

} // namespace orvane
