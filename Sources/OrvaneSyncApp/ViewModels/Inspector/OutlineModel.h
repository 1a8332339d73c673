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

/// The clips as the review lists them, with the names that all lists use, in the order of the shoot. The
/// cameras of one take are below a row of the take, which can be folded. The controller outlives the model.
/// Interface thread.
class OutlineModel {
  public:
    using Certainty = ClipCertainty;

    struct Row {
        std::string label;
        /// Of a clip: how many recordings it has if several, else its camera file, or its status if it is
        /// named after the file. Of a take: its cameras.
        std::string facts;
        std::string status;                       ///< the status and the doubts in words, one line each
        Certainty certainty = Certainty::settled; ///< of a take: that of its worst clip
        bool isApproved = false; ///< of a take: every clip is approved; the next two are the same
        bool isLocked = false;
        bool isExcluded = false;
        bool isMovedSinceLock = false; ///< of a take: one of its clips is
        bool isTake = false;
        bool isInTake = false;
        bool isFolded = false;

        bool operator==(const Row&) const = default;
    };
    struct Counts {
        std::size_t all = 0, shown = 0, locked = 0;
        std::size_t toDecide = 0; ///< clips with several recordings to choose from

        /// Always two lines, so that the list below does not move: "150 clips", "12 locked · 3 to decide".
        std::string text() const;
        bool operator==(const Counts&) const = default;
    };

    explicit OutlineModel(ImportController& controller);

    platform::Subscription onChange(std::function<void(const ResultsViewModel::Change&)> callback) {
        return listeners_.add(std::move(callback));
    }
    /// Shows only the clips that have each of the words in a name or a file.
    void setSearch(const std::string& text);
    /// Lists only these clips, in this order, as far as they exist; absent: all clips in the order of the
    /// shoot. The cameras of a take stay together.
    void showOnly(const std::optional<std::vector<UUID>>& clips);
    void toggleFolded(std::size_t row);
    /// Makes the rows again if the settings for clip names have changed.
    void followNaming();

    std::size_t rowCount() const { return rows_.size(); }
    Row row(std::size_t row) const;
    /// Absent for a take.
    std::optional<UUID> groupID(std::size_t row) const;
    /// For a take: all its cameras.
    std::vector<UUID> clipsOf(std::size_t row) const;
    /// For a clip that is folded away: the row of its take. Absent for a clip that is not shown.
    std::optional<std::size_t> rowOf(const UUID& groupID) const;
    /// The row of the take that the clip belongs to. Absent for a clip without a take or one that is not
    /// shown.
    std::optional<std::size_t> takeRowOf(const UUID& groupID) const;
    /// The clip `step` places further down (negative: up) in the order shown, clips of folded takes included.
    /// If `of` is not shown: the first or the last clip.
    std::optional<UUID> neighbour(const UUID& of, int step) const;
    struct PlaceInList {
        std::size_t number = 0; ///< from 1, in the order of `neighbour`
        std::size_t all = 0;
    };
    /// Absent for a clip that is not shown.
    std::optional<PlaceInList> placeInList(const UUID& groupID) const;
    Counts counts() const;

  private:
    struct Place {
        std::string key; ///< of a take, to fold it
        std::string label;
        std::vector<SyncGroupList::Element> clips; ///< one clip, or the clips of the take
        bool isTake = false;
        bool isInTake = false;
        std::size_t cameras = 0; ///< of a take, also those that are not shown
    };
    void follow(const ImportChange& change);
    void layOut();
    /// The number of clips listed if the clip is not one of them: it comes after all others.
    std::size_t placeAmongOnly(const SyncGroup& clip) const;
    bool isFound(const std::string& label, const SyncGroup& group) const;

    ImportController& controller_;
    platform::Listeners<const ResultsViewModel::Change&> listeners_;
    SearchWords search_;
    std::optional<std::map<UUID, std::size_t>> only_; ///< places in the list given to `showOnly`
    std::set<std::string> folded_;                    ///< keys of takes
    NamingRules naming_;                              ///< the rules that the rows are named by
    std::vector<Place> rows_;
    std::vector<UUID> order_; ///< the clips shown
    std::map<UUID, std::size_t> rowByGroup_;
    std::map<UUID, std::size_t> placeInOrder_;
    mutable DerivedFromClips<Counts> counts_; ///< `locked` and `toDecide`
    platform::Subscription observation_;
};

} // namespace orvane
