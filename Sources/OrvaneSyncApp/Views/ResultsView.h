#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/ViewModels/Results/ResultsViewModel.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <vector>

class QMenu;
class QStackedLayout;
class QTableView;
class QTimer;

namespace orvane::views {

class DoubtBar;
class ResultsDelegate;
class ResultsModel;
class WildTracksView;

/// The clips with what was found for them: filter, search, sort, select, act. Above them what is in doubt and
/// what cures it, below them the sound that no clip uses.
class ResultsView : public QWidget {
  public:
    explicit ResultsView(Desktop& desktop, QWidget* parent = nullptr);
    ~ResultsView() override;

    /// In the order of the rows.
    std::vector<UUID> selectedClips() const;
    void runForSelection(std::string_view command);
    /// Has the selected clips listened to, one after the other.
    void analyseSelection();
    /// A cure has changed what is matched.
    std::function<void()> whenScanWanted;
    void rename(const UUID& clip);
    /// Those that are among the rows; the first comes into view.
    void select(const std::vector<UUID>& clips);
    /// Opens the cameras of what is selected beside each other.
    std::function<void()> openMulticam;
    /// Called after every change of the selection.
    std::function<void()> whenSelectionChanged;
    QLineEdit* search() const { return search_; }
    QTableView* table() const { return table_; }

  private:
    QWidget* makeTable();
    void showCounts();
    void showDoubts();
    /// Gives the columns the width that there is; in a narrow window two of them go below their neighbours.
    void fitColumns();
    void wantThumbnails();
    void addRecordings(QMenu& menu, const UUID& clip);
    void showMenu(const QPoint& position);

    Desktop& desktop_;
    ResultsViewModel rows_;
    ResultsModel* model_;
    design::SegmentedChoice* filter_;
    QLineEdit* search_;
    DoubtBar* doubts_;
    QTableView* table_;
    ResultsDelegate* delegate_;
    QStackedLayout* pages_;
    design::EmptyState* empty_;
    WildTracksView* wildTracks_;
    int wildTracksNeed_ = 0; ///< points of height
    QTimer* scrolled_;       ///< thumbnails are asked for when scrolling rests
    platform::Subscription rowsObservation_;
    platform::Subscription workObservation_;
};

} // namespace orvane::views
