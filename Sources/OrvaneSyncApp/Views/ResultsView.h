#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/ViewModels/Results/ResultsViewModel.h"
#include "OrvaneSyncApp/Views/WorkScreen.h"

#include <QTableView>

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

class QMenu;
class QStackedLayout;
class QTimer;

namespace orvane::views {

class DoubtBar;
class ResultsDelegate;
class ResultsModel;
class WildTracksView;

/// The clips with what was found for them: filter, search, sort, select, act. Above them what is in doubt and
/// what cures it, below them the sound that no clip uses.
class ResultsView : public WorkScreen {
  public:
    explicit ResultsView(Desktop& desktop, QWidget* parent = nullptr);
    ~ResultsView() override;

    /// In the order of the rows.
    std::vector<UUID> selectedClips() const;
    /// What the list shows, and by what filter or order.
    struct Listing {
        std::vector<UUID> clips;
        QString title;
    };
    /// Nothing where it shows all clips in the order of the shoot.
    std::optional<Listing> listing() const;
    void runForSelection(std::string_view command);
    /// Has the selected clips listened to, one after the other.
    void analyseSelection();
    void rename(const UUID& clip);
    /// Those that are among the rows; the first comes into view. Without any the selection stays.
    void select(const std::vector<UUID>& clips);
    /// Opens the cameras of what is selected beside each other.
    std::function<void()> openMulticam;
    /// Called after every change of the selection.
    std::function<void()> whenSelectionChanged;
    bool isPlaying() const override { return false; }
    std::vector<UUID> clips() const override { return selectedClips(); }
    QLineEdit* search() const override { return search_; }
    QWidget* keyboard() override { return table_; } ///< its rows
    QTableView* table() const { return table_; }
    /// How the columns lie, for the next start.
    void savePlaces() const;
    void restorePlaces();
    /// The filters of the list, in their order, and which clips it shows: one of them.
    static std::vector<QString> filterTitles();
    void showFilter(int choice);
    /// Which clip of the open session was worked at last, and which were listed. `clip`: the one in view
    /// elsewhere; absent: the one that is selected.
    void saveListing(const std::optional<UUID>& clip = std::nullopt);
    /// The same again where that session is opened: in this run, or by the next start.
    void restoreListing();

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    QWidget* makeTable();
    void prepareColumns();
    void showCounts();
    void showDoubts();
    /// After rows came, went or moved: what was selected, or the row that took its place.
    void keepSelection(bool areAllNew);
    void setSelected(const std::vector<UUID>& clips, QAbstractItemView::ScrollHint hint);
    /// Gives the columns the width that there is; in a narrow window two of them go below their neighbours.
    void fitColumns();
    /// Hides what a table of that width has no room for. Returns what the columns of fixed width leave.
    int showColumnsThatFit(int width);
    /// Lets the columns share the width by what their texts need, unless somebody moved a border.
    void measureColumns();
    /// Whether any row says why it is doubtful or not matched.
    bool hasReasons() const;
    void wantThumbnails();
    void remember(const UUID& clip);
    void addRecordings(QMenu& menu, const UUID& clip);
    void showMenu(const QPoint& position);

    Desktop& desktop_;
    ResultsViewModel rows_;
    ResultsModel* model_;
    design::SegmentedChoice* filter_;
    QLineEdit* search_;
    DoubtBar* doubts_;
    std::vector<ResultsViewModel::Doubt> shownDoubts_;
    std::optional<std::uint64_t> doubtsRevision_; ///< of those
    QTableView* table_;
    ResultsDelegate* delegate_;
    /// Of the width that is left to columns without one of their own; 0 for those.
    std::array<double, ResultsViewModel::columnCount> shares_{};
    bool isFitting_ = false;
    bool areSharesChosen_ = false;       ///< by somebody who moved a border
    bool isMeasuredWithReasons_ = false; ///< why clips are doubtful has a place below their status
    bool isFittedWithLoudness_ = false;  ///< whether that of any clip was known
    std::vector<UUID> chosen_;           ///< the clips selected last
    std::optional<UUID> current_;        ///< the clip that the keys went to last
    std::size_t chosenRow_ = 0;          ///< of the first of them
    std::map<UUID, UUID> lastOf_;        ///< the clip last worked at, by session
    QStackedLayout* pages_;
    design::EmptyState* empty_;
    WildTracksView* wildTracks_;
    int wildTracksNeed_ = 0; ///< points of height
    QTimer* scrolled_;       ///< thumbnails are asked for when scrolling rests
    platform::Subscription rowsObservation_;
    platform::Subscription workObservation_;
};

} // namespace orvane::views
