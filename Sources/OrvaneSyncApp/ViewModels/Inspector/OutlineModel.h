#pragma once

#include "OrvaneSyncApp/Controllers/DerivedFromClips.h"
#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/ViewModels/Results/ResultsViewModel.h"
#include "OrvaneSyncCore/Utilities/SearchWords.h"

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvane {

/// The clips as the review lists them, each by the name that all lists give it: in the order of the shoot,
/// the cameras of one take below a row of their own, which folds them away. The controller outlives it.
/// Interface thread.
class OutlineModel {
  public:
    using Certainty = ResultsViewModel::Certainty;

    struct Row {
        std::string label;
        std::string facts; ///< the camera file, or the status of a clip named after it; of a take its cameras
        std::string status;                       ///< in words, with the doubts; a line each
        Certainty certainty = Certainty::settled; ///< of a take that of its worst clip
        bool isApproved = false;                  ///< of a take: every clip is; so are the next two
        bool isLocked = false;
        bool isExcluded = false;
        bool isMovedSinceLock = false; ///< of a take: a clip is
        bool isTake = false;
        bool isInTake = false;
        bool isFolded = false;

        bool operator==(const Row&) const = default;
    };
    struct Counts {
        std::size_t all = 0, shown = 0, locked = 0;
        std::size_t toDecide = 0; ///< that have several recordings to choose from

        /// Always two lines, so that the list below keeps its place: "150 clips", "12 locked · 3 to decide".
        std::string text() const;
        bool operator==(const Counts&) const = default;
    };

    explicit OutlineModel(ImportController& controller);

    platform::Subscription onChange(std::function<void(const ResultsViewModel::Change&)> callback) {
        return listeners_.add(std::move(callback));
    }
    /// Shows the clips of which a name or a file holds each of the words.
    void setSearch(const std::string& text);
    /// Lists those clips alone and in that order, as far as they are there; absent: all of them, in the order
    /// of the shoot. The cameras of a take stay together.
    void showOnly(const std::optional<std::vector<UUID>>& clips);
    void toggleFolded(std::size_t row);
    /// The settings by which clips are named may have changed.
    void followNaming();

    std::size_t rowCount() const { return rows_.size(); }
    Row row(std::size_t row) const;
    /// Nothing for a take.
    std::optional<UUID> groupID(std::size_t row) const;
    /// Of a take all its cameras.
    std::vector<UUID> clipsOf(std::size_t row) const;
    /// That of the take where it folds the clip away; nothing for a clip that is not shown.
    std::optional<std::size_t> rowOf(const UUID& groupID) const;
    /// That of the take with the clip; nothing for a clip that stands alone or is not shown.
    std::optional<std::size_t> takeRowOf(const UUID& groupID) const;
    /// The clip so many clips further down (or up) in the order shown, those of folded takes included. Of a
    /// clip that is not shown: the first or last one.
    std::optional<UUID> neighbour(const UUID& of, int step) const;
    struct PlaceInList {
        std::size_t number = 0; ///< from 1, in the order in which `neighbour` goes
        std::size_t all = 0;
    };
    /// Nothing for a clip that is not shown.
    std::optional<PlaceInList> placeInList(const UUID& groupID) const;
    Counts counts() const;

  private:
    struct Place {
        std::string key; ///< of a take, for folding
        std::string label;
        std::vector<SyncGroupList::Element> clips; ///< one, or those of the take
        bool isTake = false;
        bool isInTake = false;
    };
    void follow(const ImportChange& change);
    void layOut();
    /// Behind all others where it is not among those listed alone.
    std::size_t placeAmongOnly(const SyncGroup& clip) const;
    bool isFound(const std::string& label, const SyncGroup& group) const;

    ImportController& controller_;
    platform::Listeners<const ResultsViewModel::Change&> listeners_;
    SearchWords search_;
    std::optional<std::map<UUID, std::size_t>> only_; ///< places of the clips that are listed alone
    std::set<std::string> folded_;                    ///< takes
    NamingRules naming_;                              ///< by which the rows are named
    std::vector<Place> rows_;
    std::vector<UUID> order_; ///< of the clips shown
    std::map<UUID, std::size_t> rowByGroup_;
    std::map<UUID, std::size_t> placeInOrder_;
    mutable DerivedFromClips<Counts> counts_; ///< `locked` and `toDecide`
    platform::Subscription observation_;
};

} // namespace orvane
