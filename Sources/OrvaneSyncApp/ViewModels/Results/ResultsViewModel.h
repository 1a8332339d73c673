#pragma once

#include "OrvaneSyncApp/Controllers/DerivedFromClips.h"
#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/ViewModels/Results/BundleOrder.h"
#include "OrvaneSyncApp/ViewModels/Results/ClipInLists.h"
#include "OrvaneSyncApp/ViewModels/Results/DoubtCures.h"
#include "OrvaneSyncCore/Utilities/SearchWords.h"
#include "Platform/Listeners.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvane {

/// The list of results: its rows, their order, and their texts. Rows with the same recording are next to each
/// other; the first of them can fold the others away. Interface thread.
class ResultsViewModel {
  public:
    /// `marks` has no text of its own: it shows the flags of the row. Sorted by it, clips that are not locked
    /// come first.
    enum class Column : std::uint8_t {
        name,
        cameraFile,
        starts,
        length,
        match,
        sound,
        begins,
        loudness,
        marks
    };
    static constexpr std::size_t columnCount = 8; ///< those with texts
    static std::string_view title(Column column);

    /// Which clips are listed.
    enum class Filter : std::uint8_t {
        all,
        matched, ///< the settled ones
        issues,  ///< those that need a decision
        doubtful ///< those with the certainty `doubtful`
    };

    /// A row as it is shown.
    struct Row {
        std::vector<std::string> texts; ///< by column
        ClipCertainty certainty = ClipCertainty::missing;
        std::string doubts; ///< messages and cures, one on each line, then why the clip has no settled match
        std::string reason; ///< the first of these, as shown in the row; empty if there are none
        bool isApproved = false;
        bool isLocked = false;
        bool isMovedSinceLock = false; ///< `reason` then says so
        bool isExcluded = false;
        bool isAnalysed = false;     ///< Smart Audio has read its recording
        bool isBelowAnother = false; ///< has the recording of a row above it
        std::size_t foldable = 0;    ///< number of rows that this one can fold away
        bool isFolded = false;

        bool operator==(const Row&) const = default;
    };

    struct Counts {
        std::size_t all = 0, matched = 0, issues = 0, doubtful = 0;

        bool operator==(const Counts&) const = default;
    };

    /// What a view has to do after a change.
    struct Change {
        bool isLayoutChanged = false;    ///< rows were added, removed or moved
        std::vector<std::size_t> rows{}; ///< to be painted again; meaningless if the layout has changed
        bool areAllNew = false;          ///< no clip was shown before
    };

    /// The controller outlives this object.
    explicit ResultsViewModel(ImportController& controller);

    platform::Subscription onChange(std::function<void(const Change&)> callback);

    Filter filter() const { return filter_; }
    void setFilter(Filter filter);
    /// Shows the clips that have each of the words in a name, a file or a scene.
    void setSearch(const std::string& text);
    /// Absent: the order of the shoot. Start times are sorted by day first.
    void setSorting(std::optional<Column> column, bool isAscending);
    bool isAscending() const { return isAscending_; }
    /// The clips shown, in the order of the rows, including those that are folded away.
    std::vector<UUID> order() const;
    bool isSorted() const { return sortColumn_.has_value(); }
    void toggleFolded(std::size_t row);

    Counts counts() const;
    std::size_t rowCount() const { return rows_.size(); }
    const UUID& groupID(std::size_t row) const { return rows_.at(row).clip->id; }
    /// Absent if the clip is not among the rows.
    std::optional<std::size_t> rowOf(const UUID& groupID) const;
    Row row(std::size_t row) const;
    /// The clip's file.
    const FileURL& videoURL(std::size_t row) const { return rows_.at(row).clip->video.url; }
    /// 0 if its length is not known.
    double videoSeconds(std::size_t row) const {
        return rows_.at(row).clip->video.durationSeconds.value_or(0);
    }
    /// Whether any clip's loudness is known.
    bool isLoudnessKnown() const { return loudnessCount_ > 0; }

    /// The doubts of the work, each with its cure, the worst first; one sentence each.
    struct Doubt {
        std::string message;
        Cure cure;
        std::vector<UUID> groupIDs;
    };
    std::vector<Doubt> doubts() const;
    /// Changes whenever `doubts` may have changed.
    std::uint64_t doubtsRevision() const { return controller_.derivedDoubts().revision(); }

  private:
    struct Place {
        SyncGroupList::Element clip;
        bool isBelowAnother = false;
        std::size_t foldable = 0;
        std::shared_ptr<const BundleOrder::Bundle> bundle;

        bool isSamePlace(const Place& other) const {
            return clip->id == other.clip->id && isBelowAnother == other.isBelowAnother &&
                   foldable == other.foldable && bundle->id == other.bundle->id;
        }
    };
    void follow(const ImportChange& change);
    /// `areNamesKept`: no clip has another name than before.
    void layOut(bool areNamesKept = true);
    std::vector<Place> places() const;
    bool isListed(const SyncGroup& group) const;
    BundleOrder::Key sortKey(const BundleOrder::Clips& bundle, calendar::DayStarts& starts) const;
    /// Whether the names of clips decide which rows there are, or their order.
    bool usesNames() const { return !search_.isEmpty() || sortColumn_ == Column::name; }
    static ClipCertainty certaintyOf(const SyncGroup& group, const SyncDoubts& doubts);
    /// Reports which rows have changed, or that the layout has, if rows were added, removed or moved.
    void takeRows(std::vector<Place> rows, bool areNamesKept);
    void repaintAll();
    bool isFound(const SyncGroup& group) const;
    std::string sortKeyText(const SyncGroup& group) const;
    double sortKeyNumber(const BundleOrder::Clips& bundle) const;

    ImportController& controller_;
    platform::Listeners<const Change&> listeners_;
    Filter filter_ = Filter::all;
    SearchWords search_;
    std::optional<Column> sortColumn_;
    bool isAscending_ = true;
    std::set<std::string> folded_; ///< groups
    BundleOrder order_;
    std::shared_ptr<const DisplayNames> names_; ///< those of the present layout; null if it uses none
    std::vector<Place> rows_;
    std::unordered_map<UUID, std::size_t> rowByGroup_;
    std::ptrdiff_t loudnessCount_ = 0; ///< rows with known loudness
    struct CountedAs {                 ///< of one clip 0 or 1, of all their sums
        std::size_t doubtful = 0;
        std::size_t decided = 0; ///< locked as without sound
        bool operator==(const CountedAs&) const = default;
    };
    mutable DerivedFromClips<CountedAs> countedAs_;
    mutable std::uint64_t countedRevision_ = 0; ///< of the doubts when these were counted
    platform::Subscription observation_;
};

} // namespace orvane
