#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/ViewModels/Results/ResultsViewModel.h"
#include "OrvaneSyncApp/Views/WorkScreen.h"

#include <QTableView>

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

class QLabel;
class QMenu;
class QSplitter;
class QStackedLayout;
class QPushButton;
class QTimer;

namespace orvane::views {

class DoubtBar;
class ResultsDelegate;
class ResultsModel;
class WildTracksView;

/// The clips with their matches: filter, search, sort, select, and run commands. Above the list are the
/// doubts with their cures, below it the recordings that no clip uses.
class ResultsView : public WorkScreen {
  public:
    ResultsView(Desktop& desktop, ScreenHost host);
    ~ResultsView() override;

    /// In the order of the rows.
    std::vector<UUID> selectedClips() const;
    /// The clips that the list shows, and the filter or order that they are shown by.
    struct Listing {
        std::vector<UUID> clips;
        QString title;
    };
    /// Absent if the list shows all clips in the order of the shoot.
    std::optional<Listing> listing() const;
    /// Selects those of the clips that have rows; the first one comes into view. If none has a row, the
    /// selection stays.
    void select(const std::vector<UUID>& clips);
    /// The same without the filter and the search.
    void showClips(const std::vector<UUID>& clips);
    void open(const std::vector<UUID>& clips) override { select(clips); }
    bool isPlaying() const override { return false; }
    std::vector<UUID> clips() const override { return selectedClips(); }
    QLineEdit* search() const override { return search_; }
    QWidget* keyboard() override { return table_; } ///< the table
    QString hint() const override;
    void entered() override;
    QTableView* table() const { return table_; }
    /// Stores the state of the columns, and what `saveListing` stores.
    void savePlaces() override;
    /// The titles of the list's filters. `showFilter` takes the index of one of them.
    static std::vector<QString> filterTitles();
    void showFilter(int choice);
    /// Stores which clips were listed, and which clip of the open session was used last. `clip`: the one in
    /// view on another screen; absent: the selected one.
    void saveListing(const std::optional<UUID>& clip = std::nullopt);
    /// Restores what `saveListing` stored, if that session is opened again in this run or after the next
    /// start.
    void restoreListing();

  protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    QWidget* makeTable();
    void restorePlaces();
    void prepareColumns();
    void showCounts();
    /// Removes filter and search.
    void showAll();
    void showDoubts();
    /// After rows were added, removed or moved: selects the same clips again, or the row at their place.
    void keepSelection(bool areAllNew);
    void setSelected(const std::vector<UUID>& clips, QAbstractItemView::ScrollHint hint);
    /// Gives the columns the available width; in a narrow window some are shown below their neighbours.
    void fitColumns();
    /// Hides the columns for which a table of that width has no room. Returns the width that the fixed
    /// columns leave.
    int showColumnsThatFit(int width);
    /// Lets the columns share the width by the needs of their texts, unless the user moved a border.
    void measureColumns();
    /// Whether any row has a reason for being doubtful or not matched.
    bool hasReasons() const;
    /// Gives the recordings that no clip uses the height that they need, within limits, unless the user moved
    /// the border.
    void fitWildTracks();
    void wantThumbnails();
    void remember(const UUID& clip);
    void showMenu(const QPoint& position);

    ResultsViewModel rows_;
    ResultsModel* model_;
    design::SegmentedChoice* filter_;
    QLabel* found_; ///< how many clips the search finds
    QLineEdit* search_;
    DoubtBar* doubts_;
    std::vector<ResultsViewModel::Doubt> shownDoubts_;
    std::optional<std::uint64_t> doubtsRevision_; ///< the revision of `shownDoubts_`
    QTableView* table_;
    ResultsDelegate* delegate_;
    /// The shares of the columns in the width that fixed columns leave; 0 for fixed columns.
    std::array<double, ResultsViewModel::columnCount> shares_{};
    bool isFitting_ = false;
    bool areSharesChosen_ = false;       ///< the user moved a border
    bool isMeasuredWithReasons_ = false; ///< the column of the status has room for reasons
    bool isFittedWithLoudness_ = false;  ///< the loudness of some clip was known when the columns were fitted
    std::vector<UUID> chosen_;           ///< the clips that were selected last
    /// The camera files of the clips that were selected last: a scan makes other clips of them.
    std::unordered_set<std::string> chosenFiles_;
    std::optional<UUID> current_; ///< the clip of the row that was current last
    std::size_t chosenRow_ = 0;   ///< the row of the first of `chosen_`
    std::map<UUID, UUID> lastOf_; ///< the clip that was used last, by session
    QStackedLayout* pages_;
    design::EmptyState* empty_;
    QPushButton *showAll_, *folders_; ///< below the text of `empty_`
    WildTracksView* wildTracks_;
    QSplitter* lists_;            ///< the clips above the recordings that no clip uses
    bool isBorderChosen_ = false; ///< the user moved the border between them
    QTimer* scrolled_;            ///< asks for thumbnails when scrolling has stopped
    platform::Subscription rowsObservation_;
    platform::Subscription workObservation_;
};

} // namespace orvane::views
