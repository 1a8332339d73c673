#pragma once

#include "OrvaneSyncApp/Controllers/DerivedFromClips.h"
#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/ViewModels/Results/DoubtCures.h"
#include "OrvaneSyncCore/Services/Naming/ResultsList.h"
#include "OrvaneSyncCore/Utilities/SearchWords.h"
#include "Platform/Listeners.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvane {

/// The list of results: which rows it has, in which order, and what each says. Rows of one recording stand
/// together; the first of them folds the others away. Interface thread.
class ResultsViewModel {
  public:
    enum class Column : std::uint8_t { name, cameraFile, starts, length, match, sound, begins, loudness };
    static constexpr std::size_t columnCount = 8;
    static std::string_view title(Column column);

    /// How sure it is that a clip has its sound.
    enum class Certainty : std::uint8_t {
        settled,  ///< matched, without a doubt
        doubtful, ///< matched with a doubt, or several recordings to choose from
        missing,  ///< no sound, and nobody has said that there should be none
        silent    ///< without sound by decision
    };

    static Certainty certaintyOf(const SyncGroup& group, bool hasDoubts);
    /// In which a search looks for its words: the name, that of before where the editor has named the clip,
    /// its files as rows show them, and the scenes of its recordings.
    static std::string searchedText(const SyncGroup& group, const std::string& name, const OpenWork& work);

    /// Which clips are listed.
    enum class Filter : std::uint8_t {
        all,
        matched, ///< the settled ones
        issues,  ///< those that wait for a decision
        doubtful ///< of that certainty
    };

    /// A row as it is shown.
    struct Row {
        std::vector<std::string> texts; ///< by column
        Certainty certainty = Certainty::missing;
        std::string doubts; ///< messages and cures, a line each, then why it has no settled match
        std::string reason; ///< the first of these, as the row of the clip says it; empty without any
        bool isApproved = false;
        bool isLocked = false;
        bool isMovedSinceLock = false; ///< which `reason` says then
        bool isExcluded = false;
        bool isAnalysed = false;     ///< its recording was heard by Smart Audio
        bool isBelowAnother = false; ///< shares the recording of a row above it
        std::size_t foldable = 0;    ///< rows that this one folds away
        bool isFolded = false;

        bool operator==(const Row&) const = default;
    };

    struct Counts {
        std::size_t all = 0, matched = 0, issues = 0, doubtful = 0;

        bool operator==(const Counts&) const = default;
    };

    /// What a view has to do after a change.
    struct Change {
        bool isLayoutChanged = false;    ///< which rows there are, or their order
        std::vector<std::size_t> rows{}; ///< to be painted again; without meaning where the layout changed
        bool areAllNew = false;          ///< no clip was shown before
    };

    /// The controller outlives it.
    explicit ResultsViewModel(ImportController& controller);

    platform::Subscription onChange(std::function<void(const Change&)> callback);

    Filter filter() const { return filter_; }
    void setFilter(Filter filter);
    /// Shows the clips of which a name, a file or a scene holds each of the words.
    void setSearch(const std::string& text);
    /// Absent: the order of the shoot. Starts are sorted by their day first.
    void setSorting(std::optional<Column> column, bool isAscending);
    bool isAscending() const { return isAscending_; }
    /// The clips shown, in the order of the rows, those that are folded away too.
    const std::vector<UUID>& order() const { return order_; }
    bool isSorted() const { return sortColumn_.has_value(); }
    void toggleFolded(std::size_t row);

    Counts counts() const;
    std::size_t rowCount() const { return rows_.size(); }
    const UUID& groupID(std::size_t row) const { return rows_.at(row).clip->id; }
    /// Nothing where the clip is not among the rows.
    std::optional<std::size_t> rowOf(const UUID& groupID) const;
    Row row(std::size_t row) const;
    /// The clip's file.
    const FileURL& videoURL(std::size_t row) const { return rows_.at(row).clip->video.url; }
    /// 0 where its length is not known.
    double videoSeconds(std::size_t row) const {
        return rows_.at(row).clip->video.durationSeconds.value_or(0);
    }
    /// Whether any clip's loudness is known.
    bool isLoudnessKnown() const { return loudnessCount_ > 0; }

    /// The doubts of the work, each with its cure, worst first; a sentence each.
    struct Doubt {
        std::string message;
        Cure cure;
        std::vector<UUID> groupIDs;
    };
    std::vector<Doubt> doubts() const;
    /// Differs when `doubts` may.
    std::uint64_t doubtsRevision() const { return controller_.derivedDoubts().revision(); }

    /// The recordings of a clip that holds several, one of which may be chosen.
    struct Candidate {
        UUID matchID; ///< of its first file
        std::string text;
        bool isFirst = false; ///< which is the one that is heard
    };
    std::vector<Candidate> candidates(const UUID& groupID) const;

  private:
    struct Place {
        SyncGroupList::Element clip;
        bool isBelowAnother = false;
        std::size_t foldable = 0;
        std::string bundleID;

        bool isSamePlace(const Place& other) const {
            return clip->id == other.clip->id && isBelowAnother == other.isBelowAnother &&
                   foldable == other.foldable && bundleID == other.bundleID;
        }
    };
    void follow(const ImportChange& change);
    void layOut();
    SyncGroupList listed() const;
    static Certainty certaintyOf(const SyncGroup& group, const SyncDoubts& doubts);
    /// Tells which rows have changed; where rows came, went or moved, that the layout has.
    void takeRows(std::vector<Place> rows);
    using Names = std::map<UUID, std::string>;
    bool isFound(const SyncGroup& group, const Names& names) const;
    std::string sortKeyText(const SyncGroup& group, const Names& names) const;
    double sortKeyNumber(const SyncGroup& group) const;

    ImportController& controller_;
    platform::Listeners<const Change&> listeners_;
    Filter filter_ = Filter::all;
    SearchWords search_;
    std::optional<Column> sortColumn_;
    bool isAscending_ = true;
    std::set<std::string> folded_; ///< bundles
    std::vector<Place> rows_;
    std::vector<UUID> order_;
    std::map<UUID, std::size_t> rowByGroup_;
    std::ptrdiff_t loudnessCount_ = 0; ///< rows whose loudness is known
    mutable DerivedFromClips<std::size_t> doubtfulCount_;
    mutable std::uint64_t doubtfulRevision_ = 0; ///< of the doubts by which these were counted
    platform::Subscription observation_;
};

} // namespace orvane
