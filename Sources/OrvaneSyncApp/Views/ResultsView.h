#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/ViewModels/Results/ResultsViewModel.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <vector>

class QListWidget;
class QStackedLayout;
class QTableView;

namespace orvane::views {

class ResultsModel;

/// The clips with what was found for them: filter, search, sort, select, act. Above them what is in doubt and
/// what cures it, below them the sound that no clip uses.
class ResultsView : public QWidget {
  public:
    explicit ResultsView(Desktop& desktop, QWidget* parent = nullptr);
    ~ResultsView() override;

    /// In the order of the rows.
    std::vector<UUID> selectedClips() const;
    void runForSelection(std::string_view command);
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
    QWidget* makeWildTracks();
    void showCounts();
    void showDoubts();
    void showWildTracks();
    void showMenu(const QPoint& position);

    Desktop& desktop_;
    ResultsViewModel rows_;
    ResultsModel* model_;
    design::SegmentedChoice* filter_;
    QLineEdit* search_;
    design::Banner* doubts_;
    std::size_t shownDoubt_ = 0;
    QTableView* table_;
    QStackedLayout* pages_;
    design::EmptyState* empty_;
    QWidget* wildSection_;
    QLabel* wildTitle_;
    QListWidget* wild_;
    bool isFillingWild_ = false;
    platform::Subscription rowsObservation_;
    platform::Subscription workObservation_;
};

} // namespace orvane::views
